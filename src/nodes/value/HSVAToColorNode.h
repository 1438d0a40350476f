#pragma once

#include "nodes/value/ColorConverterNode.h"

// Hue in degrees, saturation and value (0 to 1) to red, green and blue.
class CHSVAToColor : public CColorConverterNode {
 public:
  static CNodeInfo *CreateInfo();
  CHSVAToColor() : CColorConverterNode(false) {}

 private:
  RGBf Convert(float hue, float s, float v) const override;
};
