#include "nodes/render/ScreenNode.h"

#include "render/Render.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CScreenNode::CreateInfo() {
  auto *info = new CNodeInfo(1, "Screen", [] { return static_cast<CNode *>(new CScreenNode); },
                             "A part of the screen that we should render everything to");
  info->AddInPort(new CPortRender("Render", "Render"));
  info->AddInPort(MakeViewportPort("Viewport", "Viewport"));
  info->AddOutPort(new CPortRender("Render", "Render"));
  return info;
}

bool CScreenNode::Init() {
  CStageNode::Init();
  m_Viewport = InPort<CPortRect>("Viewport");
  return true;
}

void CScreenNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (m_RenderIn && m_RenderIn->IsConnected()) CStageNode::AddToDrawList(list, parents, camera);
}

void CScreenNode::Render(CRender *render) {
  const float x = m_Viewport->x.m_Value, y = m_Viewport->y.m_Value;
  const float w = m_Viewport->w.m_Value, h = m_Viewport->h.m_Value;
  render->SetViewport(x, y, (x + w) - x, (y + h) - y);
  RenderUpstream(render);
}
