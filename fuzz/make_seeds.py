#!/usr/bin/env python3
"""Writes the inputs that fuzzing starts from: make_seeds.py FOLDER makes a folder in it per target.

They come from the project's own test files, cut short, and from headers written here.
"""

import pathlib
import struct
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / "tests" / "data"
CHOICES = struct.pack("<I", 0x107)


def riff(identifier, body):
    return identifier + struct.pack("<I", len(body)) + body + b"\0" * (len(body) % 2)


def iff(identifier, body):
    return identifier + struct.pack(">I", len(body)) + body + b"\0" * (len(body) % 2)


def wave(tag, channels, bits, extensible=False, first=b"", extra=b"", form=b"RIFF"):
    frame = (bits + 7) // 8 * channels
    body = struct.pack("<HHIIHH", 0xFFFE if extensible else tag, channels, 44100, 44100 * frame, frame, bits)
    if extensible:
        body += struct.pack("<HHIH", 22, bits, 0x3F, tag) + bytes.fromhex("000000001000800000aa00389b71")
    data = bytes(range(256)) * 12
    chunks = first + riff(b"fmt ", body) + extra + riff(b"data", data[: len(data) // frame * frame])
    return form + struct.pack("<I", 4 + len(chunks)) + b"WAVE" + chunks


def aiff(compression=None, channels=2, bits=16):
    rate = struct.pack(">HQ", 16383 + 15, 44100 << 48)
    frame = (bits + 7) // 8 * channels
    data = bytes(range(256)) * 12
    common = struct.pack(">hIh", channels, len(data) // frame, bits) + rate
    if compression:
        common += compression + b"\0\0"
    chunks = iff(b"COMM", common) + iff(b"NAME", b"title") + iff(b"SSND", b"\0" * 8 + data)
    return b"FORM" + struct.pack(">I", 4 + len(chunks)) + (b"AIFC" if compression else b"AIFF") + chunks


def pcm_files():
    for tag, bits in ((1, 8), (1, 16), (1, 24), (1, 32), (3, 32), (3, 64), (6, 8)):
        yield f"wave-{tag}-{bits}", wave(tag, 2, bits)
    yield "wave-extensible", wave(1, 6, 24, extensible=True)
    ds64 = riff(b"ds64", struct.pack("<QQQI", 3200, 2000, 500, 0))
    large = bytearray(wave(1, 2, 16, first=ds64, form=b"RF64"))
    at = large.index(b"data") + 4
    large[4:8] = large[at : at + 4] = b"\xff\xff\xff\xff"
    yield "rf64", bytes(large)
    yield "aiff", aiff()
    for compression, bits in ((b"sowt", 16), (b"twos", 24), (b"raw ", 8), (b"in24", 24), (b"in32", 32),
                              (b"fl32", 32), (b"fl64", 64), (b"ulaw", 16)):
        yield "aifc-" + compression.decode().strip(), aiff(compression, bits=bits)


def id3(version, *frames):
    body = b""
    for name, text in frames:
        if version == 2:
            body += name + struct.pack(">I", len(text))[1:] + text
        else:
            body += name + struct.pack(">IH", len(text), 0) + text
    size = bytes(len(body) >> shift & 0x7F for shift in (21, 14, 7, 0))
    return b"ID3" + bytes((version, 0, 0)) + size + body


def tags():
    yield "2.2", id3(2, (b"TT2", b"\0Title"), (b"TP1", b"\x01\xff\xfeA\0"))
    yield "2.3", id3(3, (b"TIT2", b"\x01\xff\xfeA\0\xe9\0"), (b"TCON", b"\0(17)(4)Remix"),
                     (b"COMM", b"\0engiTunSMPB\0 00000000 00000210 00000A00 000000000006BAF0"))
    yield "2.4", id3(4, (b"TPE1", b"\x03A\0B"), (b"TRCK", b"\x033/12"), (b"APIC", b"\0image/png\0\x03\0" + bytes(99)))


def mpeg_files():
    for path in sorted(DATA.glob("layer*.mp[23]")):
        yield path.name, path.read_bytes()[:6000]


def mpeg4_files():
    for name in ("lossless.m4a", "lossless.mov", "layer3.mp4", "aac.m4a"):
        yield name, (DATA / name).read_bytes()


def alac_packets():
    """The first packet of each file, behind what its cookie says."""
    for path in sorted(DATA.glob("*.packets")):
        content = path.read_bytes()
        (cookie_bytes,) = struct.unpack_from(">I", content, 8)
        config = content.index(b"alac", content.index(b"alac") + 4) + 8
        length, _, depth, mean_factor, mean, code_bits, channels = struct.unpack_from(">IBBBBBB", content, config)
        at = 12 + cookie_bytes
        (size,) = struct.unpack_from(">I", content, at)
        yield path.name, struct.pack(
            "<HBBBBB", length - 1, (16, 20, 24, 32).index(depth), channels - 1, mean_factor, mean, code_bits - 1
        ) + content[at + 4 : at + 4 + size]


def seeds():
    for name, file in pcm_files():
        yield "pcm_containers", name, CHOICES + file
    for name, file in mpeg_files():
        yield "mpeg_audio", name, CHOICES + file
    for name, file in mpeg4_files():
        yield "mpeg4_container", name, CHOICES + file
        yield "atoms", name, CHOICES + file
    for name, packet in alac_packets():
        yield "alac", name, packet
    for name, tag in tags():
        yield "tags", "tag-" + name, b"\0" + tag
        yield "tags", "mpeg-" + name, b"\x01" + tag + (DATA / "layer3-cbr128.mp3").read_bytes()[:2000]
        yield "tags", "wave-" + name, b"\x01" + wave(1, 2, 16, extra=riff(b"id3 ", tag))
        yield "riff_info", "id3-" + name, b"\x02" + tag
    for text in ("Title", "\u00c9t\u00e9", "\u65e5\u672c\u8a9e"):
        for encoding in ("utf-8", "shift_jis", "euc_jp", "iso2022_jp", "mac_roman", "cp1252", "utf-16"):
            data = text.encode(encoding, "ignore")
            name = f"{encoding}-{len(text)}-{ord(text[0])}"
            yield "riff_info", name, b"\0" + data
            info = b"INFO" + riff(b"INAM", data + b"\0") + riff(b"IART", data)
            yield "riff_info", "list-" + name, b"\x01" + info
    # Open, read, seek, read, another rate, read, another channel count, ask all, read, close, read,
    # open: as plugin.cpp takes them.
    calls = bytes((0, 0, 8, 0, 4, 1, 100, 0, 0, 0, 8, 135, 19, 4, 47, 8, 0, 2, 5, 1, 6, 8, 0, 16, 7, 0, 8, 0, 1, 0, 0))
    for number, (name, file) in enumerate([*pcm_files(), *mpeg_files(), *mpeg4_files()]):
        yield "plugin", name, bytes((4 * (number % 2), len(calls))) + calls + file


def main():
    for target, name, content in seeds():
        folder = pathlib.Path(sys.argv[1]) / target
        folder.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(content)


if __name__ == "__main__":
    main()
