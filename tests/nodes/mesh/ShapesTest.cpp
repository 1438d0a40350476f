// The seven shape generators: counts, index layouts and vertices at small
// tessellations, and the limits that keep every mesh addressable by 16-bit
// indices. Vertex goldens come from golden_shapes.py next to this file.
#include <gtest/gtest.h>

#include <array>
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
void ExpectVec(const CVector3 &v, float x, float y, float z) {
  EXPECT_LT(Length(v - CVector3{x, y, z}), 2e-5f) << v.x << " " << v.y << " " << v.z;
}
void ExpectUV(const MeshVertex &v, float u, float tv) {
  EXPECT_TRUE(std::fabs(v.u - u) < 1e-5f && std::fabs(v.v - tv) < 1e-5f) << v.u << " " << v.v;
}
void ExpectCounts(const CPDMesh &m, int vertices, int quads, int triangles) {
  EXPECT_EQ((std::array{m.m_Vertices.m_Num, m.m_Quads.m_Num, m.m_Triangles.m_Num}),
            (std::array{vertices, quads, triangles}));
}
bool SameTriangle(const MeshTriangle &t, int a, int b, int c) { return t.a == a && t.b == b && t.c == c; }
bool SameQuad(const MeshQuad &q, int a, int b, int c, int d) { return q.a == a && q.b == b && q.c == c && q.d == d; }

using Ports = std::initializer_list<std::pair<const char *, float>>;

struct MeshShapes : testing::Test {
  // Every shape a test made uploads its last mesh with no device misuse.
  void TearDown() override {
    for (CMeshNode *shape : shapes) {
      CRecordRender render;
      ASSERT_TRUE(shape->MeshCreateDevice(&render));
      shape->Draw(&render);
      EXPECT_TRUE(render.m_Faults.empty()) << render.m_Faults.front();
      shape->MeshInvalidateDevice(&render);
    }
  }
  template <typename N>
  N *Make() {
    shapes.push_back(g.Add<N>(N::CreateInfo(), "shape"));
    return static_cast<N *>(shapes.back());
  }
  // Sets ports as a connection would, past their ranges, and generates.
  static void Generate(CMeshNode *shape, Ports ports) {
    for (auto [name, value] : ports) {
      CPort *p = shape->FindInPort(name);
      if (p->m_Type == PT_Int)
        static_cast<CPortInt *>(p)->m_Value = static_cast<int>(value);
      else if (p->m_Type == PT_Bool)
        static_cast<CPortBool *>(p)->m_Value = value != 0;
      else
        static_cast<CPortFloat *>(p)->m_Value = value;
    }
    ASSERT_TRUE(shape->CreateMesh(*shape));
  }
  TestGraph g;
  std::vector<CMeshNode *> shapes;
};
}  // namespace

TEST_F(MeshShapes, ConeHasAnApexPerSegmentAndNoBase) {
  auto *cone = Make<CConeNode>();
  Generate(cone, {{"NumSegments", 3}});
  ExpectCounts(*cone, 8, 0, 3);
  EXPECT_TRUE(SameTriangle(cone->m_Triangles[1], 2, 5, 3));
  const MeshVertex *v = cone->m_Vertices.Data();
  ExpectVec(v[2].pos, 0, 0.5f, 0);
  ExpectUV(v[2], 0.5f, 0);
  ExpectVec(v[3].pos, 0.4330127f, -0.5f, -0.25f);
  ExpectUV(v[3], 0.6666667f, 1);
  ExpectVec(v[3].normal, 0.8660254f, 0, -0.5f);  // horizontal, whatever the slope
  EXPECT_EQ(v[3].color, 0xFFFFFFFFu);
}

TEST_F(MeshShapes, CubeQuadsHaveTheirOwnCornersAndNormals) {
  auto *cube = Make<CCubeNode>();
  cube->InPort<CPortVector>("Size")->m_Value = {2, 4, 6};
  Generate(cube, {{"ScaleU", 3}});
  ExpectCounts(*cube, 24, 6, 0);
  EXPECT_TRUE(SameQuad(cube->m_Quads[5], 20, 21, 22, 23));
  ExpectVec(cube->m_Vertices[0].pos, -1, 2, 3);
  ExpectUV(cube->m_Vertices[0], 3, 0);
  ExpectVec(cube->m_Vertices[4].normal, 0, 0, -1);
  ExpectVec(cube->m_Vertices[4].pos, 1, -2, -3);
  ExpectVec(cube->m_Vertices[19].pos, 1, -2, -3);
  ExpectUV(cube->m_Vertices[19], 0, 1);
}

TEST_F(MeshShapes, CylinderSideQuadsAndOptionalCaps) {
  auto *cyl = Make<CCylinderNode>();
  Generate(cyl, {{"NumSegments", 3}, {"Capped", 0}});
  ExpectCounts(*cyl, 8, 3, 0);
  EXPECT_TRUE(SameQuad(cyl->m_Quads[1], 2, 4, 5, 3));

  Generate(cyl, {{"Capped", 1}, {"RadiusScaleTop", 2}, {"ScaleU", 2}});
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
}

