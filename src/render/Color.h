#pragma once
// Packed colors: bytes R, G, B, A in memory order, i.e. the little-endian
// word 0xAABBGGRR. Vertex colors and system-memory texels share this form.

#include "core/Numeric.h"

#include <cstdint>

// >= 1 gives 255, <= 0 gives 0, anything between truncates value * 255.
// NaN gives 0.
inline uint32_t PackChannel(float v) {
  if (v >= 1.0f) return 255;
  if (v <= 0.0f) return 0;
  return static_cast<uint32_t>(SatInt(v * 255.0));
}

inline uint32_t PackColor(float r, float g, float b, float a) {
  return PackChannel(r) | (PackChannel(g) << 8) | (PackChannel(b) << 16) | (PackChannel(a) << 24);
}

inline uint32_t PackColor(const float color[4]) { return PackColor(color[0], color[1], color[2], color[3]); }
