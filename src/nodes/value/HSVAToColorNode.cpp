#include "nodes/value/HSVAToColorNode.h"

#include <cmath>

#include "core/Numeric.h"
#include "scene/PortValues.h"

CNodeInfo *CHSVAToColor::CreateInfo() {
  return MakeInfo("HSVAToColor", [] { return static_cast<CNode *>(new CHSVAToColor); },
                  "Converts a Hue, Saturation, Value and alpha component to a color",
                  new CPortFloat("Hue", "The 'real' color. In degrees", 0.0f, 1.0f, 0.0f, 360.0f),
                  new CPortFloat("Saturation",
                                 "The saturation of the color. Can be though of as the purity of the color. 0.0 is "
                                 "grey and 1.0 is a 'pure' color",
                                 0.0f, 0.01f, 0.0f, 1.0f),
                  new CPortFloat("Value", "The brightness of the color", 1.0f, 0.01f, 0.0f, 1.0f));
}

RGBf CHSVAToColor::Convert(float hue, float s, float v) const {
  if (std::fabs(s) <= 0.00001f || std::fabs(v) <= 0.00001f) return Saturate({v, v, v});
  const float sector = std::floor(hue / 60.0f);
  const float f = hue / 60.0f - sector;
  const float p = v * (1.0f - s);
  const float q = v * (1.0f - f * s);
  const float t = v * (1.0f - (1.0f - f) * s);
  // 360 degrees lands in sector 6 and a hue just below 0 in sector -1: the
  // same colours as sectors 0 and 5. Hues beyond those, which only a
  // connection can bring, give black.
  switch (SatInt(sector)) {
    case 0:
    case 6: return Saturate({v, t, p});
    case 1: return Saturate({q, v, p});
    case 2: return Saturate({p, v, t});
    case 3: return Saturate({p, q, v});
    case 4: return Saturate({t, p, v});
    case 5:
    case -1: return Saturate({v, p, q});
    default: return {0.0f, 0.0f, 0.0f};
  }
}
