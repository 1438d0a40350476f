#include "renderogl/TextureOGL.h"

#include <algorithm>

#include "render/RenderTypes.h"

CTextureOGL::CTextureOGL(int width, int height, int depth, int format, int type) : m_Type(type) {
  m_Width = width;
  m_Height = height;
  m_Depth = depth;
  m_Format = format;
  glGenTextures(1, &m_Name);
  ResetFilter();
  if (type == TT_RenderTarget) {
    glBindTexture(GL_TEXTURE_2D, m_Name);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_BGRA, GL_UNSIGNED_BYTE, nullptr);
    glBindTexture(GL_TEXTURE_2D, 0);
    m_Flags |= TEXF_RenderTarget;
    m_HasStorage = true;
  } else {
    m_Pixels.assign(static_cast<size_t>(std::max(TexelCount(), 0)), 0u);
  }
}

CTextureOGL::~CTextureOGL() { Release(); }

GLenum CTextureOGL::Target() const {
  switch (Dimension()) {
    case 1: return GL_TEXTURE_1D;
    case 3: return GL_TEXTURE_3D;
    default: return GL_TEXTURE_2D;
  }
}

void CTextureOGL::ResetFilter() {
  if (!m_Name) return;
  GLenum target = m_Type == TT_RenderTarget ? GL_TEXTURE_2D : Target();
  glBindTexture(target, m_Name);
  GLint wrap = m_Type == TT_RenderTarget ? GL_CLAMP_TO_EDGE : GL_REPEAT;
  glTexParameteri(target, GL_TEXTURE_WRAP_S, wrap);
  glTexParameteri(target, GL_TEXTURE_WRAP_T, wrap);
  if (target == GL_TEXTURE_3D) glTexParameteri(target, GL_TEXTURE_WRAP_R, wrap);
  bool mipmapped = m_Type == TT_Normal && target != GL_TEXTURE_3D;
  glTexParameteri(target, GL_TEXTURE_MIN_FILTER, mipmapped ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
  glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  if (mipmapped) {
    glTexParameteri(target, GL_GENERATE_MIPMAP, GL_TRUE);
    m_Flags |= TEXF_HasMipmaps;
  }
  glBindTexture(target, 0);
}

uint32_t *CTextureOGL::Lock() { return m_Pixels.empty() ? nullptr : m_Pixels.data(); }

void CTextureOGL::Unlock() {
  if (m_Pixels.empty() || !m_Name) return;
  GLenum target = Target();
  glBindTexture(target, m_Name);
  const void *data = m_Pixels.data();
  if (target == GL_TEXTURE_1D)
    glTexImage1D(target, 0, GL_RGBA8, m_Width, 0, GL_RGBA, GL_UNSIGNED_BYTE, data);
  else if (target == GL_TEXTURE_2D)
    glTexImage2D(target, 0, GL_RGBA8, m_Width, m_Height, 0, GL_RGBA, GL_UNSIGNED_BYTE, data);
  else
    glTexImage3D(target, 0, GL_RGBA8, m_Width, m_Height, m_Depth, 0, GL_RGBA, GL_UNSIGNED_BYTE, data);
  glBindTexture(target, 0);
  m_HasStorage = true;
}

void CTextureOGL::Release() {
  m_Pixels.clear();
  m_Pixels.shrink_to_fit();
  if (m_Name) glDeleteTextures(1, &m_Name);
  m_Name = 0;
  m_HasStorage = false;
}

void CTextureOGL::GenerateMipmaps() {
  if (!m_Name) return;
  glBindTexture(GL_TEXTURE_2D, m_Name);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
  glGenerateMipmapEXT(GL_TEXTURE_2D);
  glBindTexture(GL_TEXTURE_2D, 0);
  m_Flags |= TEXF_HasMipmaps;
}
