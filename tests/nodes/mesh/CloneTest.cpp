// CloneMesh and TransformMesh: what they take from their sources, the
// transform of each copy, face offsets, and the limits on what they make.
#include <gtest/gtest.h>

#include "nodes/mesh/CloneMeshNode.h"
#include "nodes/mesh/CubeNode.h"
#include "nodes/mesh/SphereNode.h"
#include "nodes/mesh/TorusNode.h"
#include "nodes/mesh/TransformMeshNode.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/TestNodes.h"

namespace {
void ExpectVec(const CVector3 &v, float x, float y, float z) {
  EXPECT_LT(Length(v - CVector3{x, y, z}), 2e-5f) << v.x << " " << v.y << " " << v.z;
}
void SetVector(CNode *n, const char *port, Vec3f v) { n->InPort<CPortVector>(port)->m_Value = v; }

// Connects `source`'s Mesh out-port to `port` of `node` and pulls it once.
void Feed(TestGraph &g, CNode *node, const char *port, CNode *source) {
  ASSERT_TRUE(node->Connect(port, "Mesh", source));
  g.NewStep();
  node->Update(0, &g.frame);
}
}  // namespace

TEST(CloneMesh, CopiesAreMovedTurnedAndScaledByTheirNumber) {
  TestGraph g;
  auto *cube = g.Add<CCubeNode>(CCubeNode::CreateInfo(), "Cube1");
  auto *clone = g.Add<CCloneMeshNode>(CCloneMeshNode::CreateInfo(), "CloneMesh1");
  EXPECT_FALSE(clone->CreateMesh(*clone)) << "no source";

  Feed(g, clone, "Mesh", cube);
  clone->InPort<CPortInt>("NumClones")->m_Value = 3;
  SetVector(clone, "PosChange", {1, 0, 0});
  SetVector(clone, "RotChange", {0, 0, 45});
  SetVector(clone, "ScaleChange", {1, 0, 0});
  ASSERT_TRUE(clone->CreateMesh(*clone));
  ASSERT_TRUE(cube->CreateMesh(*cube));
  ASSERT_EQ(clone->m_Vertices.m_Num, 72);
  EXPECT_EQ(clone->m_Quads.m_Num, 18);
  for (int i = 0; i < 24; ++i) EXPECT_EQ(clone->m_Vertices[i].pos, cube->m_Vertices[i].pos) << "clone 0 is the source";
  // Corner 1 of the cube is (0.5, 0.5, 0.5); clone 2 scales x by 3, turns
  // 90 degrees about z and moves 2 along x: not cumulative through clone 1.
  ExpectVec(clone->m_Vertices[48 + 1].pos, 1.5f, 1.5f, 0.5f);
  ExpectVec(clone->m_Vertices[48 + 16].normal, 0, 1, 0);  // +x face turned to +y
  EXPECT_EQ(std::pair(clone->m_Quads[12 + 3].a, clone->m_Quads[12 + 3].d), std::pair(48 + 12, 48 + 15));
}

TEST(CloneMesh, StripsAreNotClonedAndCopiesStopAtTheIndexLimit) {
  TestGraph g;
  auto *torus = g.Add<CTorusNode>(CTorusNode::CreateInfo(), "Torus1");
  auto *clone = g.Add<CCloneMeshNode>(CCloneMeshNode::CreateInfo(), "CloneMesh1");
  torus->InPort<CPortInt>("SubAxis")->m_Value = 8;
  torus->InPort<CPortInt>("SubHeight")->m_Value = 4;
  Feed(g, clone, "Mesh", torus);
  ASSERT_TRUE(clone->CreateMesh(*clone));
  EXPECT_EQ(clone->m_Vertices.m_Num, 2 * 46);
  EXPECT_EQ(clone->m_Strip.m_Num, 9 * 4 * 2);
  EXPECT_FALSE(clone->m_TriangleList);

  auto *sphere = g.Add<CSphereNode>(CSphereNode::CreateInfo(), "Sphere1");
  auto *many = g.Add<CCloneMeshNode>(CCloneMeshNode::CreateInfo(), "CloneMesh2");
  Feed(g, many, "Mesh", sphere);
  many->InPort<CPortInt>("NumClones")->m_Value = 1000;
  ASSERT_TRUE(many->CreateMesh(*many));
  EXPECT_EQ(many->m_Vertices.m_Num, 60 * 33 * 33) << "as many whole spheres as 16-bit indices reach";
  EXPECT_EQ(many->m_Triangles.m_Num, 60 * 2 * 32 * 33);
}

TEST(TransformMesh, JoinsItsSourcesUnderOneTransformUpToTheVertexLimit) {
  TestGraph g;
  auto *cube = g.Add<CCubeNode>(CCubeNode::CreateInfo(), "Cube1");
  auto *sphere = g.Add<CSphereNode>(CSphereNode::CreateInfo(), "Sphere1");
  auto *tm = g.Add<CTransformMeshNode>(CTransformMeshNode::CreateInfo(), "TransformMesh1");
  sphere->InPort<CPortInt>("NumRings")->m_Value = 3;
  sphere->InPort<CPortInt>("NumSegments")->m_Value = 3;
  ASSERT_TRUE(tm->CreateMesh(*tm));
  EXPECT_EQ(tm->m_Vertices.m_Num, 0) << "nothing connected, nothing made";

  Feed(g, tm, "Mesh2", cube);
  Feed(g, tm, "Mesh4", sphere);
  SetVector(tm, "Rot", {0, 90, 0});
  SetVector(tm, "Scale", {2, 1, 1});
  SetVector(tm, "Pos", {0, 0, 3});
  ASSERT_TRUE(tm->CreateMesh(*tm));
  EXPECT_EQ(tm->m_Vertices.m_Num, 24 + 16);
  EXPECT_EQ(tm->m_Quads.m_Num, 6);
  EXPECT_EQ(tm->m_Triangles.m_Num, 24);
  ExpectVec(tm->m_Vertices[1].pos, 0.5f, 0.5f, 2.0f);
  EXPECT_EQ(tm->m_Triangles[0].a, 24 + sphere->m_Triangles[0].a) << "the sphere's faces follow the cube's vertices";

  // A torus adds vertices but, as a strip, no faces.
  auto *torus = g.Add<CTorusNode>(CTorusNode::CreateInfo(), "Torus1");
  auto *only = g.Add<CTransformMeshNode>(CTransformMeshNode::CreateInfo(), "TransformMesh2");
  Feed(g, only, "Mesh1", torus);
  ASSERT_TRUE(only->CreateMesh(*only));
  EXPECT_EQ(only->IndexCount(), 0);
  EXPECT_TRUE(only->m_TriangleList);

  // Sources beyond the vertex limit are left out: 201 * 201 vertices twice
  // is too many, a 4 * 4 sphere after them still fits.
  auto *limited = g.Add<CTransformMeshNode>(CTransformMeshNode::CreateInfo(), "TransformMesh3");
  const char *ports[] = {"Mesh1", "Mesh2", "Mesh3"};
  for (int i = 0; i < 3; ++i) {
    auto *big = g.Add<CSphereNode>(CSphereNode::CreateInfo(), ("Big" + std::to_string(i)).c_str());
    big->InPort<CPortInt>("NumRings")->m_Value = i == 2 ? 3 : 200;
    big->InPort<CPortInt>("NumSegments")->m_Value = i == 2 ? 3 : 200;
    Feed(g, limited, ports[i], big);
  }
  ASSERT_TRUE(limited->CreateMesh(*limited));
  EXPECT_EQ(limited->m_Vertices.m_Num, 201 * 201 + 16);
}
