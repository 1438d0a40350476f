#pragma once

#include <vector>

#include "nodes/object/BatchObjectNode.h"
#include "render/Matrix.h"
#include "portdata/RenderPoints.h"

class CNodeInfo;
class CPortBool;
class CPortColor;
class CPortFloat;
class CPortInt;
class CPortVector;

// A free-running particle system: a shaped emitter sends particles into a
// direction or a cone, gravity moves them, and two local in-ports give
// colour and size over each particle's life.
class CParticlesNode : public CBatchObjectNode {
 public:
  // One second at the port's highest rate; the pool never grows beyond it.
  static constexpr int MaxParticles = 1000000;

  struct Particle {
    bool alive = false;
    CVector3 acceleration, velocity, position, previousPosition;
    float baseColor[4] = {}, color[4] = {}, previousColor[4] = {};
    float age = 0.0f, timeToLive = 0.0f, size = 0.0f, startSize = 0.0f;
  };

  static CNodeInfo *CreateInfo();
  CParticlesNode() : CBatchObjectNode(m_Points) {}
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  int LiveCount() const { return m_LiveCount; }
  const std::vector<Particle> &Pool() const { return m_Pool; }
  const CRenderPoints &Points() const { return m_Points; }

 private:
  void Emit(int n, float widthScale, float heightScale);
  void Simulate(float dt);
  void WriteVertices();

  CPortObject *m_Object = nullptr;
  CPortInt *m_PerSec = nullptr, *m_EmitterType = nullptr, *m_PrimType = nullptr;
  CPortFloat *m_Speed = nullptr, *m_SpreadMin = nullptr, *m_SpreadMax = nullptr;
  CPortFloat *m_TimeToLive = nullptr, *m_TimeToLiveVar = nullptr;
  CPortFloat *m_Size = nullptr, *m_SizeVar = nullptr, *m_SizeLocal = nullptr;
  CPortFloat *m_Width = nullptr, *m_Height = nullptr, *m_Depth = nullptr, *m_Radius = nullptr;
  CPortVector *m_Direction = nullptr, *m_EmitterPos = nullptr, *m_EmitterRot = nullptr, *m_Gravity = nullptr;
  CPortColor *m_ColorBase = nullptr, *m_Color = nullptr;
  CPortBool *m_ScaleByAspect = nullptr;

  std::vector<Particle> m_Pool;
  CRenderPoints m_Points;
  int m_Capacity = 0;
  int m_LiveCount = 0;
  float m_Accumulator = 0.0f;
  int m_FreeCount = 0;
  int m_SearchStart = 0;
};
