#pragma once
// Vectors and 4x4 matrices of the renderer. Matrices are row-major and used
// with row vectors (v' = v * M), so A * B applies A first and translation
// sits in elements 12, 13 and 14.

struct CVector3 {
  float x = 0.0f;
  float y = 0.0f;
  float z = 0.0f;

  CVector3 operator+(const CVector3 &o) const { return {x + o.x, y + o.y, z + o.z}; }
  CVector3 operator-(const CVector3 &o) const { return {x - o.x, y - o.y, z - o.z}; }
  CVector3 operator*(float s) const { return {x * s, y * s, z * s}; }
  CVector3 operator-() const { return {-x, -y, -z}; }
  bool operator==(const CVector3 &) const = default;
};

float Dot(const CVector3 &a, const CVector3 &b);
CVector3 Cross(const CVector3 &a, const CVector3 &b);
float Length(const CVector3 &v);
// A zero vector stays zero instead of becoming NaN.
CVector3 Normalize(const CVector3 &v);

struct CMatrix {
  float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

  static CMatrix Identity() { return {}; }
  float &operator()(int row, int col) { return m[row * 4 + col]; }
  float operator()(int row, int col) const { return m[row * 4 + col]; }
  bool operator==(const CMatrix &) const = default;
};

CMatrix operator*(const CMatrix &a, const CMatrix &b);

// Angles in radians. Rotates about X, then Y, then Z.
CMatrix RotationMatrix(float x, float y, float z);
CMatrix TranslationMatrix(float x, float y, float z);
CMatrix ScalingMatrix(float x, float y, float z);
CMatrix Transpose(const CMatrix &a);
// Inverse of a rigid (rotation and translation) matrix. Scale is not
// divided out: callers pass view or world matrices without it.
CMatrix AffineInverse(const CMatrix &a);

// v * M with w = 1, without perspective division.
CVector3 TransformPoint(const CVector3 &v, const CMatrix &a);
// v * M with w = 0: directions and normals, translation ignored.
CVector3 TransformNormal(const CVector3 &v, const CMatrix &a);
