// The GL backend drawing for real: clears, vertex formats, render states, the
// frame and the names of its pictures.
#include <cstring>
#include <filesystem>

#include "GLTestSupport.h"
#include "render/Color.h"
#include "renderogl/Screenshot.h"
#include "support/LogCapture.h"

TEST(RenderOGL, ClearColorReadsBackExactlyInFramesAndPictures) {
  VELMOR_REQUIRE_DISPLAY();
  GLWindow gl(40, 30);
  ASSERT_TRUE(gl.Ok()) << "no GL window: " << GetFirstError();
  EXPECT_EQ(gl.render.m_UnitRect, (CRect{0, 0, 40, 30}));
  // Multiples of 1/255 convert to bytes without rounding.
  const float color[4] = {64 / 255.0f, 128 / 255.0f, 191 / 255.0f, 1.0f};
  int renders = 0, finished = 0;
  std::vector<uint8_t> seen;
  gl.client.onRender = [&] {
    ++renders;
    gl.render.Clear(color, 1.0f, CLEAR_Color | CLEAR_Depth);
    seen = gl.Pixels();
  };
  gl.client.onFrameFinished = [&] { ++finished; };
  ASSERT_TRUE(gl.render.Render3DEnvironment(false));
  ASSERT_EQ(renders, 1);
  for (auto [x, y] : {std::pair{0, 0}, {39, 29}, {20, 15}})
    EXPECT_EQ(gl.Pixel(seen, x, y), (std::array<int, 3>{64, 128, 191})) << x << "," << y;
  // A black-only frame never asks the client to draw, but still finishes.
  ASSERT_TRUE(gl.render.Render3DEnvironment(true));
  EXPECT_EQ(renders, 1);
  EXPECT_EQ(finished, 2);
  // Pictures as PNG files with numbered names (their pixels: TwoMonitors).
  std::filesystem::path folder = std::filesystem::temp_directory_path() / "velmor-shot-test" / "sub";
  std::filesystem::remove_all(folder.parent_path());
  gl.render.SwitchToRenderUnit(0);
  for (const char *number : {"-shot-01.png", "-shot-02.png"}) {
    const std::string name = gl.render.Screenshot((folder / "shot.png").string());
    EXPECT_EQ(name.substr(name.size() - 12), number);
  }
  // Without a base name the file is the date and the count alone.
  std::string bare = CScreenshot::UniqueFileName((folder / "").string());
  EXPECT_EQ(bare.substr(bare.size() - 7), "_01.png");
  std::filesystem::remove_all(folder.parent_path());
}

namespace {
// Writes a triangle that covers the whole window into a buffer of `format`:
// position at offset 0, the color where the layout puts attribute 3.
void FillTriangle(CVertexBuffer *vb, uint32_t color) {
  const VertexLayout *layout = GetVertexLayout(vb->m_Format);
  auto *bytes = static_cast<uint8_t *>(vb->Lock());
  ASSERT_NE(bytes, nullptr);
  std::memset(bytes, 0, static_cast<size_t>(layout->stride) * 3);
  const float corners[3][3] = {{-1, -1, 0.5f}, {3, -1, 0.5f}, {-1, 3, 0.5f}};
  for (int v = 0; v < 3; ++v) {
    std::memcpy(bytes + v * layout->stride, corners[v], sizeof(corners[v]));
    for (int a = 0; a < layout->count; ++a)
      if (layout->attributes[a].index == 3)
        std::memcpy(bytes + v * layout->stride + layout->attributes[a].offset, &color, 4);
  }
  vb->Unlock();
}
}  // namespace

