#pragma once

#include <vector>

#include "nodes/sim/MetaballField.h"
#include "portdata/PDObject.h"
#include "render/Render.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortEffect;
class CPortFloat;
class CPortInt;
class CPortObject;

// Balls that wander inside the cube from -1 to 1, each towards a goal it
// changes about once a second, drawn as one surface that melts them
// together where they come near.
class CMetaballsNode : public CNode, public CPDObject, private CMetaballField::Sink {
 public:
  static constexpr int RingSize = 3;

  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;
  void Draw(CRender *render) override;

  const std::vector<MetaBall> &Balls() const { return m_Balls; }
  int BallCount() const { return m_Count; }
  const CMetaballField &Field() const { return m_Field; }
  float Level() const { return m_Level; }

 private:
  void Flush(int vertexCount, int indexCount, bool last) override;
  void Move(MetaBall &ball, float dt, float speed) const;

  CPortInt *m_NumBalls = nullptr, *m_GridSize = nullptr;
  CPortFloat *m_Threshold = nullptr, *m_Speed = nullptr;
  CPortEffect *m_Effect = nullptr;
  CPortObject *m_Out = nullptr;

  std::vector<MetaBall> m_Balls;
  int m_Count = 0;
  float m_Level = 20.0f;
  CMetaballField m_Field;

  struct DeviceObjects {
    CVertexBuffer *m_VertexBuffer[RingSize] = {};
    CIndexBuffer *m_IndexBuffer[RingSize] = {};
  };
  DeviceObjects dObjs[MaxRenderUnits];
  int m_Buffer = 0;  // shared by the units
  CRender *m_DrawingOn = nullptr;
};
