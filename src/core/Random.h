#pragma once
// The xorshift128 generator shared by the whole process, and the same
// generator as a private state for nodes and expression evaluators.

#include <cstdint>

struct RandomState {
  uint32_t x = 0, y = 0, z = 0, w = 0;
};

// The seeding rule: four words derived from one 32-bit seed (the time in
// seconds at start, or VELMOR_SEED).
void SeedRandomState(RandomState &state, uint32_t seed);

inline uint32_t NextRandom(RandomState &s) {
  uint32_t t = s.x ^ (s.x << 11);
  s.x = s.y;
  s.y = s.z;
  s.z = s.w;
  s.w = s.w ^ (s.w >> 19) ^ t ^ (t >> 8);
  return s.w;
}

// 0..1 from the word taken as unsigned, in single precision.
inline float RandomUnsigned(RandomState &s) { return static_cast<float>(NextRandom(s)) * 2.3283064e-10f; }
// -1..1 from the word taken as signed.
inline float RandomSigned(RandomState &s) {
  return static_cast<float>(static_cast<int32_t>(NextRandom(s))) * 4.656613e-10f;
}

RandomState &SharedRandom();
// Seeds the shared generator and the C library's rand().
void SeedSharedRandom(uint32_t seed);
// The seed for a run: VELMOR_SEED if set to a number, else the time in seconds.
uint32_t StartSeed();

// (max - min) * w * 2.3283064e-10 + min, in single precision, from the shared generator.
float RandomRange(float min, float max);