TEST_F(MeshShapes, DiscFullRingAndPartialRing) {
  auto *disc = Make<CDiscNode>();
  Generate(disc, {{"NumSegments", 4}, {"OuterRadius", 2}, {"End", 0.3f}});  // End: no effect on a full disc
  ExpectCounts(*disc, 6, 0, 4);
  EXPECT_TRUE(SameTriangle(disc->m_Triangles[0], 0, 2, 1));
  ExpectUV(disc->m_Vertices[0], 0.5f, 0.5f);

  Generate(disc, {{"End", 1}, {"InnerRadius", 1}});
  ExpectCounts(*disc, 10, 4, 0);
  EXPECT_TRUE(SameQuad(disc->m_Quads[1], 2, 3, 5, 4));
  ExpectVec(disc->m_Vertices[2].pos, 2, 0, 0);
  ExpectUV(disc->m_Vertices[2], 1, 0.5f);
  ExpectVec(disc->m_Vertices[3].pos, 1, 0, 0);
  ExpectUV(disc->m_Vertices[3], 0.75f, 0.5f);
  ExpectVec(disc->m_Vertices[2].normal, 0, 1, 0);
  const std::vector<MeshVertex> ring(disc->m_Vertices.Data(), disc->m_Vertices.Data() + 10);

  // The radii may be exchanged.
  Generate(disc, {{"OuterRadius", 1}, {"InnerRadius", 2}});
  for (int i = 0; i < 10; ++i) ExpectVec(disc->m_Vertices[i].pos, ring[i].pos.x, ring[i].pos.y, ring[i].pos.z);

  // Half a ring of 32: 17 quads, the last pair pulled back onto half a turn.
  Generate(disc, {{"NumSegments", 32}, {"InnerRadius", 0.5f}, {"End", 0.5f}});
  ExpectCounts(*disc, 36, 17, 0);
  ExpectVec(disc->m_Vertices[34].pos, 0, -1, 0);
  ExpectVec(disc->m_Vertices[35].pos, 0, -0.5f, 0);
}

TEST_F(MeshShapes, PlaneGridFacesMinusZ) {
  auto *plane = Make<CPlaneNode>();
  Generate(plane, {{"TesselateW", 2}, {"Width", 4}, {"Height", 2}, {"ScaleV", 3}});
  ExpectCounts(*plane, 6, 2, 0);
  EXPECT_TRUE(SameQuad(plane->m_Quads[0], 0, 3, 4, 1));
  EXPECT_TRUE(SameQuad(plane->m_Quads[1], 1, 4, 5, 2));
  ExpectVec(plane->m_Vertices[0].pos, -2, 1, 0);
  ExpectVec(plane->m_Vertices[5].pos, 2, -1, 0);
  ExpectUV(plane->m_Vertices[5], 1, 3);
  ExpectVec(plane->m_Vertices[4].normal, 0, 0, -1);
}

TEST_F(MeshShapes, SphereRowsRunFromTheTopPoleWithASeamColumn) {
  auto *sphere = Make<CSphereNode>();
  Generate(sphere, {{"NumRings", 3}, {"NumSegments", 3}, {"Radius", 2}});
  ExpectCounts(*sphere, 16, 0, 24);
  ExpectVec(sphere->m_Vertices[0].pos, 0, 2, 0);
  const MeshVertex &v = sphere->m_Vertices[5];  // ring 1, segment 1
  ExpectVec(v.pos, 1.5f, 1, -0.8660255f);
  ExpectVec(v.normal, 0.75f, 0.5f, -0.4330127f);
  ExpectUV(v, 0.6666667f, 0.3333333f);
  EXPECT_TRUE(SameTriangle(sphere->m_Triangles[0], 0, 4, 3));
  EXPECT_TRUE(SameTriangle(sphere->m_Triangles[1], 1, 4, 0));
  EXPECT_TRUE(SameTriangle(sphere->m_Triangles[23], 12, 15, 11));
}

TEST_F(MeshShapes, TorusIsOneStripAroundARoundTube) {
  auto *torus = Make<CTorusNode>();
  Generate(torus, {{"SubAxis", 4}, {"SubHeight", 4}, {"Thickness", 0.5f}});
  EXPECT_FALSE(torus->m_TriangleList);
  ExpectCounts(*torus, 26, 0, 0);
  ASSERT_EQ(torus->m_Strip.m_Num, 40);
  EXPECT_EQ(std::vector<int>(torus->m_Strip.Data(), torus->m_Strip.Data() + 3), (std::vector<int>{0, 1, 5}));
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
}

TEST_F(MeshShapes, HugeTessellationsAreLoweredToWhat16BitIndicesAddress) {
  auto fits = [](CMeshNode *shape, const char *a, const char *b, float most) {
    Generate(shape, {{a, most}, {b, most}});
    EXPECT_LE(shape->m_Vertices.m_Num, MESH_MAX_VERTICES);
    EXPECT_GT(shape->m_Vertices.m_Num, MESH_MAX_VERTICES - 2 * 256) << "lowered no further than needed";
  };
  fits(Make<CPlaneNode>(), "TesselateW", "TesselateH", 100000);
  fits(Make<CSphereNode>(), "NumRings", "NumSegments", 1000);
  fits(Make<CTorusNode>(), "SubAxis", "SubHeight", 1000);

  // Values over a connection aren't held to a port's range; the shapes
  // hold them there.
  auto *cone = Make<CConeNode>();
  Generate(cone, {{"NumSegments", 2000000000}});
  ExpectCounts(*cone, 2002, 0, 1000);
  Generate(cone, {{"NumSegments", -7}});
  ExpectCounts(*cone, 8, 0, 3);
  auto *disc = Make<CDiscNode>();
  Generate(disc, {{"InnerRadius", 0.5f}, {"End", 1e9f}});
  ExpectCounts(*disc, 66, 32, 0);
}

TEST_F(MeshShapes, UpdateMarksTheMeshOnlyWhenAPortChanged) {
  auto *cube = g.Add<CCubeNode>(CCubeNode::CreateInfo(), "Cube1");
  cube->m_Dirty = false;
  cube->Update(0, &g.frame);
  EXPECT_TRUE(cube->m_Dirty) << "new ports count as changed";

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
