"""The plug-in for Audacious, in the real player."""

import os
import pathlib
import shutil
import unittest

from audacious_player import PLUGIN, PlayerTest, SlowDevice
from commands import floats, run
from tag_bytes import gapless_comment

DATA = pathlib.Path(__file__).parents[1] / "data"
OURS = "AudioToolbox Decoder"


class Playing(PlayerTest):
    def test_every_frame_of_four_kinds_in_a_row(self):
        source = self.sox("a b%ä.wav")
        songs = [source, self.lame(source, "-b", 128), self.ffmpeg(source, "x.aiff"),
                 self.ffmpeg(source, "x.m4a", "-c:a", "alac"), source]
        sound, log = self.play(*songs, DATA / "aac.m4a")
        expected = b"".join(map(self.raw, songs))
        self.assertTrue(sound.startswith(expected))
        self.assertGreater(len(sound), len(expected))  # what the AAC file gave
        self.assertIn(f"Matched {OURS} by content", log)
        self.assertIn("Matched FFmpeg Plugin by content", log)
        self.assertNotIn("Matched MPG123", log)
        self.assertNotIn("Matched Sndfile", log)

    def test_sound_starts_at_the_very_frame_asked_for(self):
        # A cue sheet makes one file many songs, each of which the player starts by seeking.
        source = self.sox("in.wav", seconds=8)
        for path in (self.lame(source, "-b", 128), self.ffmpeg(source, "x.m4a", "-c:a", "alac")):
            sheet = self.folder / "songs.cue"
            starts = ("00:00:00", "00:01:15", "00:02:30", "00:06:60", "00:07:45")
            sheet.write_text(f'FILE "{path.name}" WAVE\n' + "".join(
                f"TRACK {n:02} AUDIO\nINDEX 01 {start}\n" for n, start in enumerate(starts, 1)))
            sound, log = self.play(sheet)
            self.assertTrue(sound == self.raw(path), path)
            self.assertIn(f"Matched {OURS} by content", log)

    def test_silence_is_cut_where_the_settings_say_so(self):
        source = self.folder / "in.wav"
        run("sox", "-R", "-n", "-r", 44100, "-c", 2, source, "synth", 3, "pinknoise", "pad", 1, 1)
        unknown = self.lame(source, "-t", name="unknown.mp3")
        known = self.lame(source, name="known.mp3")
        self.assertTrue(self.play(unknown)[0] == self.raw(unknown))
        self.settings("enable_replay_gain=FALSE\n"
                      "[audiotoolbox]\ncut_silence=TRUE\nsilence_threshold_db=-50\n")
        sound, _ = self.play(unknown, known)
        cut = self.raw(unknown, "--threshold-db", -50)
        self.assertLess(len(cut), len(self.raw(unknown)))
        self.assertTrue(sound == cut + self.raw(known))

    def test_facts_about_songs(self):
        source = self.sox("in.wav", seconds=3)
        tagged = self.lame(source, "--tt", "A title", "--ta", "An artist", "--tl", "An album",
                           "--tn", "3/9", "--tg", "Jazz", "--ty", "1999", name="tagged.mp3")
        counted = self.folder / "counted.mp3"
        stream = self.lame(source, "-t", name="plain.mp3").read_bytes()
        counted.write_bytes(gapless_comment(4410, 500, 92610) + stream)
        self.start_controlled(tagged, source, DATA / "lossless.m4a", counted)
        expected = {
            1: {"title": "A title", "artist": "An artist", "album": "An album", "genre": "Jazz",
                "track-number": "3", "year": "1999", "length": "3000", "codec": "MPEG audio"},
            2: {"length": "3000", "codec": "PCM, 16 bits", "quality": "Stereo, 44 kHz",
                "bitrate": "1411", "channels": "2"},
            3: {"title": "Tone", "track-number": "3", "length": "500", "codec": "Apple Lossless"},
            4: {"length": "2000"},
        }
        for song, facts in expected.items():
            self.until(lambda: self.tool("playlist-tuple-data", "codec", song), "tags are read")
            self.assertEqual(
                {name: self.tool("playlist-tuple-data", name, song) for name in facts}, facts)
        self.tool("shutdown")
        self.wait()

    def test_replay_gain_of_tags_is_heeded(self):
        plain = self.lame(self.sox("in.wav"))
        song = self.ffmpeg(plain, "gain.mp3", "-c", "copy", "-metadata",
                           "REPLAYGAIN_TRACK_GAIN=-6.0206 dB")  # half
        self.settings("enable_replay_gain=TRUE\nreplay_gain_preamp=0\n")
        sound, whole = floats(self.play(song)[0]), floats(self.raw(song))
        self.assertEqual(len(sound), len(whole))
        self.assertTrue(all(abs(half - full / 2) < 1e-6 for half, full in zip(sound, whole)))

    def test_without_its_module_others_play_and_later_it_again(self):
        song = self.lame(self.sox("in.wav"))
        self.assertIn(f"Matched {OURS}", self.play(song)[1])
        link = self.input / PLUGIN.name
        link.unlink()
        shutil.copy(PLUGIN, link)  # the module is beside neither this one nor installed
        sound, log = self.play(song)
        self.assertIn("AudioToolboxDecoderPlugin.so: found neither in", log)
        self.assertTrue(sound)
        (self.input / "AudioToolboxDecoderPlugin.so").write_text("no module")
        self.assertIn("AudioToolboxDecoderPlugin.so: ", self.play(song)[1])
        (self.input / "AudioToolboxDecoderPlugin.so").unlink()
        link.unlink()
        link.symlink_to(PLUGIN)
        self.assertIn(f"Matched {OURS}", self.play(song)[1])


