// The quad batches: CRenderQuads' lines with width and CRenderVolumeLines'
// strips, the static strip index buffer that joins their quads, and chunked
// drawing through the ring.
#include "portdata/RenderQuads.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "portdata/RenderVolumeLines.h"
#include "support/FailingRender.h"
#include "support/LogCapture.h"

namespace {
// One step of the fast inverse square root leaves a unit side at this
// length, from:
//   i = bits(1.0f); y = float(0x5f3759df - (i >> 1)); y * (1.5 - y*y*1*0.5)
constexpr float kFastUnit = 0.99830717f;
// The same for a squared length of 9 (times 3): 0.99885964.
constexpr float kFastUnit9 = 0.99885964f;

void ExpectVertex(const VertexPCT &v, float x, float y, float u, float tv) {
  const float got[] = {v.x, v.y, v.u, v.v}, want[] = {x, y, u, tv};
  for (int i = 0; i < 4; ++i) EXPECT_NEAR(got[i], want[i], 1e-6f) << "x, y, u, v: " << i;
}
}  // namespace

TEST(RenderQuads, AddLineWritesOneQuadPerGridCellAcrossTheSide) {
  CRenderQuads quads;
  quads.SetSize(8);
  CRenderQuads::Quad *q = quads.Quads();
  // Along +x with width 1: the side is +y, half a width each way.
  CRenderQuads::Quad *end = quads.AddLine({0, 0, 0}, {2, 0, 0}, 1.0f, 1, 1, 3.0f, 5.0f, 0xFF00FF00u, q);
  ASSERT_EQ(end - q, 1);
  const float h = 0.5f * kFastUnit;
  ExpectVertex(q->v[0], 0, -h, 0, 0);
  ExpectVertex(q->v[1], 2, -h, 0, 5);
  ExpectVertex(q->v[2], 0, h, 3, 0);
  ExpectVertex(q->v[3], 2, h, 3, 5);
  EXPECT_EQ(q->v[3].color, 0xFF00FF00u);

  // Two cells across, one row: two quads meeting on the line itself.
  end = quads.AddLine({0, 0, 0}, {2, 0, 0}, 1.0f, 2, 1, 1.0f, 1.0f, 0, q);
  ASSERT_EQ(end - q, 2);
  ExpectVertex(q[0].v[2], 0, 0, 0.5f, 0);
  ExpectVertex(q[1].v[0], 0, 0, 0.5f, 0);
  ExpectVertex(q[1].v[3], 2, h, 1, 1);

  // 3 by 2 is six quads; the rows step along the line.
  end = quads.AddLine({0, 0, 0}, {0, 4, 0}, 2.0f, 3, 2, 1.0f, 1.0f, 0, q);
  ASSERT_EQ(end - q, 6);
  EXPECT_NEAR(q[3].v[0].y, 2.0f, 1e-6f);
  EXPECT_NEAR(q[3].v[0].v, 0.5f, 1e-6f);

  // What doesn't fit before the end of the array is dropped.
  end = quads.AddLine({0, 0, 0}, {1, 0, 0}, 1.0f, 3, 3, 1, 1, 0, q + 5);
  EXPECT_EQ(end, quads.End());
}

TEST(RenderQuads, ChunksDrawAsJoinedStripsThroughTheRing) {
  CRecordRender render;
  CRenderQuads quads;
  quads.SetSize(2500);
  for (int i = 0; i < 2500; ++i) quads.Quads()[i].v[0].x = static_cast<float>(i);
  ASSERT_TRUE(quads.RestoreDevice(&render));
  EXPECT_EQ(render.Calls("Create"),
            (std::vector<std::string>{"CreateVertexBuffer 4000 1 3 vb1", "CreateVertexBuffer 4000 1 3 vb2",
                                      "CreateVertexBuffer 4000 1 3 vb3", "CreateIndexBuffer 6000 0 ib1"}));
  const uint16_t *ib = render.IndexBuffer(1)->Indices();
  EXPECT_EQ(std::vector<uint16_t>(ib, ib + 12), (std::vector<uint16_t>{0, 1, 2, 3, 3, 4, 4, 5, 6, 7, 7, 8}));
  EXPECT_EQ(ib[5999], 3999) << "the last join stays inside the buffer";

  render.ClearCalls();
  quads.Draw(&render);
  // 1000, 1000 and 500 quads: 6n - 2 strip triangles each, one ring buffer each.
  EXPECT_EQ(render.Calls("DrawIndexedPrimitive"),
            (std::vector<std::string>{"DrawIndexedPrimitive 5 4000 5998", "DrawIndexedPrimitive 5 4000 5998",
                                      "DrawIndexedPrimitive 5 2000 2998"}));
  // The ring turns as the line test pins; the second chunk went to vb2.
  EXPECT_EQ(render.VertexBuffer(2)->Vertices<VertexPCT>()[4].x, 1001.0f);
  EXPECT_TRUE(render.m_Faults.empty()) << render.m_Faults.front();
  quads.InvalidateDevice(&render);
  EXPECT_EQ(render.IndexBuffer(1), nullptr);
}

