# Independent values for ShapesTest.cpp, from the shape formulas, at the
# inputs named in each line.
import math
TWO_PI = 6.2831854820251465
DEG = 0.01745329238474369

def cone(n, r, height, U, V, i):  # vertices 2i (apex) and 2i+1 (rim)
    t = i / n; a = t * TWO_PI; h = height * 0.5
    return ("apex u", (1 - (t + 0.5 / n)) * U), ("rim", (math.sin(a) * r, -h, math.cos(a) * r), "u", (1 - t) * U)
print("cone n=3 r=0.5 h=1 i=1:", cone(3, 0.5, 1, 1, 1, 1))

def cyl_cap(n, r, top, bottom, height, U, V, i):  # cap ring pair i
    t = i / n; a = t * TWO_PI; s, c = math.sin(a), math.cos(a)
    return (s * r * top, height / 2, c * r * top), (s * r * bottom, -height / 2, c * r * bottom), \
        (s * U / 2.8 * 0.5 + 0.5, c * V / 2.8 * 0.5 + 0.5)
print("cylinder cap n=3 r=0.5 top=2 bottom=1 h=1 U=2 V=1 i=1:", cyl_cap(3, 0.5, 2, 1, 1, 2, 1, 1))

def sphere(G, N, R, U, V, j, i):
    b = j * (math.pi / G); r = math.sin(b) * R; y = math.cos(b) * R; a = i * (TWO_PI / N)
    p = (math.sin(a) * r, y, math.cos(a) * r); l = math.sqrt(sum(x * x for x in p))
    return p, tuple(x / l for x in p), (1 - (i / N) * U, (j / G) * V)
print("sphere G=3 N=3 R=2 U=1 V=1 j=1 i=1:", sphere(3, 3, 2, 1, 1, 1, 1))

def disc_ring(N, outer, inner, U, V, i):
    a = (i / N) * TWO_PI; s, c = math.sin(a), math.cos(a); p, q = s * U * 0.5, c * V * 0.5
    ratio = inner / outer
    return (s * outer, c * outer), (p + 0.5, 1 - (q + 0.5)), (s * inner, c * inner), (ratio * p + 0.5, 1 - (ratio * q + 0.5))
print("disc ring N=4 outer=2 inner=1 i=1:", disc_ring(4, 2, 1, 1, 1, 1))

def torus_vertex(A, H, R, T, i, k, U, V):
    def C(n):
        th = n * 1 * TWO_PI / A; r = R
        return (math.cos(th) * r, 0.0, math.sin(th) * r)
    c0, c1 = C(i), C(i + 1)
    d = [x - y for x, y in zip(c1, c0)]; s = [x + y for x, y in zip(c1, c0)]
    def cross(a, b): return [a[1]*b[2]-a[2]*b[1], a[2]*b[0]-a[0]*b[2], a[0]*b[1]-a[1]*b[0]]
    def norm(v): l = math.sqrt(sum(x*x for x in v)); return [x / l for x in v]
    B = norm(cross(d, s)); Nn = norm(cross(B, d)); w = k * TWO_PI / H
    a, b = math.sin(w) * T, math.cos(w) * T
    return [c0[m] + B[m] * b + Nn[m] * a for m in range(3)], ((k / H) * U, (i / A) * V)
print("torus A=4 H=4 R=2 T=0.5 i=1 k=1 U=2 V=10:", torus_vertex(4, 4, 2, 0.5, 1, 1, 2, 10))

def rot(x, y, z):
    sx, cx, sy, cy, sz, cz = math.sin(x), math.cos(x), math.sin(y), math.cos(y), math.sin(z), math.cos(z)
    return [[cy*cz, sz*cy, -sy], [sx*sy*cz-cx*sz, sz*sx*sy+cz*cx, cy*sx], [cz*sy*cx+sz*sx, sy*cx*sz-cz*sx, cy*cx]]
def clone(p, k, pos, rotc, scalec):
    R = rot(*[r * k * DEG for r in rotc]); sc = [s * k + 1 for s in scalec]
    return [sum(p[m] * sc[m] * R[m][c] for m in range(3)) + pos[c] * k for c in range(3)]
print("clone k=2 of (0.5,0.5,0.5) pos=(1,0,0) rot=(0,0,45) scale=(1,0,0):", clone([0.5, 0.5, 0.5], 2, [1, 0, 0], [0, 0, 45], [1, 0, 0]))
R = rot(0, 90 * DEG, 0)
print("transform (0.5,0.5,0.5) rot=(0,90,0) scale=(2,1,1) pos=(0,0,3):", [sum([0.5*2, 0.5, 0.5][m] * R[m][c] for m in range(3)) + [0, 0, 3][c] for c in range(3)])
