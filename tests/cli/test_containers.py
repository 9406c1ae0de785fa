"""CAF, AU and Wave64 through atdp: as FFmpeg and SoX write them."""

import struct

from commands import InFolder, atdp, ffmpeg_samples, run
from tag_bytes import id3_tag, info_list

SOX_FILES = {"caf": "-b 24", "au": "-b 16", "w64": "-b 32"}  # container: options of SoX
FFMPEG_FILES = {  # container: kinds of samples
    "caf": ("s8", "s24le", "s32be", "f32be", "f64le"),
    "au": ("s8", "s24be", "s32be", "f64be"),
    "w64": ("u8", "s24le", "f32le"),
}
LINEAR, LOSSLESS, MPEG = (f"AudioToolbox{name}Decoder" for name in ("Wav", "MP4", "MP3"))


def wave64_chunk(code, body, rest="f3acd3118cd100c04f8edb8a"):
    size = 24 + len(body)
    return code + bytes.fromhex(rest) + struct.pack("<Q", size) + body + bytes(-size % 8)


def summary_list(**texts):
    """As Sony's programs put texts into Wave64."""
    body = struct.pack("<I", len(texts))
    for code, text in texts.items():
        value = (text + "\0").encode("utf-16-le")
        body += code.encode() + struct.pack("<I", len(value)) + value
    return wave64_chunk(bytes.fromhex("bc945f92"), body, "5a52d21186dc00c04f8edb8a")


class Containers(InFolder):
    def assert_plays(self, path, expected, rate, channels, decoder=LINEAR):
        self.assertEqual(self.raw(path), expected)
        frame = round(0.123 * rate)
        self.assertEqual(self.raw(path, "--from", "0.123"), expected[frame * channels * 4 :])
        renamed = path.rename(path.with_suffix(".mp3"))  # the name must not matter
        self.assertEqual(atdp("probe", renamed).stdout.decode(), f"{renamed}: {decoder}\n")

    def test_linear_pcm_equals_what_was_put_in(self):
        source = self.sox("source.wav", "-b", 32, seconds=0.2, channels=6, rate=192000)
        files = []
        for kind, options in SOX_FILES.items():
            files.append(self.folder / f"sox-{kind}.{kind}")
            run("sox", "-D", source, *options.split(), files[-1])
        for kind, codes in FFMPEG_FILES.items():
            files += [self.ffmpeg(source, f"{kind}-{code}.{kind}", "-c:a", f"pcm_{code}")
                      for code in codes]
        for path in files:
            with self.subTest(name=path.name):
                self.assert_plays(path, ffmpeg_samples(path), 192000, 6)
        # FFmpeg does not know the mark of little-endian AU.
        big = self.raw(self.folder / "sox-au.mp3")
        run("sox", "-D", source, "-b", 16, "-L", self.folder / "little.au")
        self.assertEqual(self.raw(self.folder / "little.au"), big)

    def test_lossless_in_caf_equals_what_was_put_in(self):
        for bits, channels, length in ((16, 2, "1"), (24, 6, "0.4"), (16, 1, "8193s")):
            with self.subTest(bits=bits, channels=channels):
                source = self.sox("source.wav", "-b", bits, seconds=length, channels=channels)
                path = self.ffmpeg(source, "lossless.caf", "-c:a", "alac")
                self.assert_plays(path, ffmpeg_samples(source), 44100, channels, LOSSLESS)

    def test_streams_of_unknown_length(self):
        source = self.sox("source.wav")
        for kind in ("caf", "au", "w64"):
            with self.subTest(kind=kind):
                path = self.folder / f"streamed.{kind}"
                path.write_bytes(run("ffmpeg", "-v", "error", "-nostdin", "-i", source, "-c:a",
                                     "pcm_s16be" if kind == "au" else "pcm_s16le", "-f", kind, "-"))
                self.assertEqual(self.raw(path), ffmpeg_samples(source))

    def test_mpeg_audio_and_codecs_that_are_not_decoded(self):
        source = self.sox("source.wav")
        plain = self.raw(self.ffmpeg(source, "plain.mp3", "-write_xing", "0", "-id3v2_version", "0"))
        for kind in ("caf", "w64"):
            path = self.ffmpeg(source, f"mpeg.{kind}", "-c:a", "libmp3lame")
            self.assertEqual(self.raw(path), plain)
            self.assertIn(MPEG, atdp("probe", path).stdout.decode())
        for name, codec in (("law.caf", "pcm_mulaw"), ("law.au", "pcm_alaw"), ("law.w64", "pcm_mulaw")):
            path = self.ffmpeg(source, name, "-c:a", codec)
            self.assertEqual(atdp("probe", path).stdout.decode(), f"{path}: none\n")

    def test_tags(self):
        source = self.sox("source.wav", seconds=0.2)
        texts = {"title": "Été", "artist": "А", "album": "Æ", "track": "3"}
        options = [part for item in texts.items() for part in ("-metadata", "%s=%s" % item)]
        expected = {("Title", "Été"), ("Artist", "А"), ("Album", "Æ"), ("Track", 3)}
        for name, codec in (("linear.caf", "pcm_s16le"), ("lossless.caf", "alac"),
                            ("sound.au", "pcm_s16be")):
            with self.subTest(name=name):
                path = self.ffmpeg(source, name, "-c:a", codec, *options)
                self.assertLessEqual(expected, set(self.metadata(path)))
        # A lossless file without atoms has no more to tell on an older release.
        path = self.folder / "lossless.caf"
        self.assertEqual(self.metadata(path, "--release", 1137), self.metadata(path))

    def test_tags_of_wave64(self):
        path = self.ffmpeg(self.sox("source.wav", seconds=0.2), "plain.w64")
        plain = path.read_bytes()
        tag = id3_tag((b"TIT2", b"\0Of ID3"), (b"TALB", b"\0Album"))
        lists = info_list(INAM=b"Of INFO", IART="日本語".encode("shift_jis"))[8:]
        chunks = {  # what is put behind the sound: what is told
            wave64_chunk(b"id3 ", tag): {("Title", "Of ID3"), ("Album", "Album")},
            wave64_chunk(b"list", lists, "2f91cf11a5d628db04c10000"):
                {("Title", "Of INFO"), ("Artist", "日本語")},
            summary_list(INAM="Été", IART="А"): {("Title", "Été"), ("Artist", "А")},
        }
        for chunk, expected in chunks.items():
            path.write_bytes(plain + bytes(-len(plain) % 8) + chunk)
            self.assertLessEqual(expected, set(self.metadata(path)))
            self.assertEqual(self.raw(path), ffmpeg_samples(path))