TEST(RenderVolumeLines, StripsBecomeJoinedQuadsAcrossEachPointsWidth) {
  CRenderVolumeLines volume;
  volume.Clear();
  CRenderVolumeLines::StripPoint *p = volume.AddStrip(3, 0.75f);
  p[0] = {0, 0, 0, 0xFFu, 2.0f, 0.0f};
  p[1] = {1, 0, 0, 0xFFu, 4.0f, 0.5f};
  p[2] = {3, 0, 0, 0xFFu, 6.0f, 1.0f};
  volume.AddStrip(1, 1.0f)[0] = {9, 9, 9, 0, 1, 0};  // a lone point makes no quad
  volume.Finish();
  ASSERT_EQ(volume.Count(), 2);

  const CQuadBatch::Quad *q = volume.Quads();
  // First pair from p1 - p0, inner pair from p2 - p0, last pair from p2 - p1.
  ExpectVertex(q[0].v[0], 0, -1.0f * kFastUnit, 0, 0);
  ExpectVertex(q[0].v[1], 0, 1.0f * kFastUnit, 0.75f, 0);
  ExpectVertex(q[0].v[2], 1, -2.0f * kFastUnit9, 0, 0.5f);
  ExpectVertex(q[0].v[3], 1, 2.0f * kFastUnit9, 0.75f, 0.5f);
  for (int i = 0; i < 2; ++i)  // the second quad starts on the inner pair
    ExpectVertex(q[1].v[i], q[0].v[2 + i].x, q[0].v[2 + i].y, q[0].v[2 + i].u, q[0].v[2 + i].v);
  ExpectVertex(q[1].v[2], 3, -3.0f * kFastUnit, 0, 1);
  ExpectVertex(q[1].v[3], 3, 3.0f * kFastUnit, 0.75f, 1);

  CRecordRender render;
  volume.m_RenderBufferQuads = 4;
  ASSERT_TRUE(volume.RestoreDevice(&render));
  const uint16_t *ib = render.IndexBuffer(1)->Indices();
  EXPECT_EQ(std::vector<uint16_t>(ib, ib + 12), (std::vector<uint16_t>{0, 2, 1, 3, 3, 4, 4, 6, 5, 7, 7, 8}));
  volume.Draw(&render);
  EXPECT_EQ(render.Calls("DrawIndexedPrimitive"), (std::vector<std::string>{"DrawIndexedPrimitive 5 8 10"}));

  // A new frame starts from no strips.
  volume.Clear();
  volume.Finish();
  EXPECT_EQ(volume.Count(), 0);
  volume.InvalidateDevice(&render);
}

TEST(RenderQuads, FailedIndexBufferIsReportedAndNothingIsDrawn) {
  CFailingRender render;
  render.m_IndexBuffersLeft = 0;
  LogCapture log;
  CRenderQuads quads;
  quads.SetSize(3);
  EXPECT_FALSE(quads.RestoreDevice(&render));
  EXPECT_THAT(log.LastError(),
              testing::HasSubstr("FAILED : \"!(dObjs->m_IndexBuffer = render->CreateIndexBuffer(6*m_RenderBufferQuads, "
                                 "0))\" in \"portdata\\BatchRender\"("));
  quads.Draw(&render);
  EXPECT_TRUE(render.m_Draws.empty());
  quads.InvalidateDevice(&render);
  EXPECT_EQ(render.VertexBuffer(1), nullptr);
}
