#pragma once

#include "nodes/texture/TextureFilter.h"

class CFxParameter;
struct CFxPass;
class CPortFloat;
class CPortInt;

// A separable blur of its input, 9 taps a pass, one pass per direction for
// every 4 pixels of Width; Brightness scales the last pass. Drawn when read.
class CNTBlur : public CTextureFilterNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  CTexture *GetTexture(CRender *render) override;

  enum Pass { Horizontal9, Vertical9, Horizontal21, Vertical21, PassCount };

 private:
  void ForgetHandles() override;

  CPortInt *m_Dir = nullptr, *m_Width = nullptr;
  CPortFloat *m_Brightness = nullptr;

  CFxParameter *m_SrcSampler = nullptr, *m_SourceTextureSize = nullptr, *m_BrightnessParam = nullptr;
  const CFxPass *m_Passes[PassCount] = {};  // the named passes of the technique
};
