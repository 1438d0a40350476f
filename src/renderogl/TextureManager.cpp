#include "renderogl/TextureManager.h"

#include <GL/glew.h>

#include <algorithm>

#include "core/Log.h"
#include "render/Render.h"
#include "renderogl/TextureOGL.h"

namespace {
template <class T>
bool MoveBetween(std::list<T *> &from, std::list<T *> &to, T *item) {
  auto it = std::find(from.begin(), from.end(), item);
  if (it == from.end()) return false;
  from.erase(it);
  to.push_back(item);
  return true;
}

// Takes the first item of `from` that `match` accepts onto `to`; null when none.
template <class T, class Match>
T *TakeFirst(std::list<T *> &from, std::list<T *> &to, Match match) {
  auto it = std::find_if(from.begin(), from.end(), match);
  if (it == from.end()) return nullptr;
  T *item = *it;
  from.erase(it);
  to.push_back(item);
  return item;
}

GLuint TextureName(CTexture *texture) {
  auto *t = dynamic_cast<CTextureOGL *>(texture);
  return t ? t->m_Name : 0;
}

void AttachDepth(GLuint renderbuffer) {
  glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT, GL_RENDERBUFFER_EXT, renderbuffer);
  glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, GL_STENCIL_ATTACHMENT_EXT, GL_RENDERBUFFER_EXT, renderbuffer);
}

void DeleteTexture(CTexture *texture) {
  texture->Release();
  delete texture;
}

void DeleteTarget(CRenderTargetOGL *target) {
  target->Free();
  delete target;
}

void DeleteBuffer(CRenderBuffer *buffer) {
  glDeleteRenderbuffersEXT(1, &buffer->m_Name);
  delete buffer;
}

template <class T, class Deleter>
void DeleteAll(std::list<T *> &list, Deleter deleter) {
  for (T *item : list) deleter(item);
  list.clear();
}
}  // namespace

void CRenderTargetOGL::Begin(CRender &render) {
  CRenderTarget::Begin(render);
  glBindTexture(GL_TEXTURE_2D, 0);
  glPushAttrib(GL_VIEWPORT_BIT);
  glViewport(0, 0, m_Width, m_Height);
}

void CRenderTargetOGL::End(CRender &render) {
  glPopAttrib();
  CRenderTarget::End(render);
}

void CRenderTargetOGL::Free() {
  if (m_Color) {
    m_Color->m_RenderTarget = nullptr;
    m_Color->Release();
  }
  if (m_Framebuffer) glDeleteFramebuffersEXT(1, &m_Framebuffer);
  m_Framebuffer = 0;
}

CTextureManager::~CTextureManager() {
  size_t used = m_UsedTextures.size() + m_UsedTargets.size() + m_UsedBuffers.size();
  if (used) Log("Texture pool freed with %ld objects in use", static_cast<long>(used));
  for (CRenderTargetOGL *target : m_UsedTargets) target->m_Color = nullptr;  // deleted with the textures
  DeleteAll(m_UsedTargets, DeleteTarget);
  DeleteAll(m_UsedTextures, DeleteTexture);
  DeleteAll(m_UsedBuffers, DeleteBuffer);
  FreeLists();
}

bool CTextureManager::Init() {
  Log("Texture manager initialized");
  return true;
}

void CTextureManager::FreeLists() {
  DeleteAll(m_FreeTextures, DeleteTexture);
  DeleteAll(m_FreeTargets, DeleteTarget);
  DeleteAll(m_FreeBuffers, DeleteBuffer);
}

void CTextureManager::Free(CTextureManager *manager) {
  for (int i = 0; i < MaxRenderUnits; ++i) manager[i].FreeLists();
}

void CTextureManager::InvalidateDevice(CTextureManager *manager, CRender &render) {
  manager[render.m_DeviceSlot].FreeLists();
}

CRenderBuffer *CTextureManager::GetBuffer(CRender &render, int width, int height, int format) {
  if (CRenderBuffer *b = TakeFirst(m_FreeBuffers, m_UsedBuffers, [&](const CRenderBuffer *b) {
        return b->m_Width == width && b->m_Height == height && b->m_Format == format && b->m_Samples == 1;
      }))
    return b;
  auto *buffer = new CRenderBuffer{width, height, format, 1, 0, &render};
  glGenRenderbuffersEXT(1, &buffer->m_Name);
  m_UsedBuffers.push_back(buffer);
  glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, buffer->m_Name);
  glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, GL_DEPTH24_STENCIL8_EXT, width, height);
  glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, 0);
  return buffer;
}

