"""MPEG audio through atdp: gapless, trimmed, exact, found among other files."""

import os
import pathlib
import wave
import xml.dom.minidom

from commands import InFolder, atdp, ffmpeg_samples, floats, run
from tag_bytes import gapless_comment, id3_tag

DATA = pathlib.Path(__file__).parents[1] / "data"


class Mpeg(InFolder):
    def source(self, silence=0.0, seconds=3.0):
        """A WAV whose sound no shift of itself resembles, between two silences."""
        path = self.folder / "source.wav"
        run("sox", "-R", "-n", "-r", 44100, "-c", 2, "-b", 16, path, "synth", seconds, "pinknoise",
            "gain", "-6", "pad", silence, silence)
        return path

    def test_encoder_delay_and_padding_are_cut(self):
        source = self.source()
        with wave.open(str(source)) as file:
            frames = file.getnframes()
        for arguments, channels in ((("-b", 128), 2), (("-V", 2), 2), (("-m", "m", "-b", 64), 1)):
            with self.subTest(arguments=arguments):
                decoded = floats(self.raw(self.lame(source, *arguments)))
                self.assertEqual(len(decoded), frames * channels)
                original = floats(ffmpeg_samples(source))[::2]
                left = decoded[::channels]

                def difference(lag):
                    return sum((left[n + lag] - original[n]) ** 2 for n in range(40000, 44000))

                lags = range(-3, 4)
                self.assertEqual(min(lags, key=difference), 0)

    def test_counts_in_a_comment_cut_as_they_say(self):
        stream = self.lame(self.source(), "-t", "-b", 128).read_bytes()
        plain = self.folder / "plain.mp3"
        plain.write_bytes(stream)
        whole = self.raw(plain)
        packets = len(whole) // 8 // 1152
        self.assertEqual(len(whole), packets * 1152 * 8)
        priming, valid = 1105, 130000
        tagged = self.folder / "tagged.mp3"
        tagged.write_bytes(gapless_comment(priming, 500, valid) + stream)
        self.assertEqual(self.raw(tagged), whole[priming * 8 : valid * 8])
        facts = self.info(tagged)
        self.assertEqual((facts["primingFrames"], facts["remainderFrames"]), (priming, 500))
        self.assertAlmostEqual(facts["durationNs"], valid / 44100 * 1e9, delta=1000)
        for priming, remainder, valid in ((2**32 - 1, 1, 2**64 - 1), (0, 0, 0), (9**9, 7, 2**63),
                                          (1105, 2**31, 100)):
            tagged.write_bytes(gapless_comment(priming, remainder, valid) + stream)
            self.assertIn(atdp("decode", tagged, "--raw", "-o", "-").returncode, (0, 1))

    def test_from_is_exact_to_the_last_second(self):
        for path in (self.lame(self.source(), "-b", 128), DATA / "layer3-mpeg25-8k.mp3",
                     DATA / "layer3-32k-mono.mp3", DATA / "layer2.mp2"):
            facts = self.info(path)
            rate, frame_bytes = facts["samplingRate"], 4 * facts["channels"]
            whole = self.raw(path)
            seconds = len(whole) / frame_bytes / rate
            for start in (0.5, 1.25, seconds - 0.9, seconds - 0.02, seconds + 1):
                with self.subTest(path=path.name, start=start):
                    first = round(start * rate)
                    self.assertEqual(self.raw(path, "--from", start), whole[first * frame_bytes :])

    def test_silence_below_a_threshold_is_cut(self):
        for silence, cut in ((1.5, 44100), (0.5, 22050)):
            source = self.source(silence=silence)
            gapless = self.lame(source, "-b", 192, name="gapless.mp3")
            self.assertEqual(self.raw(gapless, "--threshold-db", -60), self.raw(gapless))
            path = self.lame(source, "-t", "-b", 192)
            whole, trimmed = self.raw(path), self.raw(path, "--threshold-db", -60)
            start = self.info(path, "--threshold-db", -60)["primingFrames"]
            self.assertEqual(whole[start * 8 : start * 8 + len(trimmed)], trimmed)
            end = (len(whole) - len(trimmed)) // 8 - start
            # The encoder smears the sound by less than 1500 frames, and adds as many at an end.
            self.assertTrue(cut - 1500 <= start <= 44100, (silence, start))
            self.assertTrue(cut - 3000 <= end <= 44100, (silence, end))
            if silence == 1.5:
                self.assertEqual((start, end), (44100, 44100))

    def test_edges_are_measured_and_drawn(self):
        path = self.lame(self.source(silence=0.5), "-t", "-b", 192, name="a<b&c.mp3")
        picture = self.folder / "edges.svg"
        result = atdp("edges", path, "--threshold-db", -60, "-o", picture)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        start = self.info(path, "--threshold-db", -60)["primingFrames"]
        lines = result.stdout.decode().splitlines()
        self.assertIn(f"cut by counts 0 frames (0.00 ms), by threshold {start} frames", lines[1])
        texts = [node.firstChild.data
                 for node in xml.dom.minidom.parse(str(picture)).getElementsByTagName("text")]
        self.assertIn("a<b&c.mp3", texts)
        self.assertIn("threshold: -60 dB", texts)
        counted = self.lame(self.source(), "-b", 128)
        self.assertIn(b"start: cut by counts 1105 frames", atdp("edges", counted).stdout)
        self.assertIn(b"nothing is cut", atdp("edges", self.source()).stdout)
        self.assertEqual(atdp("edges", counted, "-o", counted).returncode, 2)

    def test_probe_finds_mpeg_and_nothing_else(self):
        archive = self.folder / "archive.zip"
        run("python3", "-m", "zipfile", "-c", archive, DATA / "layer3-cbr128.mp3")
        for path in (pathlib.Path("/bin/ls"), archive):
            self.assertEqual(atdp("probe", path).stdout.decode(), f"{path}: none\n")
        variant = self.folder / "variant"
        for path in DATA.glob("layer*"):
            for before in (b"", os.urandom(1024), id3_tag((b"TIT2", b"\0Title"))):
                variant.write_bytes(before + path.read_bytes())
                self.assertEqual(atdp("probe", variant).stdout.decode(),
                                 f"{variant}: AudioToolboxMP3Decoder\n", path)
