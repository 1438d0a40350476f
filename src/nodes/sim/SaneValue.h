#pragma once
// What a connection may feed a simulation beyond its ports' ranges: NaN and
// infinities, which must never reach a vertex. NaN gives 0; everything else
// is held within [lo, hi].

#include <algorithm>
#include <cmath>

#include "render/Matrix.h"
#include "scene/PortValues.h"

inline float SaneValue(float v, float lo = -10000.0f, float hi = 10000.0f) {
  return std::isnan(v) ? 0.0f : std::clamp(v, lo, hi);
}
inline CVector3 SaneVector(const Vec3f &v) { return {SaneValue(v.x), SaneValue(v.y), SaneValue(v.z)}; }
