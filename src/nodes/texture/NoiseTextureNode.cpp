#include "nodes/texture/NoiseTextureNode.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "expr/Noise.h"
#include "render/Color.h"
#include "render/Render.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
CPortInt *NoisePort(const char *name, const char *desc, int def, bool withNone) {
  auto *port = new CPortInt(name, desc, def, withNone ? 0 : 1, 17);
  if (withNone) port->AddValue(0, "None");
  static const char *const kNames[] = {
      "Noise frequency 1", "Noise frequency 2", "Noise frequency 4", "Noise frequency 8", "Noise frequency 16",
      "Noise frequency 32", "Noise frequency 64", "Fractal sum 2", "Fractal sum 3", "Fractal sum 4",
      "Fractal sum 5", "Fractal sum 6", "Turbulence 2", "Turbulence 3", "Turbulence 4", "Turbulence 5",
      "Turbulence 6"};
  for (int i = 1; i <= 17; ++i) port->AddValue(i, kNames[i - 1]);
  return port;
}

// One component's function, picked by its number before the loops.
struct NoiseFunction {
  enum Kind { None, Plain, Fractal, Turbulence } kind = None;
  float frequency = 1;
  int octaves = 0;

  explicit NoiseFunction(int number) {
    if (number >= 1 && number <= 7) {
      kind = Plain;
      frequency = static_cast<float>(1 << (number - 1));
    } else if (number >= 8 && number <= 17) {
      kind = number <= 12 ? Fractal : Turbulence;
      octaves = (number - 8) % 5 + 2;
    }
  }

  // Simplex evaluations of one texel: the corners of a tile times octaves.
  int Cost(bool volume) const {
    const int corners = volume ? 8 : 4;
    return kind == None ? 0 : kind == Plain ? corners : corners * octaves;
  }

  template <typename Tile>
  float Sum(Tile &&tile) const {
    if (kind == None) return 0;
    if (kind == Plain) return tile(frequency);
    float f = 1, a = 1, sum = 0, norm = 0;
    for (int i = 0; i < octaves; ++i) {
      const float n = tile(f);
      sum += a * (kind == Turbulence ? std::fabs(n) : n);
      norm += a;
      f *= 2.1362815f;
      a *= 0.5f;
    }
    return sum / norm;
  }
  float operator()(float x, float y) const {
    return Sum([&](float f) { return TileNoise(f * x, f * y, f, f); });
  }
  float operator()(float x, float y, float z) const {
    return Sum([&](float f) { return TileNoise(f * x, f * y, f * z, f, f, f); });
  }
};
}  // namespace

float TileNoise(float x, float y, float w, float h) {
  return (SimplexNoise2(x - w, y) * x * (h - y) + SimplexNoise2(x, y) * (w - x) * (h - y) +
          SimplexNoise2(x - w, y - h) * x * y + SimplexNoise2(x, y - h) * (w - x) * y) /
         (w * h);
}

float TileNoise(float x, float y, float z, float w, float h, float d) {
  float sum = 0;
  for (int corner = 0; corner < 8; ++corner) {
    const bool sx = corner & 1, sy = corner & 2, sz = corner & 4;
    const float weight = (sx ? x : w - x) * (sy ? y : h - y) * (sz ? z : d - z);
    sum += SimplexNoise3(sx ? x - w : x, sy ? y - h : y, sz ? z - d : z) * weight;
  }
  return sum / (w * h * d);
}

CNodeInfo *CNoiseTextureNode::CreateInfo() {
  auto *info = new CNodeInfo(4, "NoiseTexture", [] { return static_cast<CNode *>(new CNoiseTextureNode); },
                             "Creates a noise texture in up to 3 dimensions. Each component (R,G,B,A) of the texture "
                             "can be a different noise function. The created textures are tilable.");
  info->AddInPort(TextureSizePort("Width", "Width of texture", 256));
  info->AddInPort(TextureSizePort("Height", "Height of texture", 256));
  info->AddInPort(TextureSizePort("Depth", "Depth of texture", 1));
  info->AddInPort(NoisePort("NoiseR", "Type of noise to place in the R component of the texture", 2, false));
  info->AddInPort(NoisePort("NoiseG", "Type of noise to place in the G component of the texture", 3, true));
  info->AddInPort(NoisePort("NoiseB", "Type of noise to place in the G component of the texture", 4, true));
  info->AddInPort(NoisePort("NoiseA", "Type of noise to place in the G component of the texture", 5, true));
  info->AddInPort(new CPortVector("Offset", "Position offset of the generated noise", {0, 0, 0},
                                  {0.001f, 0.001f, 0.001f}, {-10000, -10000, -10000}, {10000, 10000, 10000}));
  info->AddOutPort(new CPortTexture("Texture", "Texture"));
  return info;
}

