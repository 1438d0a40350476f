// The line batch: chunking through the ring, what reaches the buffers, and
// its device objects.
#include "portdata/RenderLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

#include "render/Color.h"
#include "support/FailingRender.h"
#include "support/LogCapture.h"

namespace {
const float kRed[4] = {1, 0, 0, 1};

void AddLines(CRenderLines &lines, int n) {
  for (int i = 0; i < n; ++i) lines.AddLine(i, 0, 0, i, 1, 0, kRed);
}

// Each draw as "type primitives vbN".
std::vector<std::string> Draws(const CRecordRender &render) {
  std::vector<std::string> out;
  for (const CRecordedDraw &d : render.m_Draws)
    out.push_back(std::to_string(d.type) + " " + std::to_string(d.primitives) + " vb" + std::to_string(d.vertexBuffer));
  return out;
}
}  // namespace

TEST(RenderLines, ChunksRotateThroughTheRingAndDrawEveryLine) {
  CRecordRender render;
  CRenderLines lines;
  lines.SetSize(2500);
  AddLines(lines, 2500);
  ASSERT_TRUE(lines.RestoreDevice(&render));
  EXPECT_EQ(render.Calls("CreateVertexBuffer"),
            (std::vector<std::string>{"CreateVertexBuffer 2000 1 3 vb1", "CreateVertexBuffer 2000 1 3 vb2",
                                      "CreateVertexBuffer 2000 1 3 vb3"}));

  render.ClearCalls();
  lines.Draw(&render);
  EXPECT_EQ(Draws(render), (std::vector<std::string>{"2 1000 vb1", "2 1000 vb2", "2 500 vb3"}));
  EXPECT_EQ(lines.m_Ring, 0);  // three chunks: back where it stood
  EXPECT_TRUE(render.m_Faults.empty());

  // The last chunk holds lines 2000..2499, expanded with u 0 and 1.
  const VertexPCT *v = render.VertexBuffer(3)->Vertices<VertexPCT>();
  EXPECT_EQ(std::make_tuple(v[0].x, v[0].u, v[0].v, v[0].color), std::make_tuple(2000.0f, 0.0f, 0.5f, 0xFF0000FFu));
  EXPECT_EQ(std::make_tuple(v[1].y, v[1].u, v[1].v), std::make_tuple(1.0f, 1.0f, 0.5f));
  EXPECT_EQ(v[999].x, 2499.0f);

  // A frame of one chunk moves the ring on by one, and frames keep it.
  lines.SetSize(10);
  AddLines(lines, 10);
  render.ClearCalls();
  lines.Draw(&render);
  lines.Draw(&render);
  EXPECT_EQ(Draws(render), (std::vector<std::string>{"2 10 vb1", "2 10 vb2"}));

  lines.SetSize(5);
  AddLines(lines, 8);  // three past the size are dropped
  EXPECT_EQ(lines.Count(), 5);
  render.ClearCalls();
  // Zero, negative or too many draw them all.
  for (int count : {3, 0, -2, 99}) {
    lines.SetDrawCount(count);
    lines.Draw(&render);
  }
  EXPECT_EQ(Draws(render), (std::vector<std::string>{"2 3 vb3", "2 5 vb1", "2 5 vb2", "2 5 vb3"}));
  lines.InvalidateDevice(&render);
}

TEST(RenderLines, RestoreInvalidateCyclesKeepOneRingAndFailuresAreReported) {
  CRecordRender render;
  CRenderLines lines;
  lines.m_RenderBufferLines = 10;
  ASSERT_TRUE(lines.RestoreDevice(&render));
  ASSERT_TRUE(lines.RestoreDevice(&render));  // restoring again frees the first ring
  for (int id = 1; id <= 3; ++id) EXPECT_EQ(render.VertexBuffer(id), nullptr);
  for (int id = 4; id <= 6; ++id) ASSERT_NE(render.VertexBuffer(id), nullptr);
  lines.InvalidateDevice(&render);
  lines.InvalidateDevice(&render);
  for (int id = 4; id <= 6; ++id) EXPECT_EQ(render.VertexBuffer(id), nullptr);

  CFailingRender failing;
  failing.m_VertexBuffersLeft = 1;
  LogCapture log;
  EXPECT_FALSE(lines.RestoreDevice(&failing));
  EXPECT_THAT(log.LastError(),
              testing::HasSubstr("FAILED : \"!(dObjs->m_VertexBuffer[i] = render->CreateVertexBuffer(2*m_RenderBufferLines, "
                                 "VBF_DYNAMIC, VBF_PCT))\" in \"portdata\\RenderLines\"("));
  lines.AddLine(0, 0, 0, 1, 1, 1, kRed);
  lines.Draw(&failing);  // an incomplete ring draws nothing
  EXPECT_TRUE(failing.m_Draws.empty());
  lines.InvalidateDevice(&failing);
}
