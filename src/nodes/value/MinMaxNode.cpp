#include "nodes/value/MinMaxNode.h"

#include <cmath>

#include "core/Random.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

namespace {
enum { MODE_NONE, MODE_RAND, MODE_RAND_SHORTEST_DIST, MODE_LOOP_UP, MODE_LOOP_DOWN, MODE_PING_PONG };

// The mode names; the delay and time modes have no shortest distance.
CPortInt *ModeNames(CPortInt *port, bool withShortestDist) {
  port->AddValue(MODE_NONE, "None")->AddValue(MODE_RAND, "Rand");
  if (withShortestDist) port->AddValue(MODE_RAND_SHORTEST_DIST, "RandShortestDist");
  return port->AddValue(MODE_LOOP_UP, "LoopUp")
      ->AddValue(MODE_LOOP_DOWN, "LoopDown")
      ->AddValue(MODE_PING_PONG, "PingPong");
}
}  // namespace

CNodeInfo *CMinMaxNode::CreateInfo() {
  auto *info = new CNodeInfo(7, "MinMax", [] { return static_cast<CNode *>(new CMinMaxNode); },
                             "Interpolates a float value using delay times. Doesn't handle \"local\" evaluators");
  info->AddInPort(new CPortFloat("Min", "Minimum allowed value", 0.0f, 1.0f, -100000.0f, 100000.0f));
  info->AddInPort(new CPortFloat("Max", "Maximum allowed value", 1.0f, 1.0f, -100000.0f, 100000.0f));
  ModeNames(info->AddInPort(new CPortInt("Mode", "Mode", 1, 0, 4)), true);
  info->AddInPort(new CPortFloat("DelayMin", "Delay minimum allowed value", 0.0f, 1.0f, 0.0f, 100000.0f));
  info->AddInPort(new CPortFloat("DelayMax", "Delay maximum allowed value", 0.0f, 1.0f, 0.0f, 100000.0f));
  ModeNames(info->AddInPort(new CPortInt("DelayMode", "Delay Mode", 1, 0, 4)), false);
  info->AddInPort(
      new CPortFloat("ITimeMin", "Interpolation time minimum allowed value", 3.0f, 1.0f, 0.0f, 100000.0f));
  info->AddInPort(
      new CPortFloat("ITimeMax", "Interpolation time maximum allowed value", 20.0f, 1.0f, 0.0f, 100000.0f));
  ModeNames(info->AddInPort(new CPortInt("ITimeMode", "Interpolation Mode", 1, 0, 4)), false);
  info->AddOutPort(new CPortFloat("Value", "Computed value", 0.0f, 0.01f, 0.0f, 1.0f));
  return info;
}

bool CMinMaxNode::Init() {
  m_Min = InPort<CPortFloat>("Min");
  m_Max = InPort<CPortFloat>("Max");
  m_Mode = InPort<CPortInt>("Mode");
  m_DelayMin = InPort<CPortFloat>("DelayMin");
  m_DelayMax = InPort<CPortFloat>("DelayMax");
  m_DelayMode = InPort<CPortInt>("DelayMode");
  m_ITimeMin = InPort<CPortFloat>("ITimeMin");
  m_ITimeMax = InPort<CPortFloat>("ITimeMax");
  m_ITimeMode = InPort<CPortInt>("ITimeMode");
  m_Value = OutPort<CPortFloat>("Value");
  return true;
}

float CMinMaxNode::Pick(float lo, float hi, int mode, float &cursor) {
  // An empty range makes the cursor NaN; the random modes still give lo.
  cursor = std::fmod(cursor - lo, hi - lo) + lo;
  switch (mode) {
    case MODE_NONE: return cursor;
    case MODE_RAND: return RandomRange(0.0f, 1.0f) * (hi - lo) + lo;
    case MODE_RAND_SHORTEST_DIST: {
      // Up to half a range beyond either end: the glide takes the short way
      // round and is folded back into the range as it goes.
      const float v = RandomRange(0.0f, 1.0f) * (hi - lo);
      return 2.0f * v - (hi - lo) * 0.5f + lo;
    }
    case MODE_LOOP_UP:
      if (std::fabs(cursor - hi) <= 0.01f) cursor = lo;
      return hi;
    case MODE_LOOP_DOWN:
      if (std::fabs(cursor - lo) <= 0.01f) cursor = hi;
      return lo;
    case MODE_PING_PONG: return std::fabs(cursor - lo) <= 0.01f ? hi : lo;
    default: return 0.0f;
  }
}

// Guarded: it keeps time with the frame's steps, whoever pulls it. In-ports
// are pulled at the node's own timer, each when its value is first needed.
void CMinMaxNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  m_Timer += frame->DeltaTime;
  bool newTarget = false;
  if (m_State == INTERPOLATING) {
    if (m_Timer >= m_ITime) {
      const float lo = Read(m_DelayMin), hi = Read(m_DelayMax);
      m_Delay = Pick(lo, hi, Read(m_DelayMode), m_Delay);
      if (m_Delay > 0.00001f) {
        m_From = m_Target;
        m_State = WAITING;
        m_Timer = 0.0f;
      } else {
        // No wait: the next glide starts where this one's time ran out.
        while (m_Timer > m_ITime && m_ITime > 0.00001f) m_Timer -= m_ITime;
        newTarget = true;
        m_From = m_Target;
      }
    }
  } else if (m_Timer >= m_Delay) {
    m_State = INTERPOLATING;
    m_Timer = 0.0f;
    newTarget = true;
  }

  const int mode = Read(m_Mode);
  const float lo = Read(m_Min), hi = Read(m_Max);
  if (newTarget) {
    m_Target = Pick(lo, hi, mode, m_From);
    if (m_First) {
      m_ITime = 0.0f;  // the first target is taken at once
    } else {
      const float tlo = Read(m_ITimeMin), thi = Read(m_ITimeMax);
      m_ITime = Pick(tlo, thi, Read(m_ITimeMode), m_ITimeCursor);
    }
    m_First = false;
  }

  float v = m_From;
  if (m_State == INTERPOLATING) {
    const float f = m_ITime > 0.001f ? m_Timer / m_ITime : 1.0f;
    if (f >= 0.99999f) {
      v = m_Target;
    } else {
      const bool linear = mode == MODE_LOOP_UP || mode == MODE_LOOP_DOWN;
      const float w = linear ? f : 3.0f * f * f - 2.0f * f * f * f;
      v = m_From + (m_Target - m_From) * w;
    }
    if (mode == MODE_RAND_SHORTEST_DIST) v = std::fmod((v - lo) + (hi - lo), hi - lo) + lo;
  }
  m_Value->m_Value = ApplyRange(v, lo, hi);
  m_Value->m_Changed = true;
}
