#include "nodes/texture/GradientNode.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "render/Color.h"
#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
constexpr float kPi = 3.1415927f;

}  // namespace

CNodeInfo *CGradientNode::CreateInfo() {
  auto *info = new CNodeInfo(4, "Gradient", [] { return static_cast<CNode *>(new CGradientNode); },
                             "Creates a texture with a specific gradient on it");
  info->AddInPort(TextureSizePort("Width", "Width of texture", 256));
  info->AddInPort(TextureSizePort("Height", "Height of texture", 1));
  info->AddInPort(new CPortInt("GradientType", "Gradient type", Linear, 0, 3))
      ->AddValue(Linear, "Linear")
      ->AddValue(Radial, "Radial")
      ->AddValue(Conical, "Conical")
      ->AddValue(Square, "Square");
  info->AddInPort(new CPortFloat("Angle", "Rotation angle in degress", 0, 0.01f, -10000, 10000));
  info->AddInPort(new CPortFloat("CenterX", "Center position X", 0.5f, 0.001f, -100, 100));
  info->AddInPort(new CPortFloat("CenterY", "Center position Y", 0.5f, 0.001f, -100, 100));
  for (int i = 1; i <= 5; ++i) {
    const std::string n = std::to_string(i);
    info->AddInPort(new CPortFloat(("Color" + n + "Peak").c_str(),
                                   ("Where in the gradient the color " + n + " has it's peak value").c_str(),
                                   i == 1 ? 0.0f : 1.0f, 0.01f, 0, 1));
    info->AddInPort(TextureColorPort(("Color" + n).c_str(), ("Input color " + n).c_str(),
                              i == 1 ? Color4f{0, 0, 0, 0} : Color4f{1, 1, 1, 1}));
  }
  info->AddInPort(TextureColorPort("BackgroundColor", "Background color", {0, 0, 0, 0}));
  info->AddOutPort(new CPortTexture("Texture", "Texture"));
  return info;
}

CGradientNode::CGradientNode() { m_Flags = 0x28; }

bool CGradientNode::Init() {
  m_Width = InPort<CPortInt>("Width");
  m_Height = InPort<CPortInt>("Height");
  m_Type = InPort<CPortInt>("GradientType");
  m_Angle = InPort<CPortFloat>("Angle");
  m_CenterX = InPort<CPortFloat>("CenterX");
  m_CenterY = InPort<CPortFloat>("CenterY");
  for (int i = 0; i < 5; ++i) {
    const std::string n = std::to_string(i + 1);
    m_Peaks[i] = InPort<CPortFloat>(("Color" + n + "Peak").c_str());
    m_Colors[i] = InPort<CPortColor>(("Color" + n).c_str());
  }
  m_Background = InPort<CPortColor>("BackgroundColor");
  return CGeneratedTextureNode::Init();
}

TextureSize CGradientNode::Size() const { return ClampTextureSize(m_Width->m_Value, m_Height->m_Value, 1); }

void CGradientNode::Update(float, FrameInfo *frame) {
  Offer();
  if (m_Updated) return;
  if (UpdateInPorts(frame->Time)) {
    m_Flags = 0x28;
    m_Mode = Size().height > 1 ? 2 : 1;
    m_DirtyUnits = ALL_UNITS;
  }
}

bool CGradientNode::RestoreDevice(CRender *render) {
  CTexture *texture = CreateSized(render, Size());
  if (!texture) return false;
  Fill(*texture);
  return true;
}

bool CGradientNode::ResetDevice(CRender *render) {
  CTexture *texture = Slot(render);
  const TextureSize size = Size();
  if (texture && texture->m_Width == size.width && texture->Dimension() == (size.height < 2 ? 1 : 2) &&
      (size.height < 2 || texture->m_Height == size.height)) {
    Fill(*texture);
    return true;
  }
  InvalidateDevice(render);
  RestoreDevice(render);
  return true;
}

void CGradientNode::Fill(CTexture &texture) const {
  // Stops by peak; nearly equal peaks keep their port order.
  struct Stop {
    Color4f color;
    float peak;
  } stops[5];
  for (int i = 0; i < 5; ++i) stops[i] = {m_Colors[i]->m_Value, m_Peaks[i]->m_Value};
  for (int pass = 0; pass < 5; ++pass) {
    bool swapped = false;
    for (int i = 0; i < 4; ++i)
      if (stops[i + 1].peak < stops[i].peak && stops[i].peak - stops[i + 1].peak > 1e-05f) {
        std::swap(stops[i], stops[i + 1]);
        swapped = true;
      }
    if (!swapped) break;
  }

  const int w = texture.m_Width, h = std::max(texture.m_Height, 1), type = m_Type->m_Value;
  const float fw = static_cast<float>(w), fh = static_cast<float>(h);
  float d = fw;
  if (type == Square) d = std::max(fw, fh) * 0.5f;
  if (type == Radial || type == Conical) d = std::floor(std::sqrt(fw * fw + fh * fh) * 0.5f + 0.5f);
  const float a = m_Angle->m_Value / 180.0f * kPi, c = std::cos(a), s = std::sin(a);
  const float cx = m_CenterX->m_Value * fw, cy = m_CenterY->m_Value * fh;
  const Color4f &bg = m_Background->m_Value;
  const uint32_t background = PackColor(bg.r, bg.g, bg.b, bg.a);

  uint32_t *out = texture.Lock();
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const float dx = x + 0.5f - cx, dy = y + 0.5f - cy;
      const float u = dx * c - dy * s, v = dx * s + dy * c;
      float t = 0;
      switch (type) {
        case Linear: t = 0.5f + u / d; break;
        case Radial: t = std::sqrt(u * u + v * v) / d; break;
        case Conical: t = std::fabs(std::atan2(v, u)) / kPi; break;
        default: t = std::max(std::fabs(u), std::fabs(v)) / d; break;
      }
      t = t > 0 ? std::min(t, 1.0f) : 0.0f;  // NaN to 0
      uint32_t texel = background;
      for (int i = 1; i < 5; ++i) {
        if (!(t <= stops[i].peak)) continue;
        const Stop &p = stops[i - 1], &q = stops[i];
        // Not clamped: below the first peak the colors extrapolate.
        const float span = q.peak - p.peak, f = span != 0 ? (t - p.peak) / span : 0.0f;
        texel = PackColor(p.color.r + f * (q.color.r - p.color.r), p.color.g + f * (q.color.g - p.color.g),
                          p.color.b + f * (q.color.b - p.color.b), p.color.a + f * (q.color.a - p.color.a));
        break;
      }
      *out++ = texel;
    }
  texture.Unlock();
}
