"""Tags of WAV, AIFF and MPEG files, written by other programs and in other times."""

import struct

from commands import InFolder, atdp
from tag_bytes import chunk, id3_tag, info_list


class Tags(InFolder):
    def tagged(self, *chunks, name="tagged.wav"):
        """A WAV with the chunks behind its sound."""
        content = self.sox("plain.wav", seconds=0.1).read_bytes()
        path = self.folder / name
        body = content[8:] + b"".join(chunks)
        path.write_bytes(b"RIFF" + struct.pack("<I", len(body)) + body)
        return path

    def test_files_tagged_by_ffmpeg(self):
        source = self.sox("t.wav", seconds=0.1)
        texts = ("-metadata", "title=Été", "-metadata", "artist=А", "-metadata", "album=B",
                 "-metadata", "track=3/12")
        expected = {"Title": "Été", "Artist": "А", "Album": "B", "Track": 3}
        for name, options in (("i.wav", ()), ("rf.wav", ("-rf64", "always")),
                              ("id3.aiff", ("-write_id3v2", "1")), ("id3.mp3", ())):
            with self.subTest(name=name):
                path = self.ffmpeg(source, name, *texts, *options)
                found = dict(self.metadata(path))
                self.assertEqual({key: found.get(key) for key in expected}, expected)

    def test_info_text_in_the_right_letters(self):
        # Each text is one that no encoding tried before its own accepts.
        for text, encoding in (("Été à Paris", "utf-8"), ("日本語のうた", "cp932"),
                               ("日本語の歌", "euc-jp"), ("さくら", "iso2022-jp"),
                               ("Élégie für Ö", "mac-roman")):
            with self.subTest(encoding=encoding):
                found = dict(self.metadata(self.tagged(info_list(INAM=text.encode(encoding),
                                                                 IART=b"ASCII"))))
                self.assertEqual((found["Title"], found["Artist"]), (text, "ASCII"))

    def test_id3_wins_over_info_and_both_over_nothing(self):
        def id3(name, text):
            return chunk(b"id3 ", id3_tag((name, b"\0" + text)))

        info = info_list(INAM=b"info title", IART=b"info artist", IPRD=b"info album", ITRK=b"7/9")
        both = dict(self.metadata(self.tagged(info, id3(b"TIT2", b"id3 title"))))
        self.assertEqual((both["Title"], both["Artist"], both["Album"], both["Track"]),
                         ("id3 title", "info artist", "info album", 7))
        only = self.metadata(self.tagged(id3(b"TPE1", b"first"), id3(b"TPE1", b"second")))
        self.assertEqual(only[0], ("Artist", "first"))

    def test_text_chunks_of_aiff(self):
        content = self.sox("t.aiff", seconds=0.1).read_bytes()
        body = content[8:] + chunk(b"NAME", "Été".encode(), ">") + chunk(b"AUTH", b"Author", ">")
        path = self.folder / "named.aiff"
        path.write_bytes(b"FORM" + struct.pack(">I", len(body)) + body)
        self.assertEqual(self.metadata(path)[:2], [("Artist", "Author"), ("Title", "Été")])

    def test_damaged_chunks_add_nothing(self):
        good = info_list(IART=b"artist")
        for bad in (b"LIST\xFF\xFF\xFF\xFFINFOINAM\xFF\xFF\xFF\xFFx", chunk(b"LIST", b"INFO"),
                    chunk(b"LIST", b"INFOINAM\xFF\xFF\xFF\xFFx"), chunk(b"id3 ", b"ID3\4\0\0\x7F"),
                    chunk(b"LIST", b"adtlINAM\2\0\0\0xx"), chunk(b"LIST", b"")):
            found = self.metadata(self.tagged(good, bad))
            self.assertEqual(found[0], ("Artist", "artist"))
            self.assertEqual(len(found), 4)
        many = self.metadata(self.tagged(good, *[chunk(b"LIST", b"INFO")] * 20000))
        self.assertEqual(many[0], ("Artist", "artist"))

    def test_output_is_utf8_without_control_characters(self):
        path = self.tagged(info_list(INAM="a\x1b[31m\x07b".encode(), IART=b"tab\there"))
        text = atdp("info", path).stdout.decode("utf-8")
        self.assertNotIn("\x1b", text)
        self.assertNotIn("\x07", text)
