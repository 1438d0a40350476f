#include "nodes/value/VectorNode.h"

#include "nodes/value/PullPorts.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CVectorNode::CreateInfo() {
  auto *info = new CNodeInfo(10, "Vector", [] { return static_cast<CNode *>(new CVectorNode); },
                             "Combines a x, y and z component to a 3d vector");
  info->AddInPort(new CPortFloat("x", "The x component", 0.0f, 0.01f, -1000000.0f, 1000000.0f));
  info->AddInPort(new CPortFloat("y", "The y component", 0.0f, 0.01f, -1000000.0f, 1000000.0f));
  info->AddInPort(new CPortFloat("z", "The z component", 0.0f, 0.01f, -1000000.0f, 1000000.0f));
  info->AddOutPort(new CPortVector("Vector", "Vector", {}, {}, {}, {}));
  return info;
}

bool CVectorNode::Init() {
  m_X = InPort<CPortFloat>("x");
  m_Y = InPort<CPortFloat>("y");
  m_Z = InPort<CPortFloat>("z");
  m_Vector = OutPort<CPortVector>("Vector");
  return true;
}

void CVectorNode::Update(float time, FrameInfo *) {
  PullPorts(time, {m_Z, m_Y, m_X});
  m_Vector->m_Value = {m_X->m_Value, m_Y->m_Value, m_Z->m_Value};
  m_Vector->m_Changed = true;
}
