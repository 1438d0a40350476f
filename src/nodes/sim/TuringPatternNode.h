#pragma once

#include "nodes/sim/FixedStep.h"
#include "nodes/sim/TuringPattern.h"
#include "nodes/texture/GeneratedTexture.h"

// A Turing pattern growing at 30 steps a second, offered as a texture that
// is rewritten from the image at every request.
class CTuringPatternNode : public CGeneratedTextureNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  CTexture *GetTexture(CRender *render) override;

  const CTuringPattern &Pattern() const { return m_Pattern; }

 private:
  CPortInt *m_Width = nullptr, *m_Height = nullptr;
  CTuringPattern m_Pattern{0};
  CFixedStep m_Stepper;
  int m_TextureWidth = 0, m_TextureHeight = 0;  // of the texture in hand
};
