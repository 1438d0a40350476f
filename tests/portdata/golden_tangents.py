# Independent tangent sums for MeshTest's cases: the texture-space
# directions of each triangle, with r scaling only the second term, summed
# per vertex, then made orthogonal to the normal.
import math

def sub(a, b): return [x - y for x, y in zip(a, b)]
def add(a, b): return [x + y for x, y in zip(a, b)]
def mul(a, s): return [x * s for x in a]
def dot(a, b): return sum(x * y for x, y in zip(a, b))
def cross(a, b): return [a[1]*b[2]-a[2]*b[1], a[2]*b[0]-a[0]*b[2], a[0]*b[1]-a[1]*b[0]]

def tangents(P, UV, N, tris):
    S = [[0, 0, 0] for _ in P]; T = [[0, 0, 0] for _ in P]
    for a, b, c in tris:
        e1, e2 = sub(P[b], P[a]), sub(P[c], P[a])
        s1, t1 = sub(UV[b], UV[a]); s2, t2 = sub(UV[c], UV[a])
        r = 1 / (s1 * t2 - s2 * t1)
        sd = sub(mul(e1, t2), mul(mul(e2, t1), r)); td = sub(mul(e2, s1), mul(mul(e1, s2), r))
        for i in (a, b, c): S[i] = add(S[i], sd); T[i] = add(T[i], td)
    out = []
    for i in range(len(P)):
        s, n = S[i], N[i]
        if dot(s, s) <= 1e-5: out.append(None); continue
        t = sub(s, mul(n, dot(n, s))); t = mul(t, 1 / math.sqrt(dot(t, t))); b = cross(n, t)
        if dot(T[i], b) < 0: b = mul(b, -1)
        out.append(([round(x, 6) for x in t], [round(x, 6) for x in b]))
    return out

def strip_triangles(strip):
    tris = []
    for i in range(len(strip) - 2):
        a, b, c = strip[i:i + 3]
        if a == b or b == c: continue
        if i & 1: b, c = c, b
        tris.append((a, b, c))
    return tris

up = [0, 0, 1]
P = [[0, 0, 0], [2, 0, 0], [1, 3, 0]]
print("triangle", tangents(P, [[0, 0], [1, 0.5], [0.25, 1]], [up] * 3, [(0, 1, 2)]))
print("mirrored", tangents(P, [[0, 0], [1, 0.5], [0.25, -1]], [up] * 3, [(0, 1, 2)]))
P = [[0, 0, 0], [1, 0, 0], [0, 1, 0], [1, 1, 0.5], [0, 2, 0], [1, 2, 0], [5, 5, 5]]
UV = [[0, 0], [1, 0], [0, 0.5], [1, 0.5], [0, 1], [1, 1.2], [0, 0]]
print("strip", tangents(P, UV, [up] * 7, strip_triangles([0, 1, 2, 2, 3, 4, 5])))
