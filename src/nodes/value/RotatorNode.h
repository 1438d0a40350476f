#pragma once

#include "scene/Node.h"

class CNodeInfo;
class CPortFloat;

// Three angles in degrees that turn at their own speeds from a start angle.
class CRotatorNode : public CNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

 private:
  struct Axis {
    CPortFloat *m_StartRot = nullptr, *m_RotSpeed = nullptr, *m_Rot = nullptr;
    float m_Angle = 0.0f;  // turned so far, 0 to 360
  };
  Axis m_Axes[3];
};
