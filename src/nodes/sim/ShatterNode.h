#pragma once

#include "nodes/object/BatchObjectNode.h"
#include "nodes/sim/ShatterPlane.h"

class CNodeInfo;
class CPortFloat;
class CPortInt;
class CPortVector;

// A plane that breaks into shards after a delay, lets them fall for a
// while, puts them back together and starts again, for ever. Steps at a
// fixed rate of 30 a second.
class CShatterNode : public CBatchObjectNode {
 public:
  static CNodeInfo *CreateInfo();
  CShatterNode() : CBatchObjectNode(m_Plane) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  CShatterPlane &Plane() { return m_Plane; }
  float Clock() const { return m_Clock; }

 private:
  CPortVector *m_Gravity = nullptr;
  CPortFloat *m_ShatterDelay = nullptr, *m_ShatterTime = nullptr, *m_RebuildTime = nullptr,
             *m_RebuildTimeVar = nullptr;
  CPortInt *m_NumPoints = nullptr;
  CShatterPlane m_Plane;
  float m_Accumulator = 0;
  float m_Clock = 100000;  // so that the first step builds the plane
};
