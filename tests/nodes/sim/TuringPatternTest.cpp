// TuringPattern: an image that stays within 0..1 at any size the ports ask
// for, that the fixed seed repeats, and that grows structure out of noise.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "nodes/sim/SimHarness.h"
#include "nodes/sim/TuringPatternNode.h"
#include "scene/PortValues.h"

namespace {
using Turing = SimHarness<CTuringPatternNode>;

// How much a cell resembles its right-hand neighbour: 1 for a smooth image,
// about 0 for noise.
float NeighbourCorrelation(const CTuringPattern &p) {
  const std::vector<float> &g = p.Grid();
  const int w = p.Width(), n = w * p.Height();
  double mean = 0, var = 0, cov = 0;
  for (int c = 0; c < n; ++c) mean += g[c] / n;
  for (int c = 0; c < n; ++c) {
    const int right = c - c % w + (c % w + 1) % w;
    var += (g[c] - mean) * (g[c] - mean);
    cov += (g[c] - mean) * (g[right] - mean);
  }
  return static_cast<float>(cov / var);
}
}  // namespace

TEST(TuringPattern, AnySizeGivesAPowerOfTwoImageWithinZeroToOne) {
  const struct {
    int width, height;
    int w, h;  // the image's sides
  } table[] = {{256, 256, 256, 256}, {1, 1, 1, 1},     {3, 100, 2, 64},
               {4096, 4096, 512, 512}, {-5, 0, 1, 1}, {4096, 2, 4096, 2}};
  for (const auto &row : table) {
    Turing t("TuringPattern");
    t.Port<CPortInt>("Width").m_Value = row.width;
    t.Port<CPortInt>("Height").m_Value = row.height;
    t.Frames(3);
    const CTuringPattern &p = t.node->Pattern();
    EXPECT_EQ(p.Width(), row.w) << row.width << "x" << row.height;
    EXPECT_EQ(p.Height(), row.h) << row.width << "x" << row.height;
    const auto [lo, hi] = std::minmax_element(p.Grid().begin(), p.Grid().begin() + p.Width() * p.Height());
    EXPECT_TRUE(*lo >= 0.0f && *hi <= 1.0f) << row.width << "x" << row.height;
    if (p.Width() * p.Height() > 1) {
      EXPECT_TRUE(*lo == 0.0f && *hi == 1.0f) << "the image is stretched to 0..1";
    }
  }
}

TEST(TuringPattern, StepsAtTheFixedRateAndTheSameSeedGrowsTheSamePattern) {
  Turing a("TuringPattern", {{"Width", "64"}, {"Height", "64"}}), b("TuringPattern", {{"Width", "64"}, {"Height", "64"}});
  a.Frames(1, 0.0f);
  const float noise = NeighbourCorrelation(a.node->Pattern());
  const std::vector<float> first = a.node->Pattern().Grid();
  a.Frames(3, 0.01f);
  EXPECT_EQ(a.node->Pattern().Grid(), first) << "the first frame steps at once, then 30 a second";
  a.Frames(60, 0.1f);
  b.Frames(61, 0.0f);
  b.Frames(60, 0.1f);
  EXPECT_EQ(a.node->Pattern().Grid(), b.node->Pattern().Grid());
  EXPECT_GT(NeighbourCorrelation(a.node->Pattern()), noise + 0.3f) << "stripes and spots grow out of the noise";
}
