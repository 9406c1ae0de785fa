#!/usr/bin/env python3
"""Measures what rate conversion adds to pure tones and takes from them.

Each row converts a tone of 32-bit floats with `atdp decode --rate` and fits a sine of its frequency
to the second after the first. What the fit leaves over, over the whole band, is distortion and
noise. Ends with 1 when a row is worse than it should be. The environment names the program in ATDP.
"""

import math
import pathlib
import sys
import tempfile

from commands import atdp, floats
from tones import decibels, fit, write_tone

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


def measure(folder, from_rate, to_rate, frequency, level, what):
    """A level in dB, and the frames delivered."""
    path = folder / "tone.wav"
    tone = write_tone(path, from_rate, frequency, level, SECONDS)
    samples = floats(atdp("decode", path, "--rate", to_rate, "--raw", "-o", "-").stdout)
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