TEST(RenderOGL, TriangleOfEveryVertexFormatTakesItsColorFromAttribute3) {
  VELMOR_REQUIRE_DISPLAY();
  GLWindow gl(16, 16);
  ASSERT_TRUE(gl.Ok()) << GetFirstError();
  GLuint program = ColorProgram();
  const float black[4] = {0, 0, 0, 1};
  for (int transform : {TS_Projection, TS_World, TS_View}) gl.render.SetTransform(transform, CMatrix::Identity());
  const std::pair<int, uint32_t> cases[] = {{VBF_PC, PackColor(1, 0, 0, 1)}, {VBF_PCT, PackColor(0, 1, 0, 1)},
                                            {VBF_PNTC, PackColor(0, 0, 1, 1)}, {VBF_PNTBTC, PackColor(1, 1, 0, 1)}};
  CIndexBuffer *ib = gl.render.CreateIndexBuffer(3, 0);
  ASSERT_NE(ib, nullptr);
  uint16_t *idx = ib->Lock();
  idx[0] = 0, idx[1] = 1, idx[2] = 2;
  ib->Unlock();
  for (auto [format, color] : cases) {
    SCOPED_TRACE(format);
    CVertexBuffer *vb = gl.render.CreateVertexBuffer(3, VBF_DYNAMIC, format);
    ASSERT_NE(vb, nullptr);
    FillTriangle(vb, color);
    for (bool indexed : {false, true}) {
      gl.render.Clear(black, 1.0f, CLEAR_Color | CLEAR_Depth);
      glUseProgram(program);
      gl.render.SetVertexBuffer(vb);
      gl.render.SetIndexBuffer(ib);
      EXPECT_TRUE(indexed ? gl.render.DrawIndexedPrimitive(PT_TriangleList, 3, 1)
                          : gl.render.DrawPrimitive(PT_TriangleList, 0, 1));
      glUseProgram(0);
      const std::array<int, 3> rgb{int(color & 0xFF), int(color >> 8 & 0xFF), int(color >> 16 & 0xFF)};
      EXPECT_EQ(gl.Pixel(gl.Pixels(), 8, 8), rgb) << "indexed " << indexed;
    }
    // Drawing past the buffer's end is refused rather than read.
    EXPECT_FALSE(gl.render.DrawPrimitive(PT_TriangleList, 1, 1));
    vb->Release();
  }
  // Every generic array is disabled after a draw.
  for (int index : g_VertexAttributeIndices) {
    GLint enabled = 1;
    glGetVertexAttribiv(static_cast<GLuint>(index), GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
    EXPECT_EQ(enabled, 0) << index;
  }
  ib->Release();
  glDeleteProgram(program);
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST(RenderOGL, RenderStatesReachGL) {
  VELMOR_REQUIRE_DISPLAY();
  GLWindow gl(8, 8);
  ASSERT_TRUE(gl.Ok()) << GetFirstError();
  auto enabled = [](GLenum cap) { return glIsEnabled(cap) == GL_TRUE; };
  CRender &r = gl.render;
  // The start record is in effect on a new context.
  EXPECT_TRUE(enabled(GL_DEPTH_TEST));
  EXPECT_FALSE(enabled(GL_BLEND));
  EXPECT_EQ(GLInteger(GL_FRONT_FACE), GL_CW);

  const std::pair<int, GLenum> toggles[] = {{RS_Lighting, GL_LIGHTING}, {RS_AALine, GL_LINE_SMOOTH},
                                            {RS_Fog, GL_FOG},           {RS_AlphaTest, GL_ALPHA_TEST},
                                            {RS_Stencil, GL_STENCIL_TEST}, {RS_DepthTest, GL_DEPTH_TEST}};
  for (auto [state, cap] : toggles) {
    r.SetState(state, 1);
    EXPECT_TRUE(enabled(cap)) << state;
    r.SetState(state, 0);
    EXPECT_FALSE(enabled(cap)) << state;
  }
  r.SetState(RS_DepthTest, 1);
  EXPECT_EQ(GLInteger(GL_DEPTH_FUNC), GL_LESS);
  r.SetState(RS_AlphaTest, 1);
  EXPECT_EQ(GLInteger(GL_ALPHA_TEST_FUNC), GL_GREATER);

  r.SetBlendModes(BLEND_SrcAlpha, BLEND_InvSrcAlpha);
  EXPECT_TRUE(enabled(GL_BLEND));
  EXPECT_EQ(GLInteger(GL_BLEND_SRC), GL_SRC_ALPHA);
  EXPECT_EQ(GLInteger(GL_BLEND_DST), GL_ONE_MINUS_SRC_ALPHA);
  r.SetBlendModes(BLEND_One, BLEND_Zero);
  EXPECT_FALSE(enabled(GL_BLEND));

  r.SetState(RS_CullMode, CULL_CounterClockwise);
  EXPECT_TRUE(enabled(GL_CULL_FACE));
  EXPECT_EQ(GLInteger(GL_FRONT_FACE), GL_CCW);
  r.SetState(RS_CullMode, CULL_Clockwise);
  EXPECT_EQ(GLInteger(GL_FRONT_FACE), GL_CW);
  r.SetState(RS_CullMode, CULL_None);
  EXPECT_FALSE(enabled(GL_CULL_FACE));
  // Popping re-applies every state of the record, whatever GL was told since.
  r.PushRenderState();
  r.SetState(RS_Fog, 1);
  glDisable(GL_DEPTH_TEST);
  r.PopRenderState();
  EXPECT_FALSE(enabled(GL_FOG));
  EXPECT_TRUE(enabled(GL_DEPTH_TEST));
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST(RenderOGL, MissingDisplayIsAnErrorNotACrash) {
  LogCapture log;
  CRenderOGL render(":987");
  EXPECT_FALSE(render.Init());
  EXPECT_TRUE(render.m_Failed);
  EXPECT_NE(log.LastError().find("No X display"), std::string::npos);
  EXPECT_FALSE(render.CreateScreen(kTestMode, 0, true));
  EXPECT_EQ(log.LastError(), "Unable to create test window");
  EXPECT_TRUE(render.Initialize3DEnvironment(kTestMode));
  int finished = 0;
  CRenderClientFunctions client;
  client.onFrameFinished = [&] { ++finished; };
  render.SetClient(&client);
  EXPECT_TRUE(render.Render3DEnvironment(false));
  EXPECT_EQ(finished, 1);
  render.Cleanup3DEnvironment();
}

TEST(RenderOGLDeathTest, GLBelow2IsReportedAndFramesStayBlack) {
  VELMOR_REQUIRE_DISPLAY();
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // Mesa reads the override once per process, so the check runs in a child.
  EXPECT_EXIT(
      {
        setenv("MESA_GL_VERSION_OVERRIDE", "1.5", 1);
        GLWindow gl(8, 8);
        int renders = 0;
        gl.client.onRender = [&] { ++renders; };
        gl.render.Render3DEnvironment(false);
        _exit(gl.render.m_Failed && renders == 0 ? 0 : 1);
      },
      testing::ExitedWithCode(0), "needs a graphics card with drivers that supports at least OpenGL 2.0");
}
