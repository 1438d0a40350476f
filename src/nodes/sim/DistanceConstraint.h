#pragma once
// The distance rule of the position-based simulations (Grass, Shatter):
// with d = a - b and r the squared rest length, k = r / (d . d + r) - 0.5
// is the first-order step that brings |d|^2 to r, so no square root is
// needed. Strengths scale the step; at 2 and above it overshoots by more
// than it corrects, so callers keep them below.

#include "render/Matrix.h"

inline float ConstraintFactor(const CVector3 &d, float restSquared) {
  return restSquared / (Dot(d, d) + restSquared) - 0.5f;
}

// Both points move, each half of the way.
inline void HoldBoth(CVector3 &a, CVector3 &b, float restSquared, float strength = 1.0f) {
  const CVector3 d = a - b;
  const float k = ConstraintFactor(d, restSquared) * strength;
  a = a + d * k;
  b = b - d * k;
}

// `fixed` stays; `b` moves the whole way.
inline void HoldFrom(const CVector3 &fixed, CVector3 &b, float restSquared, float strength = 1.0f) {
  const CVector3 d = fixed - b;
  b = b - d * (2.0f * ConstraintFactor(d, restSquared) * strength);
}
