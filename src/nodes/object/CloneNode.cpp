#include "nodes/object/CloneNode.h"

#include <algorithm>

#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"

CNodeInfo *CCloneNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Clone", [] { return static_cast<CNode *>(new CCloneNode); }, "Clones a object");
  info->AddInPort(new CPortInt("NumClones", "Number of clones to create", 5, 1, 10000));
  info->AddInPort(ObjectVectorPort("Pos", "Position of object object", {0, 0, 0}));
  info->AddInPort(ObjectVectorPort("Rot", "Rotation of object", {0, 0, 0}));
  info->AddInPort(ObjectVectorPort("Scale", "Scale of object", {1, 1, 1}));
  info->AddInPort(ObjectVectorPort("PosChange", "Change in position per cloned object", {0, 1, 0}));
  info->AddInPort(ObjectVectorPort("RotChange", "Change in rotation per cloned object", {0, 0, 0}));
  info->AddInPort(ObjectVectorPort("ScaleChange", "Change in scale per cloned object", {0, 0, 0}));
  info->AddInPort(ObjectColorPort("Color", "Color of object"));
  info->AddInPort(new CPortBool("Center", "Center the row of cloned objects", true));
  info->AddInPort(new CPortObject("Object", "Object"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CCloneNode::Init() {
  m_NumClones = InPort<CPortInt>("NumClones");
  m_Pos = InPort<CPortVector>("Pos");
  m_Rot = InPort<CPortVector>("Rot");
  m_Scale = InPort<CPortVector>("Scale");
  m_PosChange = InPort<CPortVector>("PosChange");
  m_RotChange = InPort<CPortVector>("RotChange");
  m_ScaleChange = InPort<CPortVector>("ScaleChange");
  m_Color = InPort<CPortColor>("Color");
  m_Center = InPort<CPortBool>("Center");
  m_Object = InPort<CPortObject>("Object");
  m_Out = OutPort<CPortObject>("Object");
  return true;
}

void CCloneNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  // A connection may bring any number: the port's range holds here too.
  const int n = std::clamp(m_NumClones->m_Value, m_NumClones->m_Min, m_NumClones->m_Max);
  const Vec3f &d = m_PosChange->m_Value, &r = m_RotChange->m_Value, &s = m_ScaleChange->m_Value;
  Vec3f base = m_Pos->m_Value;
  if (m_Center->m_Value) {
    const float half = (n - 1) * 0.5f;
    base = {base.x - d.x * half, base.y - d.y * half, base.z - d.z * half};
  }
  const CMatrix baseMatrix = ObjectMatrix(base, m_Rot->m_Value, m_Scale->m_Value);
  m_Copies.resize(n);
  for (int i = 0; i < n; ++i) {
    const float k = static_cast<float>(i);
    const CMatrix own = ObjectMatrix({d.x * k, d.y * k, d.z * k}, {r.x * k, r.y * k, r.z * k},
                                     {s.x * k + 1, s.y * k + 1, s.z * k + 1});
    m_Copies[i] = CObjectCopy::Of(own * baseMatrix, m_Color->m_Value);
  }
  m_Out->m_Value = this;
}

void CCloneNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  AddCopiesToDrawList(list, parents, camera, m_Object, m_Copies.data(), static_cast<int>(m_Copies.size()));
}
