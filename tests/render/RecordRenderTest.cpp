// The recording renderer that node and graph tests draw against: its frame
// walk, its memory-backed resources and the misuse it reports.
#include "render/Color.h"
#include "render/RecordRender.h"

#include <gtest/gtest.h>

TEST(RecordRender, FrameDrawsEachUnitThenPresentsAllThenFinishes) {
  CRecordRender render;
  render.SetUnits({{0, 0, 1920, 1080}, {1920, 0, 3840, 1080}});
  std::vector<CRect> seen;
  render.m_Callbacks.onRender = [&] {
    seen.push_back(render.m_UnitRect);
    render.Record("draw %d", render.m_RenderUnit);
  };
  render.m_Callbacks.onFrameFinished = [&] { render.Record("finished"); };

  EXPECT_TRUE(render.Render3DEnvironment(false));
  EXPECT_EQ(render.m_Calls,
            (std::vector<std::string>{"Render3DEnvironment 0", "SwitchToRenderUnit 0", "draw 0", "SwitchToRenderUnit 1",
                                      "draw 1", "Present 0", "Present 1", "finished"}));
  EXPECT_EQ(seen, (std::vector<CRect>{{0, 0, 1920, 1080}, {1920, 0, 3840, 1080}}));
  EXPECT_EQ(render.m_Frames, 1);

  render.ClearCalls();
  render.Render3DEnvironment(true);
  EXPECT_EQ(render.Calls("draw").size(), 0u);
  EXPECT_EQ(render.Calls("Clear"), (std::vector<std::string>{"Clear 0 0 0 0 1 3", "Clear 0 0 0 0 1 3"}));

  render.ClearCalls();
  render.m_Failed = true;
  render.Render3DEnvironment(false);
  EXPECT_EQ(render.Calls("Clear").size(), 2u);
  EXPECT_EQ(render.Calls("Present").size(), 2u);

  render.ClearCalls();
  render.SetUnits({});
  render.Render3DEnvironment(false);
  EXPECT_EQ(render.m_Calls, (std::vector<std::string>{"Render3DEnvironment 0", "finished"}));

  render.ClearCalls();
  render.m_Recording = false;  // counts frames, stores nothing
  render.DrawPrimitive(PT_TriangleList, 0, 1);
  render.Render3DEnvironment(false);
  EXPECT_TRUE(render.m_Calls.empty() && render.m_Draws.empty() && render.m_Faults.empty());
  EXPECT_EQ(render.m_Frames, 5);
}

TEST(RecordRender, CleanupInvalidatesThroughTheClient) {
  CRecordRender render;
  int invalidated = 0;
  render.m_Callbacks.onInvalidate = [&] { ++invalidated; };
  render.Cleanup3DEnvironment();
  EXPECT_EQ(invalidated, 1);
  render.SetUnits({});
  render.Cleanup3DEnvironment();  // no unit to switch to
  EXPECT_EQ(invalidated, 1);
}

// The batch and mesh tests read buffer contents back and see releases; this
// pins what they do not: each draw's record and a lock's orphaning.
TEST(RecordRender, DrawsRecordSizeAndWorldAndALockOrphansTheContents) {
  CRecordRender render;
  CVertexBuffer *vb = render.CreateVertexBuffer(4, VBF_DYNAMIC, VBF_PCT);
  CIndexBuffer *ib = render.CreateIndexBuffer(6, 0);
  ASSERT_TRUE(vb && ib);
  auto *v = static_cast<VertexPCT *>(vb->Lock());
  for (int i = 0; i < 4; ++i) v[i] = {float(i), 0, 0, 0.5f, 1, PackColor(1, 0, 0, 1)};
  vb->Unlock();
  const uint16_t quad[6] = {0, 1, 2, 2, 1, 3};
  std::copy(quad, quad + 6, ib->Lock());
  ib->Unlock();

  render.SetTransform(TS_World, TranslationMatrix(0, 0, 5));
  render.SetVertexBuffer(vb);
  render.SetIndexBuffer(ib);
  render.DrawPrimitive(PT_TriangleStrip, 0, 2);
  render.DrawIndexedPrimitive(PT_TriangleList, 4, 2);
  EXPECT_TRUE(render.m_Faults.empty()) << render.m_Faults.front();
  ASSERT_EQ(render.m_Draws.size(), 2u);
  EXPECT_EQ(std::make_pair(render.m_Draws[0].vertices, render.m_Draws[1].vertices), std::make_pair(4, 6));
  EXPECT_EQ(std::make_pair(render.m_Draws[1].indexBuffer, render.m_Draws[1].world.m[14]), std::make_pair(1, 5.0f));

  // A new lock abandons the old contents, as an orphaned GPU buffer does.
  vb->Lock();
  EXPECT_NE(render.VertexBuffer(1)->Vertices<VertexPCT>()[3].x, 3.0f);
  vb->Unlock();
  vb->Release();
  ib->Release();
  EXPECT_EQ(render.Calls("Release"), (std::vector<std::string>{"Release vb1", "Release ib1"}));
}

