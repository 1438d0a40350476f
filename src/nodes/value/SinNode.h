#pragma once

#include "scene/Node.h"

class CNodeInfo;
class CPortFloat;

// A sine wave between Min and Max that starts at Min; Offset is in periods.
class CSinNode : public CNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

 private:
  CPortFloat *m_Min = nullptr, *m_Max = nullptr, *m_Offset = nullptr, *m_Frequency = nullptr;
  CPortFloat *m_Value = nullptr;
};
