#include "nodes/render/StageNode.h"

#include "scene/DrawList.h"
#include "scene/PortPointers.h"

bool CStageNode::Init() {
  // Clear starts a chain and has no Render in-port; every other stage has one.
  if (FindInPort("Render")) m_RenderIn = InPort<CPortRender>("Render");
  m_RenderOut = OutPort<CPortRender>("Render");
  return true;
}

void CStageNode::Update(float, FrameInfo *frame) {
  if (m_RenderOut) m_RenderOut->m_Value = this;
  UpdateInPorts(frame->Time);
}

void CStageNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  for (CDrawItem *parent = parents.first; parent; parent = parent->next) {
    CDrawItem *item = list.NewItem();
    item->m_Stage = this;
    CDrawItemList temporary;
    temporary.Append(item);
    WalkSource(m_RenderIn, list, temporary, camera);
    parent->children.TakeAll(temporary);
  }
}

void CStageNode::RenderUpstream(CRender *render) {
  if (m_RenderIn && m_RenderIn->m_Value) m_RenderIn->m_Value->Render(render);
}
