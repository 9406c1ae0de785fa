"""The other commands of atdp, playing, and the example host."""

import json
import pathlib
import subprocess

from commands import MINIMAL_HOST, MODULE, InFolder, atdp


class Describe(InFolder):
    def test_text_and_json(self):
        lines = atdp("describe").stdout.decode().splitlines()
        self.assertEqual(lines, [
            "name: AudioToolboxDecoderPlugin", "i/f version: 1.0.0", "priority: 100",
            "plugin type: 1", "codec type: 1", "exts: wav, aiff, aif, mp3, m4a"])
        described = json.loads(atdp("describe", "--json").stdout)
        self.assertEqual(list(described), [line.split(":")[0] for line in lines])
        self.assertEqual(described["priority"], 100)
        self.assertEqual(described["exts"], ["wav", "aiff", "aif", "mp3", "m4a"])

    def test_module_is_found_or_named(self):
        self.assertEqual(atdp("--plugin", MODULE, "describe").returncode, 0)
        self.assert_fails(atdp("--plugin", "/nowhere.so", "describe"), "/nowhere.so")
        self.assert_fails(atdp("--plugin", "/bin/ls", "describe"), "/bin/ls")


class Probe(InFolder):
    def test_goes_by_content(self):
        wave = self.sox("t.wav", seconds=0.1)
        lying = self.folder / "t.mp3"
        lying.write_bytes(wave.read_bytes())
        program = self.folder / "x.wav"
        program.write_bytes(pathlib.Path("/bin/ls").read_bytes())
        result = atdp("probe", lying, program)
        self.assertEqual(result.stdout.decode(),
                         f"{lying}: AudioToolboxWavDecoder\n{program}: none\n")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(atdp("probe", lying).returncode, 0)


class Info(InFolder):
    def test_json_has_every_property(self):
        path = self.sox("t.wav", seconds=10)
        facts = self.info(path)
        self.assertEqual(facts, {
            "path": str(path), "class": "AudioToolboxWavDecoder", "samplingRate": 44100,
            "channels": 2, "bits": 32, "format": "lpcm", "durationNs": 10_000_000_000,
            "bitRate": 176400, "preferredBufferSize": 882, "primingFrames": 0,
            "remainderFrames": 0,
            "metadata": [{"SrcSampleRate": 44100}, {"Channels": 2}, {"SrcBits": 16}]})

    def test_goes_on_after_a_bad_file_and_escapes_names(self):
        odd = self.folder / b"bell\x07 and \xff.wav".decode("utf-8", "surrogateescape")
        odd.write_bytes(self.sox("t.wav", seconds=0.1).read_bytes())
        result = atdp("info", "--json", self.folder / "missing.wav", odd)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(len(result.stderr.splitlines()), 1)
        (facts,) = json.loads(result.stdout.decode("utf-8"))
        self.assertTrue(facts["path"].endswith("and \\xFF.wav"), facts["path"])
        text = atdp("info", odd).stdout.decode("utf-8")
        self.assertNotIn("\x07", text)
        self.assertIn("bytes", atdp("info", "--help").stdout.decode())

    def test_release_is_a_number(self):
        path = self.sox("t.wav", seconds=0.1)
        told = atdp("info", "--release", 1137, path)
        self.assertEqual((told.returncode, told.stdout), (0, atdp("info", path).stdout))
        wrong = atdp("info", "--release", "lion", path)
        self.assertEqual((wrong.returncode, wrong.stdout), (2, b""))
        self.assertIn(b"'lion' is not a number", wrong.stderr)


class Example(InFolder):
    def test_minimal_host_plays_a_file(self):
        path = self.sox("t.wav", seconds=0.5)
        result = subprocess.run([MINIMAL_HOST, MODULE, path], capture_output=True, check=True)
        self.assertIn(b"22050", result.stdout)
        self.assertNotEqual(subprocess.run([MINIMAL_HOST, MODULE, "/nowhere"],
                                           capture_output=True).returncode, 0)
        source = (pathlib.Path(__file__).parents[2] / "examples" / "minimal_host.cpp").read_text()
        self.assertLessEqual(len(source.splitlines()), 60)
