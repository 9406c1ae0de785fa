#!/usr/bin/env python3
"""Prints what it costs to play each kind of file, in numbers that repeat: instructions per sample,
counted by valgrind's callgrind as the difference between a long and a short file, and the private
memory that playing takes beyond the loaded program.

The environment names the program that plays in ATDP_PLAY.
"""

import os
import pathlib
import re
import subprocess
import tempfile

DECODERS = {
    "16.wav": ("ours", "libsndfile"),
    "16.aiff": ("ours", "libsndfile"),
    "24.wav": ("ours", "libsndfile"),
    "24.aiff": ("ours", "libsndfile"),
    "128.mp3": ("ours", "libmpg123", "libavcodec"),
    "320.mp3": ("ours", "libmpg123", "libavcodec"),
    "layer2.mp2": ("ours", "libmpg123", "libavcodec"),
    "16.m4a": ("ours", "libavcodec"),
    "24.m4a": ("ours", "libavcodec"),
}


def run(*command, folder):
    return subprocess.run(list(map(str, command)), check=True, cwd=folder, text=True,
                          stdin=subprocess.DEVNULL, capture_output=True)


def make_files(folder, seconds):
    folder.mkdir()
    for bits in (16, 24):
        run("sox", "-R", "-n", "-r", 44100, "-c", 2, "-b", bits, f"{bits}.wav",
            "synth", seconds, "pinknoise", folder=folder)
        run("sox", f"{bits}.wav", f"{bits}.aiff", folder=folder)
        run("ffmpeg", "-nostdin", "-v", "error", "-i", f"{bits}.wav", "-c:a", "alac",
            f"{bits}.m4a", folder=folder)
    for rate in (128, 320):
        run("lame", "--quiet", "-b", rate, "16.wav", f"{rate}.mp3", folder=folder)
    run("twolame", "--quiet", "-b", 192, "16.wav", "layer2.mp2", folder=folder)


def play(decoder, path, *counter):
    """The samples, the bytes of memory, and the instructions where a counter runs it."""
    result = run(*counter, os.environ["ATDP_PLAY"], decoder, path, folder=path.parent)
    samples, memory = map(int, result.stdout.split())
    counted = re.search(r"refs:\s+([\d,]+)", result.stderr)
    return samples, memory, int(counted[1].replace(",", "")) if counted else None


def instructions(decoder, short, long):
    callgrind = ("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null")
    less, more = (play(decoder, path, *callgrind) for path in (short, long))
    return (more[2] - less[2]) / (more[0] - less[0])


def main():
    with tempfile.TemporaryDirectory(prefix="atdp-costs-") as name:
        folders = {seconds: pathlib.Path(name) / str(seconds) for seconds in (5, 10, 600)}
        for seconds, folder in folders.items():
            make_files(folder, seconds)
        print("| File | Decoder | Instructions per sample | Private memory, KB (10 minutes) |")
        print("|---|---|---|---|")
        for file, decoders in DECODERS.items():
            for decoder in decoders:
                count = instructions(decoder, folders[5] / file, folders[10] / file)
                _, memory, _ = play(decoder, folders[600] / file)
                print(f"| {file} | {decoder} | {count:.1f} | {memory / 1024:.0f} |", flush=True)


if __name__ == "__main__":
    main()
