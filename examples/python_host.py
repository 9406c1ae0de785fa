"""A host in Python: python_host.py FILE shows what is known of a sound file and decodes it.

ATDP_LIBRARY names another libatdp than the installed one.
"""

import ctypes
import os
import sys

OK, NO_ENTRY = 0, -5
VALUES = {1: "text", 2: "integer", 3: "unsigned_integer", 4: "real"}


class Entry(ctypes.Structure):
    _fields_ = [("size", ctypes.c_size_t), ("key", ctypes.c_char_p), ("text", ctypes.c_char_p),
                ("integer", ctypes.c_int64), ("unsigned_integer", ctypes.c_uint64),
                ("real", ctypes.c_float), ("kind", ctypes.c_int32)]


class Facts(ctypes.Structure):
    _fields_ = [("size", ctypes.c_size_t), ("duration", ctypes.c_uint64),
                ("timestamp", ctypes.c_uint64), ("rate", ctypes.c_float),
                ("channels", ctypes.c_int32), ("bits", ctypes.c_int32),
                ("format", ctypes.c_uint32), ("bit_rate", ctypes.c_int32),
                ("preferred_frames", ctypes.c_uint32), ("priming_frames", ctypes.c_int32),
                ("remainder_frames", ctypes.c_int32)]


class Library:
    """libatdp, with a RuntimeError where a call fails."""

    def __init__(self):
        self.calls = ctypes.CDLL(os.environ.get("ATDP_LIBRARY", "libatdp.so.0"))
        for name in ("atdp_result_text", "atdp_decoder_class"):
            getattr(self.calls, name).restype = ctypes.c_char_p

    def __call__(self, name, *arguments, allowed=(OK,)):
        result = getattr(self.calls, name)(*arguments)
        if result not in allowed:
            raise RuntimeError(self.calls.atdp_result_text(result).decode())
        return result


def metadata(library, decoder):
    """The file's facts as (key, value), in their order."""
    entry = Entry(size=ctypes.sizeof(Entry))
    index = 0
    while library("atdp_metadata_at", decoder, index, ctypes.byref(entry),
                  allowed=(OK, NO_ENTRY)) == OK:
        value = getattr(entry, VALUES[entry.kind])
        yield entry.key.decode(), value.decode() if isinstance(value, bytes) else value
        index += 1


def frames_to_the_end(library, decoder, facts):
    room = facts.preferred_frames + 1
    samples = (ctypes.c_float * (room * facts.channels))()
    frames = ctypes.c_uint32(room)
    total = 0
    while frames.value == room:  # fewer than asked for is the end
        library("atdp_read", decoder, samples, ctypes.byref(frames))
        total += frames.value  # a player plays `samples` here
    return total


def show(library, decoder, path):
    library("atdp_open", decoder, path, None)
    facts = Facts(size=ctypes.sizeof(Facts))
    library("atdp_get_facts", decoder, ctypes.byref(facts))
    print("class:", library.calls.atdp_decoder_class(decoder).decode())
    for name, _ in Facts._fields_[1:]:
        print(f"{name}: {getattr(facts, name)}")
    for key, value in metadata(library, decoder):
        print(f"{key}: {value}")
    print("frames:", frames_to_the_end(library, decoder, facts))


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: python_host.py FILE")
    library = Library()
    path = os.fsencode(sys.argv[1])
    decoder = ctypes.c_void_p()
    try:
        library("atdp_create_for_path", path, ctypes.byref(decoder))
        show(library, decoder, path)
    except RuntimeError as error:
        sys.exit(f"{sys.argv[1]}: {error}")
    finally:
        library.calls.atdp_destroy(decoder)


if __name__ == "__main__":
    main()
