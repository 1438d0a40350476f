// TuringPattern: an image within 0..1 at any size the ports ask for, that
// the fixed seed repeats, and that grows structure out of noise.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "nodes/sim/SimNodeHarness.h"
#include "nodes/sim/TuringPatternNode.h"
#include "scene/PortValues.h"

namespace {
using Turing = SimNode<CTuringPatternNode>;

// The mean difference of each cell from its right-hand neighbour: about 1/3
// for noise, less for an image with shapes in it.
float Roughness(const CTuringPattern &p) {
  double sum = 0;
  for (size_t c = 0; c + 1 < p.Grid().size(); ++c) sum += std::fabs(p.Grid()[c] - p.Grid()[c + 1]);
  return static_cast<float>(sum / p.Grid().size());
}
}  // namespace

TEST(TuringPattern, AnySizeGivesAPowerOfTwoImageStretchedToZeroToOne) {
  const struct {
    int width, height, w, h;
  } table[] = {{256, 256, 256, 256}, {1, 1, 1, 1}, {3, 100, 2, 64}, {4096, 4096, 512, 512}, {-5, 0, 1, 1}, {4096, 2, 4096, 2}};
  for (const auto &row : table) {
    Turing t("TuringPattern");
    t.Port<CPortInt>("Width").m_Value = row.width;
    t.Port<CPortInt>("Height").m_Value = row.height;
    t.Steps(3);
    const CTuringPattern &p = t.node->Pattern();
    EXPECT_TRUE(p.Width() == row.w && p.Height() == row.h) << row.width << "x" << row.height;
    const auto [lo, hi] = std::minmax_element(p.Grid().begin(), p.Grid().begin() + p.Width() * p.Height());
    EXPECT_TRUE(row.w * row.h == 1 ? *lo >= 0.0f && *hi <= 1.0f : *lo == 0.0f && *hi == 1.0f) << row.width;
  }
}

TEST(TuringPattern, StepsAtTheFixedRateAndTheSameSeedGrowsTheSamePattern) {
  Turing a("TuringPattern", {{"Width", "64"}, {"Height", "64"}}), b("TuringPattern", {{"Width", "64"}, {"Height", "64"}});
  a.Steps(1, 0.0f);
  const std::vector<float> first = a.node->Pattern().Grid();
  const float noise = Roughness(a.node->Pattern());
  a.Steps(3, 0.01f);
  EXPECT_EQ(a.node->Pattern().Grid(), first) << "the first frame steps at once, then 30 a second";
  a.Steps(60, 0.1f);
  b.Steps(1, 0.0f);
  b.Steps(60, 0.1f);
  EXPECT_EQ(a.node->Pattern().Grid(), b.node->Pattern().Grid());
  EXPECT_LT(Roughness(a.node->Pattern()), noise * 0.6f) << "stripes and spots grow out of the noise";
}
