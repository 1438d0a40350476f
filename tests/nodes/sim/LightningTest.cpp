// Lightning: bolts that join their ends, branches within their bound, a
// shape the seed holds, and no port or text value that reaches a vertex.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "nodes/sim/LightningNode.h"
#include "nodes/sim/SimHarness.h"
#include "scene/PortValues.h"

namespace {
using Lightning = SimHarness<CLightningNode>;
using Bolt = CLightningNode::Bolt;
using BoltPoint = CLightningNode::BoltPoint;

std::vector<CVector3> Path(const CLightningNode &node, const Bolt &bolt) {
  std::vector<CVector3> path;
  for (int p = bolt.first; p >= 0; p = node.BoltPoints()[p].next) path.push_back(node.BoltPoints()[p].position);
  return path;
}

bool QuadsAreNumbers(const CRenderVolumeLines &lines) {
  for (int q = 0; q < lines.Count(); ++q)
    for (const VertexPCT &v : lines.Quads()[q].v)
      if (!Finite(v.x, v.y, v.z, v.u, v.v)) return false;
  return true;
}

const char *const kTwoEnds =
    "startpos.x = -1 + boltnr; startpos.y = 2; endpos.x = boltnr; endpos.y = -3; endpos.z = 0.5; boltrandseed = 7;";
}  // namespace

TEST(Lightning, BoltsJoinTheirEndsAndBranchesStayWithinTheirBound) {
  const struct {
    int bolts, detail;
    const char *chance;
    int mainPoints;  // of each main bolt
    int leastBolts, mostBolts;
  } table[] = {
      {1, 0, "1", 2, 1, 1},          // one straight segment
      {3, 4, "0", 17, 3, 3},         // 2^d + 1 points, no branch
      {2, 5, "1", 33, 2 + 2 * 31, 2 * (243 / 2 + 1)},
      {4, 3, "0.5", 9, 4, 4 * (27 / 2 + 1)},
  };
  for (const auto &row : table) {
    Lightning l("Lightning", {{"Expression", kTwoEnds}, {"Jitter", "0"}, {"BranchChance", row.chance}});
    l.Port<CPortInt>("NumBolts").m_Value = row.bolts;
    l.Port<CPortInt>("Detail").m_Value = row.detail;
    l.Frames(1);
    const CLightningNode &node = *l.node;
    const int bolts = static_cast<int>(node.Bolts().size());
    EXPECT_GE(bolts, row.leastBolts) << row.detail << " " << row.chance;
    EXPECT_LE(bolts, row.mostBolts) << row.detail << " " << row.chance;
    int quads = 0, mains = 0;
    for (int b = 0; b < bolts; ++b) {
      const std::vector<CVector3> path = Path(node, node.Bolts()[b]);
      ASSERT_EQ(static_cast<int>(path.size()), node.Bolts()[b].count);
      quads += static_cast<int>(path.size()) - 1;
      // A main bolt starts where the text put it; a branch, on a bolt before it.
      const bool main = path.front().y == 2.0f && path.front().x == std::round(path.front().x);
      if (main) {
        ++mains;
        EXPECT_EQ(static_cast<int>(path.size()), row.mainPoints);
        EXPECT_EQ(path.back(), (CVector3{path.front().x + 1, -3, 0.5f}));
        continue;
      }
      bool onEarlier = false;
      for (int e = 0; e < b && !onEarlier; ++e)
        for (const CVector3 &p : Path(node, node.Bolts()[e])) onEarlier |= p == path.front();
      EXPECT_TRUE(onEarlier) << "branch " << b << " grows out of a bolt";
    }
    EXPECT_EQ(mains, row.bolts);
    EXPECT_EQ(node.Lines().Count(), quads) << "every bolt is one strip";
  }
}

TEST(Lightning, TheSeedHoldsTheShapeAndJitterMovesIt) {
  auto shape = [](const char *jitter, const char *expression, float time) {
    Lightning l("Lightning", {{"Jitter", jitter}, {"Detail", "6"}, {"NumBolts", "3"}, {"Expression", expression}});
    l.frame.Time = time;
    l.Frames(1);
    std::vector<float> xs;
    for (const auto &p : l.node->BoltPoints()) xs.push_back(p.position.x);
    return xs;
  };
  const char *perBolt = "startpos.y = 1; endpos.y = -1; boltrandseed = boltnr;";
  EXPECT_EQ(shape("0", perBolt, 1.0f), shape("0", perBolt, 9.0f)) << "a seed of its own does not flicker";
  Lightning jittered("Lightning", {{"Jitter", "0.01"}, {"Expression", perBolt}});
  jittered.Frames(1);
  const std::vector<BoltPoint> before = jittered.node->BoltPoints();
  jittered.Frames(1);
  EXPECT_NE(before[2].position, jittered.node->BoltPoints()[2].position) << "jitter moves it every frame";
  const char *byTime = "startpos.y = 1; endpos.y = -1; boltrandseed = floor(time*10);";
  EXPECT_EQ(shape("0", byTime, 1.01f), shape("0", byTime, 1.05f));
  EXPECT_NE(shape("0", byTime, 1.01f), shape("0", byTime, 1.11f)) << "a new seed ten times a second";
}

TEST(Lightning, NoPortOrTextValueReachesAVertexAndGrowthKeepsItsBudget) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();
  const struct {
    const char *what;
    int bolts, detail;
    float width, jitter, scale, chance;
    const char *expression;
  } table[] = {
      {"largest ports", 10000, 15, 10000, 10000, 1000, 1, "endpos.x = boltnr * 1000000; boltrandseed = boltnr;"},
      {"ports no numbers", 5, 8, kNaN, kNaN, kNaN, kNaN, "endpos.y = 1;"},
      {"ports infinite", 5, 8, kInf, kInf, kInf, -kInf, "endpos.y = 1;"},
      {"text infinite", 5, 8, 0.01f, 0.1f, 1, 1,
       "i = pow(10, 300) * pow(10, 300); startpos.x = i; endpos.y = -i; color.r = i; boltrandseed = i;"},
      {"counts out of range", -3, 99, 0.01f, 0.1f, 1, 1, "endpos.y = 1; boltrandseed = -pow(10, 300);"},
  };
  for (const auto &row : table) {
    Lightning l("Lightning", {{"Expression", row.expression}});
    l.Port<CPortInt>("NumBolts").m_Value = row.bolts;
    l.Port<CPortInt>("Detail").m_Value = row.detail;
    l.Port<CPortFloat>("Width").m_Value = row.width;
    l.Port<CPortFloat>("Jitter").m_Value = row.jitter;
    l.Port<CPortFloat>("BranchLengthScale").m_Value = row.scale;
    l.Port<CPortFloat>("BranchChance").m_Value = row.chance;
    l.Frames(2);
    EXPECT_LE(static_cast<int>(l.node->BoltPoints().size()), CLightningNode::MaxPoints) << row.what;
    EXPECT_GT(l.node->Lines().Count(), 0) << row.what;
    EXPECT_TRUE(QuadsAreNumbers(l.node->Lines())) << row.what;
  }
}
