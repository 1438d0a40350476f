// The render state record and its stack, viewports and draw counts: what
// nodes and render targets rely on to leave the device as they found it.
#include "render/RecordRender.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace {
std::vector<std::string> StateCalls(const CRecordRender &render) { return render.Calls("SetRenderState"); }
}  // namespace

TEST(RenderStates, StartAtTheDefaultsAndSetWritesRecordThenDevice) {
  CRecordRender render;
  RenderStateRecord expected{};
  expected[RS_DepthTest] = expected[RS_DepthWrite] = 1;
  expected[RS_SrcBlend] = BLEND_One;
  EXPECT_EQ(render.m_States, expected);

  render.SetBlendModes(BLEND_SrcAlpha, BLEND_InvSrcAlpha);
  EXPECT_EQ(StateCalls(render), (std::vector<std::string>{"SetRenderState 9 6", "SetRenderState 10 8"}));
  EXPECT_EQ(render.m_States[RS_SrcBlend], BLEND_SrcAlpha);
  EXPECT_STREQ(g_BlendNames[BLEND_InvSrcAlpha], "Inv src alpha");

  LogCapture log;
  render.SetState(RS_Count, 1);
  render.SetState(0, 1);
  EXPECT_EQ(log.errors.size(), 2u);
  EXPECT_EQ(StateCalls(render).size(), 2u);
}

TEST(RenderStates, PopRestoresTheRecordAndReappliesAllTwelve) {
  CRecordRender render;
  render.PushRenderState();
  render.SetState(RS_RenderTarget, 7);
  render.PushRenderState();
  render.EnableStates(RSF_Lighting);
  render.ClearCalls();

  render.PopRenderState();
  EXPECT_EQ(render.m_States[RS_Lighting], 0);
  EXPECT_EQ(render.m_States[RS_RenderTarget], 7);
  std::vector<std::string> calls = StateCalls(render);
  ASSERT_EQ(calls.size(), 12u);
  EXPECT_EQ(calls.front(), "SetRenderState 1 0");
  EXPECT_EQ(calls[8], "SetRenderState 9 1");
  EXPECT_EQ(calls.back(), "SetRenderState 12 7");

  render.ClearCalls();
  render.PopRenderState();  // nothing changed since this push: applied anyway
  calls = StateCalls(render);
  ASSERT_EQ(calls.size(), 12u);
  EXPECT_EQ(calls.back(), "SetRenderState 12 0");
  EXPECT_EQ(render.m_States, DefaultRenderStates());

  LogCapture log;
  render.ClearCalls();
  render.PopRenderState();
  EXPECT_EQ(log.errors.size(), 1u);
  EXPECT_TRUE(render.m_Calls.empty());
}

TEST(RenderStates, FlagWordsNameStatesOneToEight) {
  CRecordRender render;
  render.EnableStates(RSF_Stencil | RSF_Fog | 16 | RSF_Lighting | RSF_AlphaTest);
  EXPECT_EQ(StateCalls(render), (std::vector<std::string>{"SetRenderState 1 1", "SetRenderState 6 1",
                                                          "SetRenderState 7 1", "SetRenderState 8 1"}));
  render.SetBlendModes(BLEND_SrcAlpha, BLEND_One);
  render.EnableStates(RSF_AlphaTest);
  EXPECT_EQ(render.m_States[RS_SrcBlend], BLEND_SrcAlpha);

  render.ClearCalls();
  render.DisableStates(RSF_DepthWrite | RSF_AlphaTest);
  EXPECT_EQ(StateCalls(render), (std::vector<std::string>{"SetRenderState 3 0", "SetRenderState 7 0",
                                                          "SetRenderState 9 1", "SetRenderState 10 0"}));
  render.SetBlendModes(BLEND_SrcAlpha, BLEND_One);
  render.DisableStates(RSF_Fog);
  EXPECT_EQ(render.m_States[RS_DstBlend], BLEND_One);
}

TEST(RenderStates, CullModeSwapsWindingWhileFlipped) {
  CRecordRender render;
  render.SetCullMode(CULL_Clockwise);
  EXPECT_EQ(render.m_States[RS_CullMode], CULL_Clockwise);
  render.m_Flipped = true;
  for (auto [mode, expected] : {std::pair{CULL_Clockwise, CULL_CounterClockwise},
                                {CULL_CounterClockwise, CULL_Clockwise}, {CULL_None, CULL_None}}) {
    render.SetCullMode(mode);
    EXPECT_EQ(render.m_States[RS_CullMode], expected) << mode;
  }
}

TEST(Viewport, FractionsOfTheUnitTruncateAndClipToIt) {
  CRecordRender render(100, 60);
  render.SetViewport(0.5f, 0.0f, 1.0f, 1.0f);
  EXPECT_EQ(render.m_Viewport, (CPixelRect{50, 0, 50, 60}));
  render.SetViewport(0.333f, 0.25f, 0.5f, 0.9f);
  EXPECT_EQ(render.m_Viewport, (CPixelRect{33, 15, 50, 45}));
  // The unit's size, not its desktop position, is what the fractions scale.
  render.SetUnits({{1920, 100, 2020, 160}});
  render.SetViewport(0.0f, 0.5f, 0.25f, 0.5f);
  EXPECT_EQ(render.m_Viewport, (CPixelRect{0, 30, 25, 30}));
}

TEST(DrawCounts, PrimitivesBecomeVerticesByType) {
  // Seven of each: points, lines, line strip, triangles, triangle strip; 0 is no type.
  const int expected[] = {0, 7, 14, 8, 21, 9};
  for (int type = 0; type <= PT_TriangleStrip; ++type) EXPECT_EQ(PrimitiveVertexCount(type, 7), expected[type]) << type;

  CRecordRender render;
  CTexture *texture = render.CreateTexture(300, 200, 0, TF_A8R8G8B8, TT_RenderTarget);
  EXPECT_EQ(CRender::CopySourceRect(*texture, 0.25f, 0.5f, 0.5f, 0.333f), (CPixelRect{75, 100, 150, 66}));
  delete texture;
}
