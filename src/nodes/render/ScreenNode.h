#pragma once

#include "nodes/render/StageNode.h"

class CNodeInfo;
class CPortRect;

// The root of a scene: the part of the screen everything renders to.
class CScreenNode : public CStageNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  // Nothing upstream, nothing drawn.
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;
  void Render(CRender *render) override;

 private:
  CPortRect *m_Viewport = nullptr;
};
