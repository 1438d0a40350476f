#pragma once
// The three textures that effect text samples through gFastPerlinNoiseSampler
// (32^3, two periodic noises), gPermutation1dSampler (256) and
// gPermutation2dSampler (256 x 256), one set per device slot. The renderer
// owns them; the table only lends them out.

#include <cstdint>

class CRender;
class CTexture;

enum { NOISE_FastPerlin = 0, NOISE_Permutation1D = 1, NOISE_Permutation2D = 2, NOISE_Count = 3 };

class CNoiseTextures {
 public:
  // Null before CreateNoiseTextures and after Forget.
  static CTexture *Get(int slot, int entry);
  static void Set(int slot, int entry, CTexture *texture);
  static void Forget(int slot);
};

// Creates and fills the textures of the render object's device slot; false
// when one could not be created. The caller owns what was created.
bool CreateNoiseTextures(CRender *render);

// Perlin's reference permutation; the index wraps at 256.
int NoisePerm(int index);
// Improved noise with period 8 on each axis, `s` added at each hashing
// stage; about -1..1.
float PeriodicNoise(float x, float y, float z, int s);
