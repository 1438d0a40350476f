#!/usr/bin/env python3
"""Golden values for the simplex noise functions of the expression language.

Written from the algorithm's description alone (not from the C++), with every
intermediate rounded to single precision. Run it to regenerate the table in
NoiseTest.cpp.
"""
import struct

PERM256 = [151, 160, 137, 91, 90, 15, 131, 13, 201, 95, 96, 53, 194, 233, 7, 225, 140, 36, 103, 30, 69, 142,
           8, 99, 37, 240, 21, 10, 23, 190, 6, 148, 247, 120, 234, 75, 0, 26, 197, 62, 94, 252, 219, 203, 117,
           35, 11, 32, 57, 177, 33, 88, 237, 149, 56, 87, 174, 20, 125, 136, 171, 168, 68, 175, 74, 165, 71, 134,
           139, 48, 27, 166, 77, 146, 158, 231, 83, 111, 229, 122, 60, 211, 133, 230, 220, 105, 92, 41, 55, 46,
           245, 40, 244, 102, 143, 54, 65, 25, 63, 161, 1, 216, 80, 73, 209, 76, 132, 187, 208, 89, 18, 169, 200,
           196, 135, 130, 116, 188, 159, 86, 164, 100, 109, 198, 173, 186, 3, 64, 52, 217, 226, 250, 124, 123, 5,
           202, 38, 147, 118, 126, 255, 82, 85, 212, 207, 206, 59, 227, 47, 16, 58, 17, 182, 189, 28, 42, 223,
           183, 170, 213, 119, 248, 152, 2, 44, 154, 163, 70, 221, 153, 101, 155, 167, 43, 172, 9, 129, 22, 39,
           253, 19, 98, 108, 110, 79, 113, 224, 232, 178, 185, 112, 104, 218, 246, 97, 228, 251, 34, 242, 193,
           238, 210, 144, 12, 191, 179, 162, 241, 81, 51, 145, 235, 249, 14, 239, 107, 49, 192, 214, 31, 181, 199,
           106, 157, 184, 84, 204, 176, 115, 121, 50, 45, 127, 4, 150, 254, 138, 236, 205, 93, 222, 114, 67, 29,
           24, 72, 243, 141, 128, 195, 78, 66, 215, 61, 156, 180]
perm = PERM256 + PERM256


def f(v):
    """Round to single precision."""
    return struct.unpack('f', struct.pack('f', v))[0]


# Single precision arithmetic: a double result of two floats rounds exactly
# as the float operation would.
def add(a, b): return f(a + b)
def sub(a, b): return f(a - b)
def mul(a, b): return f(a * b)


def cell(v):
    """trunc(v) for v > 0, trunc(v) - 1 otherwise."""
    return int(v) if v > 0 else int(v) - 1


def pow4(r):
    r2 = mul(r, r)
    return mul(r2, r2)


def grad1(h, x):
    g = (h & 7) + 1
    if h & 8:
        g = -g
    return mul(f(g), x)


def grad2(h, x, y):
    h &= 7
    u, v = (x, y) if h < 4 else (y, x)
    a = -u if h & 1 else u
    b = mul(-2.0, v) if h & 2 else mul(2.0, v)
    return add(a, b)


def grad3(h, x, y, z):
    h &= 15
    u = x if h < 8 else y
    v = y if h < 4 else (x if h in (12, 14) else z)
    return add(-u if h & 1 else u, -v if h & 2 else v)


def noise1(x):
    x = f(x)
    i = cell(x)
    x0 = sub(x, f(i))
    x1 = sub(x0, 1.0)
    total = 0.0
    for c, d in ((0, x0), (1, x1)):
        contribution = mul(pow4(sub(1.0, mul(d, d))), grad1(perm[(i + c) & 255], d))
        total = add(total, contribution)
    return mul(f(0.395), total)


