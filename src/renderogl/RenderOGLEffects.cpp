#include <GL/glew.h>

#include <algorithm>
#include <vector>

#include "core/Log.h"
#include "fx/FxNoiseTextures.h"
#include "renderogl/FxManagerOGL.h"
#include "renderogl/RenderOGL.h"
#include "render/RenderTarget.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"

bool CRenderOGL::InitEffects() {
  auto *manager = new CFxManagerOGL;
  if (!manager->Init(this)) {
    delete manager;
    return false;
  }
  m_FxManager = manager;
  return true;
}

void CRenderOGL::FreeEffects() {
  // The renderer has already deleted the textures it adopted.
  CNoiseTextures::Forget(m_DeviceSlot);
  if (!m_FxManager) return;
  m_FxManager->Free();
  delete m_FxManager;
  m_FxManager = nullptr;
}

void CRenderOGL::CreateDeviceTextures() {
  if (!CreateNoiseTextures(this)) LogError("Failed to create the noise textures");
  for (int entry = 0; entry < NOISE_Count; ++entry)
    if (CTexture *texture = CNoiseTextures::Get(m_DeviceSlot, entry)) AdoptTexture(texture);
  if (m_Settings.warmsUpDevice) WarmUpDevice();
}

void CRenderOGL::WarmUpDevice() {
  // A software driver allocates a texture's memory, and builds the code
  // behind mipmap generation for each kind of texture, the first time it is
  // asked; on the first frame of a scene that stalls the switch. So render
  // targets at the unit's full and half size (two of each: textures drawn
  // every frame are double buffered) go to the pool now, mipmaps made, and
  // mipmaps are made once for each kind: power-of-two sides or not, in both
  // layouts handed to the driver (render targets BGRA, pictures RGBA).
  const int width = m_UnitRect.Width(), height = m_UnitRect.Height();
  const int sizes[8][2] = {{width, height}, {width, height}, {width / 2, height / 2}, {width / 2, height / 2},
                           {16, 16},        {16, 9},         {15, 16},               {15, 9}};
  const float transparent[4] = {0, 0, 0, 0};
  std::vector<CRenderTarget *> made;
  for (const auto &size : sizes) {
    CRenderTarget *target = CreateRenderTarget(std::max(1, size[0]), std::max(2, size[1]), DEPTH_Stencil);
    if (!target || !target->m_Color) continue;
    target->Begin(*this);
    Clear(transparent, 1.0f, CLEAR_Color | CLEAR_Depth);
    target->End(*this);
    target->m_Color->GenerateMipmaps();
    made.push_back(target);
  }
  for (CRenderTarget *target : made) ReleaseTexture(target->m_Color);
  GLuint name = 0;
  glGenTextures(1, &name);
  glBindTexture(GL_TEXTURE_2D, name);
  for (int i = 4; i < 8; ++i) {
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, sizes[i][0], sizes[i][1], 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glGenerateMipmapEXT(GL_TEXTURE_2D);
  }
  glBindTexture(GL_TEXTURE_2D, 0);
  glDeleteTextures(1, &name);
}
