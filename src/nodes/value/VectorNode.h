#pragma once

#include "scene/Node.h"

class CNodeInfo;
class CPortFloat;
class CPortVector;

// Three numbers combined into one vector.
class CVectorNode : public CNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

 private:
  CPortFloat *m_X = nullptr, *m_Y = nullptr, *m_Z = nullptr;
  CPortVector *m_Vector = nullptr;
};
