#include "nodes/texture/GeneratedTexture.h"

#include <algorithm>

#include "render/DeviceCheck.h"
#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

TextureSize ClampTextureSize(int width, int height, int depth, long long maxTexels) {
  TextureSize s{std::clamp(width, 1, MAX_TEXTURE_SIDE), std::clamp(height, 1, MAX_TEXTURE_SIDE),
                std::clamp(depth, 1, MAX_TEXTURE_SIDE)};
  if (s.height < 2) s.depth = 1;
  if (s.depth >= 2) {
    s.width = std::min(s.width, MAX_VOLUME_SIDE);
    s.height = std::min(s.height, MAX_VOLUME_SIDE);
    s.depth = std::min(s.depth, MAX_VOLUME_SIDE);
  }
  while (static_cast<long long>(s.width) * s.height * s.depth > maxTexels) {
    int &longest = s.width >= s.height ? (s.width >= s.depth ? s.width : s.depth) : (s.height >= s.depth ? s.height : s.depth);
    longest /= 2;
  }
  return s;
}

CPortInt *TextureSizePort(const char *name, const char *desc, int def) {
  auto *port = new CPortInt(name, desc, def, 1, MAX_TEXTURE_SIDE);
  static const char *const kNames[] = {"1",   "2",   "4",    "8",    "16",   "32",  "64",
                                       "128", "256", "512", "1024", "2048", "4096"};
  for (int i = 0; i < 13; ++i) port->AddValue(1 << i, kNames[i]);
  return port;
}

CPortColor *TextureColorPort(const char *name, const char *desc, Color4f def) {
  return new CPortColor(name, desc, def, {0, 0, 0, 0}, {1, 1, 1, 1});
}

CGeneratedTextureNode::~CGeneratedTextureNode() {
  for (CTexture *&texture : m_Textures) {
    if (!texture) continue;
    texture->Release();
    delete texture;
  }
}

bool CGeneratedTextureNode::Init() {
  m_TextureOut = OutPort<CPortTexture>("Texture");
  return true;
}

void CGeneratedTextureNode::Offer() {
  if (m_TextureOut) m_TextureOut->SetTexture(this);
}

CTexture *&CGeneratedTextureNode::Slot(CRender *render) { return m_Textures[render->m_DeviceSlot]; }

CTexture *CGeneratedTextureNode::GetTexture(CRender *render) { return render ? Slot(render) : m_Textures[0]; }

void CGeneratedTextureNode::InvalidateDevice(CRender *render) {
  CTexture *&texture = Slot(render);
  if (!texture) return;
  texture->Release();
  delete texture;
  texture = nullptr;
}

CTexture *CGeneratedTextureNode::CreateSized(CRender *render, const TextureSize &size) {
  // Named as the failure report names them.
  struct {
    CTexture *&m_Texture;
  } slot{Slot(render)}, *dObjs = &slot;
  const int width = size.width, height = size.height, depth = size.depth;
  if (height < 2) {
    if (DEVICE_FAILED(!(dObjs->m_Texture = render->CreateTexture(width, 0, 0, TF_A8R8G8B8, TT_Normal)))) return nullptr;
  } else if (depth < 2) {
    if (DEVICE_FAILED(!(dObjs->m_Texture = render->CreateTexture(width, height, 0, TF_A8R8G8B8, TT_Normal))))
      return nullptr;
  } else if (DEVICE_FAILED(!(dObjs->m_Texture = render->CreateTexture(width, height, depth, TF_A8R8G8B8, TT_Normal)))) {
    return nullptr;
  }
  return dObjs->m_Texture;
}

void CGeneratedTextureNode::SetVolumeMode(const TextureSize &size) {
  m_Mode = size.height < 2 ? 1 : (size.depth > 2 ? 3 : 2);
  m_Flags = m_Mode == 3 ? 0 : TEXF_HasMipmaps;
}
