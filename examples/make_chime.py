#!/usr/bin/env python3
"""Makes chime.wav, the bundled example: three struck bells, 16 bits, stereo, 44.1 kHz."""

import math
import pathlib
import struct
import wave

RATE = 44_100
SECONDS = 3.0
BELLS = [(0.0, 523.25, 0.3), (0.35, 659.25, 0.5), (0.7, 783.99, 0.7)]  # start, Hz, pan
PARTIALS = [(1.0, 1.0, 2.2), (2.0, 0.6, 3.0), (2.76, 0.45, 4.5), (5.4, 0.2, 7.0)]


def bell(time, frequency):
    """The sound of one bell, `time` seconds after it was struck."""
    if time < 0:
        return 0.0
    attack = min(time / 0.004, 1.0)
    return attack * sum(
        level * math.exp(-decay * time) * math.sin(2 * math.pi * frequency * ratio * time)
        for ratio, level, decay in PARTIALS
    )


def main():
    frames = bytearray()
    count = int(RATE * SECONDS)
    for n in range(count):
        time = n / RATE
        fade = min((count - n) / (0.05 * RATE), 1.0)
        left = right = 0.0
        for start, frequency, pan in BELLS:
            sound = 0.14 * fade * bell(time - start, frequency)
            left += sound * (1 - pan)
            right += sound * pan
        frames += struct.pack("<hh", round(left * 32767), round(right * 32767))
    path = pathlib.Path(__file__).with_name("chime.wav")
    with wave.open(str(path), "wb") as chime:
        chime.setnchannels(2)
        chime.setsampwidth(2)
        chime.setframerate(RATE)
        chime.writeframes(frames)


main()
