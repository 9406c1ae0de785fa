"""Other rates and channel counts than a file has: asked for, or for the sound device's sake."""

import math

from commands import InFolder, atdp, floats, run
from sound_device import SoundDevice


def rounded(number):
    return math.floor(number + 0.5)


class Decode(InFolder):
    def test_refusals_name_what_was_asked(self):
        path = self.sox("t.wav", seconds=0.1)
        for rate in ("5", "999.5", "768001"):
            result = atdp("decode", path, "-o", self.folder / "out.wav", "--rate", rate)
            self.assert_fails(result, "t.wav", f"cannot be delivered at {rate} Hz")
        self.assertEqual([p.name for p in self.folder.iterdir()], ["t.wav"])

    def test_header_has_the_new_format_and_length(self):
        source = self.sox("source.wav", seconds=1.3)
        lossless = self.ffmpeg(source, "lossless.m4a", "-c:a", "alac")
        for path in (source, lossless, self.lame(source, "-b", 192)):
            frames = len(self.raw(path)) // 8
            for rate, channels in ((48000, 2), (8000, 1), (22254.5, 2), (192000, 4), (44100, 1)):
                with self.subTest(path=path.name, rate=rate, channels=channels):
                    options = ("--rate", rate, "--channels", channels)
                    written = self.folder / "written.wav"
                    result = atdp("decode", path, "-o", written, *options)
                    self.assertEqual((result.returncode, result.stderr), (0, b""))
                    probed = run("ffprobe", "-v", "error", "-of", "csv=p=0", "-show_entries",
                                 "stream=sample_rate,channels,duration_ts", written)
                    expected = [rounded(rate), channels, rounded(frames * rate / 44100)]
                    self.assertEqual([int(text) for text in probed.split(b",")], expected)

    def test_from_and_for_count_at_the_new_rate(self):
        source = self.sox("noise.wav", seconds=9)
        padded = self.folder / "padded.wav"
        run("sox", source, padded, "trim", 0, 7.123, "pad", 1.5, 0.5)
        counted = self.lame(padded, "-b", 192, name="counted.mp3")
        # Cut by a whole second at the start, and by less at the end.
        trimmed = self.lame(padded, "-b", 192, "-t", name="trimmed.mp3")
        for path, rate, options, starts in (
                (source, 48000, (), (0.00003, 6.2, 8.99, 10)),
                (counted, 48000, (), (0.9, 5.5, 7.05, 8.2, 9.1)),
                (counted, 11025, ("--channels", 1), (0.9, 6.1, 7.05, 8.2, 9.1)),
                (trimmed, 44100, ("--threshold-db", -60), (0.9, 5.05, 6.1, 7.05, 7.9)),
                (trimmed, 48000, ("--threshold-db", -60), (0.9, 5.05, 6.1, 7.05, 7.9)),
                (trimmed, 22050, ("--threshold-db", -60), (0.9, 5.05, 6.1, 7.05, 7.9))):
            if rate != 44100:
                options += ("--rate", rate)
            with self.subTest(path=path.name, options=options):
                channels = 1 if "--channels" in options else 2
                whole = floats(self.raw(path, *options))
                length = rounded(0.4 * rate)
                for start in starts:
                    first = rounded(start * rate)
                    part = floats(self.raw(path, *options, "--from", start, "--for", 0.4))
                    tail = whole[first * channels : (first + length) * channels]
                    self.assertEqual(len(part), len(tail), start)
                    error = max(map(abs, map(float.__sub__, part, tail)), default=0)
                    self.assertLess(error, 1e-5, start)


class Play(SoundDevice):
    def test_the_device_gets_what_it_takes(self):
        stereo = self.sox("stereo.wav", seconds=0.2)
        mono = self.sox("mono.aiff", seconds=0.2, channels=1)
        fitting = self.sox("fitting.wav", seconds=0.2, rate=48000)
        for device, files, options in (
                (self.ONE_RATE, (stereo, fitting, mono, self.odd_rate()), ("--rate", 48000)),
                (self.TWO_CHANNELS.replace("INNER", "FILE"), (mono,), ("--channels", 2)),
                (self.TWO_CHANNELS.replace("INNER", self.ONE_RATE), (mono,),
                 ("--rate", 48000, "--channels", 2)),
                ("FILE", (stereo, self.odd_rate()), ()),
                ("FILE", (stereo, mono), ("--rate", 32000, "--channels", 3))):
            with self.subTest(device=device, files=files, options=options):
                asked = options if device == "FILE" else ()
                result, captured = self.play(device, *files, *asked)
                self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"", b""))
                self.assertEqual(captured, b"".join(self.raw(path, *options) for path in files))

    def test_goes_on_after_a_bad_file(self):
        good = self.sox("1.wav", seconds=0.1)
        result, captured = self.play("FILE", self.folder / "missing.wav", good)
        self.assertEqual((result.returncode, len(result.stderr.splitlines())), (1, 1))
        self.assertEqual(captured, self.raw(good))

    def test_what_nobody_can_deliver_is_refused(self):
        path = self.sox("t.wav", seconds=0.1)
        for device in ("{ type linear; slave { format S16_LE; pcm FILE } }",  # takes no floats
                       self.ONE_RATE.replace("48000", "500")):  # no rate of the device
            result, captured = self.play(device, path, path)
            self.assertEqual((result.returncode, captured), (1, b""))
            line = f"atdp: {path}: the sound device refuses 44100 Hz, 2 channels"
            self.assertEqual(result.stderr.decode().splitlines(), [line, line])
        result, captured = self.play("FILE", path, "--rate", 5)
        self.assert_fails(result, "t.wav: cannot be delivered at 5 Hz")
