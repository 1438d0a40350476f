// CPDMesh: the one index buffer its face lists become, the tangent pass,
// drawing, and the life of its device buffers.
#include "portdata/PDMesh.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FailingRender.h"
#include "support/LogCapture.h"

namespace {
const CVector3 kUp{0, 0, 1};

void SetVertices(CPDMesh &mesh, std::initializer_list<MeshVertex> vertices) {
  mesh.m_Vertices.Resize(static_cast<int>(vertices.size()));
  int i = 0;
  for (const MeshVertex &v : vertices) mesh.m_Vertices[i++] = v;
}

std::vector<uint16_t> Indices(CRecordRender &render, int id, int count) {
  const uint16_t *p = render.IndexBuffer(id)->Indices();
  return {p, p + count};
}

// The vertices as the mesh last uploaded them.
const VertexPNTBTC *Uploaded(const CPDMesh &mesh) {
  return static_cast<CRecordVertexBuffer *>(mesh.dObjs[0].m_VertexBuffer)->Vertices<VertexPNTBTC>();
}

void ExpectTangent(const VertexPNTBTC &v, CVector3 t, CVector3 b) {
  const float got[] = {v.tx, v.ty, v.tz, v.bx, v.by, v.bz}, want[] = {t.x, t.y, t.z, b.x, b.y, b.z};
  for (int i = 0; i < 6; ++i) EXPECT_NEAR(got[i], want[i], 1e-5f) << "tangent, then binormal, component " << i;
}
}  // namespace

TEST(Mesh, FaceListsBecomeOneIndexBufferQuadsThenTrianglesThenStrip) {
  CRecordRender render;
  CPDMesh mesh;
  SetVertices(mesh, {{{0, 0, 0}, kUp, 0, 0, 0x11223344u}, {{1, 0, 0}, kUp, 1, 0}, {{1, 1, 0}, kUp, 1, 1},
                     {{0, 1, 0}, kUp, 0, 1}, {{2, 2, 0}, kUp, 2, 2}});
  mesh.m_Quads.Resize(1);
  mesh.m_Quads[0] = {0, 1, 2, 3};
  mesh.m_Triangles.Resize(1);
  mesh.m_Triangles[0] = {2, 4, 3};
  mesh.m_Strip.Resize(3);
  mesh.m_Strip[0] = 1, mesh.m_Strip[1] = 4, mesh.m_Strip[2] = 2;
  ASSERT_TRUE(mesh.MeshRestoreDevice(&render));
  EXPECT_EQ(render.Calls("Create"),
            (std::vector<std::string>{"CreateVertexBuffer 5 1 4 vb1", "CreateIndexBuffer 12 0 ib1"}));
  EXPECT_EQ(Indices(render, 1, 12), (std::vector<uint16_t>{0, 1, 2, 2, 3, 0, 2, 4, 3, 1, 4, 2}));
  const VertexPNTBTC &v0 = render.VertexBuffer(1)->Vertices<VertexPNTBTC>()[0];
  EXPECT_EQ(v0.nz, 1.0f);
  EXPECT_EQ(v0.color, 0x11223344u);

  render.ClearCalls();
  mesh.Draw(&render);
  EXPECT_EQ(render.Calls("DrawIndexed"), (std::vector<std::string>{"DrawIndexedPrimitive 4 5 4"}));
  mesh.m_TriangleList = false;
  mesh.Draw(&render);
  EXPECT_EQ(render.Calls("DrawIndexed").back(), "DrawIndexedPrimitive 5 5 10");
  EXPECT_TRUE(render.m_Faults.empty());
  mesh.MeshInvalidateDevice(&render);
}

TEST(Mesh, TangentsFollowTheTextureAndSkipDegenerateStripJoins) {
  // Goldens from tests/portdata/golden_tangents.py.
  CRecordRender render;
  CPDMesh mesh;
  SetVertices(mesh, {{{0, 0, 0}, kUp, 0, 0}, {{2, 0, 0}, kUp, 1, 0.5f}, {{1, 3, 0}, kUp, 0.25f, 1}});
  mesh.m_Triangles.Resize(1);
  mesh.m_Triangles[0] = {0, 1, 2};
  ASSERT_TRUE(mesh.MeshCreateDevice(&render));
  ExpectTangent(Uploaded(mesh)[1], {0.640184f, -0.768221f, 0}, {0.768221f, 0.640184f, 0});

  // Mirrored texture: the binormal turns to follow v.
  mesh.m_Vertices[2].v = -1;
  ASSERT_TRUE(mesh.MeshCreateDevice(&render));
  ExpectTangent(Uploaded(mesh)[2], {-0.759257f, 0.650791f, 0}, {0.650791f, 0.759257f, 0});

  // A strip with a repeated index: odd triangles turn round, joins add
  // nothing, and a vertex no face touches has no tangent.
  SetVertices(mesh, {{{0, 0, 0}, kUp, 0, 0}, {{1, 0, 0}, kUp, 1, 0}, {{0, 1, 0}, kUp, 0, 0.5f},
                     {{1, 1, 0.5f}, kUp, 1, 0.5f}, {{0, 2, 0}, kUp, 0, 1}, {{1, 2, 0}, kUp, 1, 1.2f},
                     {{5, 5, 5}, kUp, 0, 0}});
  mesh.m_Triangles.Resize(0);
  mesh.m_Strip.Resize(7);
  const int strip[] = {0, 1, 2, 2, 3, 4, 5};
  for (int i = 0; i < 7; ++i) mesh.m_Strip[i] = strip[i];
  mesh.m_TriangleList = false;
  ASSERT_TRUE(mesh.MeshCreateDevice(&render));
  const VertexPNTBTC *v = Uploaded(mesh);
  ExpectTangent(v[1], {1, 0, 0}, {0, 1, 0});
  ExpectTangent(v[2], {1, 0, 0}, {0, 1, 0});
  ExpectTangent(v[3], {0.207504f, 0.978234f, 0}, {-0.978234f, 0.207504f, 0});
  ExpectTangent(v[5], {-0.443589f, 0.89623f, 0}, {-0.89623f, -0.443589f, 0});
  ExpectTangent(v[6], {0, 0, 0}, {0, 0, 0});
  mesh.MeshInvalidateDevice(&render);
}

