#include "core/Log.h"
#include "fx/FxNoiseTextures.h"
#include "renderogl/FxManagerOGL.h"
#include "renderogl/RenderOGL.h"

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
}
