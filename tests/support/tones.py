"""Pure tones: written to files, and found again in what comes out."""

import array
import math
import struct


def decibels(ratio):
    return 20 * math.log10(max(ratio, 1e-15))


def write_tone(path, rate, frequency, level, seconds):
    """A WAV file of one channel. Answers the root mean square of the tone."""
    peak = 10 ** (level / 20)
    step = 2 * math.pi * frequency / rate
    samples = array.array("f", (peak * math.sin(step * i) for i in range(seconds * rate)))
    data = samples.tobytes()
    form = struct.pack("<HHIIHH", 3, 1, rate, 4 * rate, 4, 32)
    chunks = b"fmt " + struct.pack("<I", 16) + form + b"data" + struct.pack("<I", len(data)) + data
    path.write_bytes(b"RIFF" + struct.pack("<I", 4 + len(chunks)) + b"WAVE" + chunks)
    return peak / math.sqrt(2)


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
