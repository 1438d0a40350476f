#pragma once
// What the expression-driven simulation nodes make of the numbers a text or
// a connection gives them: every value within bounds and a number, so that
// nothing else reaches a vertex.

#include <algorithm>
#include <cmath>

#include "render/Matrix.h"

// Positions are kept within a million units of the origin, far beyond any
// view, so that sums and differences of them stay numbers.
constexpr float MAX_SIM_COORD = 1e6f;

// `v` within [lo, hi]; 0 (or lo, where 0 is outside) for a value that is no number.
inline float SafeFloat(double v, float lo, float hi) {
  if (std::isnan(v)) return std::clamp(0.0f, lo, hi);
  return static_cast<float>(std::clamp(v, static_cast<double>(lo), static_cast<double>(hi)));
}
inline CVector3 SafePosition(double x, double y, double z) {
  return {SafeFloat(x, -MAX_SIM_COORD, MAX_SIM_COORD), SafeFloat(y, -MAX_SIM_COORD, MAX_SIM_COORD),
          SafeFloat(z, -MAX_SIM_COORD, MAX_SIM_COORD)};
}
inline CVector3 SafePosition(const CVector3 &p) { return SafePosition(p.x, p.y, p.z); }
