// The seven shape generators: counts, index layouts and vertices at small
// tessellations, and the limits that keep every mesh addressable by 16-bit
// indices. Vertex goldens come from golden_shapes.py next to this file.
#include <gtest/gtest.h>

#include <cmath>

#include "nodes/mesh/ConeNode.h"
#include "nodes/mesh/CubeNode.h"
#include "nodes/mesh/CylinderNode.h"
#include "nodes/mesh/DiscNode.h"
#include "nodes/mesh/PlaneNode.h"
#include "nodes/mesh/SphereNode.h"
#include "nodes/mesh/TorusNode.h"
#include "render/RecordRender.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/TestNodes.h"

namespace {
template <typename N>
N *Make(TestGraph &g) {
  return g.Add<N>(N::CreateInfo(), "shape");
}
void SetInt(CNode *n, const char *port, int v) { n->InPort<CPortInt>(port)->m_Value = v; }
void SetFloat(CNode *n, const char *port, float v) { n->InPort<CPortFloat>(port)->m_Value = v; }

void ExpectVec(const CVector3 &v, float x, float y, float z) {
  EXPECT_NEAR(v.x, x, 1e-5f);
  EXPECT_NEAR(v.y, y, 1e-5f);
  EXPECT_NEAR(v.z, z, 1e-5f);
}
void ExpectUV(const MeshVertex &v, float u, float tv) {
  EXPECT_NEAR(v.u, u, 1e-5f);
  EXPECT_NEAR(v.v, tv, 1e-5f);
}
void ExpectCounts(const CPDMesh &m, int vertices, int quads, int triangles) {
  EXPECT_EQ(m.m_Vertices.m_Num, vertices);
  EXPECT_EQ(m.m_Quads.m_Num, quads);
  EXPECT_EQ(m.m_Triangles.m_Num, triangles);
}
bool SameTriangle(const MeshTriangle &t, int a, int b, int c) { return t.a == a && t.b == b && t.c == c; }
bool SameQuad(const MeshQuad &q, int a, int b, int c, int d) { return q.a == a && q.b == b && q.c == c && q.d == d; }

// Uploads the mesh and checks the device saw no misuse.
void ExpectUploads(CPDMesh &mesh) {
  CRecordRender render;
  ASSERT_TRUE(mesh.MeshCreateDevice(&render));
  mesh.Draw(&render);
  EXPECT_TRUE(render.m_Faults.empty()) << render.m_Faults.front();
  mesh.MeshInvalidateDevice(&render);
}
}  // namespace

TEST(MeshShapes, ConeHasAnApexPerSegmentAndNoBase) {
  TestGraph g;
  auto *cone = Make<CConeNode>(g);
  SetInt(cone, "NumSegments", 3);
  ASSERT_TRUE(cone->CreateMesh(*cone));
  ExpectCounts(*cone, 8, 0, 3);
  EXPECT_TRUE(SameTriangle(cone->m_Triangles[1], 2, 5, 3));
  const MeshVertex *v = cone->m_Vertices.Data();
  ExpectVec(v[2].pos, 0, 0.5f, 0);
  ExpectUV(v[2], 0.5f, 0);
  ExpectVec(v[3].pos, 0.4330127f, -0.5f, -0.25f);
  ExpectUV(v[3], 0.6666667f, 1);
  ExpectVec(v[3].normal, 0.8660254f, 0, -0.5f);  // horizontal, whatever the slope
  EXPECT_EQ(v[3].color, 0xFFFFFFFFu);
  ExpectUploads(*cone);
}

