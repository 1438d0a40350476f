#pragma once

#include "scene/Node.h"

class CNodeInfo;
class CPortFloat;
class CPortInt;

// A value that wanders between targets in Min to Max: it waits a delay, then
// glides to the next target over an interpolation time. Delay, interpolation
// time and target are each picked by their own mode. It steps once a frame on
// its own timer, so it can't follow a local time.
class CMinMaxNode : public CNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

 private:
  enum { WAITING = 2, INTERPOLATING = 1 };
  // The next value from lo to hi by `mode`; `cursor` is where the walk
  // stands and is folded into the range first.
  static float Pick(float lo, float hi, int mode, float &cursor);
  // Pulls one in-port at the node's own time and gives its value.
  template <typename P>
  auto Read(P *port) {
    port->Update(m_Timer);
    return port->m_Value;
  }

  CPortFloat *m_Min = nullptr, *m_Max = nullptr;
  CPortInt *m_Mode = nullptr;
  CPortFloat *m_DelayMin = nullptr, *m_DelayMax = nullptr;
  CPortInt *m_DelayMode = nullptr;
  CPortFloat *m_ITimeMin = nullptr, *m_ITimeMax = nullptr;
  CPortInt *m_ITimeMode = nullptr;
  CPortFloat *m_Value = nullptr;

  int m_State = WAITING;
  float m_Timer = 0.0f, m_Delay = 0.0f, m_ITime = 0.0f, m_ITimeCursor = 0.0f, m_From = 0.0f, m_Target = 0.0f;
  bool m_First = true;
};
