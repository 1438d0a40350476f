#!/usr/bin/env python3
"""Golden projection matrices for ProjectionTest.cpp, computed in double
precision straight from the projection formulas, independent of the C++.
Rects are (left, top, right, bottom); prints one C++ initializer per case."""
import math


def centre(a, b):
    return math.trunc((a + b) / 2)  # integer division toward zero


def projection(unit, virt, fov, n, f, ortho=False, same=False, flipped=False):
    view = unit if (same or flipped) else virt
    uW, uH = unit[2] - unit[0], unit[3] - unit[1]
    vW, vH = view[2] - view[0], view[3] - view[1]
    aspect = vW / vH
    offX = (centre(unit[0], unit[2]) - centre(view[0], view[2])) / vW * 4.0
    offY = (centre(unit[1], unit[3]) - centre(view[1], view[3])) / vH * -8.0
    flip = -1.0 if flipped else 1.0
    m = [1.0 if i in (0, 5, 10, 15) else 0.0 for i in range(16)]
    if ortho:
        hw, hh = (uW / vW) * 0.5, (uH / vH) * 0.5
        m[0], m[5], m[10] = 1 / hw, -flip / hh, 2 / (f - n)
        m[12], m[14], m[15] = -offX, -(n + f) / (f - n), 1.0
        return m
    t = math.tan(fov * 0.01745329238474369 * 0.5)
    r = t * aspect * n * (uW / vW)
    h = t * n * (uH / vH)
    m[0], m[5] = n / r, flip * n / h
    m[8], m[9], m[10], m[11] = -offX, -offY, (n + f) / (f - n), 1.0
    m[12], m[13], m[14] = -offX, offY, -2 * f * n / (f - n)
    return m


LEFT, RIGHT, WIDE = (0, 0, 1920, 1080), (1920, 0, 3840, 1080), (0, 0, 3840, 1080)
TALL, SMALL, UNEVEN = (0, 0, 1920, 1200), (1920, 0, 3200, 1024), (0, 0, 3200, 1200)
WEST, PRIMARY, SPAN = (-1281, 0, 0, 1024), (0, 0, 1920, 1080), (-1281, 0, 1920, 1080)
TARGET = (0, 0, 256, 256)
cases = {
    "kSingle": projection((0, 0, 1024, 768), (0, 0, 1024, 768), 45, 1, 100),
    "kSingleOrtho": projection((0, 0, 1024, 768), (0, 0, 1024, 768), 45, 1, 100, ortho=True),
    "kWideLeft": projection(LEFT, WIDE, 60, 0.5, 200),
    "kWideRight": projection(RIGHT, WIDE, 60, 0.5, 200),
    "kWideLeftOrtho": projection(LEFT, WIDE, 60, 0.5, 200, ortho=True),
    "kWideRightOrtho": projection(RIGHT, WIDE, 60, 0.5, 200, ortho=True),
    "kWideRightSame": projection(RIGHT, WIDE, 60, 0.5, 200, same=True),
    "kUnevenSmall": projection(SMALL, UNEVEN, 45, 1, 100),
    "kWestOfPrimary": projection(WEST, SPAN, 45, 1, 100),
    "kFlippedTarget": projection(TARGET, WIDE, 90, 1, 10, flipped=True),
    "kFlippedTargetOrtho": projection(TARGET, WIDE, 90, 1, 10, ortho=True, flipped=True),
}
for name, m in cases.items():
    print(f"const double {name}[16] = {{" + ", ".join(f"{v + 0.0:.9g}" for v in m) + "};")