CNoiseTextureNode::CNoiseTextureNode() { m_Flags = 8; }

bool CNoiseTextureNode::Init() {
  m_Width = InPort<CPortInt>("Width");
  m_Height = InPort<CPortInt>("Height");
  m_Depth = InPort<CPortInt>("Depth");
  const char *names[] = {"NoiseR", "NoiseG", "NoiseB", "NoiseA"};
  for (int i = 0; i < 4; ++i) m_Noise[i] = InPort<CPortInt>(names[i]);
  m_Offset = InPort<CPortVector>("Offset");
  return CGeneratedTextureNode::Init();
}

// Within the texels a computed texture may have, and within about 32M noise
// evaluations for the whole fill: six octaves of turbulence in every channel
// get a smaller texture than plain noise does.
TextureSize CNoiseTextureNode::Size() const {
  const bool volume = m_Height->m_Value >= 2 && m_Depth->m_Value >= 2;
  int cost = 1;
  for (CPortInt *noise : m_Noise) cost += NoiseFunction(noise->m_Value).Cost(volume);
  const long long budget = std::min(MAX_COMPUTED_TEXELS, (1LL << 25) / cost);
  return ClampTextureSize(m_Width->m_Value, m_Height->m_Value, m_Depth->m_Value, budget);
}

void CNoiseTextureNode::Update(float, FrameInfo *frame) {
  Offer();
  if (m_Updated) return;
  if (UpdateInPorts(frame->Time)) {
    SetVolumeMode(Size());
    m_DirtyUnits = ALL_UNITS;
  }
}

CNoiseTextureNode::Fill CNoiseTextureNode::CurrentFill() const {
  Fill fill;
  fill.size = Size();
  for (int c = 0; c < 4; ++c) fill.noise[c] = m_Noise[c]->m_Value;
  fill.offset = m_Offset->m_Value;
  return fill;
}

std::vector<uint32_t> CNoiseTextureNode::Texels(const Fill &fill) {
  const TextureSize &size = fill.size;
  std::vector<uint32_t> texels(static_cast<size_t>(size.width) * size.height * size.depth);
  const NoiseFunction f[4] = {NoiseFunction(fill.noise[0]), NoiseFunction(fill.noise[1]),
                              NoiseFunction(fill.noise[2]), NoiseFunction(fill.noise[3])};
  const bool volume = size.depth >= 2;
  const float dx = 1.0f / size.width, dy = 1.0f / size.height, dz = 1.0f / size.depth;
  const Vec3f &offset = fill.offset;
  uint32_t *out = texels.data();
  float z = volume ? offset.z : 0.0f;
  for (int k = 0; k < size.depth; ++k, z += dz) {
    float y = volume ? 0.0f : offset.y;
    for (int j = 0; j < size.height; ++j, y += dy) {
      float x = 0;
      for (int i = 0; i < size.width; ++i, x += dx) {
        float n[4];
        for (int c = 0; c < 4; ++c) n[c] = volume ? f[c](x, y, z) : f[c](x, y);
        *out++ = PackColor(n[0] * 0.5f + 0.5f, n[1] * 0.5f + 0.5f, n[2] * 0.5f + 0.5f, n[3] * 0.5f + 0.5f);
      }
    }
  }
  return texels;
}

void CNoiseTextureNode::StartHostWork() {
  // The ports hold what the scene file says; a connection that delivers
  // something else by the time the texture is made means filling it then.
  if (m_Ahead.valid()) return;
  const Fill fill = CurrentFill();
  m_Ahead = std::async(std::launch::async, [fill] { return std::make_pair(fill, Texels(fill)); });
}

bool CNoiseTextureNode::HostWorkDone() const {
  return !m_Ahead.valid() || m_Ahead.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

bool CNoiseTextureNode::RestoreDevice(CRender *render) {
  const Fill fill = CurrentFill();
  std::vector<uint32_t> texels;
  if (m_Ahead.valid()) {
    auto [made, ahead] = m_Ahead.get();
    if (made == fill) texels = std::move(ahead);
  }
  if (texels.empty()) texels = Texels(fill);
  CTexture *texture = CreateSized(render, fill.size);
  if (!texture) return false;
  if (uint32_t *out = texture->Lock()) std::copy(texels.begin(), texels.end(), out);
  texture->Unlock();
  return true;
}
