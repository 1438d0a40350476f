#pragma once
// Pools of render targets: framebuffers, their color textures and their
// depth-stencil buffers are made once per size and handed out again, so a
// scene that draws into textures every frame creates no GL object in the
// steady state.
//
// The GL renderer's CreateRenderTarget and ReleaseTexture come here;
// `manager` is its array of MaxRenderUnits pools, one per device slot.

#include <list>

#include "render/RenderTarget.h"

class CRender;
class CTexture;
class CTextureManager;

class CRenderBuffer {
 public:
  int m_Width = 0;
  int m_Height = 0;
  int m_Format = 0;
  int m_Samples = 1;
  unsigned m_Name = 0;
  CRender *m_Render = nullptr;
};

// A framebuffer object with its color texture and, if asked, a depth and
// stencil renderbuffer.
class CRenderTargetOGL : public CRenderTarget {
 public:
  void Begin(CRender &render) override;
  void End(CRender &render) override;
  // Releases the color texture if any and deletes the framebuffer.
  void Free();

  CRenderBuffer *m_Depth = nullptr;
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
  static CRenderTargetOGL *CreateRenderTarget(CTextureManager *manager, CRender &render, int width, int height,
                                           int depthFormat);
  // Gives a temporary color texture back, with its target and buffer; other
  // textures, and a second release, are left alone.
  static void ReleaseTexture(CTextureManager *manager, CRender &render, CTexture *texture);
  // Whether the framebuffer bound now is complete; logs why not.
  static bool CheckFramebufferStatus();

  std::list<CTexture *> m_UsedTextures;
  std::list<CTexture *> m_FreeTextures;
  std::list<CRenderTargetOGL *> m_UsedTargets;
  std::list<CRenderTargetOGL *> m_FreeTargets;
  std::list<CRenderBuffer *> m_UsedBuffers;
  std::list<CRenderBuffer *> m_FreeBuffers;

 private:
  void FreeLists();
  CRenderBuffer *GetBuffer(CRender &render, int width, int height, int format);
  CTexture *GetColorTexture(CRender &render, int width, int height);
};
