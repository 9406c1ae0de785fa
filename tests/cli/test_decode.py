"""atdp decode, against an independent decoder and against itself."""

import struct
import subprocess
import wave

from commands import ATDP, InFolder, atdp, ffmpeg_samples, run

FLOAT_BYTES = 4


class Decode(InFolder):
    def test_equals_an_independent_decoder(self):
        formats = {"u8.wav": 8, "s16.wav": 16, "s24.wav": 24, "s32.wav": 32, "s8.aiff": 8,
                   "s16.aiff": 16, "s24.aiff": 24, "s32.aiff": 32, "s16.aifc": 16}
        arguments = {name: ("-b", bits) for name, bits in formats.items()}
        for bits in (32, 64):
            arguments[f"f{bits}.wav"] = ("-e", "floating-point", "-b", bits)
        for name in arguments:
            for channels in (1, 2, 6):
                with self.subTest(name=name, channels=channels):
                    path = self.sox(name, *arguments[name], channels=channels, seconds=0.3)
                    self.assertEqual(self.raw(path), ffmpeg_samples(path))
        for name, *codec in (("rf64.wav", "pcm_s24le", "-rf64", "always"),
                             ("sowt.aif", "pcm_s16le", "-f", "aiff"),
                             ("fl32.aif", "pcm_f32be", "-f", "aiff"),
                             ("fl64.aif", "pcm_f64be", "-f", "aiff")):
            with self.subTest(name=name):
                path = self.ffmpeg(self.folder / "s24.wav", name, "-c:a", *codec)
                self.assertEqual(self.raw(path), ffmpeg_samples(path))

    def test_streamed_files_play_to_their_end(self):
        source = self.sox("source.wav", seconds=0.2)
        for kind in ("wav", "aiff"):
            with self.subTest(kind=kind):
                path = self.folder / ("piped." + kind)
                # Through cat, or the writer would go back and mend the header.
                command = f"ffmpeg -v error -nostdin -i '{source}' -f {kind} - | cat > '{path}'"
                subprocess.run(["sh", "-c", command], check=True)
                self.assertEqual(self.raw(path), ffmpeg_samples(source))

    def test_from_and_for_are_frame_exact(self):
        # Ten minutes, where single-precision time has steps of hundreds of frames.
        path = self.sox("long.wav", "-b", "16", seconds=600, channels=1)
        whole = self.raw(path)
        for start, first in ((100.5, 4432050), (599.9, 26455590), (0.00002, 1), (601, 26460000)):
            with self.subTest(start=start):
                part = self.raw(path, "--from", start, "--for", 0.25)
                last = first + 11025
                self.assertEqual(part, whole[first * FLOAT_BYTES : last * FLOAT_BYTES])

    def test_request_sizes_change_nothing(self):
        path = self.sox("t.wav", seconds=0.5)
        whole = self.raw(path)
        for frames in (1, 7, 512, 100000):
            self.assertEqual(self.raw(path, "--request", frames), whole)

    def test_written_files_are_read_alike_by_others(self):
        path = self.sox("t.wav", "-b", "24", channels=2, seconds=0.3)
        samples = ffmpeg_samples(path)
        for encoding, codec in (("f32", "pcm_f32le"), ("s16", "pcm_s16le"), ("s24", "pcm_s24le")):
            with self.subTest(encoding=encoding):
                written = self.folder / (encoding + ".wav")
                result = atdp("decode", path, "-o", written, "--encoding", encoding)
                self.assertEqual((result.returncode, result.stdout), (0, b""))
                probed = run("ffprobe", "-v", "error", "-show_entries", "stream=codec_name",
                             "-of", "csv=p=0", written)
                self.assertEqual(probed.decode().strip(), codec)
                if encoding != "s16":
                    self.assertEqual(ffmpeg_samples(written), samples)
                raw = self.raw(path, "--encoding", encoding)
                self.assertEqual(written.read_bytes()[-len(raw) :], raw)
        loud = self.ffmpeg(path, "loud.wav", "-af", "volume=40dB", "-c:a", "pcm_f32le")
        clipped = struct.unpack("<%dh" % (len(samples) // 4), self.raw(loud, "--encoding", "s16"))
        self.assertEqual((min(clipped), max(clipped)), (-32768, 32767))

    def test_nothing_partial_stays_behind(self):
        path = self.sox("t.wav")
        self.assert_fails(atdp("decode", path, "-o", self.folder / "no" / "x.wav"), "x.wav")
        self.assertEqual(atdp("decode", path, cwd=self.folder).returncode, 2)  # onto itself
        command = (f"'{ATDP}' decode '{path}' --raw -o - | head -c 1000 >/dev/null; "
                   "echo ${PIPESTATUS[0]}")
        piped = subprocess.run(["bash", "-c", command], capture_output=True)
        self.assertEqual((piped.stdout, piped.stderr), (b"0\n", b""))
        self.assertEqual([p.name for p in self.folder.iterdir()], ["t.wav"])

    def test_frames_before_a_failure_reach_a_pipe(self):
        path = self.sox("t.wav", "-b", "16", seconds=30)
        with subprocess.Popen([ATDP, "decode", path, "--raw", "-o", "-"],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            delivered = process.stdout.read(1)
            with open(path, "r+b") as file:
                file.truncate(44 + 700_000 * 4)
            delivered += process.stdout.read()
            self.assertIn(b"cannot be read", process.stderr.read())
        self.assertEqual(process.returncode, 1)
        self.assertEqual(len(delivered), 700_000 * 2 * FLOAT_BYTES)

    def test_default_output_is_a_wav_beside_the_caller(self):
        path = self.sox("t.aiff")
        self.assertEqual(atdp("decode", path, cwd=self.folder).returncode, 0)
        self.assertEqual(ffmpeg_samples(self.folder / "t.wav"), ffmpeg_samples(path))
        self.assert_fails(atdp("decode", path, cwd=self.folder), "t.wav", "exists already")


class Wrong(InFolder):
    def test_usage(self):
        numbers = {"--rate": ("nan", "inf", "-1", "0", "abc", "1e999", "1e300"),
                   "--channels": ("nan", "-1", "0", "65", "1.5", "two"),
                   "--from": ("-1",), "--request": ("0",), "--encoding": ("mp3",)}
        wrong = [("decode", "a", name, value) for name in numbers for value in numbers[name]]
        wrong += [("play", "a", "--rate", "nan"), ("play", "a", "--channels", "65")]
        for arguments in ((), ("decode",), ("fly",), ("info",), *wrong):
            with self.subTest(arguments=arguments):
                result = atdp(*arguments)
                self.assertEqual((result.returncode, result.stdout), (2, b""))
                self.assertIn("".join(arguments[2:3]), result.stderr.decode() or "nothing said")
        self.assertEqual(atdp("--help").returncode, 0)

    def test_files_that_cannot_be_played(self):
        text = self.folder / "text.wav"
        text.write_text("no sound in here")
        empty = self.folder / "empty.wav"
        empty.touch()
        whole = self.sox("whole.wav").read_bytes()
        damaged = self.folder / "damaged.wav"
        for path, word in ((text, "no decoder"), (empty, "empty"), (self.folder, "directory"),
                           (self.folder / "missing.wav", "no such file")):
            self.assert_fails(atdp("decode", path, "-o", "-", "--raw"), str(path), word)
        for at, patch in ((22, b"\0\0"), (24, b"\0\0\0\0"), (32, b"\5\0"), (34, b"\0\0")):
            damaged.write_bytes(whole[:at] + patch + whole[at + len(patch) :])
            self.assert_fails(atdp("info", damaged), "no decoder")
        damaged.write_bytes(whole[:30])
        self.assert_fails(atdp("info", damaged), "no decoder")
