#include "core/Random.h"

#include "core/Clock.h"

#include <cstdlib>

namespace {
RandomState g_Shared;

uint32_t ShiftTriple(uint32_t x) {
  x ^= x << 13;
  x ^= x >> 17;
  x ^= x << 5;
  return x;
}
}  // namespace

void SeedRandomState(RandomState &state, uint32_t seed) {
  // One running value goes through the triple four times; the constants are
  // mixed into the stored words only, not into the running value.
  uint32_t v = ShiftTriple(seed ^ 0x92D68CA2u);
  state.x = v;
  v = ShiftTriple(v);
  state.y = v ^ 0x32378FC7u;
  v = ShiftTriple(v);
  state.z = v ^ 0xD55F8767u;
  v = ShiftTriple(v);
  state.w = v ^ 0x104AA1ADu;
}

RandomState &SharedRandom() { return g_Shared; }

void SeedSharedRandom(uint32_t seed) {
  srand(seed);
  SeedRandomState(g_Shared, seed);
}

uint32_t StartSeed() {
  if (const char *env = getenv("VELMOR_SEED")) {
    char *end = nullptr;
    unsigned long v = strtoul(env, &end, 0);
    if (end != env && *end == 0) return static_cast<uint32_t>(v);
  }
  return static_cast<uint32_t>(GetClock().UnixSeconds());
}

float RandomRange(float min, float max) {
  uint32_t w = NextRandom(g_Shared);
  return (max - min) * static_cast<float>(w) * 2.3283064e-10f + min;
}