def noise2(x, y):
    x, y = f(x), f(y)
    s = mul(add(x, y), f(0.3660254))
    i, j = cell(add(x, s)), cell(add(y, s))
    g2 = f(0.21132487)
    t = mul(f(i + j), g2)
    x0 = sub(x, sub(f(i), t))
    y0 = sub(y, sub(f(j), t))
    i1, j1 = (1, 0) if x0 > y0 else (0, 1)
    corners = [
        (0, 0, x0, y0),
        (i1, j1, add(sub(x0, f(i1)), g2), add(sub(y0, f(j1)), g2)),
        (1, 1, add(sub(x0, 1.0), f(0.42264974)), add(sub(y0, 1.0), f(0.42264974))),
    ]
    ii, jj = i & 255, j & 255
    total = 0.0
    for di, dj, dx, dy in corners:
        r = sub(sub(0.5, mul(dx, dx)), mul(dy, dy))
        n = 0.0
        if r > 0:
            n = mul(pow4(r), grad2(perm[ii + di + perm[jj + dj]], dx, dy))
        total = add(total, n)
    return mul(40.0, total)


def noise3(x, y, z):
    x, y, z = f(x), f(y), f(z)
    s = mul(add(add(x, y), z), f(0.33333334))
    i, j, k = cell(add(x, s)), cell(add(y, s)), cell(add(z, s))
    t = mul(f(i + j + k), f(0.16666667))
    x0 = sub(x, sub(f(i), t))
    y0 = sub(y, sub(f(j), t))
    z0 = sub(z, sub(f(k), t))
    if x0 >= y0:
        if y0 >= z0:
            o1, o2 = (1, 0, 0), (1, 1, 0)
        elif x0 >= z0:
            o1, o2 = (1, 0, 0), (1, 0, 1)
        else:
            o1, o2 = (0, 0, 1), (1, 0, 1)
    else:
        if y0 < z0:
            o1, o2 = (0, 0, 1), (0, 1, 1)
        elif x0 < z0:
            o1, o2 = (0, 1, 0), (0, 1, 1)
        else:
            o1, o2 = (0, 1, 0), (1, 1, 0)
    ii, jj, kk = i & 255, j & 255, k & 255
    total = 0.0
    for (di, dj, dk), extra in (((0, 0, 0), 0.0), (o1, f(0.16666667)), (o2, f(0.33333334)), ((1, 1, 1), 0.5)):
        dx = add(sub(x0, f(di)), extra)
        dy = add(sub(y0, f(dj)), extra)
        dz = add(sub(z0, f(dk)), extra)
        r = sub(sub(sub(f(0.6), mul(dx, dx)), mul(dy, dy)), mul(dz, dz))
        n = 0.0
        if r > 0:
            n = mul(pow4(r), grad3(perm[ii + di + perm[jj + dj + perm[kk + dk]]], dx, dy, dz))
        total = add(total, n)
    return mul(32.0, total)


POINTS1 = [0.0, 0.5, 1.0, -1.0, 0.25, 3.7, -2.3, 12.125, 100.5, -0.75]
POINTS2 = [(0.0, 0.0), (0.5, 0.25), (0.3, 0.7), (-1.0, 2.0), (1.5, -3.25), (10.1, 20.2), (-0.6, -0.9),
           (2.0, 2.0), (7.3, 0.1), (-4.4, 5.5), (-0.3660254, 1.3660254), (-0.5, 0.5)]
POINTS3 = [(0.0, 0.0, 0.0), (0.5, 0.25, 0.75), (0.3, 0.7, 0.1), (-1.0, 2.0, -3.0), (1.5, -3.25, 0.5),
           (10.1, 20.2, 30.3), (-0.6, -0.9, -0.2), (2.0, 2.0, 2.0), (0.9, 0.1, 0.5), (0.1, 0.9, 0.5),
           (0.5, 0.1, 0.9), (0.2, 0.5, 0.8), (0.8, 0.5, 0.2), (0.5, 0.8, 0.2),
           # A skewed coordinate at 0 or below: here the cell rule moves the result.
           (0.0, 0.5, -0.5), (-0.25, 0.25, 0.0), (-1.0, 0.3, 0.7)]

if __name__ == '__main__':
    for x in POINTS1:
        print('    {%r, %.9g},' % (x, noise1(x)))
    print()
    for x, y in POINTS2:
        print('    {%r, %r, %.9g},' % (x, y, noise2(x, y)))
    print()
    for x, y, z in POINTS3:
        print('    {%r, %r, %r, %.9g},' % (x, y, z, noise3(x, y, z)))
