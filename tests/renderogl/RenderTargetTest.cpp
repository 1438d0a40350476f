// Render targets from the pool: reuse, nesting, giving textures back.
#include <set>

#include "GLTestSupport.h"
#include "renderogl/TextureManager.h"
#include "renderogl/TextureOGL.h"

namespace {
GLuint Name(CTexture *t) { return dynamic_cast<CTextureOGL *>(t)->m_Name; }
std::pair<int, int> ViewportSize() {
  GLint v[4];
  glGetIntegerv(GL_VIEWPORT, v);
  return {v[2], v[3]};
}
}  // namespace

TEST(RenderTarget, PoolReusesTargetsTexturesAndBuffers) {
  VELMOR_REQUIRE_DISPLAY();
  GLWindow gl(8, 8);
  ASSERT_TRUE(gl.Ok()) << GetFirstError();
  auto &r = gl.render;
  CTextureManager *pool = r.m_TextureManager;
  ASSERT_NE(pool, nullptr);

  CRenderTargetOGL *a = CTextureManager::CreateRenderTarget(pool, r, 32, 16, DEPTH_Stencil);
  CRenderTargetOGL *b = CTextureManager::CreateRenderTarget(pool, r, 32, 16, DEPTH_Stencil);
  ASSERT_TRUE(a != b && a->m_Color && a->m_Depth);
  EXPECT_TRUE(a->m_Color->m_Flags & TEXF_Pooled);
  EXPECT_EQ(a->m_Color->m_RenderTarget, a);
  std::set<GLuint> framebuffers{a->m_Framebuffer, b->m_Framebuffer};
  std::set<GLuint> textures{Name(a->m_Color), Name(b->m_Color)};
  std::set<GLuint> buffers{a->m_Depth->m_Name, b->m_Depth->m_Name};
  EXPECT_EQ(GLInteger(GL_FRAMEBUFFER_BINDING_EXT), 0) << "creation leaves the window bound";
  // Someone changed the filter while the texture was out.
  glBindTexture(GL_TEXTURE_2D, Name(a->m_Color));
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glBindTexture(GL_TEXTURE_2D, 0);
  CTexture *colorA = a->m_Color;
  CTextureManager::ReleaseTexture(pool, r, colorA);
  CTextureManager::ReleaseTexture(pool, r, b->m_Color);
  CTextureManager::ReleaseTexture(pool, r, colorA);  // again: harmless
  EXPECT_EQ(pool->m_FreeTargets.size(), 2u);
  EXPECT_EQ(pool->m_FreeTextures.size(), 2u);
  EXPECT_EQ(pool->m_FreeBuffers.size(), 2u);
  EXPECT_TRUE(pool->m_UsedTargets.empty());

  CRenderTargetOGL *c = CTextureManager::CreateRenderTarget(pool, r, 32, 16, DEPTH_Stencil);
  CRenderTargetOGL *d = CTextureManager::CreateRenderTarget(pool, r, 32, 16, 0);
  EXPECT_EQ((std::set<GLuint>{c->m_Framebuffer, d->m_Framebuffer}), framebuffers);
  EXPECT_EQ((std::set<GLuint>{Name(c->m_Color), Name(d->m_Color)}), textures);
  ASSERT_NE(c->m_Depth, nullptr);
  EXPECT_TRUE(buffers.count(c->m_Depth->m_Name));
  EXPECT_EQ(d->m_Depth, nullptr) << "a reused target keeps no depth buffer it was not asked for";
  for (CRenderTargetOGL *t : {c, d}) {
    GLint minFilter = 0;
    glBindTexture(GL_TEXTURE_2D, Name(t->m_Color));
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &minFilter);
    EXPECT_EQ(minFilter, GL_LINEAR);
  }
  glBindTexture(GL_TEXTURE_2D, 0);
  // A kept texture (flag cleared) stays attached through a release.
  c->m_Color->m_Flags &= ~TEXF_Pooled;
  CTexture *kept = c->m_Color;
  CTextureManager::ReleaseTexture(pool, r, kept);
  EXPECT_EQ(c->m_Color, kept);
  EXPECT_EQ(kept->m_RenderTarget, c);
  kept->m_Flags |= TEXF_Pooled;
  CTextureManager::ReleaseTexture(pool, r, kept);
  CTextureManager::ReleaseTexture(pool, r, d->m_Color);
  // A texture made outside the pool is not the pool's to take.
  CTexture *file = r.CreateTexture(4, 4, 0, TF_A8R8G8B8, TT_Normal);
  CTextureManager::ReleaseTexture(pool, r, file);
  EXPECT_EQ(pool->m_FreeTextures.size(), 2u);
  file->Release();
  delete file;
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST(RenderTarget, AWarmedUpDeviceStartsWithTargetsOfTheUnitsFullAndHalfSizePooled) {
  VELMOR_REQUIRE_DISPLAY();
  EXPECT_TRUE(GLWindow(64, 48).render.m_TextureManager->m_FreeTargets.empty()) << "only live switches warm up";
  RunSettings settings;
  settings.warmsUpDevice = true;
  GLWindow gl(64, 48, settings);
  ASSERT_TRUE(gl.Ok()) << GetFirstError();
  CTextureManager *pool = gl.render.m_TextureManager;
  // Two of each size (double buffering), taken with their mipmaps made.
  for (const auto &[w, h] : {std::pair{64, 48}, std::pair{64, 48}, std::pair{32, 24}, std::pair{32, 24}}) {
    const size_t freeBefore = pool->m_FreeTargets.size();
    CRenderTargetOGL *t = CTextureManager::CreateRenderTarget(pool, gl.render, w, h, DEPTH_Stencil);
    EXPECT_EQ(pool->m_FreeTargets.size(), freeBefore - 1) << w << "x" << h << " was made, not taken";
    GLint levelWidth = 0;
    glBindTexture(GL_TEXTURE_2D, Name(t->m_Color));
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 1, GL_TEXTURE_WIDTH, &levelWidth);
    EXPECT_EQ(levelWidth, w / 2);
  }
}

