#pragma once

#include "nodes/value/ColorConverterNode.h"

// Hue in degrees, saturation and lightness (0 to 1) to red, green and blue.
class CHSLAToColor : public CColorConverterNode {
 public:
  static CNodeInfo *CreateInfo();
  CHSLAToColor() : CColorConverterNode(false) {}

 private:
  RGBf Convert(float hue, float s, float l) const override;
};
