#!/usr/bin/env python3
"""Damages sound files of every kind in many ways, decodes them with atdp, and prints what came out.

The environment names the program in ATDP, and in ROUNDS how often each damage is done to each file.
Each run counts once:

played          the undamaged file's samples came out
concealed       as many samples came out, but not the same
another length  another number of samples came out
refused         exit code 1, with a message
CRASHED         a signal, another exit code, or no message; so end sanitized builds that find a bug
SLOW            ten times the processor time of the undamaged file, or the time limit

Ends with 1 when a run crashed or was slow, and leaves its file in build/findings.
"""

import os
import pathlib
import random
import resource
import subprocess
import sys
import tempfile

from make_seeds import ROOT, ape, id3, id3v1

ROUNDS = int(os.environ.get("ROUNDS", "40"))
FINDINGS = ROOT / "build" / "findings"
OUTCOMES = ("played", "concealed", "another length", "refused", "CRASHED", "SLOW")
TIME_LIMIT = 60  # in seconds on the clock
LEAST_TIME = 0.02  # in seconds: an undamaged file that takes less is counted as taking this
ENVIRONMENT = os.environ | {
    "ASAN_OPTIONS": "exitcode=99",
    "UBSAN_OPTIONS": "halt_on_error=1,exitcode=99",
}


def run(*command):
    subprocess.run(list(map(str, command)), check=True, stdin=subprocess.DEVNULL,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def make_files(folder):
    """Twenty seconds of noise in every kind of file."""
    wav = folder / "sound.wav"
    run("sox", "-R", "-n", "-r", 44100, "-c", 2, "-b", 16, wav, "synth", 20, "pinknoise")
    run("sox", wav, "-e", "floating-point", "-b", 32, folder / "float.wav")
    run("sox", wav, "-b", 24, folder / "sound.aiff")
    run("lame", "--quiet", "-b", 128, wav, folder / "sound.mp3")
    run("twolame", wav, folder / "sound.mp2")
    run("ffmpeg", "-nostdin", "-v", "error", "-i", wav, "-c:a", "alac", folder / "sound.m4a")
    for name in ("sound.caf", "sound.au", "sound.w64"):
        run("sox", wav, folder / name)
    run("ffmpeg", "-nostdin", "-v", "error", "-i", wav, "-c:a", "alac", folder / "lossless.caf")
    mp3 = (folder / "sound.mp3").read_bytes()
    front = id3(3, (b"TIT2", b"\0Title"), (b"APIC", b"\0image/png\0\3\0" + bytes(100)))
    (folder / "tags.mp3").write_bytes(front + mp3 + ape(Title="Title", Artist="A") + id3v1())
    return {"WAV": wav, "WAV of floats": folder / "float.wav", "AIFF": folder / "sound.aiff",
            "MP3": folder / "sound.mp3", "MP3 with tags": folder / "tags.mp3",
            "MP2": folder / "sound.mp2", "Apple Lossless": folder / "sound.m4a",
            "CAF": folder / "sound.caf", "CAF with Apple Lossless": folder / "lossless.caf",
            "AU": folder / "sound.au", "Wave64": folder / "sound.w64"}


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


class Decoding:
    """What a run of the program came to."""

    def __init__(self, path):
        command = [os.environ["ATDP"], "decode", path, "--raw", "--encoding", "s16", "-o", "-"]
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        try:
            result = subprocess.run(command, capture_output=True, stdin=subprocess.DEVNULL,
                                    timeout=TIME_LIMIT, env=ENVIRONMENT)
            self.code, self.samples, self.message = result.returncode, result.stdout, result.stderr
        except subprocess.TimeoutExpired:
            self.code = None
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        self.time = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def outcome(decoding, whole):
    if decoding.code is None:
        return "SLOW"
    if decoding.code not in (0, 1) or (decoding.code == 1 and not decoding.message):
        return "CRASHED"
    if decoding.time > 10 * max(whole.time, LEAST_TIME):
        return "SLOW"
    if decoding.code == 1:
        return "refused"
    if len(decoding.samples) != len(whole.samples):
        return "another length"
    return "played" if decoding.samples == whole.samples else "concealed"


def keep(bad, name):
    FINDINGS.mkdir(parents=True, exist_ok=True)
    (FINDINGS / name.replace(" ", "-")).write_bytes(bad.read_bytes())


def count_outcomes(path, bad, damage, dice):
    """How often each outcome was met; `bad` is where the damaged files are put."""
    data, whole = path.read_bytes(), Decoding(path)
    if whole.code != 0:
        sys.exit(f"{path.name} cannot be decoded undamaged")
    counts = dict.fromkeys(OUTCOMES, 0)
    for number in range(ROUNDS):
        bad.write_bytes(DAMAGES[damage](data, dice))
        result = outcome(Decoding(bad), whole)
        counts[result] += 1
        if result in ("CRASHED", "SLOW"):
            keep(bad, f"{result} {path.name} {damage} {number}")
    return counts


def print_row(cells):
    print("| " + " | ".join(map(str, cells)) + " |", flush=True)


def main():
    dice = random.Random(1)
    failed = False
    print_row(("File", "Damage", *OUTCOMES))
    print_row(["---"] * (2 + len(OUTCOMES)))
    with tempfile.TemporaryDirectory(prefix="atdp-bad-") as name:
        folder = pathlib.Path(name)
        for kind, path in make_files(folder).items():
            for damage in DAMAGES:
                counts = count_outcomes(path, folder / "bad", damage, dice)
                failed |= counts["CRASHED"] + counts["SLOW"] > 0
                print_row((kind, damage, *counts.values()))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
