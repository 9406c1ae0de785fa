"""atdp on folders and many files at once."""

import json
import os
import random
import signal
import struct
import subprocess
import time

from commands import ATDP, InFolder, atdp
from tag_bytes import chunk


def wave(frames, seed):
    """A WAV file of stereo noise."""
    form = chunk(b"fmt ", struct.pack("<HHIIHH", 1, 2, 44100, 4 * 44100, 4, 16))
    data = chunk(b"data", random.Random(os.fsencode(seed)).randbytes(4 * frames))
    return chunk(b"RIFF", b"WAVE" + form + data)


class Library(InFolder):
    def setUp(self):
        super().setUp()
        self.music = self.folder / "music"
        self.results = self.folder / "results"

    def put(self, name, frames=10, size=None):
        """Another sound of that many frames, of which only `size` bytes are there."""
        path = self.music / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(wave(frames, name)[:size])
        return path

    def fill(self, files, frames, broken_each=None):
        """Files in ten folders."""
        for i in range(files):
            broken = broken_each is not None and i % broken_each == 0
            self.put(f"{i % 10}/{i:04}.wav", frames, 30 if broken else None)

    def decode(self, *arguments):
        return atdp("decode", "-o", f"{self.results}/", *arguments)

    def written(self):
        """What is in each file among the results, hidden ones too."""
        return {str(path.relative_to(self.results)): path.read_bytes()
                for path in self.results.rglob("*") if path.is_file()}

    def assert_summary(self, result, code, *counts):
        line = result.stderr.decode().splitlines()[-1]
        self.assertEqual((result.returncode, line.split(": ")[2]), (code, ", ".join(counts)))

    def test_2000_files_of_which_50_are_broken(self):
        self.fill(2000, frames=10, broken_each=40)
        result = atdp("info", "--json-lines", "-j", 2, self.music)
        self.assert_summary(result, 1, "1950 shown", "0 skipped", "50 failed")
        told = [json.loads(line) for line in result.stdout.decode("utf-8").splitlines()]
        self.assertEqual([facts["path"] for facts in told],
                         sorted(map(str, self.music.glob("*/*"))))
        self.assertEqual(sum("error" in facts for facts in told), 50)
        self.assertEqual(sum(facts.get("channels") == 2 for facts in told), 1950)
        self.assertEqual(len(result.stderr.splitlines()), 51)
        for form in ((), ("--json",), ("--json-lines",)):
            one, four = (atdp("info", *form, "-j", jobs, self.music) for jobs in (1, 4))
            self.assertEqual((one.stdout, one.stderr), (four.stdout, four.stderr))
        with subprocess.Popen([ATDP, "info", "--json-lines", self.music / "1"],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stdout.readline()
            process.stdout.close()
            self.assertEqual((process.stderr.read(), process.wait()), (b"", 0))

    def test_a_decode_that_was_stopped_goes_on(self):
        files = 40
        self.fill(files, frames=100_000)
        convert = ("--rate", "48000")  # takes its time
        complete = 0
        for number in (signal.SIGINT, signal.SIGTERM):
            command = [ATDP, "decode", "-o", f"{self.results}/", "-j", "4", *convert, self.music]
            with subprocess.Popen(command, stderr=subprocess.PIPE) as process:
                while len(list(self.results.glob("*/*.wav"))) < complete + 3:
                    time.sleep(0.001)
                process.send_signal(number)
                self.assertIn(b" left\n", process.stderr.read())
            self.assertEqual(process.returncode, 130)
            stopped = self.written()
            self.assertLess(complete, len(stopped))
            self.assertLess(len(stopped), files)
            complete = len(stopped)
        self.assert_summary(self.decode(*convert, self.music), 0, f"{files - complete} decoded",
                            f"{complete} skipped", "0 failed")
        whole = self.written()
        self.assertEqual(stopped, {name: whole[name] for name in stopped})
        self.assert_summary(self.decode(*convert, self.music), 0, "0 decoded", f"{files} skipped",
                            "0 failed")
        later = time.time() + 10
        os.utime(self.music / "3" / "0013.wav", (later, later))
        older = self.decode(*convert, self.music)
        self.assert_summary(older, 1, "0 decoded", f"{files - 1} skipped", "1 failed")
        self.assertIn(b"0013.wav: exists already", older.stderr)
        self.assert_summary(self.decode(*convert, "--force", "-j", 1, self.music), 0,
                            f"{files} decoded", "0 skipped", "0 failed")
        self.assertEqual(self.written(), whole)

    def test_a_full_disk_stops_everything(self):
        self.fill(8, frames=10)
        (self.results / "3").mkdir(parents=True)
        (self.results / "3" / "0003.wav").symlink_to("/dev/full")
        result = self.decode("-j", 1, self.music)
        self.assert_summary(result, 1, "3 decoded", "0 skipped", "0 failed", "5 left")
        self.assertIn(b"No space left", result.stderr.splitlines()[0])
        self.assertEqual(sorted(self.written()), ["0/0000.wav", "1/0001.wav", "2/0002.wav"])

    def test_no_name_is_lost(self):
        expected = {"plain.mp2": "plain.wav", "a.mp3": "a.mp3.wav", "A.wav": "A.wav.wav",
                    "b.mp3": "b.mp3.wav", "b.aiff": "b.aiff.wav", "b.mp3.wav": "b.mp3.wav.wav",
                    "c.wav": "c.wav", "c.mp2": "c.mp2.wav", "d/e.f/a.wav": "d/e.f/a.wav",
                    os.fsdecode(b"d/\xff\n.wav"): os.fsdecode(b"d/\xff\n.wav"),
                    "noise": "noise.wav"}
        for name in (*expected, ".hidden.wav", ".hidden/a.wav"):
            self.put(name)
        (self.music / "c.txt").write_text("The text of song c.")
        (self.music / "d" / "loop").symlink_to(self.music / "d")
        (self.music / "gone.wav").symlink_to("/nowhere")
        os.mkfifo(self.music / "d" / "pipe.wav")
        for jobs in (4, 1):
            result = self.decode("-j", jobs, "--force", self.music)
            self.assert_summary(result, 1, f"{len(expected)} decoded", "1 skipped (1 not sound)",
                                "1 failed")
            self.assertIn(b"gone.wav: no such file", result.stderr)
            self.assertEqual(self.written(), {written: self.decoded(self.music / name)
                                              for name, written in expected.items()})
        told = atdp("info", "--json-lines", self.music / "d").stdout.decode("utf-8").splitlines()
        self.assertEqual([json.loads(line)["path"] for line in told],
                         [f"{self.music}/d/e.f/a.wav", f"{self.music}/d/\\xFF\n.wav"])

    def decoded(self, path):
        written = self.folder / "one.wav"
        self.assertEqual(atdp("decode", path, "-o", written).returncode, 0)
        return written.read_bytes()

    def test_what_would_overwrite_is_refused(self):
        one, two = self.put("1/same.wav"), self.put("2/same.wav")
        result = self.decode(self.music / "1", self.music / "2", one)
        self.assertIn(f"{two}: its result would replace that of {one} ", result.stderr.decode())
        self.assertEqual(result.returncode, 1)
        self.assertEqual(self.written(), {"same.wav": self.decoded(one)})
        own = atdp("decode", "-o", one.parent, one)
        self.assertEqual((own.returncode, one.read_bytes()), (1, wave(10, "1/same.wav")))
        for arguments in (("-o", f"{self.music}/new/", self.music), ("-o", self.music, self.music),
                          (one, two), ("-o", "-", one, two)):
            self.assertEqual(atdp("decode", *arguments).returncode, 2, arguments)
        self.assert_fails(atdp("decode", self.music, cwd=self.folder), "directory", "-o DIR/")
