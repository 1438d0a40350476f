#pragma once
// A texture on the GL context: 1D, 2D or 3D by its sizes, with a host array
// that Lock hands out and Unlock uploads. Render-target textures have device
// storage from the start and no host array.

#include <GL/glew.h>

#include <vector>

#include "render/Resources.h"

class CTextureOGL : public CTexture {
 public:
  CTextureOGL(int width, int height, int depth, int format, int type);
  ~CTextureOGL() override;

  uint32_t *Lock() override;
  void Unlock() override;
  void Release() override;
  void GenerateMipmaps() override;

  GLenum Target() const;
  // Back to the sampling state a new texture of its type has; a pooled
  // texture gets it on reuse.
  void ResetFilter();

  int m_Type;
  GLuint m_Name = 0;
  bool m_HasStorage = false;
  std::vector<uint32_t> m_Pixels;
};
