#pragma once

#include "nodes/value/ColorConverterNode.h"

// Red, green, blue and alpha combined into one colour, unlimited.
class CRGBAToColor : public CColorConverterNode {
 public:
  static CNodeInfo *CreateInfo();
  CRGBAToColor() : CColorConverterNode(true) {}

 private:
  RGBf Convert(float r, float g, float b) const override { return {r, g, b}; }
};
