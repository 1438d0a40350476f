#pragma once

#include "scene/Node.h"

class CNodeInfo;
class CPortFloat;

// The beat level of the analysis mapped onto Min..Max, capped at the top.
class CBeatNode : public CNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

 private:
  CPortFloat *m_NoMusic = nullptr, *m_Amplification = nullptr, *m_Min = nullptr, *m_Max = nullptr;
  CPortFloat *m_Strength = nullptr;
};
