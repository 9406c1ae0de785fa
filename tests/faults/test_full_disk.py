"""atdp decode onto a disk that is full, and onto one that fills up: a limit of file size is one."""

import resource
import subprocess
import unittest

from commands import ATDP, InFolder, atdp


class FullDisk(InFolder):
    def test_nothing_is_left_and_nothing_is_lost(self):
        path = self.sox("in.wav")
        output = self.folder / "out.wav"
        for options in ((), ("--raw",), ("--rate", 48000, "--channels", 3)):
            self.assertEqual(atdp("decode", path, "-o", output, *options).returncode, 0)
            whole = output.stat().st_size
            output.write_bytes(b"kept")
            for limit in (0, 20, 100_000, whole - 1):
                def fill():
                    resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

                for name in ("out.wav", "new.wav"):
                    with self.subTest(options=options, limit=limit, name=name):
                        written = self.folder / name
                        result = atdp("decode", path, "-o", written, *options, preexec_fn=fill)
                        self.assert_fails(result, name, "File too large")
                        self.assertEqual(output.read_bytes(), b"kept")
                        names = sorted(p.name for p in self.folder.iterdir())
                        self.assertEqual(names, ["in.wav", "out.wav"])

    def test_a_device_that_is_full_is_named(self):
        path = self.sox("in.wav")
        for options in ((), ("--raw",), ("--encoding", "s16"), ("--rate", 48000)):
            with self.subTest(options=options):
                result = atdp("decode", path, "-o", "/dev/full", *options)
                self.assert_fails(result, "/dev/full", "No space left")
        with open("/dev/full", "wb") as full:
            piped = subprocess.run([ATDP, "decode", path, "--raw", "-o", "-"], stdout=full,
                                   stderr=subprocess.PIPE)
        self.assertEqual(piped.returncode, 1)
        self.assertIn(b"No space left", piped.stderr)


if __name__ == "__main__":
    unittest.main()
