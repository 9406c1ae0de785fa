#!/usr/bin/env python3
"""Damages sound files of every kind in many ways, decodes them with atdp, and prints what came out.

The environment names the program in ATDP. Ends with 1 when a run ended in a signal or took ten
times the processor time of the undamaged file.
"""

import os
import pathlib
import random
import resource
import subprocess
import sys
import tempfile

ROUNDS = int(os.environ.get("ROUNDS", "40"))


def run(*command):
    subprocess.run(list(map(str, command)), check=True, stdin=subprocess.DEVNULL,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def make_files(folder):
    """Twenty seconds of noise in every kind of file."""
    wav = folder / "sound.wav"
    run("sox", "-R", "-n", "-r", 44100, "-c", 2, "-b", 16, wav, "synth", 20, "pinknoise")
    run("sox", wav, "-b", 24, folder / "sound.aiff")
    run("lame", "--quiet", "-b", 128, wav, folder / "sound.mp3")
    run("twolame", wav, folder / "sound.mp2")
    run("ffmpeg", "-nostdin", "-v", "error", "-i", wav, "-c:a", "alac", folder / "sound.m4a")
    return {"WAV": wav, "AIFF": folder / "sound.aiff", "MP3": folder / "sound.mp3",
            "MP2": folder / "sound.mp2", "Apple Lossless": folder / "sound.m4a"}


def cut(data, dice):
    return data[: dice.randrange(len(data))]


def flip_bits(data, dice, count, end):
    data = bytearray(data)
    for _ in range(count):
        data[dice.randrange(min(end, len(data)))] ^= 1 << dice.randrange(8)
    return bytes(data)


def blank(data, dice):
    at = dice.randrange(len(data))
    size = min(dice.randrange(1, 20000), len(data) - at)
    return data[:at] + bytes(size) + data[at + size :]


def lose(data, dice):
    at = dice.randrange(len(data))
    return data[:at] + data[at + dice.randrange(1, 20000) :]


def gain(data, dice):
    at = dice.randrange(len(data))
    return data[:at] + dice.randbytes(dice.randrange(1, 20000)) + data[at:]


def lie(data, dice):
    """Numbers near the front and the end become the greatest or the least there are."""
    data = bytearray(data)
    for _ in range(3):
        at = dice.choice((dice.randrange(600), len(data) - 1 - dice.randrange(4000)))
        data[at : at + 4] = dice.choice((b"\0\0\0\0", b"\xff\xff\xff\xff", b"\x7f\xff\xff\xff"))
    return bytes(data)


DAMAGES = {
    "cut short": cut,
    "1 bit": lambda data, dice: flip_bits(data, dice, 1, len(data)),
    "1000 bits": lambda data, dice: flip_bits(data, dice, 1000, len(data)),
    "10 bits of the first 200 bytes": lambda data, dice: flip_bits(data, dice, 10, 200),
    "a part zero": blank,
    "a part missing": lose,
    "junk in between": gain,
    "sizes and counts that lie": lie,
}


def decode(path):
    """The exit code, the bytes decoded, and the processor time in seconds."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    result = subprocess.run([os.environ["ATDP"], "decode", path, "--raw", "--encoding", "s16", "-o", "-"],
                            capture_output=True, timeout=300)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return result.returncode, len(result.stdout), (
        after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)


def outcome(result, whole):
    code, size, _ = result
    if code == 0:
        return "played" if size == whole else "played in part"
    return "refused" if code == 1 else "CRASHED"


def main():
    dice = random.Random(1)
    kinds = ["played", "played in part", "refused", "CRASHED", "SLOW"]
    print("| File | Damage | " + " | ".join(kinds) + " |")
    print("|---|---|" + "---|" * len(kinds))
    failed = False
    with tempfile.TemporaryDirectory(prefix="atdp-bad-") as name:
        folder = pathlib.Path(name)
        for kind, path in make_files(folder).items():
            data = path.read_bytes()
            _, whole, time = decode(path)
            for damage, apply in DAMAGES.items():
                counts = dict.fromkeys(kinds, 0)
                for _ in range(ROUNDS):
                    bad = folder / "bad"
                    bad.write_bytes(apply(data, dice))
                    result = decode(bad)
                    counts[outcome(result, whole)] += 1
                    counts["SLOW"] += result[2] > 10 * time
                failed |= counts["CRASHED"] > 0 or counts["SLOW"] > 0
                print(f"| {kind} | {damage} | " + " | ".join(str(counts[k]) for k in kinds) + " |", flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
