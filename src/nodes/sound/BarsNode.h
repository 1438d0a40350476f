#pragma once

#include "nodes/object/BatchObjectNode.h"
#include "portdata/RenderLines.h"

class CNodeInfo;
class CPortColor;
class CPortFloat;
class CPortInt;

// NumBars vertical lines from x = -0.5 to 0.5, each as high as BarHeight
// evaluated locally at the bar's position.
class CBarsNode : public CBatchObjectNode {
 public:
  static CNodeInfo *CreateInfo();
  CBarsNode() : CBatchObjectNode(m_Lines) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  const CRenderLines &Lines() const { return m_Lines; }

 private:
  CPortInt *m_NumBars = nullptr;
  CPortFloat *m_BarHeight = nullptr;
  CPortColor *m_Color = nullptr;
  CRenderLines m_Lines;
};
