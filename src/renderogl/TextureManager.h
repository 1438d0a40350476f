#pragma once
// Pools of render targets: framebuffers, their color textures and their
// depth-stencil buffers are made once per size and handed out again, so a
// scene that draws into textures every frame creates no GL object in the
// steady state.
//
//   CRenderTarget *target = CTextureManager::CreateRenderTarget(manager, render, 256, 256, DEPTH_Stencil);
//   target->Begin(render);  ... draw ...  target->End(render);
//   use target->m_Color, then CTextureManager::ReleaseTexture(manager, render, target->m_Color);
//
// `manager` is the renderer's array of MaxRenderUnits pools, one per device
// slot.

#include <list>

#include "render/Rect.h"

class CRender;
class CTexture;
class CTextureManager;

// The only depth format asked for: packed depth 24, stencil 8.
constexpr int DEPTH_Stencil = 0x1000;

class CRenderBuffer {
 public:
  int m_Width = 0;
  int m_Height = 0;
  int m_Format = 0;
  int m_Samples = 1;
  unsigned m_Name = 0;
  CRender *m_Render = nullptr;
};

class CRenderTarget {
 public:
  // Draws into the target from now on, with its size as both rects.
  void Begin(CRender &render);
  // Back to what was drawn into before Begin.
  void End(CRender &render);
  // Releases the color texture if any and deletes the framebuffer.
  void Free();

  CTexture *m_Color = nullptr;
  CRenderBuffer *m_Depth = nullptr;
  int m_Width = 0;
  int m_Height = 0;
  unsigned m_Framebuffer = 0;
  CRect m_SavedUnitRect;
  CRect m_SavedVirtualRect;
  CPixelRect m_SavedViewport;
  bool m_SavedFlipped = false;
  CRender *m_Render = nullptr;
  CTextureManager *m_Manager = nullptr;
};

class CTextureManager {
 public:
  CTextureManager() = default;
  ~CTextureManager();
  CTextureManager(const CTextureManager &) = delete;
  CTextureManager &operator=(const CTextureManager &) = delete;

  bool Init();

  // Empties the free lists of all MaxRenderUnits pools.
  static void Free(CTextureManager *manager);
  // Empties the free lists of the pool of the renderer's device slot.
  static void InvalidateDevice(CTextureManager *manager, CRender &render);
  static CRenderTarget *CreateRenderTarget(CTextureManager *manager, CRender &render, int width, int height,
                                           int depthFormat);
  // Gives a temporary color texture back, with its target and buffer; other
  // textures, and a second release, are left alone.
  static void ReleaseTexture(CTextureManager *manager, CRender &render, CTexture *texture);
  // Whether the framebuffer bound now is complete; logs why not.
  static bool CheckFramebufferStatus();

  std::list<CTexture *> m_UsedTextures;
  std::list<CTexture *> m_FreeTextures;
  std::list<CRenderTarget *> m_UsedTargets;
  std::list<CRenderTarget *> m_FreeTargets;
  std::list<CRenderBuffer *> m_UsedBuffers;
  std::list<CRenderBuffer *> m_FreeBuffers;

 private:
  void FreeLists();
  CRenderBuffer *GetBuffer(CRender &render, int width, int height, int format);
  CTexture *GetColorTexture(CRender &render, int width, int height);
};
