"""The C library: what it exports, and hosts over it beside atdp."""

import fnmatch
import os
import pathlib
import re
import subprocess
import sys
import unittest

from commands import MODULE, InFolder, run

C_HOST = os.environ["C_HOST"]
LIBRARY = os.environ["ATDP_LIBRARY"]
ROOT = pathlib.Path(__file__).parents[2]
FLOAT_BYTES = 4


def exports(library):
    lines = run(os.environ["NM"], "-D", "-j", "--defined-only", "--with-symbol-versions", library)
    return set(lines.decode().split())


class Exports(unittest.TestCase):
    def test_library_has_the_symbols_of_its_list(self):
        listed = set((ROOT / "c" / "symbols.txt").read_text().split())
        self.assertEqual(exports(LIBRARY) - {"ATDP_0"}, listed)
        declared = re.findall(r"ATDP_API [^;]*?(atdp_\w+)\(",
                              (ROOT / "include" / "atdp.h").read_text())
        self.assertEqual({name + "@@ATDP_0" for name in declared}, listed)

    def test_module_has_the_symbols_of_its_map(self):
        text = (ROOT / "plugin" / "exports.map").read_text()
        patterns = re.search(r"global:(.*)local:", text, re.S)[1].replace(";", "").split()
        exported = exports(MODULE)
        for name in exported:
            self.assertTrue(any(fnmatch.fnmatchcase(name, p) for p in patterns), name)
        for pattern in patterns:
            self.assertTrue(fnmatch.filter(exported, pattern), pattern)


class Hosts(InFolder):
    files = [ROOT / "examples" / "chime.wav"] + [
        ROOT / "tests" / "data" / name for name in ("layer3-cbr128.mp3", "lossless.m4a")]

    def facts_and_frames(self, path):
        """What atdp tells that the hosts tell too."""
        facts = self.info(path)
        frames = len(self.raw(path)) // (FLOAT_BYTES * facts["channels"])
        return facts, frames

    def test_c_host_tells_what_atdp_tells(self):
        for path in self.files:
            with self.subTest(path=path.name):
                facts, frames = self.facts_and_frames(path)
                expected = [
                    f"class: {facts['class']}", f"sampling rate: {facts['samplingRate']} Hz",
                    f"channels: {facts['channels']}", f"duration: {facts['durationNs']} ns",
                    f"bit rate: {facts['bitRate']} bytes per second",
                    f"priming frames: {facts['primingFrames']}",
                    f"remainder frames: {facts['remainderFrames']}",
                    *(f"{key}: {value}" for key, value in self.metadata(path))]
                self.assertEqual(run(C_HOST, path).decode().splitlines(),
                                 expected + [f"frames: {frames}"])
                self.assertEqual(run(C_HOST, path, 9999).decode().splitlines(),
                                 expected + [f"frames: {frames - 9999}"])

    @unittest.skipIf(os.environ["SANITIZED"], "the interpreter is not")
    def test_python_host_tells_what_atdp_tells(self):
        for path in self.files:
            with self.subTest(path=path.name):
                facts, frames = self.facts_and_frames(path)
                told = run(sys.executable, ROOT / "examples" / "python_host.py", path).decode()
                told = dict(line.split(": ", 1) for line in told.splitlines())
                self.assertEqual(
                    [told["class"], float(told["rate"]), int(told["duration"]),
                     int(told["remainder_frames"]), int(told["frames"])],
                    [facts["class"], facts["samplingRate"], facts["durationNs"],
                     facts["remainderFrames"], frames])
                for key, value in self.metadata(path):
                    self.assertEqual(told[key] if isinstance(value, str) else float(told[key]), value)

    def test_files_that_cannot_be_played(self):
        text = self.folder / "text.wav"
        text.write_text("no sound")
        for path in (text, self.folder / "missing.wav"):
            result = subprocess.run([C_HOST, path], capture_output=True)
            self.assertEqual((result.returncode, result.stdout), (1, b""))
            self.assertIn(b"no decoder for this file", result.stderr)
