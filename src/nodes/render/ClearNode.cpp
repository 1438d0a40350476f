#include "nodes/render/ClearNode.h"

#include "render/Render.h"
#include "scene/DrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CClearNode::CreateInfo() {
  auto *info = new CNodeInfo(1, "Clear", [] { return static_cast<CNode *>(new CClearNode); },
                             "Fills the viewport with a single color.");
  info->AddOutPort(new CPortRender("Render", "Render"));
  info->AddInPort(new CPortColor("Color", "Color", {0, 0, 0, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  return info;
}

bool CClearNode::Init() {
  CStageNode::Init();
  m_Color = InPort<CPortColor>("Color");
  return true;
}

void CClearNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *) {
  for (CDrawItem *parent = parents.first; parent; parent = parent->next) {
    CDrawItem *item = list.NewItem();
    item->m_Stage = this;
    parent->children.Append(item);
  }
}

void CClearNode::Render(CRender *render) {
  render->Clear(&m_Color->m_Value.r, 1.0f, CLEAR_Color | CLEAR_Depth);
}
