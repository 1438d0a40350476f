#include "render/Matrix.h"

#include <cmath>

float Dot(const CVector3 &a, const CVector3 &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

CVector3 Cross(const CVector3 &a, const CVector3 &b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

float Length(const CVector3 &v) { return std::sqrt(Dot(v, v)); }

CVector3 Normalize(const CVector3 &v) {
  float len = Length(v);
  if (len == 0.0f) return v;
  return v * (1.0f / len);
}

CMatrix operator*(const CMatrix &a, const CMatrix &b) {
  // Each row of the product is a blend of b's rows: written this way the
  // compiler keeps a row in one vector register. The sums run in the same
  // order as the textbook loop, so results are bit for bit the same.
  CMatrix r;
  for (int row = 0; row < 4; ++row) {
    float out[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    for (int k = 0; k < 4; ++k) {
      const float s = a.m[row * 4 + k];
      for (int col = 0; col < 4; ++col) out[col] += s * b.m[k * 4 + col];
    }
    for (int col = 0; col < 4; ++col) r.m[row * 4 + col] = out[col];
  }
  return r;
}

CMatrix RotationMatrix(float x, float y, float z) {
  float sx = std::sin(x), cx = std::cos(x);
  float sy = std::sin(y), cy = std::cos(y);
  float sz = std::sin(z), cz = std::cos(z);
  // clang-format off
  return {{cy * cz,                sz * cy,                -sy,     0,
           sx * sy * cz - cx * sz, sz * sx * sy + cz * cx, cy * sx, 0,
           cz * sy * cx + sz * sx, sy * cx * sz - cz * sx, cy * cx, 0,
           0,                      0,                      0,       1}};
  // clang-format on
}

CMatrix TranslationMatrix(float x, float y, float z) { return {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1}}; }

CMatrix ScalingMatrix(float x, float y, float z) { return {{x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1}}; }

CMatrix Transpose(const CMatrix &a) {
  CMatrix r;
  for (int row = 0; row < 4; ++row)
    for (int col = 0; col < 4; ++col) r(row, col) = a(col, row);
  return r;
}

CMatrix AffineInverse(const CMatrix &a) {
  CMatrix r;
  for (int row = 0; row < 3; ++row)
    for (int col = 0; col < 3; ++col) r(row, col) = a(col, row);
  CVector3 t{a.m[12], a.m[13], a.m[14]};
  for (int i = 0; i < 3; ++i) r.m[12 + i] = -Dot(t, {a(i, 0), a(i, 1), a(i, 2)});
  r.m[3] = r.m[7] = r.m[11] = 0.0f;
  r.m[15] = 1.0f;
  return r;
}

CVector3 TransformPoint(const CVector3 &v, const CMatrix &a) {
  return {v.x * a.m[0] + v.y * a.m[4] + v.z * a.m[8] + a.m[12],
          v.x * a.m[1] + v.y * a.m[5] + v.z * a.m[9] + a.m[13],
          v.x * a.m[2] + v.y * a.m[6] + v.z * a.m[10] + a.m[14]};
}

CVector3 TransformNormal(const CVector3 &v, const CMatrix &a) {
  return {v.x * a.m[0] + v.y * a.m[4] + v.z * a.m[8],
          v.x * a.m[1] + v.y * a.m[5] + v.z * a.m[9],
          v.x * a.m[2] + v.y * a.m[6] + v.z * a.m[10]};
}
