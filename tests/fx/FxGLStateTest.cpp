// Passes on the driver: states applied by BeginPass and put back by EndPass,
// in GL's state and in what is drawn; technique choice by linking; a broken
// effect that never draws and never crashes.
#include "FxGLSupport.h"

#include <gmock/gmock.h>

namespace {
GLint Integer(GLenum what) {
  GLint v = 0;
  glGetIntegerv(what, &v);
  return v;
}
float Float(GLenum what) {
  GLfloat v = 0;
  glGetFloatv(what, &v);
  return v;
}
std::array<GLint, 4> ColorMask() {
  GLboolean m[4];
  glGetBooleanv(GL_COLOR_WRITEMASK, m);
  return {m[0], m[1], m[2], m[3]};
}
// Translates, but no driver holds that many uniforms.
const std::string kHugePS =
    "float4x4 gHuge[4096];\n"
    "float4 HugePS(float2 uv : TEXCOORD0) : COLOR { return gHuge[(int)(uv.x * 4095)][0]; }\n";
}  // namespace

TEST_F(FxGLTest, PassStatesApplyAndResetToGLDefaults) {
  CFx *fx = Parse(QuadEffect(
      "float4 PS() : COLOR { return 1; }\n"
      "technique States { pass P {\n"
      "  VertexProgram = compile glslv QuadVS(); FragmentProgram = compile glslf PS();\n"
      "  DepthTestEnable = true; DepthFunc = Always; DepthMask = false;\n"
      "  BlendEnable = true; BlendFunc = int2(SrcAlpha, One); BlendEquation = ReverseSubtract;\n"
      "  CullFaceEnable = true; CullFace = Front; FrontFace = CW;\n"
      "  AlphaTestEnable = true; AlphaFunc = float2(GEqual, 0.5);\n"
      "  ColorMask = bool4(true, false, true, false); PolygonMode = int2(FrontAndBack, Line);\n"
      "  PolygonOffsetFillEnable = true; PolygonOffset = float2(1.5, 2);\n"
      "  PointSize = 4; LineWidth = 3;\n"
      "  StencilTestEnable = true; StencilFunc = int3(Equal, 3, 7); StencilOp = int3(Zero, Incr, Replace);\n"
      "  StencilMask = 5;\n"
      "} }\n"));
  FxTechniqueRecord *t = Technique(fx);
  ASSERT_TRUE(t);
  struct Check {
    const char *what;
    std::function<double()> read;
    double during, after;
  } checks[] = {
      {"depth test", [] { return glIsEnabled(GL_DEPTH_TEST); }, 1, 0},
      {"depth func", [] { return Integer(GL_DEPTH_FUNC); }, GL_ALWAYS, GL_LESS},
      {"depth mask", [] { return Integer(GL_DEPTH_WRITEMASK); }, 0, 1},
      {"blend", [] { return glIsEnabled(GL_BLEND); }, 1, 0},
      {"blend src", [] { return Integer(GL_BLEND_SRC_RGB); }, GL_SRC_ALPHA, GL_ONE},
      {"blend dst", [] { return Integer(GL_BLEND_DST_RGB); }, GL_ONE, GL_ZERO},
      {"blend equation", [] { return Integer(GL_BLEND_EQUATION_RGB); }, GL_FUNC_REVERSE_SUBTRACT, GL_FUNC_ADD},
      {"cull", [] { return glIsEnabled(GL_CULL_FACE); }, 1, 0},
      {"cull face", [] { return Integer(GL_CULL_FACE_MODE); }, GL_FRONT, GL_BACK},
      {"front face", [] { return Integer(GL_FRONT_FACE); }, GL_CW, GL_CCW},
      {"alpha test", [] { return glIsEnabled(GL_ALPHA_TEST); }, 1, 0},
      {"alpha func", [] { return Integer(GL_ALPHA_TEST_FUNC); }, GL_GEQUAL, GL_ALWAYS},
      {"alpha ref", [] { return Float(GL_ALPHA_TEST_REF); }, 0.5, 0},
      {"color mask g", [] { return ColorMask()[1]; }, 0, 1},
      {"color mask a", [] { return ColorMask()[3]; }, 0, 1},
      {"polygon mode", [] { GLint m[2]; glGetIntegerv(GL_POLYGON_MODE, m); return m[0]; }, GL_LINE, GL_FILL},
      {"offset fill", [] { return glIsEnabled(GL_POLYGON_OFFSET_FILL); }, 1, 0},
      {"offset factor", [] { return Float(GL_POLYGON_OFFSET_FACTOR); }, 1.5, 0},
      {"offset units", [] { return Float(GL_POLYGON_OFFSET_UNITS); }, 2, 0},
      {"point size", [] { return Float(GL_POINT_SIZE); }, 4, 1},
      {"line width", [] { return Float(GL_LINE_WIDTH); }, 3, 1},
      {"stencil", [] { return glIsEnabled(GL_STENCIL_TEST); }, 1, 0},
      {"stencil func", [] { return Integer(GL_STENCIL_FUNC); }, GL_EQUAL, GL_ALWAYS},
      {"stencil ref", [] { return Integer(GL_STENCIL_REF); }, 3, 0},
      {"stencil value mask", [] { return Integer(GL_STENCIL_VALUE_MASK) & 0xff; }, 7, 0xff},
      {"stencil fail", [] { return Integer(GL_STENCIL_FAIL); }, GL_ZERO, GL_KEEP},
      {"stencil pass", [] { return Integer(GL_STENCIL_PASS_DEPTH_PASS); }, GL_REPLACE, GL_KEEP},
      {"stencil writemask", [] { return Integer(GL_STENCIL_WRITEMASK) & 0xff; }, 5, 0xff},
  };
  FxPassRecord *p = fx->Begin(t);
  ASSERT_TRUE(fx->BeginPass(p));
  EXPECT_NE(Integer(GL_CURRENT_PROGRAM), 0);
  for (const Check &c : checks) EXPECT_DOUBLE_EQ(c.read(), c.during) << c.what << " while the pass is on";
  fx->EndPass(p);
  EXPECT_EQ(Integer(GL_CURRENT_PROGRAM), 0);
  for (const Check &c : checks) EXPECT_DOUBLE_EQ(c.read(), c.after) << c.what << " after the pass";
  EXPECT_EQ(fx->NextPass(p), nullptr);
}

