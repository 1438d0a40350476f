#include "nodes/render/MeshObjectNode.h"

#include "scene/DrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"

CNodeInfo *CMeshObjectNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "MeshObject", [] { return static_cast<CNode *>(new CMeshObjectNode); },
                             "A simple object formed by a mesh and an effect");
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddInPort(new CPortMesh("Mesh", "Mesh"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CMeshObjectNode::Init() {
  m_Effect = InPort<CPortEffect>("Effect");
  m_Mesh = InPort<CPortMesh>("Mesh");
  m_Object = OutPort<CPortObject>("Object");
  return true;
}

void CMeshObjectNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  m_Object->m_Value = this;
}

void CMeshObjectNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (!m_Effect->m_Value || !m_Mesh->m_Value) return;
  for (CDrawItem *parent = parents.first; parent; parent = parent->next) {
    CDrawItem *item = list.NewItem();
    item->matrix = parent->matrix;
    for (int i = 0; i < 4; ++i) item->color[i] = parent->color[i];
    item->m_Effect = m_Effect->m_Value;
    item->m_Mesh = m_Mesh->m_Value;
    item->m_Camera = camera;
    parent->children.Append(item);
  }
}
