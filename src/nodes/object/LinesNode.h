#pragma once

#include <vector>

#include "nodes/object/BatchObjectNode.h"
#include "render/Matrix.h"
#include "portdata/RenderQuads.h"

class CNodeInfo;
class CPortColor;
class CPortFloat;
class CPortInt;

// Lines across an ellipse that appear at a rate, turn their ends along the
// ellipse and die after their life time, drawn as bands of quads.
class CLinesNode : public CBatchObjectNode {
 public:
  // Bounds on what files can ask for: lines alive at once, and quads.
  static constexpr int MaxLines = 100000;
  static constexpr int MaxQuads = 1 << 18;

  struct CrossLine {
    bool alive = false;
    CVector3 end1, end2;
    float baseColor[4] = {1, 1, 1, 1}, color[4] = {1, 1, 1, 1};
    float age = 0.0f, lifeTime = 0.0f, baseThickness = 0.0f, thickness = 0.0f;
    CVector3 axis1, axis2;
    float speed1 = 0.0f, speed2 = 0.0f;
  };

  static CNodeInfo *CreateInfo();
  CLinesNode() : CBatchObjectNode(m_Quads) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  int LiveCount() const { return m_LiveCount; }
  const std::vector<CrossLine> &Pool() const { return m_Pool; }
  const CRenderQuads &Quads() const { return m_Quads; }

 private:
  CVector3 OnEllipse(const CVector3 &v) const;
  void SizeQuads(int sections);
  void Spawn(CrossLine &line);

  CPortFloat *m_Width = nullptr, *m_Height = nullptr, *m_Thickness = nullptr, *m_LocalThickness = nullptr;
  CPortFloat *m_LinesPerSec = nullptr, *m_LifeTime = nullptr, *m_RotSpeed = nullptr, *m_RotSpeedVar = nullptr;
  CPortInt *m_SectionsW = nullptr, *m_SectionsH = nullptr, *m_RepeatU = nullptr, *m_RepeatV = nullptr;
  CPortColor *m_Color = nullptr, *m_LocalColor = nullptr;

  std::vector<CrossLine> m_Pool;
  CRenderQuads m_Quads;
  CVector3 m_Half;
  float m_Accumulator = 0.0f;
  int m_FreeCount = 0, m_SearchStart = 0, m_LiveCount = 0, m_QuadCapacity = 0;
};