TEST(MeshShapes, CubeQuadsHaveTheirOwnCornersAndNormals) {
  TestGraph g;
  auto *cube = Make<CCubeNode>(g);
  cube->InPort<CPortVector>("Size")->m_Value = {2, 4, 6};
  SetFloat(cube, "ScaleU", 3);
  ASSERT_TRUE(cube->CreateMesh(*cube));
  ExpectCounts(*cube, 24, 6, 0);
  EXPECT_TRUE(SameQuad(cube->m_Quads[5], 20, 21, 22, 23));
  ExpectVec(cube->m_Vertices[0].pos, -1, 2, 3);
  ExpectUV(cube->m_Vertices[0], 3, 0);
  ExpectVec(cube->m_Vertices[4].normal, 0, 0, -1);
  ExpectVec(cube->m_Vertices[4].pos, 1, -2, -3);
  ExpectVec(cube->m_Vertices[19].pos, 1, -2, -3);
  ExpectUV(cube->m_Vertices[19], 0, 1);
  ExpectUploads(*cube);
}

TEST(MeshShapes, CylinderSideQuadsAndOptionalCaps) {
  TestGraph g;
  auto *cyl = Make<CCylinderNode>(g);
  SetInt(cyl, "NumSegments", 3);
  cyl->InPort<CPortBool>("Capped")->m_Value = false;
  ASSERT_TRUE(cyl->CreateMesh(*cyl));
  ExpectCounts(*cyl, 8, 3, 0);
  EXPECT_TRUE(SameQuad(cyl->m_Quads[1], 2, 4, 5, 3));

  cyl->InPort<CPortBool>("Capped")->m_Value = true;
  SetFloat(cyl, "RadiusScaleTop", 2);
  SetFloat(cyl, "ScaleU", 2);
  ASSERT_TRUE(cyl->CreateMesh(*cyl));
  ExpectCounts(*cyl, 18, 3, 6);
  EXPECT_TRUE(SameTriangle(cyl->m_Triangles[0], 12, 10, 8));  // top, round center 8
  EXPECT_TRUE(SameTriangle(cyl->m_Triangles[3], 11, 13, 9));  // bottom, round center 9
  ExpectVec(cyl->m_Vertices[8].pos, 0, 0.5f, 0);
  ExpectUV(cyl->m_Vertices[9], 1, 1);
  // Cap ring pair 1 (vertices 12, 13): flat normals, texture mapped as a disc.
  ExpectVec(cyl->m_Vertices[12].pos, 0.8660254f, 0.5f, -0.5f);
  ExpectVec(cyl->m_Vertices[13].pos, 0.4330127f, -0.5f, -0.25f);
  ExpectVec(cyl->m_Vertices[13].normal, 0, -1, 0);
  ExpectUV(cyl->m_Vertices[12], 0.8092948f, 0.4107143f);
  ExpectUV(cyl->m_Vertices[13], 0.8092948f, 0.4107143f);
  ExpectUploads(*cyl);
}

TEST(MeshShapes, DiscFullRingAndPartialRing) {
  TestGraph g;
  auto *disc = Make<CDiscNode>(g);
  SetInt(disc, "NumSegments", 4);
  SetFloat(disc, "OuterRadius", 2);
  SetFloat(disc, "End", 0.3f);  // no effect on a full disc
  ASSERT_TRUE(disc->CreateMesh(*disc));
  ExpectCounts(*disc, 6, 0, 4);
  EXPECT_TRUE(SameTriangle(disc->m_Triangles[0], 0, 2, 1));
  ExpectUV(disc->m_Vertices[0], 0.5f, 0.5f);

  SetFloat(disc, "End", 1);
  SetFloat(disc, "InnerRadius", 1);
  ASSERT_TRUE(disc->CreateMesh(*disc));
  ExpectCounts(*disc, 10, 4, 0);
  EXPECT_TRUE(SameQuad(disc->m_Quads[1], 2, 3, 5, 4));
  ExpectVec(disc->m_Vertices[2].pos, 2, 0, 0);
  ExpectUV(disc->m_Vertices[2], 1, 0.5f);
  ExpectVec(disc->m_Vertices[3].pos, 1, 0, 0);
  ExpectUV(disc->m_Vertices[3], 0.75f, 0.5f);
  ExpectVec(disc->m_Vertices[2].normal, 0, 1, 0);
  const std::vector<MeshVertex> ring(disc->m_Vertices.Data(), disc->m_Vertices.Data() + 10);

  // The radii may be exchanged.
  SetFloat(disc, "OuterRadius", 1);
  SetFloat(disc, "InnerRadius", 2);
  ASSERT_TRUE(disc->CreateMesh(*disc));
  for (int i = 0; i < 10; ++i) ExpectVec(disc->m_Vertices[i].pos, ring[i].pos.x, ring[i].pos.y, ring[i].pos.z);

  // Half a ring of 32: 17 quads, the last pair pulled back onto half a turn.
  SetInt(disc, "NumSegments", 32);
  SetFloat(disc, "InnerRadius", 0.5f);
  SetFloat(disc, "End", 0.5f);
  ASSERT_TRUE(disc->CreateMesh(*disc));
  ExpectCounts(*disc, 36, 17, 0);
  ExpectVec(disc->m_Vertices[34].pos, 0, -1, 0);
  ExpectVec(disc->m_Vertices[35].pos, 0, -0.5f, 0);
  ExpectUploads(*disc);
}

