#!/usr/bin/env python3
"""Expected values for filter_curve_test.cpp, computed independently of the library.

Two biquads from the usual cookbook formulas (a peaking section, 1 kHz, +6 dB, Q 1, and a low
shelf, 200 Hz, -4 dB, slope 1) at 48 kHz; their responses in dB are evaluated by direct complex
arithmetic at the frequencies of a grid of 12 points per octave from 20 Hz, held at 20 kHz.
Run it to print the C++ constants that the test holds.
"""
import cmath
import math

FS = 48000.0
PPO = 12.0
OFFSET = math.log2(20.0) * PPO
COUNT = 121
INDEXES = [0, 30, 53, 68, 80, 100, 120]


def peaking(f0, gain_db, q):
    a = 10 ** (gain_db / 40)
    w0 = 2 * math.pi * f0 / FS
    alpha = math.sin(w0) / (2 * q)
    c = math.cos(w0)
    return [1 + alpha * a, -2 * c, 1 - alpha * a, 1 + alpha / a, -2 * c, 1 - alpha / a]


def low_shelf(f0, gain_db, slope):
    a = 10 ** (gain_db / 40)
    w0 = 2 * math.pi * f0 / FS
    alpha = math.sin(w0) / 2 * math.sqrt((a + 1 / a) * (1 / slope - 1) + 2)
    c = math.cos(w0)
    s = 2 * math.sqrt(a) * alpha
    return [a * ((a + 1) - (a - 1) * c + s), 2 * a * ((a - 1) - (a + 1) * c),
            a * ((a + 1) - (a - 1) * c - s), (a + 1) + (a - 1) * c + s,
            -2 * ((a - 1) + (a + 1) * c), (a + 1) + (a - 1) * c - s]


def response_db(coefficients, hz):
    b0, b1, b2, a0, a1, a2 = coefficients
    z1 = cmath.exp(-1j * 2 * math.pi * hz / FS)
    h = (b0 + b1 * z1 + b2 * z1 * z1) / (a0 + a1 * z1 + a2 * z1 * z1)
    return 20 * math.log10(abs(h))


def grid_hz(i):
    return min(max(2 ** ((i + OFFSET) / PPO), 20.0), 20000.0)


sections = {"peak": peaking(1000, 6, 1), "shelf": low_shelf(200, -4, 1)}
for name, c in sections.items():
    print(f"const coefficients_t {name} = {{" + ", ".join(f"{x:.17g}" for x in c) + "};")
print("// index, Hz, peak dB, shelf dB")
for i in INDEXES:
    hz = grid_hz(i)
    print(f"{{{i}, {hz:.9g}, {response_db(sections['peak'], hz):.9g}, "
          f"{response_db(sections['shelf'], hz):.9g}}},")
