#include "expr/Noise.h"

#include "core/Numeric.h"

#define VELMOR_PERLIN_TABLE                                                                                     \
  151, 160, 137, 91, 90, 15, 131, 13, 201, 95, 96, 53, 194, 233, 7, 225, 140, 36, 103, 30, 69, 142, 8, 99, 37,  \
      240, 21, 10, 23, 190, 6, 148, 247, 120, 234, 75, 0, 26, 197, 62, 94, 252, 219, 203, 117, 35, 11, 32, 57,  \
      177, 33, 88, 237, 149, 56, 87, 174, 20, 125, 136, 171, 168, 68, 175, 74, 165, 71, 134, 139, 48, 27, 166,  \
      77, 146, 158, 231, 83, 111, 229, 122, 60, 211, 133, 230, 220, 105, 92, 41, 55, 46, 245, 40, 244, 102, 143, \
      54, 65, 25, 63, 161, 1, 216, 80, 73, 209, 76, 132, 187, 208, 89, 18, 169, 200, 196, 135, 130, 116, 188,    \
      159, 86, 164, 100, 109, 198, 173, 186, 3, 64, 52, 217, 226, 250, 124, 123, 5, 202, 38, 147, 118, 126, 255, \
      82, 85, 212, 207, 206, 59, 227, 47, 16, 58, 17, 182, 189, 28, 42, 223, 183, 170, 213, 119, 248, 152, 2,    \
      44, 154, 163, 70, 221, 153, 101, 155, 167, 43, 172, 9, 129, 22, 39, 253, 19, 98, 108, 110, 79, 113, 224,   \
      232, 178, 185, 112, 104, 218, 246, 97, 228, 251, 34, 242, 193, 238, 210, 144, 12, 191, 179, 162, 241, 81,  \
      51, 145, 235, 249, 14, 239, 107, 49, 192, 214, 31, 181, 199, 106, 157, 184, 84, 204, 176, 115, 121, 50, 45, \
      127, 4, 150, 254, 138, 236, 205, 93, 222, 114, 67, 29, 24, 72, 243, 141, 128, 195, 78, 66, 215, 61, 156, 180

const uint8_t g_NoisePermutation[512] = {VELMOR_PERLIN_TABLE, VELMOR_PERLIN_TABLE};

#undef VELMOR_PERLIN_TABLE

namespace {

const uint8_t *const perm = g_NoisePermutation;

int CellFloor(float v) {
  int whole = SatInt<int32_t>(v);
  return v > 0.0f ? whole : whole - (whole > INT32_MIN ? 1 : 0);
}

// Cell indices wrap at 256; unsigned arithmetic keeps huge cells defined.
unsigned Wrap(int cell, unsigned offset = 0) { return (static_cast<unsigned>(cell) + offset) & 255u; }

float Grad1(int hash, float x) {
  int h = hash & 15;
  float g = 1.0f + static_cast<float>(h & 7);
  if (h & 8) g = -g;
  return g * x;
}

float Grad2(int hash, float x, float y) {
  int h = hash & 7;
  float u = h < 4 ? x : y;
  float v = h < 4 ? y : x;
  return ((h & 1) ? -u : u) + ((h & 2) ? -2.0f * v : 2.0f * v);
}

float Grad3(int hash, float x, float y, float z) {
  int h = hash & 15;
  float u = h < 8 ? x : y;
  float v = h < 4 ? y : (h == 12 || h == 14) ? x : z;
  return ((h & 1) ? -u : u) + ((h & 2) ? -v : v);
}

// r^4 as (r r)(r r), the rounding the reference code has.
float Fourth(float r) {
  float r2 = r * r;
  return r2 * r2;
}

}  // namespace

float SimplexNoise1(float x) {
  int i = CellFloor(x);
  float x0 = x - static_cast<float>(i);
  float x1 = x0 - 1.0f;
  float n0 = Fourth(1.0f - x0 * x0) * Grad1(perm[Wrap(i)], x0);
  float n1 = Fourth(1.0f - x1 * x1) * Grad1(perm[Wrap(i, 1)], x1);
  return 0.395f * (n0 + n1);
}