TEST_F(FxGLTest, EachPassDrawsWithItsOwnStatesOnly) {
  // Pass one adds a quarter to red and blue only; pass two adds a quarter
  // to all four: its colour mask is back to all channels.
  CFx *fx = Parse(QuadEffect(
      "float4 PS() : COLOR { return 0.25; }\n"
      "technique Two {\n"
      "  pass Masked { VertexProgram = compile glslv QuadVS(); FragmentProgram = compile glslf PS();\n"
      "    BlendEnable = true; BlendFunc = int2(One, One); ColorMask = bool4(true, false, true, false); }\n"
      "  pass Added { VertexProgram = compile glslv QuadVS(); FragmentProgram = compile glslf PS();\n"
      "    BlendEnable = true; BlendFunc = int2(One, One); }\n"
      "}\n"));
  FxTechniqueRecord *t = Technique(fx);
  ASSERT_TRUE(t);
  EXPECT_EQ(t->technique->name, "Two") << "the first technique links";
  ClearTarget({0.5f, 0.5f, 0.5f, 0.5f});
  int passes = 0;
  Draw(fx, t, [&] { ++passes; });
  EXPECT_EQ(passes, 2);
  EXPECT_THAT(Read(2, 3), Near4((Float4{1, 0.75f, 1, 0.75f}), 1e-6f));
  EXPECT_FALSE(glIsEnabled(GL_BLEND));
}

TEST_F(FxGLTest, TechniqueThatDoesNotLinkFallsBackToTheNext) {
  FxLogCapture log;
  std::string text = QuadEffect(kHugePS + "float4 PS() : COLOR { return float4(0, 1, 0, 1); }\n");
  text.insert(text.find("technique T"),
              "technique Huge { pass { VertexProgram = compile glslv QuadVS(); "
              "FragmentProgram = compile glslf HugePS(); } }\n");
  CFx *fx = Parse(text);
  ASSERT_TRUE(fx);
  const CFxTechnique *huge = fx->GetNamedTechnique("Huge");
  ASSERT_TRUE(huge);
  CFxDiagnostics diag;
  EXPECT_TRUE(fx->Effect()->TranslateTechnique(*huge, diag)) << diag.Listing();
  FxTechniqueRecord *t = Technique(fx);
  ASSERT_TRUE(t);
  EXPECT_EQ(t->technique->name, "T");
  EXPECT_TRUE(log.HasError("CGError: The compile returned an error. (1)"));
  EXPECT_TRUE(log.HasError("<text>(")) << "the driver's log carries the pass's line";
  EXPECT_TRUE(log.HasError("GL: ")) << "the driver's log is in the listing";
  ClearTarget();
  Draw(fx, t);
  EXPECT_THAT(Read(), Near4((Float4{0, 1, 0, 1}), 0));
}

// Text that does not parse is FxManager.NoValidTechniqueAndBrokenTextsGiveNull's.
TEST_F(FxGLTest, ABrokenEffectNeverDraws) {
  FxLogCapture log;
  // Valid text whose only technique cannot link: no technique, no pass.
  CFx *fx = Parse(kHugePS + "technique T { pass { FragmentProgram = compile glslf HugePS(); } }\n");
  ASSERT_TRUE(fx);
  EXPECT_EQ(fx->GetBestTechnique(), nullptr);
  EXPECT_EQ(fx->Begin(nullptr), nullptr);
  EXPECT_EQ(fx->NextPass(nullptr), nullptr);
  EXPECT_FALSE(fx->BeginPass(nullptr));
  // Forcing the pass anyway: it reports failure and leaves no program bound.
  FxTechniqueRecord forced{fx, &fx->Effect()->Techniques()[0], {}};
  forced.pass.technique = &forced;
  FxPassRecord *p = fx->Begin(&forced);
  ASSERT_TRUE(p);
  EXPECT_FALSE(fx->BeginPass(p));
  EXPECT_EQ(Integer(GL_CURRENT_PROGRAM), 0);
  fx->CommitChanges();
  fx->EndPass(p);
  fx->End();
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}
