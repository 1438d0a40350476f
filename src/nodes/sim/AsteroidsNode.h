#pragma once

#include "nodes/object/BatchObjectNode.h"
#include "nodes/sim/AsteroidsGame.h"
#include "portdata/RenderLines.h"

class CNodeInfo;
class CPortBool;
class CPortColor;
class CPortFloat;
class CPortInt;

// A game of rocks and a ship that plays itself, as scenery: the node keeps
// the level's clock and restarts it, the game plays, and everything is
// drawn as lines centred on the field.
class CAsteroidsNode : public CBatchObjectNode {
 public:
  static CNodeInfo *CreateInfo();
  CAsteroidsNode() : CBatchObjectNode(m_Lines) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  const CAsteroidsGame &Game() const { return m_Game; }
  CAsteroidsGame &Game() { return m_Game; }
  const CRenderLines &Lines() const { return m_Lines; }
  float LevelTime() const { return m_LevelTime; }

 private:
  bool LevelOver(const FrameInfo &frame);

  CPortFloat *m_Width = nullptr, *m_Height = nullptr, *m_LevelLength = nullptr;
  CPortInt *m_NumAsteroids = nullptr, *m_NumFragments = nullptr;
  CPortColor *m_ShipCol = nullptr, *m_BulletCol = nullptr, *m_AsteroidCol = nullptr;
  CPortBool *m_AdjustForAspect = nullptr;

  CAsteroidsGame m_Game;
  CRenderLines m_Lines;
  float m_LevelTime = 0, m_LastTime = -1;
};
