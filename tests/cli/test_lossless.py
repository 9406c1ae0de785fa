"""Apple Lossless through atdp: bit for bit, sought exactly, with its tags at both releases."""

from commands import InFolder, atdp, ffmpeg_samples, run


# The layouts that the encoder knows, by their number of channels.
LAYOUTS = (None, "mono", "stereo", "3.0", "4.0", "5.0", "5.1", "6.1(back)", "7.1(wide)")


class Lossless(InFolder):
    def encode(self, source, *options):
        return self.ffmpeg(source, "encoded.m4a", "-c:a", "alac", *options)

    def test_equals_the_original_bit_for_bit(self):
        sounds = {  # name: sox's synthesis, bits, rate, channels, length
            "stereo": ("pinknoise", 16, 44100, 2, "1"),
            "deep": ("pinknoise", 24, 96000, 2, "0.5"),
            "fast": ("sine 997", 24, 192000, 1, "0.3"),
            "silence": ("sine 0", 16, 44100, 2, "0.5"),
            "noise": ("whitenoise", 16, 48000, 2, "0.5"),  # as large packed as it is
            "one frame last": ("pinknoise", 16, 44100, 2, "8193s"),
        }
        for channels in range(1, 9):
            sounds[f"{channels} channels"] = ("pinknoise", 16, 44100, channels, "0.3")
        for name, (sound, bits, rate, channels, length) in sounds.items():
            with self.subTest(name=name):
                source = self.folder / "source.wav"
                run("sox", "-R", "-n", "-r", rate, "-c", channels, "-b", bits, source, "synth",
                    length, *sound.split())
                places = "|".join(map(str, range(channels)))
                path = self.encode(source, "-af", f"channelmap={places}:{LAYOUTS[channels]}")
                decoded = self.raw(path)
                self.assertEqual(decoded, ffmpeg_samples(source))
                self.assertEqual(self.raw(path, "--from", "0.123"),
                                 decoded[round(0.123 * rate) * channels * 4 :])

    def test_tags_at_both_releases(self):
        texts = ("title=Été", "artist=А", "album=Æ", "track=3/12")
        path = self.encode(self.sox("source.wav", seconds=0.2),
                           *[part for text in texts for part in ("-metadata", text)])
        now = [("SrcSampleRate", 44100), ("Channels", 2), ("SrcBits", 0), ("Artist", "А"),
               ("Title", "Été"), ("Album", "Æ"), ("Track", 3)]
        self.assertEqual(self.metadata(path), now)
        self.assertEqual(self.metadata(path, "--release", 1138), now)
        # Before, the atoms give a second album, its text read in another encoding, and a second track.
        self.assertEqual(self.metadata(path, "--release", 1137),
                         now + [("Album", "Æ".encode().decode("latin-1")), ("Track", 3)])