TEST(MeshShapes, PlaneGridFacesMinusZ) {
  TestGraph g;
  auto *plane = Make<CPlaneNode>(g);
  SetInt(plane, "TesselateW", 2);
  SetFloat(plane, "Width", 4);
  SetFloat(plane, "Height", 2);
  SetFloat(plane, "ScaleV", 3);
  ASSERT_TRUE(plane->CreateMesh(*plane));
  ExpectCounts(*plane, 6, 2, 0);
  EXPECT_TRUE(SameQuad(plane->m_Quads[0], 0, 3, 4, 1));
  EXPECT_TRUE(SameQuad(plane->m_Quads[1], 1, 4, 5, 2));
  ExpectVec(plane->m_Vertices[0].pos, -2, 1, 0);
  ExpectVec(plane->m_Vertices[5].pos, 2, -1, 0);
  ExpectUV(plane->m_Vertices[5], 1, 3);
  ExpectVec(plane->m_Vertices[4].normal, 0, 0, -1);
  ExpectUploads(*plane);
}

TEST(MeshShapes, SphereRowsRunFromTheTopPoleWithASeamColumn) {
  TestGraph g;
  auto *sphere = Make<CSphereNode>(g);
  SetInt(sphere, "NumRings", 3);
  SetInt(sphere, "NumSegments", 3);
  SetFloat(sphere, "Radius", 2);
  ASSERT_TRUE(sphere->CreateMesh(*sphere));
  ExpectCounts(*sphere, 16, 0, 24);
  ExpectVec(sphere->m_Vertices[0].pos, 0, 2, 0);
  const MeshVertex &v = sphere->m_Vertices[5];  // ring 1, segment 1
  ExpectVec(v.pos, 1.5f, 1, -0.8660255f);
  ExpectVec(v.normal, 0.75f, 0.5f, -0.4330127f);
  ExpectUV(v, 0.6666667f, 0.3333333f);
  EXPECT_TRUE(SameTriangle(sphere->m_Triangles[0], 0, 4, 3));
  EXPECT_TRUE(SameTriangle(sphere->m_Triangles[1], 1, 4, 0));
  EXPECT_TRUE(SameTriangle(sphere->m_Triangles[23], 12, 15, 11));
  ExpectUploads(*sphere);
}