TEST(Mesh, BuffersGrowToFitShrinkingKeepsThemAndNoFacesReleasesThem) {
  CRecordRender render;
  CPDMesh mesh;
  mesh.Resize(8, 2, 0);
  mesh.m_Quads[0] = {0, 1, 2, 3};
  mesh.m_Quads[1] = {4, 5, 6, 7};
  ASSERT_TRUE(mesh.MeshUpdateDevice(&render));

  // Smaller: same buffers, the draw uses the new count.
  mesh.Resize(4, 1, 0);
  ASSERT_TRUE(mesh.MeshUpdateDevice(&render));
  EXPECT_EQ(render.Calls("Create").size(), 2u);
  render.ClearCalls();
  mesh.Draw(&render);
  EXPECT_EQ(render.Calls("DrawIndexed"), (std::vector<std::string>{"DrawIndexedPrimitive 4 4 2"}));

  // Larger: both are made again, the old ones released.
  mesh.Resize(12, 3, 0);
  for (int q = 0; q < 3; ++q) mesh.m_Quads[q] = {4 * q, 4 * q + 1, 4 * q + 2, 4 * q + 3};
  ASSERT_TRUE(mesh.MeshUpdateDevice(&render));
  EXPECT_EQ(render.VertexBuffer(1), nullptr);
  EXPECT_EQ(render.IndexBuffer(1), nullptr);
  EXPECT_EQ(render.VertexBuffer(2)->m_Size, 12);
  EXPECT_EQ(render.IndexBuffer(2)->m_Size, 18);

  // No faces: nothing left, nothing drawn.
  mesh.Resize(12, 0, 0);
  ASSERT_TRUE(mesh.MeshUpdateDevice(&render));
  EXPECT_EQ(render.VertexBuffer(2), nullptr);
  render.ClearCalls();
  mesh.Draw(&render);
  EXPECT_TRUE(render.m_Draws.empty());

  // Restore and invalidate in turn, as scenes come and go.
  mesh.Resize(4, 1, 0);
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(mesh.MeshRestoreDevice(&render));
    mesh.MeshInvalidateDevice(&render);
  }
  EXPECT_EQ(render.VertexBuffer(5), nullptr);
  EXPECT_TRUE(render.m_Faults.empty());
}

TEST(Mesh, RefusedAndFailedUploadsLeaveNoBuffers) {
  LogCapture log;
  CFailingRender render;
  CPDMesh mesh;
  mesh.Resize(4, 1, 0);
  mesh.m_Quads[0] = {0, 1, 2, 3};
  render.m_IndexBuffersLeft = 0;
  EXPECT_FALSE(mesh.MeshCreateDevice(&render));
  EXPECT_THAT(log.LastError(),
              testing::HasSubstr("FAILED : \"!(dObjs->m_IndexBuffer = render->CreateIndexBuffer(indexCount, 0))\" in "
                                 "\"portdata\\PDMesh\"("));
  mesh.Draw(&render);
  EXPECT_TRUE(render.m_Draws.empty());
  mesh.MeshInvalidateDevice(&render);

  render.m_VertexBuffersLeft = 0;
  EXPECT_FALSE(mesh.MeshCreateDevice(&render));
  EXPECT_THAT(log.LastError(), testing::HasSubstr("\"!(dObjs->m_VertexBuffer = render->CreateVertexBuffer("
                                                  "m_Vertices.m_Num, VBF_DYNAMIC, VBF_PNTBTC))\""));

  // More vertices than 16-bit indices reach is refused, not truncated.
  CRecordRender recorder;
  mesh.Resize(MESH_MAX_VERTICES + 1, 1, 0);
  EXPECT_FALSE(mesh.MeshCreateDevice(&recorder));
  EXPECT_TRUE(recorder.Calls("Create").empty());

  // A face naming a missing vertex is drawn degenerate.
  mesh.Resize(4, 1, 0);
  mesh.m_Quads[0] = {0, 1, 2, 70000};
  ASSERT_TRUE(mesh.MeshCreateDevice(&recorder));
  EXPECT_EQ(Indices(recorder, 1, 6), (std::vector<uint16_t>{0, 1, 2, 2, 0, 0}));
  mesh.MeshInvalidateDevice(&recorder);
}
