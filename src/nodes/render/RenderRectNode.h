#pragma once

#include "nodes/render/StageNode.h"
#include "portdata/PDTexture.h"

class CNodeInfo;
class CPortEffect;
class CPortInt;
class CVertexBuffer;
class CIndexBuffer;

// A rectangle that covers the viewport, tessellated, drawn with an effect.
class CRenderRectNode : public CStageNode {
 public:
  static CNodeInfo *CreateInfo();
  ~CRenderRectNode() override;
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  void Render(CRender *render) override;

  // 16-bit indices address at most 65536 vertices: 255 cells a side.
  static constexpr int MaxTessellation = 255;

 private:
  struct DeviceObjects {
    CVertexBuffer *m_VertexBuffer = nullptr;
    CIndexBuffer *m_IndexBuffer = nullptr;
    int m_Triangles = 0;
  };
  DeviceObjects m_dObjs[MAX_RENDER_UNITS];
  CPortInt *m_TesselateW = nullptr, *m_TesselateH = nullptr;
  CPortEffect *m_Effect = nullptr;
};
