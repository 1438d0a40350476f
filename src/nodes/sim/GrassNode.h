#pragma once

#include "nodes/object/BatchObjectNode.h"
#include "nodes/sim/GrassStraws.h"

class CNodeInfo;
class CPortColor;
class CPortFloat;
class CPortInt;
class CPortMesh;
class CPortVector;

// A straw of grass on each vertex of a mesh, along its normal, swaying in
// gravity and wind. A new mesh plants new straws; anything else keeps them
// swinging.
class CGrassNode : public CBatchObjectNode {
 public:
  static CNodeInfo *CreateInfo();
  CGrassNode() : CBatchObjectNode(m_Straws) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  CGrassStraws &Straws() { return m_Straws; }

 private:
  CPortMesh *m_Mesh = nullptr;
  CPortFloat *m_Width = nullptr, *m_WidthVar = nullptr, *m_TopWidthFactor = nullptr;
  CPortFloat *m_Strength = nullptr, *m_Strength2 = nullptr, *m_Height = nullptr, *m_HeightVar = nullptr;
  CPortVector *m_Gravity = nullptr, *m_WindDir = nullptr, *m_LWindDirVar = nullptr;
  CPortInt *m_Segments = nullptr;
  CPortColor *m_Color = nullptr;
  CGrassStraws m_Straws;
};
