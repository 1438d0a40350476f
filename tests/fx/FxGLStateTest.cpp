// Passes on the driver: states, technique choice by linking, broken effects.
#include "FxGLSupport.h"

namespace {
// Translates, but no driver holds that many uniforms.
const std::string kHugePS =
    "float4x4 gHuge[4096];\n"
    "float4 HugePS(float2 uv : TEXCOORD0) : COLOR { return gHuge[(int)(uv.x * 4095)][0]; }\n";
}  // namespace

TEST_F(FxGLTest, PassStatesOfBothDialectsApplyAndResetToGLDefaults) {
  // component -1: glIsEnabled(query); otherwise that value of glGetFloatv.
  struct Row { const char *state; GLenum query; int component; float during, after; };
  const float kAllBits = 4294967295.0f;  // a mask's default
  const Row glNames[] = {
      {"DepthTestEnable = true;", GL_DEPTH_TEST, -1, 1, 0},
      {"DepthFunc = Always;", GL_DEPTH_FUNC, 0, GL_ALWAYS, GL_LESS},
      {"DepthMask = false;", GL_DEPTH_WRITEMASK, 0, 0, 1},
      {"BlendEnable = true;", GL_BLEND, -1, 1, 0},
      {"BlendFunc = int2(SrcAlpha, One);", GL_BLEND_SRC_RGB, 0, GL_SRC_ALPHA, GL_ONE},
      {"", GL_BLEND_DST_RGB, 0, GL_ONE, GL_ZERO},
      {"BlendEquation = ReverseSubtract;", GL_BLEND_EQUATION_RGB, 0, GL_FUNC_REVERSE_SUBTRACT, GL_FUNC_ADD},
      {"CullFaceEnable = true;", GL_CULL_FACE, -1, 1, 0},
      {"CullFace = Front;", GL_CULL_FACE_MODE, 0, GL_FRONT, GL_BACK},
      {"FrontFace = CW;", GL_FRONT_FACE, 0, GL_CW, GL_CCW},
      {"AlphaTestEnable = true;", GL_ALPHA_TEST, -1, 1, 0},
      {"AlphaFunc = float2(GEqual, 0.5);", GL_ALPHA_TEST_FUNC, 0, GL_GEQUAL, GL_ALWAYS},
      {"", GL_ALPHA_TEST_REF, 0, 0.5f, 0},
      {"ColorMask = bool4(true, false, true, false);", GL_COLOR_WRITEMASK, 1, 0, 1},
      {"", GL_COLOR_WRITEMASK, 3, 0, 1},
      {"PolygonMode = int2(FrontAndBack, Line);", GL_POLYGON_MODE, 0, GL_LINE, GL_FILL},
      {"PolygonOffsetFillEnable = true;", GL_POLYGON_OFFSET_FILL, -1, 1, 0},
      {"PolygonOffset = float2(1.5, 2);", GL_POLYGON_OFFSET_FACTOR, 0, 1.5f, 0},
      {"", GL_POLYGON_OFFSET_UNITS, 0, 2, 0},
      {"PointSize = 4;", GL_POINT_SIZE, 0, 4, 1},
      {"LineWidth = 3;", GL_LINE_WIDTH, 0, 3, 1},
      {"StencilTestEnable = true;", GL_STENCIL_TEST, -1, 1, 0},
      {"StencilFunc = int3(Equal, 3, 7);", GL_STENCIL_FUNC, 0, GL_EQUAL, GL_ALWAYS},
      {"", GL_STENCIL_REF, 0, 3, 0},
      {"", GL_STENCIL_VALUE_MASK, 0, 7, kAllBits},
      {"StencilOp = int3(Zero, Incr, Replace);", GL_STENCIL_FAIL, 0, GL_ZERO, GL_KEEP},
      {"", GL_STENCIL_PASS_DEPTH_PASS, 0, GL_REPLACE, GL_KEEP},
      {"StencilMask = 5;", GL_STENCIL_WRITEMASK, 0, 5, kAllBits},
  };
  // The other dialect's names; PointSize follows a parameter.
  const Row dxNames[] = {
      {"CullMode = CW;", GL_CULL_FACE, -1, 1, 0},
      {"AlphaBlendEnable = true;", GL_BLEND, -1, 1, 0},
      {"BlendEquationSeparate = int2(Add, Max);", GL_BLEND_EQUATION_ALPHA, 0, GL_MAX, GL_FUNC_ADD},
      {"SrcBlend = SrcAlpha;", GL_BLEND_SRC_RGB, 0, GL_SRC_ALPHA, GL_ONE},
      {"DestBlend = InvSrcAlpha;", GL_BLEND_DST_RGB, 0, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO},
      {"ZFunc = Greater;", GL_DEPTH_FUNC, 0, GL_GREATER, GL_LESS},
      {"ScissorTestEnable = true;", GL_SCISSOR_TEST, -1, 1, 0},
      {"FillMode = Wireframe;", GL_POLYGON_MODE, 0, GL_LINE, GL_FILL},
      {"LogicOp = Xor;", GL_LOGIC_OP_MODE, 0, GL_XOR, GL_COPY},
      {"StencilFuncSeparate = int4(Back, Greater, 3, 255);", GL_STENCIL_BACK_FUNC, 0, GL_GREATER, GL_ALWAYS},
      {"ClipPlaneEnable[1] = true;", GL_CLIP_PLANE1, -1, 1, 0},
      {"ShadeModel = Flat;", GL_SHADE_MODEL, 0, GL_FLAT, GL_SMOOTH},
      {"PointSize = gSize * 2;", GL_POINT_SIZE, 0, 6, 1},
  };
  auto read = [](const Row &row) {
    float v[4] = {};
    if (row.component >= 0) glGetFloatv(row.query, v);
    return row.component < 0 ? (glIsEnabled(row.query) ? 1.0f : 0.0f) : v[row.component];
  };
  for (auto [rows, count] : {std::pair{glNames, std::size(glNames)}, {dxNames, std::size(dxNames)}}) {
    std::string states;
    for (size_t i = 0; i < count; ++i) states += rows[i].state;
    CFx *fx = Parse(QuadEffect("float gSize = 3;\nfloat4 PS() : COLOR { return 1; }\ntechnique States { pass P {\n"
                               "  VertexProgram = compile glslv QuadVS(); FragmentProgram = compile glslf PS();\n" +
                               states + "\n} }\n"));
    FxTechniqueRecord *t = Technique(fx);
    ASSERT_TRUE(t);
    FxPassRecord *p = fx->Begin(t);
    ASSERT_TRUE(fx->BeginPass(p));
    EXPECT_NE(GLInteger(GL_CURRENT_PROGRAM), 0);
    for (size_t i = 0; i < count; ++i) EXPECT_EQ(read(rows[i]), rows[i].during) << rows[i].query << " " << rows[i].state;
    fx->EndPass(p);
    EXPECT_EQ(GLInteger(GL_CURRENT_PROGRAM), 0);
    for (size_t i = 0; i < count; ++i)
      EXPECT_EQ(read(rows[i]), rows[i].after) << rows[i].query << " " << rows[i].state << " after the pass";
    EXPECT_EQ(fx->NextPass(p), nullptr);
    fx->End();
    Set(*fx, "gSize", {5});  // a computed state follows its parameter
    p = fx->Begin(t);
    ASSERT_TRUE(fx->BeginPass(p));
    EXPECT_EQ(read({"", GL_POINT_SIZE, 0, 0, 0}), rows == dxNames ? 10 : 4);
    fx->EndPass(p);
    fx->End();
  }
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
  EXPECT_EQ(GLInteger(GL_CURRENT_PROGRAM), 0);
  fx->CommitChanges();
  fx->EndPass(p);
  fx->End();
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}
