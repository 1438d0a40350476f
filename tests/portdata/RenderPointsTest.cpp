// The point batch: each primitive type's buffers, chunks and vertices.
#include "portdata/RenderPoints.h"

#include <gtest/gtest.h>

#include <array>
#include <numbers>

#include "render/RecordRender.h"

namespace {
// Corners from v[first] on, each as x, y, z, u, v.
void ExpectCorners(const VertexPCT *v, int first, std::initializer_list<std::array<float, 5>> corners) {
  for (const auto &c : corners) {
    const VertexPCT &got = v[first++];
    const float xyz[] = {got.x, got.y, got.z};
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(xyz[i], c[i], 1e-6f) << "corner " << first - 1 << " axis " << i;
    EXPECT_EQ(std::make_pair(got.u, got.v), std::make_pair(c[3], c[4])) << "corner " << first - 1;
  }
}

struct RenderPoints : testing::Test {
  ~RenderPoints() override {
    EXPECT_TRUE(render.m_Faults.empty()) << render.m_Faults.front();
    points.InvalidateDevice(&render);
  }
  // New device objects, then one draw from a clean call list.
  void RestoreAndDraw() {
    ASSERT_TRUE(points.RestoreDevice(&render));
    render.ClearCalls();
    points.Draw(&render);
  }
  const VertexPCT *Vertices(int vb) { return render.VertexBuffer(vb)->Vertices<VertexPCT>(); }
  CRecordRender render;
  CRenderPoints points;
};
}  // namespace

TEST_F(RenderPoints, PointsAndLinesAreCopiedInChunksWithoutIndices) {
  points.SetSize(2500, PRIM_Point);
  for (int i = 0; i < 2500; ++i) points.Points()[i] = VertexPC{static_cast<float>(i), 0, 0, 0xFFu};
  ASSERT_TRUE(points.RestoreDevice(&render));
  EXPECT_EQ(render.Calls("Create"),
            (std::vector<std::string>{"CreateVertexBuffer 1000 1 2 vb1", "CreateVertexBuffer 1000 1 2 vb2",
                                      "CreateVertexBuffer 1000 1 2 vb3"}));
  render.ClearCalls();
  points.Draw(&render);
  EXPECT_EQ(render.Calls("Draw"), (std::vector<std::string>{"DrawPrimitive 1 0 1000", "DrawPrimitive 1 0 1000",
                                                            "DrawPrimitive 1 0 500"}));
  EXPECT_EQ(render.Calls("SetIndexBuffer"), (std::vector<std::string>{"SetIndexBuffer ib0"}));
  EXPECT_EQ(render.VertexBuffer(3)->Vertices<VertexPC>()[499].x, 2499.0f);
  EXPECT_EQ(points.m_Ring, 0);

  // Lines: half as many per chunk, two vertices each.
  points.SetSize(1200, PRIM_Line);
  points.Lines()[1199].to.y = 7.0f;
  RestoreAndDraw();
  EXPECT_EQ(render.Calls("Draw"), (std::vector<std::string>{"DrawPrimitive 2 0 500", "DrawPrimitive 2 0 500",
                                                            "DrawPrimitive 2 0 200"}));
  EXPECT_EQ(render.VertexBuffer(6)->Vertices<VertexPC>()[399].y, 7.0f);
}

TEST_F(RenderPoints, TexturedPointsFaceTheCameraThroughTheWorldViewColumns) {
  points.SetSize(700, PRIM_Texture);
  points.Sprites()[0] = {1, 2, 3, 0x80FFFFFFu, 0.5f, 0.5f, 0.5f};
  ASSERT_TRUE(points.RestoreDevice(&render));
  EXPECT_EQ(render.Calls("Create").back(), "CreateIndexBuffer 3600 0 ib1");
  render.ClearCalls();
  points.Draw(&render);
  EXPECT_EQ(render.Calls("DrawIndexed"), (std::vector<std::string>{"DrawIndexedPrimitive 5 2400 3598",
                                                                   "DrawIndexedPrimitive 5 400 598"}));
  // Identity view: right is +x, up is +y.
  const VertexPCT *v = Vertices(1);
  ExpectCorners(v, 0, {{0.5f, 1.5f, 3, 0, 0}, {1.5f, 1.5f, 3, 1, 0}, {0.5f, 2.5f, 3, 0, 1}, {1.5f, 2.5f, 3, 1, 1}});
  EXPECT_EQ(v[3].color, 0x80FFFFFFu);

  // A view turned a quarter about z: right and up are the view's columns,
  // (0, -1, 0) and (1, 0, 0), not its rows.
  render.SetTransform(TS_View, RotationMatrix(0, 0, std::numbers::pi_v<float> / 2));
  points.SetSize(1, PRIM_Texture);
  points.Sprites()[0] = {0, 0, 0, 0, 1, 1, 1};
  points.Draw(&render);
  ExpectCorners(Vertices(3), 0, {{-1, 1, 0, 0, 0}, {-1, -1, 0, 1, 0}, {1, 1, 0, 0, 1}, {1, -1, 0, 1, 1}});
}

TEST_F(RenderPoints, AxisTexturedPointsMakeThreeQuadsEach) {
  points.SetSize(250, PRIM_AxisTexture);
  points.Sprites()[0] = {0, 0, 0, 0, 1, 2, 3};
  RestoreAndDraw();
  // 600 quads a chunk is 200 points.
  EXPECT_EQ(render.Calls("DrawIndexed"), (std::vector<std::string>{"DrawIndexedPrimitive 5 2400 3598",
                                                                   "DrawIndexedPrimitive 5 600 898"}));
  const VertexPCT *v = Vertices(1);
  ExpectCorners(v, 0, {{-1, 2, 0, 0, 0}});  // z fixed
  ExpectCorners(v, 3, {{1, -2, 0, 1, 1}, {-1, 0, 3, 0, 0}});  // y fixed from v[4]
  ExpectCorners(v, 7, {{1, 0, -3, 1, 1}, {0, -2, 3, 0, 0}});  // x fixed from v[8]
  ExpectCorners(v, 11, {{0, 2, -3, 1, 1}});
}

TEST_F(RenderPoints, ObjectTypeAndStaleRingsDrawNothing) {
  points.SetSize(10, PRIM_Object);
  ASSERT_TRUE(points.RestoreDevice(&render));
  EXPECT_TRUE(render.Calls("Create").empty());
  points.Draw(&render);

  // A type change without new device objects waits for them.
  points.SetSize(10, PRIM_Point);
  points.Draw(&render);
  EXPECT_TRUE(render.m_Draws.empty());
  ASSERT_TRUE(points.RestoreDevice(&render));
  points.SetCount(4);
  points.Draw(&render);
  EXPECT_EQ(render.Calls("Draw"), (std::vector<std::string>{"DrawPrimitive 1 0 4"}));
  points.SetSize(0, PRIM_Point);
  points.Draw(&render);
  EXPECT_EQ(render.m_Draws.size(), 1u);
}
