#include "nodes/value/SinNode.h"

#include <cmath>

#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CSinNode::CreateInfo() {
  auto *info = new CNodeInfo(7, "Sin", [] { return static_cast<CNode *>(new CSinNode); }, "Sin math function");
  info->AddInPort(new CPortFloat("Min", "Min value", 0.0f, 0.01f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortFloat("Max", "Max value", 1.0f, 0.01f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortFloat("Offset", "Offset", 0.0f, 0.01f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortFloat("Frequency", "Frequency of the wave", 1.0f, 0.01f, 0.000001f, 10000.0f));
  info->AddOutPort(new CPortFloat("Value", "Computed value", 0.0f, 0.01f, 0.0f, 1.0f));
  return info;
}

bool CSinNode::Init() {
  m_Min = InPort<CPortFloat>("Min");
  m_Max = InPort<CPortFloat>("Max");
  m_Offset = InPort<CPortFloat>("Offset");
  m_Frequency = InPort<CPortFloat>("Frequency");
  m_Value = OutPort<CPortFloat>("Value");
  return true;
}

void CSinNode::Update(float time, FrameInfo *) {
  UpdateInPorts(time);
  const float p = 1.0f / m_Frequency->m_Value;
  const float x = time + p * m_Offset->m_Value;
  float y;
  if (x > p)
    y = x - std::floor(x / p) * p;
  else if (x < 0.0f)
    y = std::floor((p - x) / p) * p + x;
  else
    y = x;
  const float lo = m_Min->m_Value, hi = m_Max->m_Value;
  if (y > p)
    m_Value->m_Value = lo;
  else
    m_Value->m_Value = (hi - lo) * (std::sin(6.2831855f * y / p - 1.5707964f) + 1.0f) * 0.5f + lo;
  m_Value->m_Changed = true;
}
