// Ribbons: each ribbon trails behind the point its text moves, one point
// per evaluation, oldest first, and nothing but numbers reaches a vertex.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "nodes/sim/RibbonsNode.h"
#include "nodes/sim/SimNodeHarness.h"
#include "scene/PortValues.h"

namespace {
using Ribbons = SimNode<CRibbonsNode>;

// The middle of the pair of vertices across each point, strip by strip: a
// strip of n points is n - 1 quads.
std::vector<std::vector<CVector3>> Strips(const CRibbonsNode &node) {
  std::vector<std::vector<CVector3>> strips(node.Lines().Count() ? node.Ribbons() : 0);
  const int quads = node.Lines().Count() / node.Ribbons();
  for (int k = 0; k < static_cast<int>(strips.size()) * (quads + 1); ++k) {
    const VertexPCT *v = node.Lines().Quads()[k / (quads + 1) * quads + std::min(k % (quads + 1), quads - 1)].v;
    const int at = k % (quads + 1) == quads ? 2 : 0;
    strips[k / (quads + 1)].push_back({(v[at].x + v[at + 1].x) / 2, (v[at].y + v[at + 1].y) / 2, v[at].z});
  }
  return strips;
}
}  // namespace

TEST(Ribbons, EachRibbonTrailsItsPointOldestFirst) {
  const struct {
    const char *points, *rate;
    int frames;
    int expected;     // points in each ribbon
    int firstFrame;   // the frame of its oldest point
    int everyFrames;  // frames between two points
  } table[] = {
      {"20", "30", 1, 0, 0, 1},    // one point draws nothing
      {"20", "30", 5, 5, 1, 1},
      {"4", "30", 10, 4, 7, 1},    // a ring of four keeps the last four
      {"20", "10", 30, 10, 3, 3},  // a point every third frame
      {"20", "1000", 6, 6, 1, 1},  // above the frame rate: one a frame
      {"20", "0", 30, 0, 0, 1},    // never evaluates
  };
  for (const auto &row : table) {
    // pos.y counts frames of 1/30 s (scenetime is the frame's time).
    Ribbons r("Ribbons", {{"NumPoints", row.points}, {"EvaluationsPerSec", row.rate}, {"NumRibbons", "3"},
                          {"Expression", "pos.x = ribbonnr * numribbons; pos.y = floor(scenetime * 30 + 0.5);"}});
    r.Steps(row.frames);
    const auto strips = Strips(*r.node);
    ASSERT_EQ(strips.size(), row.expected ? 3u : 0u) << row.points << "/" << row.rate;
    for (int ribbon = 0; ribbon < static_cast<int>(strips.size()); ++ribbon) {
      ASSERT_EQ(static_cast<int>(strips[ribbon].size()), row.expected) << row.points << "/" << row.rate;
      for (int k = 0; k < row.expected; ++k) {
        EXPECT_FLOAT_EQ(strips[ribbon][k].x, (ribbon + 1) * 3.0f);
        EXPECT_FLOAT_EQ(strips[ribbon][k].y, row.firstFrame + k * row.everyFrames) << row.points << "/" << row.rate;
      }
    }
  }
}

TEST(Ribbons, NoPortOrTextValueReachesAVertex) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();
  const struct {
    int ribbons, points;
    float rate, dt;
    const char *expression;
  } table[] = {
      {10000, 10000, 10000, 0.033f, "pos.x = ribbonnr; pos.y = time;"},
      {-5, -5, kNaN, 0.033f, "pos.x = time;"},
      {3, 20, kInf, kNaN, "pos.x = time;"},
      {3, 20, 30, 0.033f, "i = pow(10, 300) * pow(10, 300); pos.x = i; pos.y = -i; width = i; col.r = -i;"},
  };
  for (const auto &row : table) {
    Ribbons r("Ribbons", {{"Expression", row.expression}});
    r.Port<CPortInt>("NumRibbons").m_Value = row.ribbons;
    r.Port<CPortInt>("NumPoints").m_Value = row.points;
    r.Port<CPortFloat>("EvaluationsPerSec").m_Value = row.rate;
    r.Steps(3, row.dt);
    EXPECT_LE(r.node->Ribbons() * r.node->PointsPerRibbon(), CRibbonsNode::MaxPoints);
    for (int q = 0; q < r.node->Lines().Count(); ++q)
      for (const VertexPCT &v : r.node->Lines().Quads()[q].v) ASSERT_TRUE(Finite(v.x, v.y, v.z)) << row.expression;
  }
}
