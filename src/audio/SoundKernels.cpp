#include "audio/SoundKernels.h"

#include "core/Numeric.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

const SoundKernels &GenericSoundKernels();
const SoundKernels *Avx2SoundKernels();

namespace {
constexpr double Pi = 3.14159265358979323846;
}  // namespace

SoundFFTTables::SoundFFTTables() {
  for (int k = 0; k < InputSize; ++k)
    window[k] = static_cast<float>(0.5 + 0.5 * std::sin(k * 2.0 * Pi / InputSize - Pi / 2.0));
  for (int i = 0; i < Bins; ++i) equalise[i] = static_cast<float>(-0.1 * std::log(static_cast<double>(Bins - i) / Bins));
  for (int row = 0; row < Side; ++row)
    for (int column = 0; column < Side; ++column) {
      const double angle = -2.0 * Pi * (row * column) / Size;
      twiddleRe[row * Side + column] = static_cast<float>(std::cos(angle));
      twiddleIm[row * Side + column] = static_cast<float>(std::sin(angle));
    }
  for (int k = 0; k < Side / 2; ++k) {
    sideRe[k] = static_cast<float>(std::cos(-2.0 * Pi * k / Side));
    sideIm[k] = static_cast<float>(std::sin(-2.0 * Pi * k / Side));
  }
}

SoundAlignTables::SoundAlignTables() {
  octaves = std::min(SatInt(std::floor(std::log(static_cast<double>(MaxOffset)) / std::log(2.0))), MaxOctaves);
  for (int o = 0; o < octaves; ++o) {
    offsets[o] = MaxOffset >> o;
    const int n = (Samples >> o) - offsets[o];
    first[o] = -1;
    for (int i = 0; i < n; ++i) {
      const float ramp = static_cast<float>(i < n / 2 ? 2 * i : 2 * n - 2 - 2 * i) / static_cast<float>(n);
      const float w = std::clamp((ramp - 0.8f) * 5.0f + 0.8f, 0.0f, 1.0f);
      weights[o][i] = w;
      if (w != 0.0f) {
        if (first[o] < 0) first[o] = i;
        last[o] = i;
      }
    }
  }
  for (int o = octaves - 1; o >= 0; --o) {
    currentFrom[o] = previousFrom[o] = first[o];
    currentTo[o] = last[o] + offsets[o] - 1;
    previousTo[o] = last[o];
    if (o + 1 < octaves) {
      currentFrom[o] = std::min(currentFrom[o], 2 * currentFrom[o + 1]);
      currentTo[o] = std::max(currentTo[o], 2 * currentTo[o + 1] + 1);
      previousFrom[o] = std::min(previousFrom[o], 2 * previousFrom[o + 1]);
      previousTo[o] = std::max(previousTo[o], 2 * previousTo[o + 1] + 1);
    }
  }
}

const std::vector<const SoundKernels *> &AvailableSoundKernels() {
  static const std::vector<const SoundKernels *> sets = [] {
    std::vector<const SoundKernels *> v{&GenericSoundKernels()};
#if defined(__x86_64__) || defined(__i386__)
    __builtin_cpu_init();
    if (Avx2SoundKernels() && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
      v.push_back(Avx2SoundKernels());
#endif
    return v;
  }();
  return sets;
}

const SoundKernels &ChosenSoundKernels() {
  static const SoundKernels *chosen = [] {
    const auto &sets = AvailableSoundKernels();
    if (const char *name = std::getenv("VELMOR_SOUND_KERNELS"))
      for (const SoundKernels *k : sets)
        if (std::strcmp(k->name, name) == 0) return k;
    return sets.back();
  }();
  return *chosen;
}
