#include "nodes/texture/RandomTextureNode.h"

#include <algorithm>

#include "core/Numeric.h"
#include "core/Random.h"
#include "render/Color.h"
#include "render/Render.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CRandomTextureNode::CreateInfo() {
  auto *info = new CNodeInfo(4, "RandomTexture", [] { return static_cast<CNode *>(new CRandomTextureNode); },
                             "A texture with random values");
  info->AddInPort(TextureSizePort("Width", "Width of texture", 256));
  info->AddInPort(TextureSizePort("Height", "Height of texture", 256));
  info->AddInPort(new CPortInt("Seed", "Seed value to use for the psedo randomizer", 1, 1, 100000));
  info->AddInPort(new CPortInt(
      "Count", "Number of values to randomize. If this value is 0 then CountRel will be used instead", 0, 0, 1000000));
  info->AddInPort(new CPortFloat("CountRel",
                                 "Relative number of pixels to randomize as a percent of total texture area. Count "
                                 "must be 0 to use this value",
                                 10, 0.1f, 0, 100));
  info->AddInPort(TextureColorPort("BackgroundColor",
                            "The whole texture will be filled with this color. It ignores the Rect value", {0, 0, 0, 1}));
  info->AddInPort(TextureColorPort("Color1", "A random color will be picked between color1 and color2", {0, 0, 0, 1}));
  info->AddInPort(TextureColorPort("Color2", "A random color will be picked between color1 and color2", {1, 1, 1, 1}));
  info->AddInPort(MakeViewportPort("Rect", "Region of texture to cover"));
  info->AddOutPort(new CPortTexture("Texture", "Texture"));
  return info;
}

bool CRandomTextureNode::Init() {
  m_Width = InPort<CPortInt>("Width");
  m_Height = InPort<CPortInt>("Height");
  m_Seed = InPort<CPortInt>("Seed");
  m_Count = InPort<CPortInt>("Count");
  m_CountRel = InPort<CPortFloat>("CountRel");
  m_Background = InPort<CPortColor>("BackgroundColor");
  m_Color1 = InPort<CPortColor>("Color1");
  m_Color2 = InPort<CPortColor>("Color2");
  m_Rect = InPort<CPortRect>("Rect");
  return CGeneratedTextureNode::Init();
}

void CRandomTextureNode::Update(float, FrameInfo *frame) {
  Offer();
  if (m_Updated) return;
  if (UpdateInPorts(frame->Time)) m_DirtyUnits = ALL_UNITS;
}

bool CRandomTextureNode::RestoreDevice(CRender *render) {
  // At least two rows: the texture is always a picture, never a line.
  const TextureSize size = ClampTextureSize(m_Width->m_Value, std::max(m_Height->m_Value, 2), 1);
  CTexture *texture = CreateSized(render, size);
  if (!texture) return false;
  const int width = size.width, height = size.height;
  const long long area = static_cast<long long>(width) * height;
  const int countPort = std::clamp(m_Count->m_Value, 0, 1000000);
  long long count = countPort;
  if (count == 0) count = SatInt<long long>(m_CountRel->m_Value / 100.0 * width * height);
  count = std::clamp<long long>(count, 0, 1000000);

  int x0 = SatInt(width * m_Rect->x.m_Value), y0 = SatInt(height * m_Rect->y.m_Value);
  int rw = SatInt(width * m_Rect->w.m_Value), rh = SatInt(height * m_Rect->h.m_Value);
  x0 = std::clamp(x0, 0, width);
  y0 = std::clamp(y0, 0, height);
  rw = std::clamp(x0 + std::max(rw, 0), 0, width) - x0;
  rh = std::clamp(y0 + std::max(rh, 0), 0, height) - y0;

  RandomState state;
  SeedRandomState(state, static_cast<uint32_t>(m_Seed->m_Value));
  const Color4f &a = m_Color1->m_Value, &b = m_Color2->m_Value, &bg = m_Background->m_Value;
  auto color = [&](float r) {
    return PackColor(a.r + r * (b.r - a.r), a.g + r * (b.g - a.g), a.b + r * (b.b - a.b), a.a + r * (b.a - a.a));
  };
  uint32_t *texels = texture->Lock();
  const bool dense = count >= static_cast<long long>(rw) * rh || (countPort == 0 && m_CountRel->m_Value >= 100);
  if (!dense || rw < width || rh < height) std::fill(texels, texels + area, PackColor(bg.r, bg.g, bg.b, bg.a));
  if (dense) {
    for (int y = y0; y < y0 + rh; ++y)
      for (int x = x0; x < x0 + rw; ++x) texels[static_cast<long long>(y) * width + x] = color(RandomUnsigned(state));
  } else if (rw > 0 && rh > 0) {
    for (long long i = 0; i < count; ++i) {
      const float ra = RandomUnsigned(state), rb = RandomUnsigned(state), rc = RandomUnsigned(state);
      const int x = x0 + std::min(SatInt(ra * rw), rw - 1), y = y0 + std::min(SatInt(rb * rh), rh - 1);
      texels[static_cast<long long>(y) * width + x] = color(rc);
    }
  }
  texture->Unlock();
  return true;
}