CTexture *CTextureManager::GetColorTexture(CRender &render, int width, int height) {
  CTexture *texture = TakeFirst(m_FreeTextures, m_UsedTextures, [&](const CTexture *t) {
    return t->m_Width == width && t->m_Height == height && t->m_Format == TF_A8R8G8B8;
  });
  if (texture) {
    // A user may have changed its sampling while it was out.
    if (auto *t = dynamic_cast<CTextureOGL *>(texture)) t->ResetFilter();
  } else {
    texture = render.CreateTexture(width, height, 0, TF_A8R8G8B8, TT_RenderTarget);
    if (!texture) return nullptr;
    m_UsedTextures.push_back(texture);
  }
  texture->m_Flags |= TEXF_Pooled;
  return texture;
}

CRenderTargetOGL *CTextureManager::CreateRenderTarget(CTextureManager *manager, CRender &render, int width,
                                                      int height, int depthFormat) {
  CTextureManager &pool = manager[render.m_DeviceSlot];
  CRenderTargetOGL *target = TakeFirst(pool.m_FreeTargets, pool.m_UsedTargets, [&](const CRenderTargetOGL *t) {
    return t->m_Width == width && t->m_Height == height;
  });
  if (!target) {
    target = new CRenderTargetOGL;
    target->m_Width = width;
    target->m_Height = height;
    target->m_Render = &render;
    target->m_Manager = manager;
    glGenFramebuffersEXT(1, &target->m_Framebuffer);
    pool.m_UsedTargets.push_back(target);
  }
  render.PushRenderState();
  render.SetState(RS_RenderTarget, static_cast<int>(target->m_Framebuffer));
  CTexture *color = pool.GetColorTexture(render, width, height);
  target->m_Color = color;
  if (color) color->m_RenderTarget = target;
  glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_2D, TextureName(color), 0);
  if (depthFormat == DEPTH_Stencil) {
    target->m_Depth = pool.GetBuffer(render, width, height, depthFormat);
    AttachDepth(target->m_Depth->m_Name);
  }
  CheckFramebufferStatus();
  render.PopRenderState();
  return target;
}

void CTextureManager::ReleaseTexture(CTextureManager *manager, CRender &render, CTexture *texture) {
  if (!texture || !(texture->m_Flags & TEXF_Pooled)) return;
  CTextureManager &pool = manager[texture->m_DeviceSlot];
  // A texture already given back is on the free list; releasing it again
  // must not detach it from a target that someone else holds now.
  if (std::find(pool.m_UsedTextures.begin(), pool.m_UsedTextures.end(), texture) == pool.m_UsedTextures.end())
    return;
  if (auto *target = static_cast<CRenderTargetOGL *>(texture->m_RenderTarget)) {
    render.PushRenderState();
    render.SetState(RS_RenderTarget, static_cast<int>(target->m_Framebuffer));
    if (target->m_Color == texture) {
      glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_2D, 0, 0);
      target->m_Color = nullptr;
    }
    if (!target->m_Color) {
      AttachDepth(0);
      if (target->m_Depth) MoveBetween(pool.m_UsedBuffers, pool.m_FreeBuffers, target->m_Depth);
      target->m_Depth = nullptr;
      MoveBetween(pool.m_UsedTargets, pool.m_FreeTargets, target);
    }
    render.PopRenderState();
    texture->m_RenderTarget = nullptr;
  }
  MoveBetween(pool.m_UsedTextures, pool.m_FreeTextures, texture);
}

bool CTextureManager::CheckFramebufferStatus() {
  GLenum status = glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT);
  const char *text = nullptr;
  switch (status) {
    case GL_FRAMEBUFFER_COMPLETE_EXT: return true;
    case GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT_EXT: text = "GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT_EXT"; break;
    case GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT_EXT: text = "Framebuffer incomplete, missing attachment"; break;
    case GL_FRAMEBUFFER_INCOMPLETE_DIMENSIONS_EXT:
      text = "Framebuffer incomplete, attached images must have same dimensions";
      break;
    case GL_FRAMEBUFFER_INCOMPLETE_FORMATS_EXT:
      text = "Framebuffer incomplete, attached images must have same format";
      break;
    case GL_FRAMEBUFFER_INCOMPLETE_DRAW_BUFFER_EXT: text = "Framebuffer incomplete, missing draw buffer"; break;
    case GL_FRAMEBUFFER_INCOMPLETE_READ_BUFFER_EXT: text = "Framebuffer incomplete, missing read buffer"; break;
    case GL_FRAMEBUFFER_UNSUPPORTED_EXT: text = "Unsupported framebuffer format"; break;
    default: text = "Unknown framebuffer status"; break;
  }
  return LogError("CheckFramebufferStatus: %s (%ld)", text, static_cast<long>(status));
}
