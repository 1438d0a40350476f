// Lightning: bolts that join their ends, branches within their bound, a
// shape the seed holds, and no port or text value that reaches a vertex.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "nodes/sim/LightningNode.h"
#include "nodes/sim/SimNodeHarness.h"
#include "scene/PortValues.h"

namespace {
using Lightning = SimNode<CLightningNode>;

std::vector<CVector3> Path(const CLightningNode &node, int bolt) {
  std::vector<CVector3> path;
  for (int p = node.Bolts()[bolt].first; p >= 0; p = node.BoltPoints()[p].next)
    path.push_back(node.BoltPoints()[p].position);
  return path;
}

void SetPorts(Lightning &l, int bolts, int detail, float width, float jitter, float scale, float chance) {
  l.Port<CPortInt>("NumBolts").m_Value = bolts;
  l.Port<CPortInt>("Detail").m_Value = detail;
  l.Port<CPortFloat>("Width").m_Value = width;
  l.Port<CPortFloat>("Jitter").m_Value = jitter;
  l.Port<CPortFloat>("BranchLengthScale").m_Value = scale;
  l.Port<CPortFloat>("BranchChance").m_Value = chance;
}
}  // namespace

TEST(Lightning, BoltsJoinTheirEndsAndBranchesGrowOutOfBoltsWithinTheirBound) {
  const struct {
    int bolts, detail;
    float chance;
    int mainPoints, leastBolts, mostBolts;
  } table[] = {
      {1, 0, 1, 2, 1, 1},                               // one straight segment
      {3, 4, 0, 17, 3, 3},                              // 2^d + 1 points, no branch
      {2, 5, 1, 33, 2 + 2 * 31, 2 * (243 / 2 + 1)},     // a branch at every new point
      {4, 3, 0.5f, 9, 4, 4 * (27 / 2 + 1)},
  };
  for (const auto &row : table) {
    Lightning l("Lightning", {{"Expression", "startpos.x = boltnr; startpos.y = 2; endpos.x = boltnr + 1; "
                                             "endpos.y = -3; endpos.z = 0.5; boltrandseed = 7;"}});
    SetPorts(l, row.bolts, row.detail, 0.01f, 0.0f, 0.75f, row.chance);
    l.Steps(1);
    const int bolts = static_cast<int>(l.node->Bolts().size());
    EXPECT_TRUE(bolts >= row.leastBolts && bolts <= row.mostBolts) << bolts << " bolts at detail " << row.detail;
    int quads = 0, mains = 0;
    for (int b = 0; b < bolts; ++b) {
      const std::vector<CVector3> path = Path(*l.node, b);
      quads += static_cast<int>(path.size()) - 1;
      if (path.front().y == 2.0f && path.front().x == std::round(path.front().x)) {  // a main bolt
        ++mains;
        EXPECT_EQ(static_cast<int>(path.size()), row.mainPoints);
        EXPECT_EQ(path.back(), (CVector3{path.front().x + 1, -3, 0.5f}));
        continue;
      }
      bool onEarlier = false;
      for (int e = 0; e < b; ++e)
        for (const CVector3 &p : Path(*l.node, e)) onEarlier |= p == path.front();
      EXPECT_TRUE(onEarlier) << "branch " << b << " grows out of a bolt";
    }
    EXPECT_EQ(mains, row.bolts);
    EXPECT_EQ(l.node->Lines().Count(), quads) << "every bolt is one strip";
  }
}

TEST(Lightning, TheSeedHoldsTheShapeAndJitterMovesIt) {
  auto shape = [](float jitter, const char *seed, float time) {
    const std::string text = std::string("endpos.y = -1; ") + seed;
    Lightning l("Lightning", {{"NumBolts", "3"}, {"Expression", text.c_str()}});
    l.Port<CPortFloat>("Jitter").m_Value = jitter;
    l.frame.Time = time;
    l.Steps(2);
    return std::vector<float>{l.node->BoltPoints()[5].position.x, l.node->BoltPoints()[40].position.x};
  };
  EXPECT_EQ(shape(0, "boltrandseed = boltnr;", 1), shape(0, "boltrandseed = boltnr;", 9)) << "a seed of its own";
  EXPECT_NE(shape(0.01f, "boltrandseed = boltnr;", 1), shape(0, "boltrandseed = boltnr;", 1)) << "jitter moves it";
  EXPECT_EQ(shape(0, "boltrandseed = floor(time*10);", 1.01f), shape(0, "boltrandseed = floor(time*10);", 1.03f));
  EXPECT_NE(shape(0, "boltrandseed = floor(time*10);", 1.01f), shape(0, "boltrandseed = floor(time*10);", 1.11f))
      << "a new shape ten times a second";
}

TEST(Lightning, NoPortOrTextValueReachesAVertexAndGrowthKeepsItsBudget) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();
  const char *infinite = "i = pow(10, 300) * pow(10, 300); startpos.x = i; endpos.y = -i; color.r = i; boltrandseed = i;";
  const struct {
    int bolts, detail;
    float width, jitter, scale, chance;
    const char *expression;
  } table[] = {
      {10000, 15, 10000, 10000, 1000, 1, "endpos.x = boltnr * 1000000; boltrandseed = boltnr;"},
      {5, 8, kNaN, kNaN, kNaN, kNaN, "endpos.y = 1;"},
      {5, 8, kInf, kInf, kInf, -kInf, infinite},
      {-3, 99, 0.01f, 0.1f, 1, 1, "endpos.y = 1; boltrandseed = -pow(10, 300);"},
  };
  for (const auto &row : table) {
    Lightning l("Lightning", {{"Expression", row.expression}});
    SetPorts(l, row.bolts, row.detail, row.width, row.jitter, row.scale, row.chance);
    l.Steps(2);
    EXPECT_LE(static_cast<int>(l.node->BoltPoints().size()), CLightningNode::MaxPoints) << row.expression;
    EXPECT_GT(l.node->Lines().Count(), 0) << row.expression;
    for (int q = 0; q < l.node->Lines().Count(); ++q)
      for (const VertexPCT &v : l.node->Lines().Quads()[q].v) ASSERT_TRUE(Finite(v.x, v.y, v.z, v.v)) << row.expression;
  }
}
