#pragma once

#include "nodes/render/StageNode.h"

class CNodeInfo;
class CPortColor;

// Fills the viewport with one colour (and clears depth): the far end of a chain.
class CClearNode : public CStageNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;
  void Render(CRender *render) override;

 private:
  CPortColor *m_Color = nullptr;
};
