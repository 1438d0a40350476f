#pragma once
// The draws the simulation nodes make from the shared generator, and the
// pool search that Particles and Lines share.

#include <cmath>

#include "core/Random.h"
#include "render/Color.h"
#include "render/Matrix.h"
#include "scene/PortValues.h"

// -1 to 1 and 0 to 1.
inline float DrawSigned() { return RandomSigned(SharedRandom()); }
inline float DrawUnsigned() { return RandomUnsigned(SharedRandom()); }

// z = S, angle from 0 to 2 pi, x and y on the circle of radius sqrt(1 - z^2).
inline CVector3 RandomUnitVector() {
  const float z = DrawSigned();
  const float a = RandomRange(0.0f, 6.2831855f);
  const float r = std::sqrt(std::fmax(0.0f, 1.0f - z * z));
  return {r * std::cos(a), r * std::sin(a), z};
}

// Each component limited to 0..1, times 255, rounded; red lowest.
inline uint32_t PackColorRounded(float r, float g, float b, float a) {
  auto c = [](float v) { return static_cast<uint32_t>(std::lround(v >= 1.0f ? 255.0f : (v > 0.0f ? v * 255.0f : 0.0f))); };
  return c(r) | (c(g) << 8) | (c(b) << 16) | (c(a) << 24);
}
inline uint32_t PackColorRounded(const Color4f &c) { return PackColorRounded(c.r, c.g, c.b, c.a); }
inline uint32_t PackColorRounded(const float c[4]) { return PackColorRounded(c[0], c[1], c[2], c[3]); }

// The index of a record that isn't alive, searching from `start` to the end
// and then from 0, or -1; `start` moves behind the record found.
template <typename Record>
int TakeFreeRecord(Record *records, int count, int &start) {
  for (int pass = 0; pass < 2; ++pass) {
    const int from = pass == 0 ? start : 0, to = pass == 0 ? count : start;
    for (int i = from; i < to; ++i)
      if (!records[i].alive) {
        start = i + 1 < count ? i + 1 : 0;
        return i;
      }
  }
  return -1;
}

inline CVector3 ToVector(const Vec3f &v) { return {v.x, v.y, v.z}; }
inline CMatrix RotationDegrees(const Vec3f &v) {
  constexpr float k = 0.017453292f;
  return RotationMatrix(v.x * k, v.y * k, v.z * k);
}
