#pragma once
// The shape the colour nodes share: three float components and an alpha in,
// one colour out, alpha passed through as it is.

#include "scene/Node.h"
#include "scene/NodeInfo.h"

class CPortColor;
class CPortFloat;

struct RGBf {
  float r, g, b;
};

class CColorConverterNode : public CNode {
 public:
  bool Init() final;
  void Update(float time, FrameInfo *frame) final;

 protected:
  // The type record: the three component ports as given, then Alpha and the
  // Color out-port that all converters have.
  static CNodeInfo *MakeInfo(const char *typeName, CNodeInfo::Creator creator, const char *desc, CPortFloat *first,
                             CPortFloat *second, CPortFloat *third);
  // Alpha is always pulled first; the components after it, forwards or backwards.
  explicit CColorConverterNode(bool pullBackwards) : m_PullBackwards(pullBackwards) {}
  virtual RGBf Convert(float first, float second, float third) const = 0;
  // Each component limited to 0 to 1, for the conversions that can overshoot.
  static RGBf Saturate(RGBf c);

 private:
  bool m_PullBackwards;
  CPortFloat *m_Components[3] = {};
  CPortFloat *m_Alpha = nullptr;
  CPortColor *m_Color = nullptr;
};
