"""Runs the programs under test, and those that make files for them."""

import array
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ATDP = os.environ["ATDP"]
MINIMAL_HOST = os.environ["MINIMAL_HOST"]
MODULE = os.environ["MODULE"]


def atdp(*arguments, **options):
    """Runs atdp; the result has returncode, stdout and stderr, the latter two as bytes."""
    return subprocess.run([ATDP, *map(str, arguments)], capture_output=True, timeout=120, **options)


def run(*command):
    """Runs another program that must succeed, and answers its standard output."""
    return subprocess.run(
        list(map(str, command)), check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL
    ).stdout


def ffmpeg_samples(path):
    """The file as the independent decoder hears it: interleaved little-endian floats."""
    return run("ffmpeg", "-v", "error", "-nostdin", "-i", path, "-f", "f32le", "-")


def floats(raw):
    """Interleaved little-endian floats."""
    samples = array.array("f")
    samples.frombytes(raw)
    return samples


class InFolder(unittest.TestCase):
    """A test with a folder of its own."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="atdp-cli-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def sox(self, name, *arguments, seconds=1, channels=2, rate=44100):
        """Makes a file of noise, or of what the arguments say."""
        path = self.folder / name
        sound = arguments or ("-b", "16")
        # -R: the same noise each time
        run("sox", "-R", "-n", "-r", rate, "-c", channels, *sound, path,
            "synth", seconds, "pinknoise")
        return path

    def ffmpeg(self, source, name, *options):
        """Another file of that sound."""
        path = self.folder / name
        run("ffmpeg", "-v", "error", "-nostdin", "-y", "-i", source, *options, path)
        return path

    def lame(self, source, *options, name="encoded.mp3"):
        path = self.folder / name
        run("lame", "--quiet", *options, source, path)
        return path

    def raw(self, path, *arguments):
        """The file's samples, of which nothing is to be told."""
        result = atdp("decode", path, "--raw", "-o", "-", *arguments)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return result.stdout

    def info(self, path, *arguments):
        return json.loads(atdp("info", "--json", path, *arguments).stdout)[0]

    def metadata(self, path, *arguments):
        """The file's tags as (key, value) in their order."""
        entries = self.info(path, *arguments)["metadata"]
        return [(key, value) for entry in entries for key, value in entry.items()]

    def assert_fails(self, result, *words):
        """One line on standard error that says why, nothing on standard output, exit code 1."""
        self.assertEqual(result.returncode, 1, result)
        self.assertEqual(result.stdout, b"")
        lines = result.stderr.decode().splitlines()
        self.assertEqual(len(lines), 1, lines)
        for word in ("atdp: ",) + words:
            self.assertIn(word, lines[0])
