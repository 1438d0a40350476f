#pragma once

#include <vector>

#include "nodes/object/BatchObjectNode.h"
#include "render/Matrix.h"
#include "portdata/RenderPoints.h"

class CNodeInfo;
class CPortColor;
class CPortInt;
class CPortVector;

// Stars in a box from -1 to 1 drifting against Dir, wrapping at the walls,
// fading from a start color at the rim of the unit ball to an end color at
// the viewer in the middle.
class CStarfieldNode : public CBatchObjectNode {
 public:
  struct Star {
    CVector3 position;
    float color[4] = {}, previousColor[4] = {}, startColor[4] = {}, endColor[4] = {};
  };

  static CNodeInfo *CreateInfo();
  CStarfieldNode() : CBatchObjectNode(m_Points) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  const CRenderPoints &Points() const { return m_Points; }

 private:
  void NewColors(Star &star) const;

  CPortObject *m_Object = nullptr;
  CPortInt *m_NumStars = nullptr, *m_PrimType = nullptr;
  CPortVector *m_Dir = nullptr, *m_SpaceSize = nullptr, *m_StarSize = nullptr;
  CPortColor *m_StartMin = nullptr, *m_StartMax = nullptr, *m_EndMin = nullptr, *m_EndMax = nullptr;
  std::vector<Star> m_Stars;
  CRenderPoints m_Points;
};
