#pragma once
// A texture to draw into, as the renderer hands it out:
//
//   CRenderTarget *target = render.CreateRenderTarget(256, 256, DEPTH_Stencil);
//   if (target && target->m_Color) {
//     target->Begin(render);  ... draw ...  target->End(render);
//     sample target->m_Color, then render.ReleaseTexture(target->m_Color);
//   }
//
// The target must not be used after its color texture went back. A user
// that keeps the texture across frames clears TEXF_Pooled on it, and sets
// it again just before the release.

#include "render/Rect.h"

class CRender;
class CTexture;

// The only depth format asked for: packed depth 24, stencil 8. 0 asks for none.
constexpr int DEPTH_Stencil = 0x1000;

class CRenderTarget {
 public:
  virtual ~CRenderTarget() = default;
  // Draws into the target from now on: the target's size becomes the unit
  // rect, the virtual rect and the viewport, and drawing is flipped. Targets
  // nest; a camera set after Begin applies to the target.
  virtual void Begin(CRender &render);
  // Back to what was drawn into before Begin; the caller sets its camera again.
  virtual void End(CRender &render);

  CTexture *m_Color = nullptr;  // owned by the renderer's pool
  int m_Width = 0;
  int m_Height = 0;
  unsigned m_Framebuffer = 0;  // the device's name, bound through RS_RenderTarget

 protected:
  CRect m_SavedUnitRect;
  CRect m_SavedVirtualRect;
  CPixelRect m_SavedViewport;
  bool m_SavedFlipped = false;
};
