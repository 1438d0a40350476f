#include "nodes/value/HSLAToColorNode.h"

#include <cmath>

#include "scene/PortValues.h"

CNodeInfo *CHSLAToColor::CreateInfo() {
  return MakeInfo("HSLAToColor", [] { return static_cast<CNode *>(new CHSLAToColor); },
                  "Converts a Hue, Saturation, Lightness and alpha component to a color",
                  new CPortFloat("Hue", "The 'real' color. In degrees", 0.0f, 1.0f, 0.0f, 360.0f),
                  new CPortFloat("Saturation", "The saturation of the color.", 0.0f, 0.01f, 0.0f, 1.0f),
                  new CPortFloat("Lightness", "The lightness of the color", 1.0f, 0.01f, 0.0f, 1.0f));
}

namespace {
// One channel from its hue position t, between the levels p and q.
float Channel(float p, float q, float t) {
  if (t < 0.0f) t += 1.0f;
  if (t > 1.0f) t -= 1.0f;
  if (6.0f * t < 1.0f) return p + (q - p) * 6.0f * t;
  if (2.0f * t < 1.0f) return q;
  if (3.0f * t < 2.0f) return p + (q - p) * (2.0f / 3.0f - t) * 6.0f;
  return p;
}
}  // namespace

RGBf CHSLAToColor::Convert(float hue, float s, float l) const {
  if (std::fabs(s) <= 0.00001f) return Saturate({l, l, l});
  const float h = hue / 360.0f;
  const float q = l < 0.5f ? l * (1.0f + s) : l + s - l * s;
  const float p = 2.0f * l - q;
  return Saturate({Channel(p, q, h + 1.0f / 3.0f), Channel(p, q, h), Channel(p, q, h - 1.0f / 3.0f)});
}
