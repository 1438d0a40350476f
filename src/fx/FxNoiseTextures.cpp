#include "fx/FxNoiseTextures.h"

#include "render/Color.h"
#include "render/Render.h"

#include <cmath>

namespace {
constexpr uint8_t kPerm[256] = {
    151, 160, 137, 91,  90,  15,  131, 13,  201, 95,  96,  53,  194, 233, 7,   225, 140, 36,  103, 30,  69,  142,
    8,   99,  37,  240, 21,  10,  23,  190, 6,   148, 247, 120, 234, 75,  0,   26,  197, 62,  94,  252, 219, 203,
    117, 35,  11,  32,  57,  177, 33,  88,  237, 149, 56,  87,  174, 20,  125, 136, 171, 168, 68,  175, 74,  165,
    71,  134, 139, 48,  27,  166, 77,  146, 158, 231, 83,  111, 229, 122, 60,  211, 133, 230, 220, 105, 92,  41,
    55,  46,  245, 40,  244, 102, 143, 54,  65,  25,  63,  161, 1,   216, 80,  73,  209, 76,  132, 187, 208, 89,
    18,  169, 200, 196, 135, 130, 116, 188, 159, 86,  164, 100, 109, 198, 173, 186, 3,   64,  52,  217, 226, 250,
    124, 123, 5,   202, 38,  147, 118, 126, 255, 82,  85,  212, 207, 206, 59,  227, 47,  16,  58,  17,  182, 189,
    28,  42,  223, 183, 170, 213, 119, 248, 152, 2,   44,  154, 163, 70,  221, 153, 101, 155, 167, 43,  172, 9,
    129, 22,  39,  253, 19,  98,  108, 110, 79,  113, 224, 232, 178, 185, 112, 104, 218, 246, 97,  228, 251, 34,
    242, 193, 238, 210, 144, 12,  191, 179, 162, 241, 81,  51,  145, 235, 249, 14,  239, 107, 49,  192, 214, 31,
    181, 199, 106, 157, 184, 84,  204, 176, 115, 121, 50,  45,  127, 4,   150, 254, 138, 236, 205, 93,  222, 114,
    67,  29,  24,  72,  243, 141, 128, 195, 78,  66,  215, 61,  156, 180};

// Wrapping at 256 reads as the reference table stored twice in a row.
int Perm(int i) { return kPerm[i & 255]; }

CTexture *g_Table[MaxRenderUnits][NOISE_Count] = {};

float Fade(float t) { return t * t * t * (t * (t * 6 - 15) + 10); }
float Lerp(float t, float a, float b) { return a + t * (b - a); }

float Grad(int hash, float dx, float dy, float dz) {
  int h = hash & 15;
  float u = h < 8 ? dx : dy;
  float v = h < 4 ? dy : (h == 12 || h == 14) ? dx : dz;
  return ((h & 1) ? -u : u) + ((h & 2) ? -v : v);
}

bool Valid(int slot, int entry) { return slot >= 0 && slot < MaxRenderUnits && entry >= 0 && entry < NOISE_Count; }
}  // namespace

int NoisePerm(int index) { return Perm(index); }

float PeriodicNoise(float x, float y, float z, int s) {
  float fx = std::floor(x), fy = std::floor(y), fz = std::floor(z);
  int X = static_cast<int>(fx) & 7, Y = static_cast<int>(fy) & 7, Z = static_cast<int>(fz) & 7;
  int X1 = (X + 1) & 7, Y1 = (Y + 1) & 7, Z1 = (Z + 1) & 7;
  x -= fx;
  y -= fy;
  z -= fz;
  int A = Perm(X + s), AA = Perm(A + Y + s), AB = Perm(A + Y1 + s);
  int B = Perm(X1 + s), BA = Perm(B + Y + s), BB = Perm(B + Y1 + s);
  float u = Fade(x), v = Fade(y), w = Fade(z);
  float near = Lerp(v, Lerp(u, Grad(Perm(AA + Z + s), x, y, z), Grad(Perm(BA + Z + s), x - 1, y, z)),
                    Lerp(u, Grad(Perm(AB + Z + s), x, y - 1, z), Grad(Perm(BB + Z + s), x - 1, y - 1, z)));
  float far = Lerp(v, Lerp(u, Grad(Perm(AA + Z1 + s), x, y, z - 1), Grad(Perm(BA + Z1 + s), x - 1, y, z - 1)),
                   Lerp(u, Grad(Perm(AB + Z1 + s), x, y - 1, z - 1), Grad(Perm(BB + Z1 + s), x - 1, y - 1, z - 1)));
  return Lerp(w, near, far);
}

CTexture *CNoiseTextures::Get(int slot, int entry) { return Valid(slot, entry) ? g_Table[slot][entry] : nullptr; }

void CNoiseTextures::Set(int slot, int entry, CTexture *texture) {
  if (Valid(slot, entry)) g_Table[slot][entry] = texture;
}

void CNoiseTextures::Forget(int slot) {
  for (int e = 0; e < NOISE_Count; ++e) CNoiseTextures::Set(slot, e, nullptr);
}

bool CreateNoiseTextures(CRender *render) {
  int slot = render->m_DeviceSlot;
  CTexture *volume = render->CreateTexture(32, 32, 32, TF_A8R8G8B8, TT_Normal);
  CTexture *line = render->CreateTexture(256, 0, 0, TF_A8R8G8B8, TT_Normal);
  CTexture *square = render->CreateTexture(256, 256, 0, TF_A8R8G8B8, TT_Normal);
  CNoiseTextures::Set(slot, NOISE_FastPerlin, volume);
  CNoiseTextures::Set(slot, NOISE_Permutation1D, line);
  CNoiseTextures::Set(slot, NOISE_Permutation2D, square);
  if (uint32_t *texel = volume ? volume->Lock() : nullptr) {
    float z = 0;
    for (int k = 0; k < 32; ++k, z += 0.03125f) {
      float y = 0;
      for (int j = 0; j < 32; ++j, y += 0.03125f) {
        float x = 0;
        for (int i = 0; i < 32; ++i, x += 0.03125f) {
          float n0 = PeriodicNoise(8 * x, 8 * y, 8 * z, 0), n1 = PeriodicNoise(8 * x, 8 * y, 8 * z, 8);
          *texel++ = PackColor(n0 * 0.5f + 0.5f, n1 * 0.5f + 0.5f, 0.5f, 1.0f);
        }
      }
    }
    volume->Unlock();
  }
  if (uint32_t *texel = line ? line->Lock() : nullptr) {
    for (int x = 0; x < 256; ++x) *texel++ = static_cast<uint32_t>(Perm(x)) * 0x01010101u;
    line->Unlock();
  }
  if (uint32_t *texel = square ? square->Lock() : nullptr) {
    for (int y = 0; y < 256; ++y)
      for (int x = 0; x < 256; ++x) {
        uint32_t r = Perm(Perm(y) + x), g = Perm(Perm(y) + x + 1), b = Perm(Perm(y + 1) + x),
                 a = Perm(Perm(y + 1) + x + 1);
        *texel++ = r | g << 8 | b << 16 | a << 24;
      }
    square->Unlock();
  }
  return volume && line && square;
}
