#!/usr/bin/env python3
"""Writes the default picture of FileTexture: a tileable marble, as an
uncompressed 32-bit DDS file (top row first, bytes B, G, R, A).

    tools/make_marble.py assets/data/marbletiled.dds [SIZE]

The picture is procedural: veins are a sine across the picture bent by
turbulence, and both repeat with the picture's size, so the texture tiles
without seams. The same arguments always give the same bytes.
"""
import math
import random
import struct
import sys


class PeriodicNoise:
    """Gradient noise on a lattice that wraps every `period` cells."""

    def __init__(self, period, seed):
        rng = random.Random(seed)
        self.period = period
        self.grad = []
        for _ in range(period * period):
            a = rng.uniform(0, 2 * math.pi)
            self.grad.append((math.cos(a), math.sin(a)))

    def __call__(self, x, y):
        p = self.period
        x0, y0 = math.floor(x), math.floor(y)
        fx, fy = x - x0, y - y0

        def dot(ix, iy, dx, dy):
            g = self.grad[(iy % p) * p + (ix % p)]
            return g[0] * dx + g[1] * dy

        def fade(t):
            return t * t * t * (t * (t * 6 - 15) + 10)

        u, v = fade(fx), fade(fy)
        a = dot(x0, y0, fx, fy) + u * (dot(x0 + 1, y0, fx - 1, fy) - dot(x0, y0, fx, fy))
        b = dot(x0, y0 + 1, fx, fy - 1) + u * (dot(x0 + 1, y0 + 1, fx - 1, fy - 1) - dot(x0, y0 + 1, fx, fy - 1))
        return a + v * (b - a)


def turbulence(octaves, u, v):
    """Sum of |noise| over octaves; u and v from 0 to 1 wrap."""
    total, amplitude = 0.0, 1.0
    for noise in octaves:
        total += abs(noise(u * noise.period, v * noise.period)) * amplitude
        amplitude *= 0.5
    return total


def marble(size):
    octaves = [PeriodicNoise(4 << i, seed=17 + i) for i in range(5)]
    light, vein, tint = (236, 230, 220), (92, 96, 108), (196, 204, 214)
    rows = []
    for j in range(size):
        row = bytearray()
        for i in range(size):
            u, v = i / size, j / size
            t = turbulence(octaves, u, v)
            # Two veins across and one along the diagonal, all whole periods.
            s = 0.5 + 0.5 * math.sin(2 * math.pi * (2 * u + v) + 7.0 * t)
            s = s ** 0.35
            w = 0.5 + 0.5 * math.sin(2 * math.pi * (u - 3 * v) + 5.0 * t)
            color = [vein[k] + (light[k] - vein[k]) * s for k in range(3)]
            color = [c + (tint[k] - c) * 0.35 * w * w for k, c in enumerate(color)]
            r, g, b = (max(0, min(255, int(c))) for c in color)
            row += bytes((b, g, r, 255))
        rows.append(bytes(row))
    return rows


def write_dds(path, size, rows):
    caps, height, width, pitch, pixel_format = 0x1, 0x2, 0x4, 0x8, 0x1000
    header = struct.pack("<4s7I44x", b"DDS ", 124, caps | height | width | pitch | pixel_format, size, size,
                         size * 4, 0, 0)
    rgb, alpha = 0x40, 0x1
    header += struct.pack("<8I", 32, rgb | alpha, 0, 32, 0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000)
    header += struct.pack("<5I", 0x1000, 0, 0, 0, 0)  # a plain texture
    assert len(header) == 128
    with open(path, "wb") as f:
        f.write(header)
        for row in rows:
            f.write(row)


if __name__ == "__main__":
    out = sys.argv[1] if len(sys.argv) > 1 else "assets/data/marbletiled.dds"
    size = int(sys.argv[2]) if len(sys.argv) > 2 else 256
    write_dds(out, size, marble(size))
