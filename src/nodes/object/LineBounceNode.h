#pragma once

#include <vector>

#include "nodes/object/BatchObjectNode.h"
#include "render/Matrix.h"
#include "portdata/RenderLines.h"

class CNodeInfo;
class CPortBool;
class CPortColor;
class CPortFloat;
class CPortInt;

// Closed polylines whose corners bounce around inside a box.
class CLineBounceNode : public CBatchObjectNode {
 public:
  static constexpr int MaxPoints = 100;
  struct Point {
    CVector3 position, velocity;
  };
  struct Object {
    Point points[MaxPoints];
  };

  static CNodeInfo *CreateInfo();
  CLineBounceNode() : CBatchObjectNode(m_Lines) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  const CRenderLines &Lines() const { return m_Lines; }

 private:
  void Restart(const CVector3 &box, int objects, int points);

  CPortColor *m_Color = nullptr;
  CPortFloat *m_PointSpeed = nullptr, *m_Width = nullptr, *m_Height = nullptr, *m_Depth = nullptr;
  CPortInt *m_NumObjects = nullptr, *m_NumPoints = nullptr, *m_NumTrails = nullptr;
  CPortBool *m_AdjustForAspect = nullptr;
  std::vector<Object> m_Objects;
  CRenderLines m_Lines;
};
