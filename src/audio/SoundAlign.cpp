#include "audio/SoundAlign.h"

#include "audio/SoundVector.h"
#include "core/Numeric.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {
constexpr int MaxOffset = CWaveformAligner::Samples - CWaveformAligner::Shown;
constexpr int MaxOctaves = 8;

// Per octave: the samples of the current frame, the offsets to try, and
// weights over the compared part that ignore both ends and count the middle
// fully. Built once for the process.
struct AlignTables {
  int octaves = 0;
  int samples[MaxOctaves] = {};
  int offsets[MaxOctaves] = {};
  int first[MaxOctaves] = {};
  int last[MaxOctaves] = {};
  float weights[MaxOctaves][CWaveformAligner::Shown] = {};

  AlignTables() {
    octaves = std::min(SatInt(std::floor(std::log(static_cast<double>(MaxOffset)) / std::log(2.0))), MaxOctaves);
    for (int o = 0; o < octaves; ++o) {
      samples[o] = CWaveformAligner::Samples >> o;
      offsets[o] = MaxOffset >> o;
      const int n = samples[o] - offsets[o];
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
  }
};

const AlignTables &Tables() {
  static const AlignTables tables;
  return tables;
}

// An octave's copy starts where the bigger ones before it end.
constexpr int OctaveStart(int size, int octave) {
  int start = 0;
  for (int o = 0; o < octave; ++o) start += size >> o;
  return start;
}

void Halve(const float *in, float *out, int n) {
  using namespace SoundVector;
  int i = 0;
  for (; i + 4 <= n; i += 4) {
    const V4 a = Load(in + 2 * i), b = Load(in + 2 * i + 4);
    Store(out + i, (Evens(a, b) + Odds(a, b)) * 0.5f);
  }
  for (; i < n; ++i) out[i] = (in[2 * i] + in[2 * i + 1]) * 0.5f;
}

// Sum of |(c[i] - p[i]) * w[i]| for i from first to last.
float WeightedError(const float *c, const float *p, const float *w, int first, int last) {
  using namespace SoundVector;
  V4 acc = {0.0f, 0.0f, 0.0f, 0.0f};
  int i = first;
  for (; i + 3 <= last; i += 4) acc += Abs((Load(c + i) - Load(p + i)) * Load(w + i));
  float err = Sum(acc);
  for (; i <= last; ++i) err += std::fabs((c[i] - p[i]) * w[i]);
  return err;
}
}  // namespace

int CWaveformAligner::Search(const float *current, const float *previous) const {
  const AlignTables &t = Tables();
  // Octave o of each lies at OctaveStart(size, o).
  float cur[2 * Samples];
  float old[2 * Shown];
  std::memcpy(cur, current, Samples * sizeof(float));
  std::memcpy(old, previous, Shown * sizeof(float));
  for (int o = 1; o < t.octaves; ++o) {
    Halve(cur + OctaveStart(Samples, o - 1), cur + OctaveStart(Samples, o), Samples >> o);
    Halve(old + OctaveStart(Shown, o - 1), old + OctaveStart(Shown, o), Shown >> o);
  }

  int lo = 0, hi = t.offsets[t.octaves - 1], best = 0;
  for (int o = t.octaves - 1; o >= 0; --o) {
    const float *c = cur + OctaveStart(Samples, o);
    const float *p = old + OctaveStart(Shown, o);
    const float *w = t.weights[o];
    float bestErr = HUGE_VALF;
    best = lo;
    for (int offset = lo; offset < hi; ++offset) {
      const float err = WeightedError(c + offset, p, w, t.first[o], t.last[o]);
      if (err < bestErr) {
        bestErr = err;
        best = offset;
      }
    }
    if (o > 0) {
      lo = std::max(2 * best - 1, 0);
      hi = std::min(2 * best + 3, t.offsets[o - 1]);
    }
  }
  return best;
}

void CWaveformAligner::Align(float (&waveform)[Channels][Samples]) {
  int offsets[Channels];
  for (int c = 0; c < Channels; ++c) offsets[c] = Search(waveform[c], m_Previous[c] + m_Offsets[c]);
  for (int c = 0; c < Channels; ++c) {
    std::memcpy(m_Previous[c], waveform[c], sizeof m_Previous[c]);
    m_Offsets[c] = offsets[c];
    if (offsets[c] > 0) {
      std::memmove(waveform[c], waveform[c] + offsets[c], Shown * sizeof(float));
      std::fill(waveform[c] + Shown, waveform[c] + Samples, 0.0f);
    }
  }
}
