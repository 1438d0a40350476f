#pragma once

#include <vector>

#include "nodes/object/BatchObjectNode.h"
#include "portdata/RenderPoints.h"

class CNodeInfo;
class CPortFloat;
class CPortInt;

// Stars on ellipses whose growing radii are turned against each other,
// which draws the spiral arms; each star runs along its ellipse.
class CGalaxyNode : public CBatchObjectNode {
 public:
  struct GalaxyStar {
    float angle = 0.0f, radius = 0.0f;
    float color[4] = {};
  };

  static CNodeInfo *CreateInfo();
  CGalaxyNode() : CBatchObjectNode(m_Points) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  const CRenderPoints &Points() const { return m_Points; }

 private:
  CPortInt *m_NumStars = nullptr;
  CPortFloat *m_Radius = nullptr, *m_Speed = nullptr, *m_Ellipse = nullptr, *m_Twisting = nullptr, *m_Size = nullptr;
  std::vector<GalaxyStar> m_Stars;
  CRenderPoints m_Points;
  int m_Capacity = 0;
};
