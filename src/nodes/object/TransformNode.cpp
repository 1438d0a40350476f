#include "nodes/object/TransformNode.h"

#include <string>

#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"

CNodeInfo *CTransformNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Transform", [] { return static_cast<CNode *>(new CTransformNode); },
                             "Transforms 1 to 5 objects using the same transformation");
  info->AddInPort(ObjectVectorPort("Pos", "Position of object object", {0, 0, 0}));
  info->AddInPort(ObjectVectorPort("Rot", "Rotation of object", {0, 0, 0}));
  info->AddInPort(ObjectVectorPort("Scale", "Scale of object", {1, 1, 1}));
  info->AddInPort(ObjectColorPort("Color", "Color of object"));
  for (int i = 1; i <= 5; ++i) {
    const std::string n = std::to_string(i);
    info->AddInPort(new CPortObject(("Object" + n).c_str(), ("Object " + n).c_str()));
  }
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CTransformNode::Init() {
  m_Pos = InPort<CPortVector>("Pos");
  m_Rot = InPort<CPortVector>("Rot");
  m_Scale = InPort<CPortVector>("Scale");
  m_Color = InPort<CPortColor>("Color");
  for (int i = 0; i < 5; ++i) m_Objects[i] = InPort<CPortObject>(("Object" + std::to_string(i + 1)).c_str());
  m_Out = OutPort<CPortObject>("Object");
  return true;
}

void CTransformNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  m_Local = CObjectCopy::Of(ObjectMatrix(m_Pos->m_Value, m_Rot->m_Value, m_Scale->m_Value), m_Color->m_Value);
  m_Out->m_Value = this;
}

void CTransformNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  // Each parent's children end up in port order either way.
  for (CPortObject *object : m_Objects) AddCopiesToDrawList(list, parents, camera, object, &m_Local, 1);
}
