#pragma once

#include "nodes/render/StageNode.h"
#include "render/Camera.h"
#include "scene/DrawList.h"

class CNodeInfo;
class CPortBool;
class CPortColor;
class CPortFloat;
class CPortObject;
class CPortVector;

// Puts an object tree, placed and seen through its own camera, into the chain.
class CRenderObjectNode : public CStageNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;
  void Render(CRender *render) override;

  const CCamera &Camera() const { return m_Camera; }

 private:
  CPortObject *m_Object = nullptr;
  CPortColor *m_Col = nullptr;
  CPortVector *m_Pos = nullptr, *m_Rot = nullptr, *m_Scale = nullptr, *m_CamPos = nullptr, *m_CamRot = nullptr;
  CPortFloat *m_CamFov = nullptr;
  CPortBool *m_ScaleByAspect = nullptr;
  CCamera m_Camera;
  float m_Aspect = 1.0f;
  CDrawList m_List;
};
