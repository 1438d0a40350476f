#include "render/RenderTarget.h"

#include "render/Render.h"

void CRenderTarget::Begin(CRender &render) {
  render.PushRenderState();
  render.SetState(RS_RenderTarget, static_cast<int>(m_Framebuffer));
  m_SavedUnitRect = render.m_UnitRect;
  m_SavedVirtualRect = render.m_VirtualRect;
  m_SavedViewport = render.m_Viewport;
  m_SavedFlipped = render.m_Flipped;
  render.m_UnitRect = render.m_VirtualRect = CRect{0, 0, m_Width, m_Height};
  render.m_Viewport = CPixelRect{0, 0, m_Width, m_Height};
  render.m_Flipped = true;
}

void CRenderTarget::End(CRender &render) {
  render.m_UnitRect = m_SavedUnitRect;
  render.m_VirtualRect = m_SavedVirtualRect;
  render.m_Viewport = m_SavedViewport;
  render.m_Flipped = m_SavedFlipped;
  render.PopRenderState();
}