TEST(MeshShapes, TorusIsOneStripAroundARoundTube) {
  TestGraph g;
  auto *torus = Make<CTorusNode>(g);
  SetInt(torus, "SubAxis", 4);
  SetInt(torus, "SubHeight", 4);
  SetFloat(torus, "Thickness", 0.5f);
  ASSERT_TRUE(torus->CreateMesh(*torus));
  EXPECT_FALSE(torus->m_TriangleList);
  ExpectCounts(*torus, 26, 0, 0);
  ASSERT_EQ(torus->m_Strip.m_Num, 40);
  EXPECT_EQ(torus->m_Strip[0], 0);
  EXPECT_EQ(torus->m_Strip[1], 1);
  EXPECT_EQ(torus->m_Strip[2], 5);
  EXPECT_EQ(torus->m_Strip[10], 1);  // the second band follows with no join
  const MeshVertex &v = torus->m_Vertices[6];  // ring 1, step 1 round the tube
  ExpectVec(v.pos, -0.3535535f, 0, 2.3535534f);
  ExpectUV(v, 0.5f, 2.5f);
  ExpectUV(torus->m_Vertices[9], 2, 2.5f);  // the seam copy
  EXPECT_EQ(torus->m_Vertices[20].pos, torus->m_Vertices[0].pos);  // the last ring closes on the first
  ExpectUV(torus->m_Vertices[24], 2, 10);
  // No clumps: every tube vertex lies Thickness from its ring's point on
  // the center circle of radius 2.
  for (int i = 0; i < 25; ++i) {
    const float a = (i / 5) * 6.2831855f / 4;
    const CVector3 d = torus->m_Vertices[i].pos - CVector3{std::cos(a) * 2, 0, std::sin(a) * 2};
    EXPECT_NEAR(Length(d), 0.5f, 1e-5f) << i;
  }
  ExpectUploads(*torus);
}

TEST(MeshShapes, HugeTessellationsAreLoweredToWhat16BitIndicesAddress) {
  TestGraph g;
  // Each shape at the top of its ports' ranges on both counts.
  auto fits = [](CMeshNode *shape, const char *a, const char *b, int most) {
    SetInt(shape, a, most);
    SetInt(shape, b, most);
    ASSERT_TRUE(shape->CreateMesh(*shape));
    EXPECT_LE(shape->m_Vertices.m_Num, MESH_MAX_VERTICES);
    EXPECT_GT(shape->m_Vertices.m_Num, MESH_MAX_VERTICES - 2 * 256) << "lowered no further than needed";
    ExpectUploads(*shape);
  };
  fits(Make<CPlaneNode>(g), "TesselateW", "TesselateH", 100000);
  fits(Make<CSphereNode>(g), "NumRings", "NumSegments", 1000);
  fits(Make<CTorusNode>(g), "SubAxis", "SubHeight", 1000);

  // Values over a connection aren't held to a port's range; the shapes
  // hold them there.
  auto *cone = Make<CConeNode>(g);
  SetInt(cone, "NumSegments", 2000000000);
  ASSERT_TRUE(cone->CreateMesh(*cone));
  ExpectCounts(*cone, 2002, 0, 1000);
  SetInt(cone, "NumSegments", -7);
  ASSERT_TRUE(cone->CreateMesh(*cone));
  ExpectCounts(*cone, 8, 0, 3);
  auto *disc = Make<CDiscNode>(g);
  SetFloat(disc, "InnerRadius", 0.5f);
  SetFloat(disc, "End", 1e9f);
  ASSERT_TRUE(disc->CreateMesh(*disc));
  ExpectCounts(*disc, 66, 32, 0);
}

TEST(MeshShapes, UpdateMarksTheMeshOnlyWhenAPortChanged) {
  TestGraph g;
  auto *cube = Make<CCubeNode>(g);
  auto *out = cube->OutPort<CPortMesh>("Mesh");
  cube->m_Dirty = false;
  cube->Update(0, &g.frame);
  EXPECT_TRUE(cube->m_Dirty) << "new ports count as changed";
  EXPECT_EQ(out->m_Value, static_cast<CPDMesh *>(cube));

  cube->m_Dirty = false;
  for (CPort *p : cube->m_InPorts) p->m_Changed = false;
  g.NewStep();
  cube->Update(0, &g.frame);
  EXPECT_FALSE(cube->m_Dirty);

  cube->InPort<CPortVector>("Size")->m_Changed = true;
  g.NewStep();
  cube->Update(0, &g.frame);
  EXPECT_TRUE(cube->m_Dirty);
}