float SimplexNoise2(float x, float y) {
  const float F2 = 0.3660254f;
  const float G2 = 0.21132487f;
  float s = (x + y) * F2;
  int i = CellFloor(x + s);
  int j = CellFloor(y + s);
  float t = static_cast<float>(static_cast<int64_t>(i) + j) * G2;
  float x0 = x - (static_cast<float>(i) - t);
  float y0 = y - (static_cast<float>(j) - t);
  unsigned i1 = x0 > y0 ? 1 : 0;
  unsigned j1 = 1 - i1;
  float x1 = x0 - static_cast<float>(i1) + G2;
  float y1 = y0 - static_cast<float>(j1) + G2;
  float x2 = x0 - 1.0f + 0.42264974f;
  float y2 = y0 - 1.0f + 0.42264974f;
  unsigned ii = Wrap(i), jj = Wrap(j);

  float n0 = 0.0f, n1 = 0.0f, n2 = 0.0f;
  float r0 = 0.5f - x0 * x0 - y0 * y0;
  if (r0 > 0.0f) n0 = Fourth(r0) * Grad2(perm[ii + perm[jj]], x0, y0);
  float r1 = 0.5f - x1 * x1 - y1 * y1;
  if (r1 > 0.0f) n1 = Fourth(r1) * Grad2(perm[ii + i1 + perm[jj + j1]], x1, y1);
  float r2 = 0.5f - x2 * x2 - y2 * y2;
  if (r2 > 0.0f) n2 = Fourth(r2) * Grad2(perm[ii + 1 + perm[jj + 1]], x2, y2);
  return 40.0f * (n0 + n1 + n2);
}

float SimplexNoise3(float x, float y, float z) {
  const float F3 = 0.33333334f;
  const float G3 = 0.16666667f;
  float s = (x + y + z) * F3;
  int i = CellFloor(x + s);
  int j = CellFloor(y + s);
  int k = CellFloor(z + s);
  float t = static_cast<float>(static_cast<int64_t>(i) + j + k) * G3;
  float x0 = x - (static_cast<float>(i) - t);
  float y0 = y - (static_cast<float>(j) - t);
  float z0 = z - (static_cast<float>(k) - t);

  // The two middle corners follow from the order of x0, y0, z0.
  unsigned i1, j1, k1, i2, j2, k2;
  if (x0 >= y0) {
    if (y0 >= z0) {
      i1 = 1, j1 = 0, k1 = 0, i2 = 1, j2 = 1, k2 = 0;
    } else if (x0 >= z0) {
      i1 = 1, j1 = 0, k1 = 0, i2 = 1, j2 = 0, k2 = 1;
    } else {
      i1 = 0, j1 = 0, k1 = 1, i2 = 1, j2 = 0, k2 = 1;
    }
  } else {
    if (y0 < z0) {
      i1 = 0, j1 = 0, k1 = 1, i2 = 0, j2 = 1, k2 = 1;
    } else if (x0 < z0) {
      i1 = 0, j1 = 1, k1 = 0, i2 = 0, j2 = 1, k2 = 1;
    } else {
      i1 = 0, j1 = 1, k1 = 0, i2 = 1, j2 = 1, k2 = 0;
    }
  }
  float x1 = x0 - static_cast<float>(i1) + G3;
  float y1 = y0 - static_cast<float>(j1) + G3;
  float z1 = z0 - static_cast<float>(k1) + G3;
  float x2 = x0 - static_cast<float>(i2) + 0.33333334f;
  float y2 = y0 - static_cast<float>(j2) + 0.33333334f;
  float z2 = z0 - static_cast<float>(k2) + 0.33333334f;
  float x3 = x0 - 1.0f + 0.5f;
  float y3 = y0 - 1.0f + 0.5f;
  float z3 = z0 - 1.0f + 0.5f;
  unsigned ii = Wrap(i), jj = Wrap(j), kk = Wrap(k);

  float n0 = 0.0f, n1 = 0.0f, n2 = 0.0f, n3 = 0.0f;
  float r0 = 0.6f - x0 * x0 - y0 * y0 - z0 * z0;
  if (r0 > 0.0f) n0 = Fourth(r0) * Grad3(perm[ii + perm[jj + perm[kk]]], x0, y0, z0);
  float r1 = 0.6f - x1 * x1 - y1 * y1 - z1 * z1;
  if (r1 > 0.0f) n1 = Fourth(r1) * Grad3(perm[ii + i1 + perm[jj + j1 + perm[kk + k1]]], x1, y1, z1);
  float r2 = 0.6f - x2 * x2 - y2 * y2 - z2 * z2;
  if (r2 > 0.0f) n2 = Fourth(r2) * Grad3(perm[ii + i2 + perm[jj + j2 + perm[kk + k2]]], x2, y2, z2);
  float r3 = 0.6f - x3 * x3 - y3 * y3 - z3 * z3;
  if (r3 > 0.0f) n3 = Fourth(r3) * Grad3(perm[ii + 1 + perm[jj + 1 + perm[kk + 1]]], x3, y3, z3);
  return 32.0f * (n0 + n1 + n2 + n3);
}