TEST(RecordRender, ReportsDrawsThatAGpuWouldReadGarbageFrom) {
  CRecordRender render;
  render.DrawPrimitive(PT_TriangleList, 0, 1);
  CVertexBuffer *vb = render.CreateVertexBuffer(4, 0, VBF_PC);
  CIndexBuffer *ib = render.CreateIndexBuffer(3, 0);
  render.SetVertexBuffer(vb);
  render.DrawPrimitive(PT_TriangleList, 2, 1);  // vertices 2..4 of 4
  vb->Lock();
  render.DrawPrimitive(PT_PointList, 0, 4);
  vb->Unlock();
  render.SetIndexBuffer(ib);
  uint16_t *idx = ib->Lock();
  idx[0] = 0, idx[1] = 1, idx[2] = 4;
  ib->Unlock();
  render.DrawIndexedPrimitive(PT_TriangleList, 4, 1);  // index 4 of 4 vertices
  render.DrawIndexedPrimitive(PT_TriangleList, 4, 2);  // 6 indices of 3
  render.PushRenderState();
  render.Render3DEnvironment(false);
  EXPECT_EQ(render.m_Faults, (std::vector<std::string>{
                                 "DrawPrimitive without a vertex buffer",
                                 "DrawPrimitive reads vertices 2..4 of vb1, which has 4",
                                 "DrawPrimitive from locked vb1",
                                 "DrawIndexedPrimitive reads vertices 0..4 of vb1, which has 4",
                                 "DrawIndexedPrimitive reads 6 indices of ib1, which has 3",
                                 "1 render states still pushed at the end of the frame",
                             }));
  render.PopRenderState();
  vb->Release();
  ib->Release();
}

// Dimensions and texel counts are pinned by the GL texture test.
TEST(RecordRender, TexturesKeepAHostCopyUntilReleased) {
  CRecordRender render;
  CTexture *tex = render.CreateTexture(4, 2, 0, TF_A8R8G8B8, TT_Normal);
  CTexture *target = render.CreateTexture(16, 16, 0, TF_A8R8G8B8, TT_RenderTarget);
  EXPECT_TRUE(target->m_Flags & TEXF_RenderTarget);
  uint32_t pixels[8];
  for (uint32_t i = 0; i < 8; ++i) pixels[i] = 0x01020300u + i;
  tex->Fill(pixels);
  auto *recorded = render.Texture(1);
  EXPECT_EQ(recorded->m_Pixels[7], 0x01020307u);
  EXPECT_EQ(recorded->m_Uploads, 1);
  render.CopyToTexture(target, 0, 0, 1, 1);
  EXPECT_TRUE(target->m_Flags & TEXF_Copied);
  tex->Release();
  EXPECT_TRUE(recorded->m_Pixels.empty());
  for (CTexture *t : {tex, target}) {
    t->Release();
    delete t;
  }
  EXPECT_EQ(render.Texture(1), nullptr);
}

TEST(RecordRender, TargetsNestRestoreTheRectsAndComeBackForTheirSize) {
  CRecordRender render(40, 30);
  CRenderTarget *outer = render.CreateRenderTarget(16, 8, DEPTH_Stencil);
  CRenderTarget *inner = render.CreateRenderTarget(4, 2, 0);
  ASSERT_TRUE(outer && inner && outer->m_Color && inner->m_Color);
  EXPECT_TRUE(outer->m_Color->m_Flags & TEXF_Pooled);
  outer->Begin(render);
  inner->Begin(render);
  EXPECT_EQ(render.m_UnitRect, (CRect{0, 0, 4, 2}));
  EXPECT_TRUE(render.m_Flipped);
  inner->End(render);
  EXPECT_EQ(render.m_VirtualRect, (CRect{0, 0, 16, 8}));
  outer->End(render);
  EXPECT_EQ(render.m_UnitRect, (CRect{0, 0, 40, 30}));
  EXPECT_FALSE(render.m_Flipped);
  // A kept color stays out; a given-back one brings its target back for the
  // next request of its size.
  outer->m_Color->m_Flags &= ~TEXF_Pooled;
  render.ReleaseTexture(outer->m_Color);
  render.ReleaseTexture(inner->m_Color);
  EXPECT_NE(render.CreateRenderTarget(16, 8, 0), outer);
  EXPECT_EQ(render.CreateRenderTarget(4, 2, 0), inner);  // failing targets: the layer draw test
  EXPECT_EQ(render.Calls("ReleaseTarget"), (std::vector<std::string>{"ReleaseTarget held", "ReleaseTarget pooled"}));
  render.Render3DEnvironment(false);
  EXPECT_TRUE(render.m_Faults.empty()) << render.m_Faults.front();
}
