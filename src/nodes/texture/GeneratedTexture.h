#pragma once
// What the texture nodes that fill their texture on the CPU share: the
// texture of the device slot, its release, offering it on the out-port at
// the head of every Update, the size ports and the limits on sizes.

#include "portdata/PDTexture.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortColor;
class CPortInt;
struct Color4f;
class CPortTexture;

// Sizes a texture may get from its ports: the GL guarantees 4096 on a side
// for two dimensions on every device we run on, a volume is held to 128 on
// a side, and no texture holds more than 16M texels (64 MiB). Textures whose
// every texel runs noise octaves or an expression get at most 1M texels, so
// that a change of a port costs seconds at worst, not minutes.
constexpr int MAX_TEXTURE_SIDE = 4096;
constexpr int MAX_VOLUME_SIDE = 128;
constexpr long long MAX_TEXTURE_TEXELS = 1LL << 24;
constexpr long long MAX_COMPUTED_TEXELS = 1LL << 20;

struct TextureSize {
  int width = 1, height = 1, depth = 1;
  bool operator==(const TextureSize &) const = default;
};
// The ports' sizes within the limits above. A height below 2 keeps the
// texture one row, a depth below 2 keeps it flat; halving the longest side
// keeps the texel count within bounds.
TextureSize ClampTextureSize(int width, int height, int depth, long long maxTexels = MAX_TEXTURE_TEXELS);

// An Int port of sizes 1 to 4096 listing the powers of two.
CPortInt *TextureSizePort(const char *name, const char *desc, int def);
// A Color port within 0..1.
CPortColor *TextureColorPort(const char *name, const char *desc, Color4f def);

class CGeneratedTextureNode : public CNode, public CPDTexture {
 public:
  ~CGeneratedTextureNode() override;
  bool Init() override;
  void InvalidateDevice(CRender *render) override;
  CTexture *GetTexture(CRender *render) override;

 protected:
  // Offers the texture with its flags and mode: at the head of Update,
  // before the m_Updated test, so the first pull of a frame sees a change.
  void Offer();
  // The texture of the device slot: width only when `size.height` is below
  // 2, a volume when `size.depth` is 2 or more. Null after a logged failure.
  CTexture *CreateSized(CRender *render, const TextureSize &size);
  // The flags and mode of the noise and expression textures for a size.
  void SetVolumeMode(const TextureSize &size);
  CTexture *&Slot(CRender *render);

  CPortTexture *m_TextureOut = nullptr;
};
