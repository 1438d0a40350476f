#pragma once
// What every render stage shares: it is its own Render out-port's value, it
// appears in the draw list as one item that leads upstream, and it renders
// the stage behind its Render in-port before its own drawing.

#include "portdata/PDRender.h"
#include "scene/Node.h"

class CPortRender;

class CStageNode : public CNode, public CPDRender {
 public:
  bool Init() override;
  // Sets the Render out-port to this stage and pulls the in-ports.
  void Update(float time, FrameInfo *frame) override;
  // One item per parent with this stage, the upstream chain under it.
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

 protected:
  void RenderUpstream(CRender *render);
  CPortRender *m_RenderIn = nullptr;
  CPortRender *m_RenderOut = nullptr;
};
