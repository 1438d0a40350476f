#pragma once

#include "nodes/object/BatchObjectNode.h"
#include "nodes/sim/FixedStep.h"
#include "nodes/sim/Fluid2d.h"
#include "portdata/RenderPoints.h"

class CNodeInfo;
class CPortBool;
class CPortColor;
class CPortFloat;
class CPortInt;
class CPortVector;

// A liquid in a box at 30 steps a second, its particles drawn as points,
// lines of their last step, sprites or copies of an object, filling the
// window from -0.5 to 0.5 (widened to its shape on request).
class CFluid2dNode : public CBatchObjectNode {
 public:
  static CNodeInfo *CreateInfo();
  CFluid2dNode() : CBatchObjectNode(m_Points) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  const CFluid2d &Fluid() const { return m_Fluid; }
  const CRenderPoints &Points() const { return m_Points; }

 private:
  void WriteVertices(float aspect);

  CPortInt *m_GridX = nullptr, *m_GridY = nullptr, *m_NumParticles = nullptr, *m_PrimType = nullptr;
  CPortColor *m_Color = nullptr;
  CPortVector *m_Gravity = nullptr;
  CPortFloat *m_ParticleSize = nullptr;
  CPortBool *m_AdjustForAspect = nullptr;
  CPortObject *m_Object = nullptr;

  CFluid2d m_Fluid;
  CFixedStep m_Stepper;
  CRenderPoints m_Points;
  int m_Capacity = 0;
  int m_Drawn = 0;
};
