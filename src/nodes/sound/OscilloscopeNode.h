#pragma once

#include "nodes/object/BatchObjectNode.h"
#include "portdata/RenderLines.h"

class CNodeInfo;
class CPortColor;
class CPortFloat;
class CPortInt;

// One polyline from x = -0.5 to 0.5 through Wave evaluated locally at
// NumLines + 1 positions, stored as separate segments.
class COscilloscopeNode : public CBatchObjectNode {
 public:
  static CNodeInfo *CreateInfo();
  COscilloscopeNode() : CBatchObjectNode(m_Lines) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  const CRenderLines &Lines() const { return m_Lines; }

 private:
  CPortInt *m_NumLines = nullptr;
  CPortColor *m_Color = nullptr;
  CPortFloat *m_Wave = nullptr;
  CRenderLines m_Lines;
};