TEST(RenderTarget, NestedBeginEndRestoreViewportBindingAndRects) {
  VELMOR_REQUIRE_DISPLAY();
  GLWindow gl(20, 10);
  ASSERT_TRUE(gl.Ok()) << GetFirstError();
  CRender &r = gl.render;  // the interface nodes use
  CRenderTarget *outer = r.CreateRenderTarget(16, 16, DEPTH_Stencil);
  CRenderTarget *inner = r.CreateRenderTarget(8, 4, 0);
  ASSERT_TRUE(outer && inner);
  const float red[4] = {1, 0, 0, 1}, blue[4] = {0, 0, 1, 1};

  outer->Begin(r);
  EXPECT_TRUE(r.m_Flipped);
  EXPECT_EQ(r.m_UnitRect, (CRect{0, 0, 16, 16}));
  EXPECT_EQ(GLInteger(GL_FRAMEBUFFER_BINDING_EXT), static_cast<GLint>(outer->m_Framebuffer));
  r.Clear(red, 1.0f, CLEAR_Color | CLEAR_Depth);
  inner->Begin(r);
  EXPECT_EQ(r.m_VirtualRect, (CRect{0, 0, 8, 4}));
  EXPECT_EQ(ViewportSize(), (std::pair{8, 4}));
  r.Clear(blue, 1.0f, CLEAR_Color);
  inner->End(r);
  EXPECT_EQ(GLInteger(GL_FRAMEBUFFER_BINDING_EXT), static_cast<GLint>(outer->m_Framebuffer));
  EXPECT_EQ(ViewportSize(), (std::pair{16, 16}));
  EXPECT_EQ(r.m_UnitRect, (CRect{0, 0, 16, 16}));
  outer->End(r);
  EXPECT_FALSE(r.m_Flipped);
  EXPECT_EQ(r.m_UnitRect, (CRect{0, 0, 20, 10}));
  EXPECT_EQ(GLInteger(GL_FRAMEBUFFER_BINDING_EXT), 0);
  EXPECT_EQ(ViewportSize(), (std::pair{20, 10}));
  // What was drawn is in the color textures.
  for (auto [target, rgb] : {std::pair{outer, 0x0000FFu}, std::pair{inner, 0xFF0000u}}) {
    std::vector<uint32_t> texels(static_cast<size_t>(target->m_Width * target->m_Height));
    glBindTexture(GL_TEXTURE_2D, Name(target->m_Color));
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    EXPECT_EQ(texels.front() & 0xFFFFFF, rgb);
    EXPECT_EQ(texels.back() & 0xFFFFFF, rgb);
  }
  glBindTexture(GL_TEXTURE_2D, 0);
  r.ReleaseTexture(outer->m_Color);
  r.ReleaseTexture(inner->m_Color);
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}
