#!/usr/bin/env python3
"""Writes the inputs that fuzzing starts from: make_seeds.py FOLDER makes a folder in it per target.

They come from the project's own test files, cut short, and from headers written here.
"""

import pathlib
import random
import re
import struct
import sys
import zlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / "tests" / "data"
UNKNOWN_SIZE = 0xFFFFFFFF


def gapless(frames):
    """The text in which an encoder states priming, remainder and valid frames."""
    return b" 00000000 00000210 00000A00 %016X" % frames


def gapless_comment(frames):
    return b"COMM", b"\0engiTunSMPB\0" + gapless(frames)


def riff(identifier, body):
    return identifier + struct.pack("<I", len(body)) + body + b"\0" * (len(body) % 2)


def iff(identifier, body):
    return identifier + struct.pack(">I", len(body)) + body + b"\0" * (len(body) % 2)


def info_list(**texts):
    return riff(b"LIST", b"INFO" + b"".join(riff(k.encode(), v.encode()) for k, v in texts.items()))


def wave(tag, channels, bits, mask=None, first=b"", extra=b"", last=b"", form=b"RIFF",
         data=bytes(range(256)) * 12):
    """With chunks in front of the format, of the sound and behind it; extensible with a mask."""
    frame = (bits + 7) // 8 * channels
    format_tag = tag if mask is None else 0xFFFE
    body = struct.pack("<HHIIHH", format_tag, channels, 44100, 44100 * frame, frame, bits)
    if mask is not None:
        body += struct.pack("<HHIH", 22, bits, mask, tag)
        body += bytes.fromhex("000000001000800000aa00389b71")
    sound = riff(b"data", data[: len(data) // frame * frame])
    chunks = first + riff(b"fmt ", body) + extra + sound + last
    return form + struct.pack("<I", 4 + len(chunks)) + b"WAVE" + chunks


def aiff(compression=None, channels=2, bits=16, frames=None, last=b""):
    rate = struct.pack(">HQ", 16383 + 15, 44100 << 48)
    data = bytes(range(256)) * 12
    if frames is None:
        frames = len(data) // ((bits + 7) // 8 * channels)
    common = struct.pack(">hIh", channels, frames, bits) + rate
    if compression:
        common += compression + b"\0\0"
    sound = iff(b"SSND", b"\0" * 8 + data)
    chunks = iff(b"COMM", common) + iff(b"NAME", b"title") + sound + last
    kind = b"AIFC" if compression else b"AIFF"
    return b"FORM" + struct.pack(">I", 4 + len(chunks)) + kind + chunks


def with_size(file, chunk, size):
    """The file with that size for the form and a chunk, as writers leave it that cannot go back."""
    file = bytearray(file)
    at = file.index(chunk) + 4
    file[4:8] = file[at : at + 4] = struct.pack("<I", size)
    return bytes(file)


def wave_files():
    for tag, bits in ((1, 8), (1, 16), (1, 24), (1, 32), (3, 32), (3, 64), (6, 8)):
        yield f"wave-{tag}-{bits}", wave(tag, 2, bits)
    for tag, channels, bits, mask in ((1, 6, 24, 0x3F), (1, 4, 16, 0x33), (1, 8, 16, 0),
                                      (3, 1, 32, 0x4), (3, 6, 32, 0x60F), (3, 8, 64, 0x63F)):
        yield f"wave-extensible-{tag}-{bits}-{channels}", wave(tag, channels, bits, mask)
    ds64 = riff(b"ds64", struct.pack("<QQQI", 3200, 2000, 500, 0))
    yield "rf64", with_size(wave(1, 2, 16, first=ds64, form=b"RF64"), b"data", UNKNOWN_SIZE)
    for size in (0, UNKNOWN_SIZE):
        yield f"wave-streamed-{size:x}", with_size(wave(1, 2, 16), b"data", size)
    yield "wave-many-chunks", wave(
        1, 2, 16, first=riff(b"bext", b"Description".ljust(602, b"\0")),
        extra=riff(b"fact", struct.pack("<I", 768)) + info_list(INAM="Title", IART="Odd"))
    # 341 frames of 9 bytes: the sound needs a pad byte too.
    yield "wave-odd-sizes", wave(1, 3, 24, extra=riff(b"junk", b"odd"), last=info_list(INAM="Odd"))


def aiff_files():
    yield "aiff", aiff()
    for compression, bits in ((b"sowt", 16), (b"twos", 24), (b"raw ", 8), (b"in24", 24),
                              (b"in32", 32), (b"fl32", 32), (b"fl64", 64), (b"ulaw", 16)):
        yield "aifc-" + compression.decode().strip(), aiff(compression, bits=bits)
    for size in (0, UNKNOWN_SIZE):
        yield f"aiff-streamed-{size:x}", with_size(aiff(frames=0), b"SSND", size)


def caf_chunk(kind, body, size=None):
    return kind + struct.pack(">q", len(body) if size is None else size) + body


def caf(flags=0, bits=16, channels=2, kind=b"lpcm", frames=1, size=None, first=b"", last=b"",
        data=bytes(range(256)) * 12):
    """With chunks in front of the sound and behind it; a size of -1 is that of a stream."""
    packet = (bits + 7) // 8 * channels
    body = struct.pack(">d4sIIIII", 44100, kind, flags, packet, frames, channels, bits)
    sound = caf_chunk(b"data", bytes(4) + data, size)
    return b"caff\0\1\0\0" + caf_chunk(b"desc", body) + first + sound + last


def caf_strings(**texts):
    pairs = b"".join(key.encode() + b"\0" + text.encode() + b"\0" for key, text in texts.items())
    return caf_chunk(b"info", struct.pack(">I", len(texts)) + pairs)


def caf_files():
    for flags, bits in ((0, 8), (0, 16), (2, 16), (0, 24), (2, 32), (1, 32), (3, 64)):
        yield f"caf-{flags}-{bits}", caf(flags, bits)
    yield "caf-streamed", caf(size=-1, first=caf_strings(title="Title", artist="Artist"))
    layout = caf_chunk(b"chan", struct.pack(">III", 1 << 16, 0x60F, 0))
    yield "caf-6", caf(2, 24, 6, first=layout, last=caf_chunk(b"free", bytes(9)))
    yield "caf-mp3", caf(bits=0, kind=b".mp3", frames=1152, data=layer3_sound())


def variable(number):
    """Seven bits a byte, the top bit set but in the last."""
    groups = [number >> shift & 0x7F for shift in range(28, -1, -7) if number >> shift or not shift]
    return bytes(0x80 | group for group in groups[:-1]) + bytes(groups[-1:])


def au(encoding, little=False, size=None, annotation=b"", data=bytes(range(256)) * 12):
    numbers = (24 + len(annotation), len(data) if size is None else size, encoding, 44100, 2)
    head = struct.pack("<5I" if little else ">5I", *numbers)
    return (b"dns." if little else b".snd") + head + annotation + data


def au_files():
    for encoding in (1, 2, 3, 4, 5, 6, 7, 27):
        yield f"au-{encoding}", au(encoding)
    yield "au-little", au(3, little=True)
    yield "au-streamed", au(3, size=UNKNOWN_SIZE, annotation=b"Title=A\nArtist=B\n\0")


def wave64_chunk(code, body, rest="f3acd3118cd100c04f8edb8a"):
    size = 24 + len(body)
    return code + bytes.fromhex(rest) + struct.pack("<Q", size) + body + bytes(-size % 8)


def wave64(file, last=b""):
    """A WAVE file's chunks, and more behind them."""
    chunks = b""
    at = 12
    while at < len(file):
        code, size = struct.unpack_from("<4sI", file, at)
        chunks += wave64_chunk(code, file[at + 8 : at + 8 + size])
        at += 8 + size + size % 2
    chunks += last
    form = b"riff" + bytes.fromhex("2e91cf11a5d628db04c10000") + struct.pack("<Q", 40 + len(chunks))
    return form + b"wave" + bytes.fromhex("f3acd3118cd100c04f8edb8a") + chunks


def wave64_tags():
    summary = struct.pack("<I4sI", 1, b"INAM", 4) + "A\0".encode("utf-16-le")
    yield "summary", wave64_chunk(bytes.fromhex("bc945f92"), summary, "5a52d21186dc00c04f8edb8a")
    yield "list", wave64_chunk(b"list", info_list(INAM="Title")[8:], "2f91cf11a5d628db04c10000")
    yield "id3", wave64_chunk(b"id3 ", id3(3, (b"TIT2", b"\0Title")))


def wave64_files():
    for tag, bits in ((1, 8), (1, 16), (1, 24), (3, 32), (3, 64), (6, 8)):
        yield f"wave64-{tag}-{bits}", wave64(wave(tag, 2, bits))
    yield "wave64-extensible", wave64(wave(1, 6, 24, 0x3F, extra=riff(b"junk", b"odd")))
    yield "wave64-mpeg", wave64(wave(0x55, 2, 16, data=layer3_sound()))


def pcm_files():
    yield from wave_files()
    yield from aiff_files()
    yield from caf_files()
    yield from au_files()
    yield from wave64_files()


def synchsafe(number):
    return bytes(number >> shift & 0x7F for shift in (21, 14, 7, 0))


def id3_frame(version, name, body, flags=0):
    if version == 2:
        return name + struct.pack(">I", len(body))[1:] + body
    size = synchsafe(len(body)) if version == 4 else struct.pack(">I", len(body))
    return name + size + struct.pack(">H", flags) + body


def id3(version, *frames, flags=0, extended=b""):
    """A tag of frames given as arguments of id3_frame; flag 0x80 makes it unsynchronised."""
    body = extended + b"".join(id3_frame(version, *frame) for frame in frames)
    if flags & 0x80:
        body = re.sub(rb"\xff(?=[\0\xe0-\xff]|$)", b"\xff\0", body)
    return b"ID3" + bytes((version, 0, flags)) + synchsafe(len(body)) + body


def id3v1(track=0):
    """A tag, of version 1.1 with a track number."""
    comment = b"Comment".ljust(28, b"\0") + bytes((0, track)) if track else b"Comment".ljust(30)
    texts = (text.ljust(30, b"\0") for text in (b"Title", b"Artist", b"Album"))
    return b"TAG" + b"".join(texts) + b"2001" + comment + b"\x11"


def ape(**items):
    """An APEv2 tag, with a header and a footer."""
    body = b"".join(struct.pack("<II", len(text), 0) + key.encode() + b"\0" + text.encode()
                    for key, text in items.items())
    ends = (struct.pack("<8sIIIIQ", b"APETAGEX", 2000, len(body) + 32, len(items), flags, 0)
            for flags in (0xA0000000, 0x80000000))
    return body.join(ends)


def id3_tags():
    """Of each version, and of each way to store frames that a reader has to undo."""
    title = b"\0Title"
    packed = zlib.compress(b"\0" + b"Title" * 9)
    yield "2.2", id3(2, (b"TT2", title), (b"TP1", b"\x01\xff\xfeA\0"))
    yield "2.3", id3(3, (b"TIT2", b"\x01\xff\xfeA\0\xe9\0"), (b"TCON", b"\0(17)(4)Remix"),
                     gapless_comment(441072))
    yield "2.4", id3(4, (b"TIT2", b"\3Title"), (b"TPE1", b"\x03A\0B"), (b"TRCK", b"\x033/12"),
                     (b"APIC", b"\0image/png\0\x03\0" + bytes(99)))
    yield "2.3-unsynchronised", id3(3, (b"TIT2", b"\x01\xff\xfeA\0"), (b"TALB", b"\0\xff\xff"),
                                    flags=0x80)
    yield "2.4-unsynchronised", id3(4, (b"TIT2", b"\x01\xff\0\xfeA\0", 2), (b"TALB", title))
    yield "2.3-extended", id3(3, (b"TIT2", title), flags=0x40,
                              extended=struct.pack(">IHI", 6, 0, 0))
    yield "2.4-extended", id3(4, (b"TIT2", title), flags=0x40, extended=synchsafe(6) + b"\1\0")
    yield "2.3-compressed", id3(3, (b"TIT2", struct.pack(">I", 46) + packed, 0x80))
    yield "2.4-compressed", id3(4, (b"TIT2", synchsafe(46) + packed, 9))


def layer1_packet(dice):
    """44.1 kHz, stereo, 384 kbit/s: noise in the ten lowest of 32 subbands, of 5 bits a sample."""
    fields = [(0xFFFFC000, 32)] + [(4, 4)] * 20 + [(0, 4)] * 44
    fields += [(18 + dice.randrange(12), 6) for _ in range(20)]
    fields += [(dice.randrange(31), 5) for _ in range(12 * 20)]
    bits = "".join(f"{value:0{width}b}" for value, width in fields)
    return int(bits.ljust(8 * 416, "0"), 2).to_bytes(416, "big")


def info_packet(mark, packets):
    """The silent packet in front of a stream of layer III, 44.1 kHz, stereo, 128 kbit/s. Of VBRI
    only the mark is true, which is all that readers here look at.
    """
    body = mark + struct.pack(">II", 15, packets) + bytes(4 + 100 + 4)
    body += b"LAME3.100" + bytes(12) + (576 << 12 | 1000).to_bytes(3, "big")
    return (b"\xff\xfb\x90\x64" + bytes(32) + body).ljust(417, b"\0")


def layer3_sound(size=6000):
    """Without the packet that LAME puts in front."""
    return (DATA / "layer3-cbr128.mp3").read_bytes()[417 : 417 + size]


def mpeg_files():
    for path in sorted(DATA.glob("layer*.mp[23]")):
        yield path.name, path.read_bytes()[:6000]
    dice = random.Random(1)
    yield "layer1", b"".join(layer1_packet(dice) for _ in range(10))
    for mark in (b"Info", b"Xing", b"VBRI"):
        yield mark.decode().lower() + "-packet", info_packet(mark, 14) + layer3_sound()
    title = id3(3, (b"TIT2", b"\0Title"))
    yield "between-tags", title + layer3_sound() + id3v1()
    frames = 14 * 1152 - 0x210 - 0xA00
    yield "gapless-comment", id3(3, gapless_comment(frames)) + layer3_sound()
    yield "wave-mpeg", wave(0x55, 2, 16, data=layer3_sound())


def atom(kind, body):
    return struct.pack(">I", 8 + len(body)) + kind + body


def split_atoms(atoms):
    while atoms:
        size, kind = struct.unpack_from(">I4s", atoms)
        yield kind, atoms[8:size]
        atoms = atoms[size:]


def edited(atoms, changes):
    """The atoms, where functions of their bodies replace those whose kinds `changes` names."""
    result = b""
    for kind, body in split_atoms(atoms):
        if kind in (b"moov", b"trak", b"edts", b"mdia", b"minf", b"stbl"):
            body = edited(body, changes)
        result += changes[kind](body) if kind in changes else atom(kind, body)
    return result


def chunk_offsets(kind, shift=0):
    def make(body):
        offsets = (shift + offset for (offset,) in struct.iter_unpack(">I", body[8:]))
        code = ">Q" if kind == b"co64" else ">I"
        return atom(kind, body[:8] + b"".join(struct.pack(code, offset) for offset in offsets))
    return make


def compact_sizes(body):
    sizes = (size for (size,) in struct.iter_unpack(">I", body[12:]))
    head = body[:4] + struct.pack(">I", 16) + body[8:12]
    return atom(b"stz2", head + b"".join(struct.pack(">H", size) for size in sizes))


def large_edits(body):
    """Nothing for 50 units, then 400 units of the movie's time from the 1105th of the media's."""
    entries = struct.pack(">QqIQqI", 50, -1, 0x10000, 400, 1105, 0x10000)
    return atom(b"elst", struct.pack(">II", 1 << 24, 2) + entries)


def movie_first(file):
    parts = [(kind, atom(kind, body)) for kind, body in split_atoms(file)]
    (movie,) = (part for kind, part in parts if kind == b"moov")
    others = [part for kind, part in parts if kind != b"moov"]
    movie = edited(movie, {b"stco": chunk_offsets(b"stco", len(movie))})
    return others[0] + movie + b"".join(others[1:])


def value(kind, data, indicator=1):
    return atom(kind, atom(b"data", struct.pack(">II", indicator, 0) + data))


def with_items(file, head=bytes(4)):
    """With an item list; QuickTime has no head in front of it."""
    free = atom(b"mean", bytes(4) + b"com.apple.iTunes") + atom(b"name", bytes(4) + b"iTunSMPB")
    free += atom(b"data", struct.pack(">II", 1, 0) + gapless(22050))
    items = (value(b"\xa9nam", b"Title"), value(b"\xa9ART", b"Artist"), value(b"\xa9alb", b"Album"),
             value(b"trkn", struct.pack(">HHHH", 0, 3, 12, 0), 0),
             value(b"gnre", struct.pack(">H", 18), 0), atom(b"----", free))
    handler = atom(b"hdlr", bytes(8) + b"mdirappl" + bytes(9))
    tags = atom(b"udta", atom(b"meta", head + handler + atom(b"ilst", b"".join(items))))
    return edited(file, {b"udta": lambda _: b"", b"moov": lambda body: atom(b"moov", body + tags)})


def first_of(atoms, *path):
    """The body of an atom."""
    for kind in path:
        atoms = next(body for found, body in split_atoms(atoms) if found == kind)
    return atoms


def lossless_caf(frames=4096):
    """The packets of the file lossless.m4a, which lie one after the other."""
    file = (DATA / "lossless.m4a").read_bytes()
    table = first_of(file, b"moov", b"trak", b"mdia", b"minf", b"stbl")
    sizes = [size for (size,) in struct.iter_unpack(">I", first_of(table, b"stsz")[12:])]
    (start,) = struct.unpack_from(">I", first_of(table, b"stco"), 8)
    cookie = first_of(table, b"stsd")[8 + 8 + 28 :]
    numbers = (variable(size) + (b"" if frames else variable(4096)) for size in sizes)
    head = struct.pack(">qqii", len(sizes), 22050, 0, 2526)
    first = caf_chunk(b"kuki", cookie) + caf_chunk(b"pakt", head + b"".join(numbers))
    return caf(bits=0, kind=b"alac", frames=frames, first=first,
               data=file[start : start + sum(sizes)])


def mpeg4_files():
    for name in ("lossless.m4a", "lossless.mov", "layer3.mp4", "aac.m4a"):
        yield name, (DATA / name).read_bytes()
    file = (DATA / "layer3.mp4").read_bytes()
    yield "co64.mp4", edited(file, {b"stco": chunk_offsets(b"co64")})
    yield "stz2.mp4", edited(file, {b"stsz": compact_sizes})
    lossless = (DATA / "lossless.m4a").read_bytes()
    yield "elst.m4a", edited(lossless, {b"elst": large_edits})
    yield "movie-first.mp4", movie_first(file)
    yield "lossless.caf", lossless_caf()
    yield "lossless-frames.caf", lossless_caf(0)


def tagged_files():
    sound = layer3_sound(2000)
    for name, tag in id3_tags():
        yield "mpeg-" + name, tag + sound
        yield "wave-" + name, wave(1, 2, 16, extra=riff(b"id3 ", tag))
    items = ape(Title="Title", Artist="A\0B", Track="3/12")
    for name, tag in (("id3v1.0", id3v1()), ("id3v1.1", id3v1(7)), ("ape", items),
                      ("ape-id3v1", items + id3v1())):
        yield "mpeg-" + name, sound + tag
    texts = iff(b"AUTH", b"artist") + iff(b"ANNO", b"odd")
    yield "aiff", aiff(last=texts + iff(b"ID3 ", id3(3, (b"TALB", b"\0Album"))))
    for name, chunk in wave64_tags():
        yield "wave64-" + name, wave64(wave(1, 2, 16), chunk)
    yield "caf", caf(last=caf_strings(title="Title", track="3/12", date="2001-02-03"))
    yield "au", au(3, annotation=b"Title=Title\nTrack=3\n\0")
    yield "wave-two-lists", wave(1, 2, 16, extra=info_list(IART="A"), last=info_list(INAM="Title"))
    for name, head in (("lossless.m4a", bytes(4)), ("lossless.mov", b""), ("layer3.mp4", bytes(4))):
        yield name, with_items((DATA / name).read_bytes(), head)


def alac_packets():
    """The first packet of each file, behind what its cookie says."""
    for path in sorted(DATA.glob("*.packets")):
        content = path.read_bytes()
        (cookie_bytes,) = struct.unpack_from(">I", content, 8)
        config = content.index(b"alac", content.index(b"alac") + 4) + 8
        length, _, depth, mean_factor, mean, code_bits, channels = struct.unpack_from(
            ">IBBBBBB", content, config)
        at = 12 + cookie_bytes
        (size,) = struct.unpack_from(">I", content, at)
        yield path.name, struct.pack(
            "<HBBBBB", length - 1, (16, 20, 24, 32).index(depth), channels - 1, mean_factor, mean,
            code_bits - 1) + content[at + 4 : at + 4 + size]


def texts():
    """What the estimation of an encoding is for, as text and as an INFO list."""
    for text in ("Title", "\u00c9t\u00e9", "\u65e5\u672c\u8a9e"):
        for encoding in ("utf-8", "shift_jis", "euc_jp", "iso2022_jp", "mac_roman", "cp1252",
                         "utf-16"):
            data = text.encode(encoding, "ignore")
            name = f"{encoding}-{len(text)}-{ord(text[0])}"
            yield name, b"\0" + data
            info = b"INFO" + riff(b"INAM", data + b"\0") + riff(b"IART", data)
            yield "list-" + name, b"\x01" + info
    inner = info_list(INAM="Title")
    yield "list-in-list", b"\x01INFO" + inner + riff(b"IART", b"Artist")
    yield "list-twice", b"\x01" + 2 * (inner[8:] + riff(b"IART", b"Artist"))
    yield "list-unpadded", b"\x01INFO" + 2 * (b"INAM" + struct.pack("<I", 3) + b"OddIART\1\0\0\0A")
    for name, tag in id3_tags():
        yield "id3-" + name, b"\x02" + tag


def plugin_seeds(name, file):
    """For a newer and an older release of the platform: open, read, seek, read, another rate, read,
    another channel count, ask all, read, close, read, open; as plugin.cpp takes them.
    """
    calls = bytes((0, 0, 8, 0, 4, 1, 100, 0, 0, 0, 8, 135, 19, 4, 47, 8, 0, 2, 5, 1, 6, 8, 0, 16,
                   7, 0, 8, 0, 1, 0, 0))
    for release in (0, 4):
        yield "plugin", f"{name}-{release}", bytes((release, len(calls))) + calls + file


def sound_files():
    for target, files in (("pcm_containers", pcm_files()), ("mpeg_audio", mpeg_files()),
                          ("mpeg4_container", mpeg4_files())):
        for name, file in files:
            yield target, name, file


def seeds():
    for number, (target, name, file) in enumerate(sound_files()):
        # The number of channels, by the lowest three bits, and one of two rates, by bit 8.
        choices = struct.pack("<I", number | (number // 8 % 2) << 8)
        yield target, name, choices + file
        if target == "mpeg4_container":
            yield "atoms", name, choices + file
        yield from plugin_seeds(name, file)
    for name, file in tagged_files():
        yield "tags", name, b"\x01" + file
        yield from plugin_seeds("tags-" + name, file)
    for name, tag in id3_tags():
        yield "tags", "tag-" + name, b"\0" + tag
    for name, packet in alac_packets():
        yield "alac", name, packet
    for name, text in texts():
        yield "riff_info", name, text


def main():
    for target, name, content in seeds():
        folder = pathlib.Path(sys.argv[1]) / target
        folder.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(content)


if __name__ == "__main__":
    main()
