#pragma once

#include "nodes/texture/GeneratedTexture.h"

class CPortColor;
class CPortFloat;

// A texture of up to five color stops along a line, around a center, about
// an angle or out to a square, with a background beyond the last stop.
class CGradientNode : public CGeneratedTextureNode {
 public:
  static CNodeInfo *CreateInfo();
  CGradientNode();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  // Refills the texture it has when the size stays.
  bool ResetDevice(CRender *render) override;

  enum { Linear, Radial, Conical, Square };

 private:
  TextureSize Size() const;
  void Fill(CTexture &texture) const;

  CPortInt *m_Width = nullptr, *m_Height = nullptr, *m_Type = nullptr;
  CPortFloat *m_Angle = nullptr, *m_CenterX = nullptr, *m_CenterY = nullptr;
  CPortFloat *m_Peaks[5] = {};
  CPortColor *m_Colors[5] = {};
  CPortColor *m_Background = nullptr;
};
