#!/usr/bin/env python3
"""Measures what rate conversion adds to pure tones and takes from them.

Each row converts a tone of 32-bit floats with `atdp decode --rate` and fits a sine of its frequency
to the second after the first. What the fit leaves over, over the whole band, is distortion and
noise. Ends with 1 when a row is worse than it should be. The environment names the program in ATDP.
"""

import array
import math
import os
import pathlib
import struct
import subprocess
import sys
import tempfile

SECONDS = 4

# from Hz, to Hz, tone in Hz, its level in dBFS, what is measured, its bound in dB
ROWS = [
    (44100, 48000, 997, -1, "rest", -145),
    (48000, 44100, 997, -1, "rest", -145),
    (96000, 44100, 997, -1, "rest", -145),
    (8000, 192000, 997, -1, "rest", -145),
    (44100, 44101, 997, -1, "rest", -145),
    (44100, 48000, 18000, -1, "gain", 0.1),
    (48000, 44100, 18000, -1, "gain", 0.1),
    (96000, 44100, 18000, -1, "gain", 0.1),
    (96000, 44100, 30000, -1, "all", -145),
    (48000, 44100, 23000, -1, "all", -145),
]


def decibels(ratio):
    return 20 * math.log10(max(ratio, 1e-15))


def write_tone(path, rate, frequency, level):
    """A WAV file of one channel."""
    peak = 10 ** (level / 20)
    step = 2 * math.pi * frequency / rate
    samples = array.array("f", (peak * math.sin(step * i) for i in range(SECONDS * rate)))
    data = samples.tobytes()
    form = struct.pack("<HHIIHH", 3, 1, rate, 4 * rate, 4, 32)
    chunks = b"fmt " + struct.pack("<I", 16) + form + b"data" + struct.pack("<I", len(data)) + data
    path.write_bytes(b"RIFF" + struct.pack("<I", 4 + len(chunks)) + b"WAVE" + chunks)
    return peak / math.sqrt(2)


def converted(path, rate):
    command = [os.environ["ATDP"], "decode", path, "--rate", str(rate), "--raw", "-o", "-"]
    samples = array.array("f")
    samples.frombytes(subprocess.run(command, check=True, capture_output=True).stdout)
    return samples


def fit(samples, rate, frequency):
    """The root mean square of the sine that fits best, and of what it leaves over."""
    step = 2 * math.pi * frequency / rate
    count = len(samples)
    sines = [math.sin(step * i) for i in range(count)]
    cosines = [math.cos(step * i) for i in range(count)]

    def dot(a, b):
        return math.fsum(x * y for x, y in zip(a, b))

    # Two normal equations, solved by Cramer's rule.
    ss, sc, cc = dot(sines, sines), dot(sines, cosines), dot(cosines, cosines)
    ys, yc = dot(samples, sines), dot(samples, cosines)
    determinant = ss * cc - sc * sc
    a, b = (ys * cc - yc * sc) / determinant, (yc * ss - ys * sc) / determinant
    rest = math.fsum((y - a * s - b * c) ** 2 for y, s, c in zip(samples, sines, cosines))
    return math.hypot(a, b) / math.sqrt(2), math.sqrt(rest / count)


def measure(folder, from_rate, to_rate, frequency, level, what):
    """A level in dB, and the frames delivered."""
    path = folder / "tone.wav"
    tone = write_tone(path, from_rate, frequency, level)
    samples = converted(path, to_rate)
    second = samples[to_rate : 2 * to_rate]
    if what == "all":
        return decibels(math.sqrt(math.fsum(y * y for y in second) / len(second)) / tone), samples
    fitted, rest = fit(second, to_rate, frequency)
    return decibels(fitted / tone if what == "gain" else rest / fitted), samples


def main():
    words = {"rest": "THD+N", "gain": "level", "all": "what is left"}
    failed = False
    with tempfile.TemporaryDirectory(prefix="atdp-quality-") as folder:
        for *conversion, what, bound in ROWS:
            result, samples = measure(pathlib.Path(folder), *conversion, what)
            from_rate, to_rate, frequency, _ = conversion
            is_good = abs(result) <= bound if what == "gain" else result <= bound
            is_good &= len(samples) == SECONDS * to_rate
            failed |= not is_good
            print(
                f"{from_rate:6} to {to_rate:6} Hz, {frequency:5} Hz: "
                f"{words[what]:12} {result:8.2f} dB{'' if is_good else f', worse than {bound}'}"
            )
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
