#pragma once
// PreviousLayer: in a postprocessing scene, the picture of the layers below
// (background and foreground together). The layered scene draws those layers
// into this node's render target between BeginLayer and EndLayer, draws the
// postprocessing scene, which samples Color, and then calls FreeLayer.

#include "portdata/PDTexture.h"
#include "render/Camera.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortBool;
class CPortTexture;
class CRenderTarget;

class CPreviousLayerNode : public CNode, public CPDTexture {
 public:
  static CNodeInfo *CreateInfo();
  CPreviousLayerNode();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  // The target is the layered scene's for one frame: nothing to keep across
  // a device reset, which may come in the middle of the postprocessing draw.
  bool RestoreDevice(CRender *) override { return true; }
  void InvalidateDevice(CRender *) override {}
  CTexture *GetTexture(CRender *render) override;

  // Draws go into a target of the viewport's size from now on. False when no
  // target could be had: drawing then stays where it was.
  bool BeginLayer(CRender *render);
  // Back to the target and camera of before BeginLayer.
  void EndLayer(CRender *render);
  // Hands the target back to the pools once the postprocessing scene is drawn.
  void FreeLayer(CRender *render);

 private:
  bool WantsMipMaps() const;

  CPortBool *m_CreateMipMaps = nullptr;
  CPortTexture *m_ColorOut = nullptr;
  CRenderTarget *m_Target = nullptr;
  bool m_InLayer = false;
  CCamera m_SavedCamera;
};
