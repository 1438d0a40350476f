#pragma once

#include <cstdint>
#include <future>
#include <utility>
#include <vector>

#include "scene/PortValues.h"
#include "nodes/texture/GeneratedTexture.h"

class CPortVector;

// Tileable simplex noise in one, two or three dimensions, a noise function
// of its own in each of R, G, B and A: plain noise of a frequency, a
// fractal sum or turbulence of a number of octaves.
class CNoiseTextureNode : public CGeneratedTextureNode {
 public:
  static CNodeInfo *CreateInfo();
  CNoiseTextureNode();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  // The texels are computed on a thread of their own when the scene is
  // about to be shown: a large fill of many octaves takes tens of ms.
  void StartHostWork() override;
  bool HostWorkDone() const override;

 private:
  // What decides the texels.
  struct Fill {
    TextureSize size;
    int noise[4] = {};
    Vec3f offset;
    bool operator==(const Fill &) const = default;
  };
  TextureSize Size() const;
  Fill CurrentFill() const;
  static std::vector<uint32_t> Texels(const Fill &fill);

  std::future<std::pair<Fill, std::vector<uint32_t>>> m_Ahead;

  CPortInt *m_Width = nullptr, *m_Height = nullptr, *m_Depth = nullptr;
  CPortInt *m_Noise[4] = {};
  CPortVector *m_Offset = nullptr;
};

// Noise that repeats with period w, h (and d) in its coordinates, blended
// from the simplex noise at the corners of the period.
float TileNoise(float x, float y, float w, float h);
float TileNoise(float x, float y, float z, float w, float h, float d);
