// Shatter: the triangulation tiles the plane exactly, and the shards wait,
// fall, return and start again as their clock says.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>
#include <vector>

#include "core/Random.h"
#include "nodes/sim/ShatterNode.h"
#include "nodes/sim/SimNodeHarness.h"
#include "nodes/sim/Triangulator.h"

namespace {
using Point = CTriangulator::Point;

std::vector<Point> Corners() { return {{-3, 3}, {3, 3}, {3, -3}, {-3, -3}}; }

double Area(const Point &a, const Point &b, const Point &c) {
  return 0.5 * ((double(b.x) - a.x) * (double(c.y) - a.y) - (double(c.x) - a.x) * (double(b.y) - a.y));
}
}  // namespace

TEST(Shatter, TriangulationTilesThePlaneExactly) {
  SeedSharedRandom(11);
  std::vector<Point> random = Corners(), grid, twice = Corners(), lines = Corners();
  for (int i = 0; i < 600; ++i) random.push_back({3 * RandomSigned(SharedRandom()), 3 * RandomSigned(SharedRandom())});
  for (int i = 0; i <= 10; ++i)
    for (int j = 0; j <= 10; ++j) grid.push_back({-3 + 0.6f * i, -3 + 0.6f * j});
  for (int i = 0; i < 40; ++i) {
    const Point p{2.9f * RandomSigned(SharedRandom()), 2.9f * RandomSigned(SharedRandom())};
    twice.insert(twice.end(), {p, p});
  }
  for (int i = 1; i < 30; ++i) lines.insert(lines.end(), {{-3 + 0.2f * i, -3 + 0.2f * i}, {-3 + 0.2f * i, 3}});
  const struct {
    const char *points; std::vector<Point> input; int distinct;
  } table[] = {
      {"corners only", Corners(), 4},
      {"random inside", random, 604},
      {"a square grid: four points on every circle", grid, 121},
      {"every point twice", twice, 44},
      {"points on the diagonal and on an edge", lines, 62},
  };
  CTriangulator t;
  for (const auto &c : table) {
    ASSERT_TRUE(t.Run(c.input.data(), static_cast<int>(c.input.size()))) << c.points;
    ASSERT_EQ(t.PointCount(), c.distinct) << c.points;
    EXPECT_TRUE(t.MinX() == -3 && t.MaxX() == 3 && t.MinY() == -3 && t.MaxY() == 3) << c.points;
    const std::vector<Point> &p = t.Points();
    double area = 0;
    std::map<std::pair<int, int>, int> directed;
    std::vector<int> used(p.size());
    for (int i = 0; i < t.TriangleCount(); ++i) {
      const CTriangulator::Triangle &tri = t.Triangles()[i];
      const double a = Area(p[tri.a], p[tri.b], p[tri.c]);
      // All turn the same way, none is flat, and no edge is walked twice
      // the same way: the triangles don't overlap.
      EXPECT_LT(a, -1e-7) << c.points << " triangle " << i;
      area -= a;
      for (auto e : {std::pair{tri.a, tri.b}, std::pair{tri.b, tri.c}, std::pair{tri.c, tri.a}})
        EXPECT_EQ(++directed[e], 1) << c.points << " edge " << e.first << "-" << e.second;
      ++used[tri.a], ++used[tri.b], ++used[tri.c];
    }
    EXPECT_NEAR(area, 36.0, 1e-3) << c.points;
    EXPECT_EQ(std::count(used.begin(), used.end(), 0), 0) << c.points << ": a point left out";
  }
}

TEST(Shatter, ShardsWaitFallReturnHomeAndTheNextPlaneComes) {
  // Delay 1 s, falling until 3 s, home by 3 + 0.5 + 0.5 * rank, rebuilt after 4 s.
  // Ports a connection could feed keep everything finite too.
  for (const SimNode<CShatterNode>::Ports &odd :
       {SimNode<CShatterNode>::Ports{{"Gravity", "nan inf -inf"}, {"NumPoints", "1"}},
        {{"Gravity", "0 -10000 0"}, {"NumPoints", "100000"}, {"ShatterDelay", "0"}}}) {
    SimNode<CShatterNode> odds("Shatter", odd);
    odds.Steps(40);
    for (int i = 0; i < odds.node->Plane().Count(); ++i)
      for (const auto &v : odds.node->Plane().Shards()[i].v)
        ASSERT_TRUE(Finite(v.position) && v.position.y >= CShatterPlane::Floor - 0.5f);
  }
  SimNode<CShatterNode> s("Shatter", {{"ShatterDelay", "1"}, {"ShatterTime", "2"}, {"RebuildTime", "0.5"},
                                       {"RebuildTimeVar", "0.5"}, {"NumPoints", "300"}});
  const CShatterPlane &plane = s.node->Plane();
  int rebuilds = 0, styles[2] = {};
  float lastClock = 1e9f, lowest = 0;
  for (int step = 0; step < 300; ++step) {
    s.Steps(1);
    const float clock = s.node->Clock();
    if (clock < lastClock) {
      ++rebuilds;
      ++styles[plane.Style()];
      ASSERT_GT(plane.Count(), 300) << "rebuild " << rebuilds;
    }
    lastClock = clock;
    float away = 0;  // the farthest any vertex is from home
    int edges = 0, bent = 0;
    for (int i = 0; i < plane.Count(); ++i) {
      const CShatterPlane::Shard &sh = plane.Shards()[i];
      ASSERT_TRUE(sh.rank >= 0 && sh.rank <= 1);
      for (int k = 0; k < 3; ++k) {
        const CShatterPlane::Vertex &v = sh.v[k];
        ASSERT_TRUE(Finite(v.position));
        away = std::max(away, Length(v.position - v.home));
        lowest = std::min(lowest, v.position.y);
        const CVector3 e = v.position - sh.v[(k + 1) % 3].position;
        // Once the push has passed, the constraints hold shards in shape
        // while they fall (slivers aside, whose tiny edges any push
        // distorts). On the way home a shard blends between two poses.
        if (clock > 1.25f && clock < 3 && sh.edge2[k] > 0.001f) {
          ++edges;
          bent += std::fabs(Length(e) / std::sqrt(sh.edge2[k]) - 1) > 0.25f;
        }
      }
    }
    EXPECT_LE(bent, edges / 50) << "clock " << clock << ": shards keep their shape";
    // Whole while it waits and once back home; in pieces while falling.
    const bool whole = clock < 1 || clock > 4.01f, flying = clock > 1.5f && clock < 3;
    EXPECT_TRUE((!whole || away < 1e-4f) && (!flying || away > 0.1f)) << "clock " << clock << ": " << away;
  }
  // The shape constraint after the floor may push a corner a little under
  // it; the next step puts it back.
  EXPECT_GE(lowest, CShatterPlane::Floor - 0.5f);
  // 10 s: a plane every 4 s, styles taking turns.
  EXPECT_EQ(rebuilds, 3);
  EXPECT_TRUE(styles[0] >= 1 && styles[1] >= 1);
}
