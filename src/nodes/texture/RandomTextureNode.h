#pragma once

#include "nodes/texture/GeneratedTexture.h"

class CPortColor;
class CPortFloat;
class CPortRect;

// Texels of random colors between two colors over a background, in a
// region of the texture: every texel of the region, or a number of them at
// random places. The same seed gives the same picture at every restore.
class CRandomTextureNode : public CGeneratedTextureNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;

 private:
  CPortInt *m_Width = nullptr, *m_Height = nullptr, *m_Seed = nullptr, *m_Count = nullptr;
  CPortFloat *m_CountRel = nullptr;
  CPortColor *m_Background = nullptr, *m_Color1 = nullptr, *m_Color2 = nullptr;
  CPortRect *m_Rect = nullptr;
};
