"""The bytes of tags and of the chunks that hold them."""

import struct


def chunk(identifier, body, order="<"):
    return identifier + struct.pack(order + "I", len(body)) + body + b"\0" * (len(body) % 2)


def info_list(**texts):
    return chunk(b"LIST", b"INFO" + b"".join(chunk(name.encode(), text + b"\0")
                                             for name, text in texts.items()))


def id3_tag(*frames):
    """An ID3v2.3 tag of (identifier, body) frames."""
    body = b"".join(name + struct.pack(">IH", len(data), 0) + data for name, data in frames)
    size = bytes(len(body) >> shift & 0x7F for shift in (21, 14, 7, 0))
    return b"ID3\3\0\0" + size + body


def gapless_comment(priming, remainder, valid):
    text = f" 00000000 {priming:08X} {remainder:08X} {valid:016X} 00000000"
    return id3_tag((b"COMM", b"\0eng" + b"iTunSMPB\0" + text.encode()))
