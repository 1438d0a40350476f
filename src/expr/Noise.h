#pragma once
// Simplex noise in one, two and three dimensions, in single precision, with
// Ken Perlin's reference permutation. Texture generators use the same table.

#include <cstdint>

// The 256 entries stored twice in a row, so that the sum of two indices
// needs no wrap.
extern const uint8_t g_NoisePermutation[512];

// About -1 to 1. The cell of a coordinate v is trunc(v) for v > 0 and
// trunc(v) - 1 otherwise: a whole number v <= 0 falls one cell lower than
// floor would put it.
float SimplexNoise1(float x);
float SimplexNoise2(float x, float y);
float SimplexNoise3(float x, float y, float z);
