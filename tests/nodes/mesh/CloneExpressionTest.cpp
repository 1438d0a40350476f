// CloneMeshExpression: a grid of copies placed by a text evaluated once per
// copy.
#include <gtest/gtest.h>

#include "nodes/mesh/CloneMeshExpressionNode.h"
#include "nodes/mesh/CubeNode.h"
#include "nodes/mesh/TorusNode.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/LogCapture.h"
#include "support/TestNodes.h"

namespace {
struct CloneExpressionGraph {
  TestGraph g;
  CCubeNode *cube = g.Add<CCubeNode>(CCubeNode::CreateInfo(), "Cube1");
  CCloneMeshExpressionNode *clone =
      g.Add<CCloneMeshExpressionNode>(CCloneMeshExpressionNode::CreateInfo(), "CloneMeshExpression1");
  CloneExpressionGraph() {
    clone->Connect("Mesh", "Mesh", cube);
    clone->Update(0, &g.frame);
  }
  void SetText(const char *text) { clone->InPort<CPortString>("Expression")->m_Value = text; }
  void SetCounts(int x, int y, int z) {
    clone->InPort<CPortInt>("NumObjectsX")->m_Value = x;
    clone->InPort<CPortInt>("NumObjectsY")->m_Value = y;
    clone->InPort<CPortInt>("NumObjectsZ")->m_Value = z;
  }
  // Corner 1 of clone c: the cube's (0.5, 0.5, 0.5) moved and turned.
  CVector3 Corner(int c) const { return clone->m_Vertices[24 * c + 1].pos; }
};

void ExpectVec(const CVector3 &v, float x, float y, float z) {
  EXPECT_LT(Length(v - CVector3{x, y, z}), 2e-5f) << v.x << " " << v.y << " " << v.z;
}
}  // namespace

TEST(CloneMeshExpression, DefaultTextPlacesCopiesAtOneBasedGridPoints) {
  CloneExpressionGraph t;
  ASSERT_TRUE(t.clone->CreateMesh(*t.clone));
  EXPECT_EQ(t.clone->m_Vertices.m_Num, 27 * 24);
  EXPECT_EQ(t.clone->m_Quads.m_Num, 27 * 6);
  ExpectVec(t.Corner(0), 1.5f, 1.5f, 1.5f);
  ExpectVec(t.Corner(1), 2.5f, 1.5f, 1.5f);  // x runs innermost
  ExpectVec(t.Corner(3), 1.5f, 2.5f, 1.5f);
  ExpectVec(t.Corner(26), 3.5f, 3.5f, 3.5f);
  EXPECT_EQ(t.clone->m_Quads[6 * 26].a, 24 * 26);
}

TEST(CloneMeshExpression, TheTextScalesAndTurnsEachCopyAndRotationCarriesOver) {
  CloneExpressionGraph t;
  t.SetCounts(3, 1, 1);
  t.clone->InPort<CPortFloat>("In2")->m_Value = 4;
  // rot isn't reset per copy: copy x turns x * 90 degrees about z.
  t.SetText("pos.x = 0; pos.y = 0; pos.z = in2; scale.x = 2; rot.z = rot.z + 90;");
  ASSERT_TRUE(t.clone->CreateMesh(*t.clone));
  // (0.5 * 2, 0.5, 0.5) turned 90, 180 and 270 degrees about z, moved to z 4.
  ExpectVec(t.Corner(0), -0.5f, 1.0f, 4.5f);
  ExpectVec(t.Corner(1), -1.0f, -0.5f, 4.5f);
  ExpectVec(t.Corner(2), 0.5f, -1.0f, 4.5f);

  // Compiled at each generation: the same text and seed give the same
  // copies, another seed other random ones.
  t.SetText("pos.x = rand(); pos.y = 0; pos.z = 0;");
  ASSERT_TRUE(t.clone->CreateMesh(*t.clone));
  const CVector3 before = t.Corner(2);
  ASSERT_TRUE(t.clone->CreateMesh(*t.clone));
  EXPECT_EQ(t.Corner(2), before);
  t.clone->InPort<CPortInt>("RandomSeed")->m_Value = 2;
  ASSERT_TRUE(t.clone->CreateMesh(*t.clone));
  EXPECT_NE(t.Corner(2), before);
}

TEST(CloneMeshExpression, FailuresLeaveTheMeshAndHugeGridsAreLimited) {
  CloneExpressionGraph t;
  ASSERT_TRUE(t.clone->CreateMesh(*t.clone));
  LogCapture log;
  t.SetText("pos.x = (;");
  EXPECT_FALSE(t.clone->CreateMesh(*t.clone));
  EXPECT_FALSE(log.lines.empty()) << "the evaluator says why";
  EXPECT_EQ(t.clone->m_Vertices.m_Num, 27 * 24) << "a bad text makes no new geometry";
  t.SetText("");
  EXPECT_FALSE(t.clone->CreateMesh(*t.clone));

  t.SetText("pos.x = x;");
  t.SetCounts(10000, 10000, 10000);
  ASSERT_TRUE(t.clone->CreateMesh(*t.clone));
  EXPECT_EQ(t.clone->m_Vertices.m_Num, (MESH_MAX_VERTICES / 24) * 24);

  // A strip has no faces to clone.
  auto *torus = t.g.Add<CTorusNode>(CTorusNode::CreateInfo(), "Torus1");
  t.clone->Connect("Mesh", "Mesh", torus);
  t.g.NewStep();
  t.clone->Update(0, &t.g.frame);
  t.SetCounts(2, 1, 1);
  ASSERT_TRUE(t.clone->CreateMesh(*t.clone));
  EXPECT_EQ(t.clone->IndexCount(), 0);
}
