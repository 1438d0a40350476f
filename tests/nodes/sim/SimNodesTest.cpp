// What scenes rely on from the Voronoi and Metaballs node types: points keep
// their records across count changes, bad values never reach the geometry,
// a broken text keeps the last picture, and file-sized grids are clamped.
#include <gtest/gtest.h>

#include <cmath>

#include "nodes/sim/MetaballsNode.h"
#include "nodes/sim/SimNodeHarness.h"
#include "nodes/sim/VoronoiNode.h"
#include "support/LogCapture.h"

TEST(SimNodes, VoronoiPointsKeepTheirRecordsAndBadValuesNeverReachTheDiagram) {
  SimNode<CVoronoiNode> v("Voronoi");
  auto &node = *v.node;
  v.Set("Expression", "pos.x = pos.x + 0.01; vel.y = 0.3;");
  v.Set("NumPoints", "50");
  v.Steps();
  const float x40 = node.Points()[40].x;
  v.Set("NumPoints", "10");
  v.Steps(3);
  EXPECT_EQ(node.PointCount(), 10);
  v.Set("NumPoints", "50");
  v.Steps();
  EXPECT_NEAR(node.Points()[40].x, x40 + 0.01f, 1e-6f) << "a point above the count rests and comes back";
  EXPECT_NEAR(node.Points()[0].vy, 0.3f, 1e-6f);

  for (const char *text : {"pos.x = pow(10, 400); pos.y = pow(-1, 0.5);", "vel.x = pow(10, 999); vel.y = -pow(10, 999) * pointnr;"}) {
    v.Set("Expression", text);
    v.Steps(2);
    for (int i = 0; i < node.PointCount(); ++i)
      for (float c : {node.Points()[i].x, node.Points()[i].y}) EXPECT_TRUE(std::isfinite(c)) << text;
    for (const auto &e : node.Diagram().Edges())
      for (float c : {e.x1, e.y1, e.x2, e.y2}) EXPECT_TRUE(std::isfinite(c) && std::fabs(c) <= 1) << text;
  }

  v.Set("Expression", "pos.x = srand(pointnr) * 0.9; pos.y = srand(pointnr + 99) * 0.9;");
  v.Steps();
  const size_t edges = node.Diagram().Edges().size();
  EXPECT_GT(edges, 100u);
  LogCapture log;
  v.Set("Expression", "pos.x = (;");
  v.Steps(2);
  EXPECT_EQ(node.Diagram().Edges().size(), edges) << "a broken text keeps the last picture";
}

TEST(SimNodes, MetaballsClampTheirGridAndKeepBallsOffTheWallAtAnySpeed) {
  SimNode<CMetaballsNode> m("Metaballs");
  auto &node = *m.node;
  m.Set("GridSize", "10000");
  m.Set("NumBalls", "1000");
  m.Set("Speed", "10000");
  m.Steps(40);
  EXPECT_EQ(node.Field().GridSize(), CMetaballField::MaxGrid);
  EXPECT_EQ(node.BallCount(), 1000);
  const float wall = 1.0f - node.Field().VoxelSize();
  for (int b = 0; b < node.BallCount(); ++b)
    for (float p : node.Balls()[b].pos) EXPECT_TRUE(std::fabs(p) <= wall) << p;
  m.Set("Threshold", "0");
  m.Steps();
  EXPECT_EQ(node.Level(), 20.0f) << "a threshold below 20 acts as 20";
}