class BadInput(PlayerTest):
    def test_broken_files_are_passed_over(self):
        good = self.sox("good.wav")
        whole = {path.suffix: path.read_bytes()
                 for path in (good, self.lame(good), self.ffmpeg(good, "x.aiff"),
                              self.ffmpeg(good, "x.m4a", "-c:a", "alac"))}
        broken = []
        for suffix, content in whole.items():
            for name, damaged in (("empty", b""), ("cut", content[: len(content) // 2]),
                                  ("header", content[:50]), ("noise", os.urandom(5000)),
                                  ("mixed", content[:3000] + os.urandom(9000) + content[9000:])):
                broken.append(self.folder / f"{name}{suffix}")
                broken[-1].write_bytes(damaged)
        folder = self.folder / "folder.wav"
        folder.mkdir()
        missing = self.folder / "missing.mp3"
        expected = self.raw(good)
        # The player gives up after ten songs in a row that cannot be played.
        groups = [broken[at : at + 5] for at in range(0, len(broken), 5)] + [[folder, missing]]
        for group in groups:
            with self.subTest(group=[path.name for path in group]):
                self.assertTrue(self.play(*group, good)[0].endswith(expected))

    def test_files_that_change_while_they_play(self):
        source = self.sox("long.wav", seconds=20)
        good = self.sox("good.wav")
        for change in ("replace", "shorten", "remove"):
            with self.subTest(change=change):
                self.captured.unlink(missing_ok=True)
                song = self.folder / "song.wav"
                shutil.copy(source, song)
                device = SlowDevice(self.captured)
                self.addCleanup(device.close)
                self.start(song, good)
                self.until(lambda: len(device.sound) > 1_000_000, "the song plays")
                if change == "replace":
                    song.write_bytes(os.urandom(100_000))
                elif change == "shorten":
                    os.truncate(song, 60_000)
                else:
                    song.unlink()
                self.wait()
                device.finish()
                self.assertTrue(device.sound.endswith(self.raw(good)))

    def test_two_hundred_songs_skipped_in_a_hurry(self):
        source = self.sox("in.wav", seconds=20)
        bad = self.folder / "bad.mp3"
        bad.write_bytes(b"nothing to hear")
        kinds = [source, self.lame(source), self.ffmpeg(source, "x.aiff"),
                 self.ffmpeg(source, "x.m4a", "-c:a", "alac"), bad]
        songs = kinds * 40
        device = SlowDevice(self.captured)
        self.addCleanup(device.close)
        self.start_controlled(*songs)
        self.until(lambda: self.tool("playlist-length") == str(len(songs)), "all songs are there")
        self.until(lambda: device.sound, "the first plays")
        for song in range(1, len(songs) + 1):
            self.tool("playlist-jump", song)
            if song % 10 == 0:
                self.tool("playback-seek", song % 19)
        self.tool("playlist-jump", 7)  # the last could not be played, so the player stopped
        self.tool("playback-play")
        self.until(lambda: self.tool("current-song-output-length-seconds") not in ("", "0"),
                   "it plays")
        self.tool("shutdown")  # in the middle of a song
        self.wait()


if __name__ == "__main__":
    unittest.main()
