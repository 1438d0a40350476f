#pragma once

#include "scene/Node.h"

class CNodeInfo;
class CPortBool;
class CPortFloat;
class CPortInt;

// A periodic wave (sine, square, triangle, sawtooth) or smooth noise, in -1 to
// 1 before Offset and Amplitude; Phase is in cycles.
class CSignalGeneratorNode : public CNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

 private:
  CPortInt *m_WaveformType = nullptr;
  CPortFloat *m_Frequency = nullptr, *m_Phase = nullptr, *m_Offset = nullptr, *m_Amplitude = nullptr;
  CPortBool *m_Invert = nullptr;
  CPortFloat *m_Value = nullptr;
};
