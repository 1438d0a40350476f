#include "nodes/sim/TuringPattern.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr int kScales = 4;
constexpr int kSamples = 9;
constexpr float kNinth = 0.1111111f;
constexpr float kTwoPi = 6.2831855f;

int FloorPowerOfTwo(int v) {
  int p = 1;
  while (p <= v / 2) p *= 2;
  return p;
}
}  // namespace

void CTuringPattern::FitSize(int width, int height, int &w, int &h) {
  w = FloorPowerOfTwo(std::max(width, 1));
  h = FloorPowerOfTwo(std::max(height, 1));
  while (static_cast<long long>(w) * h > MaxCells) (w >= h ? w : h) /= 2;
}

void CTuringPattern::Step(int width, int height) {
  FitSize(width, height, m_W, m_H);
  const size_t n = static_cast<size_t>(m_W) * m_H;
  if (n > m_Grid.size()) {
    m_Grid.resize(n);
    for (float &g : m_Grid) g = RandomUnsigned(m_State);
  }
  for (std::vector<float> *plane : {&m_Mean, &m_Step, &m_Variation}) {
    if (plane->size() < kScales * n) plane->resize(kScales * n);
    std::fill_n(plane->begin(), kScales * n, 0.0f);
  }
  const float base = RandomUnsigned(m_State) * kTwoPi;
  for (int s = 0; s < kScales; ++s) Rings(s, base);

  float lowest = 1e30f, highest = -1e30f;
  for (size_t c = 0; c < n; ++c) {
    // Among equal variations the larger scale wins, for lo and hi alike.
    int lo = 0, hi = 0;
    float least = m_Variation[c], most = m_Variation[c];
    for (int s = 1; s < kScales; ++s) {
      const float v = m_Variation[s * n + c];
      if (v <= least) least = v, lo = s;
      if (most <= v) most = v, hi = s;
    }
    for (int s = lo; s <= hi; ++s) m_Grid[c] += m_Step[s * n + c] + m_Variation[s * n + c] * 0.5f;
    lowest = std::min(lowest, m_Grid[c]);
    highest = std::max(highest, m_Grid[c]);
  }
  // A flat image has no range to stretch: it stays as it is.
  const float range = highest - lowest;
  if (!(range > 0.0f)) return;
  const float scale = 1.0f / range;
  for (size_t c = 0; c < n; ++c) m_Grid[c] = (m_Grid[c] - lowest) * scale;
}

// Mean, variation and the step toward the threshold at one radius, over the
// ring of nine samples turned by `base`.
void CTuringPattern::Rings(int scale, float base) {
  const int w = m_W, h = m_H, r = 2 << scale;
  const size_t n = static_cast<size_t>(w) * h;
  int dx[kSamples], dy[kSamples];
  for (int k = 0; k < kSamples; ++k) {
    const float a = k * kTwoPi / kSamples + base;
    dx[k] = static_cast<int>(std::cos(a) * r);
    dy[k] = static_cast<int>(std::sin(a) * r);
  }
  float *mean = &m_Mean[scale * n], *step = &m_Step[scale * n], *variation = &m_Variation[scale * n];
  const float *grid = m_Grid.data();
  const float threshold = 0.5f + 0.05f * scale;
  // Visits every cell with its sample at offset k: masks wrap the torus.
  auto pass = [&](auto &&visit) {
    for (int k = 0; k < kSamples; ++k)
      for (int y = 0; y < h; ++y) {
        const float *row = grid + static_cast<size_t>((y + dy[k]) & (h - 1)) * w;
        const size_t at = static_cast<size_t>(y) * w;
        for (int x = 0; x < w; ++x) visit(at + x, row[(x + dx[k]) & (w - 1)]);
      }
  };
  pass([&](size_t c, float g) { mean[c] += g * kNinth; });
  pass([&](size_t c, float g) {
    variation[c] += std::fabs(g - mean[c]) * kNinth;
    step[c] += g > threshold ? 0.005f : -0.005f;
  });
}
