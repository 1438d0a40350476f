// The GL-free runtime: manager, error handler, text helpers.
#include "FxTestSupport.h"
#include "core/FakeClock.h"
#include "core/Log.h"
#include "fx/FxManager.h"
#include "fx/FxMatrixSemantics.h"
#include "fx/FxText.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

TEST(FxManager, BestTechniqueSkipsOneThatDoesNotTranslate) {
  FxLogCapture log;
  CFxManager manager;
  ASSERT_TRUE(manager.Init(nullptr));
  std::unique_ptr<CFx> fx(manager.LoadEffect((FxEffectsDir() + "fallback.cgfx").c_str()));
  ASSERT_TRUE(fx);
  std::unique_ptr<FxTechniqueRecord> best(fx->GetBestTechnique());
  ASSERT_TRUE(best);
  EXPECT_EQ(best->technique->name, "Plain");
  EXPECT_EQ(fx->GetNamedTechnique("Fancy"), &fx->Effect()->Techniques()[0]);
  // The rejected technique's reason reached the log through the handler.
  ASSERT_EQ(log.errors.size(), 2u);
  EXPECT_EQ(log.errors[0], "CGError: The compile returned an error. (1)");
  EXPECT_NE(log.errors[1].find("fallback.cgfx(11): undefined function 'missingFunction'"), std::string::npos);
  EXPECT_EQ(log.errors[1].rfind("LastListing:\n", 0), 0u);
}

TEST(FxManager, NoValidTechniqueAndBrokenTextsGiveNull) {
  FxLogCapture log;
  CFxManager manager;
  manager.Init(nullptr);
  std::unique_ptr<CFx> fx(manager.ParseEffect(
      "float4 PS() : COLOR { return nothing; }\n"
      "technique T { pass { FragmentProgram = compile glslf PS(); } }\n"));
  ASSERT_TRUE(fx);
  EXPECT_EQ(fx->GetBestTechnique(), nullptr);
  log.errors.clear();
  EXPECT_EQ(manager.ParseEffect("technique T { pass { Bogus = 1; } }"), nullptr);
  std::vector<std::string> expected = {"CGError: The compile returned an error. (1)",
                                       "LastListing:\n<text>(1): unknown state 'Bogus'\n\n-------",
                                       "CG Error: The compile returned an error."};
  EXPECT_EQ(log.errors, expected);
  log.errors.clear();
  EXPECT_EQ(manager.LoadEffect("/nonexistent/effect.cgfx"), nullptr);
  EXPECT_EQ(log.errors.back(), "CG Error: The file could not be read.");
}

TEST(FxManager, ErrorBurstLimitWithAFakeClock) {
  FxLogCapture log;
  CScopedFakeClock clock;
  auto report = [] { FxErrorHandler("boom", 7, nullptr); };
  for (int i = 0; i < 20; ++i) report();
  EXPECT_EQ(log.errors.size(), 11u);  // the 12th starts the quiet time
  EXPECT_EQ(log.errors[0], "CGError: boom (7)");
  clock.clock.unixSeconds += 29;
  report();
  EXPECT_EQ(log.errors.size(), 11u);
  clock.clock.unixSeconds += 1;
  for (int i = 0; i < 20; ++i) report();
  EXPECT_EQ(log.errors.size(), 22u);  // another burst of 11
  clock.clock.unixSeconds += 30;
  report();  // the stamp was set by the first refused call after the burst
  EXPECT_EQ(log.errors.size(), 23u);
}

TEST(FxText, AddDeclarationLooksOnlyAfterTheName) {
  std::string prefix;
  for (auto [text, name, declaration, after] : {
           std::tuple{"float x = gWVP.x;", "gW", "A;", ""}, {"return mytime * 2;", "time", "B;", "B;"},
           {"gWa gW_b", "gW", "C;", "B;C;"},  // the second occurrence counts: '_' ends a name
           {"uses tex", "tex", "D;", "B;C;D;"},  // the end of the text ends a name too
           {"nothing here", "tex", "E;", "B;C;D;"}}) {
    AddDeclaration(text, prefix, name, declaration);
    EXPECT_EQ(prefix, after) << text;
  }
}

TEST(FxText, AddSamplerDeclaresWhatTheTextureNeeds) {
  std::string prefix;
  EXPECT_EQ(AddSampler("tex2D(tex1, uv)", prefix, nullptr, "tex1"), 0);
  FxTextureInfo volume{3, 0x100 | 0x4};
  EXPECT_EQ(AddSampler("tex3D(tex1, uvw)", prefix, &volume, "tex1"), 3);
  EXPECT_EQ(prefix,
            "sampler3D tex1 = sampler_state { MinFilter = LinearMipMapLinear; MagFilter = Linear; "
            "WrapS = ClampToEdge; WrapT = ClampToEdge; };\n");
  std::string user = "sampler2D tex1 = sampler_state { MinFilter = Nearest; }; float4 c = tex2D(tex1, uv);";
  std::string untouched;
  FxTextureInfo flat{2, 0};
  EXPECT_EQ(AddSampler(user, untouched, &flat, "tex1"), 0);
  EXPECT_EQ(untouched, "");
  EXPECT_EQ(AddSampler("tex2D(tex2, uv)", untouched, &flat, "tex2"), 2);
  EXPECT_NE(untouched.find("sampler2D tex2 = sampler_state { MinFilter = Linear; MagFilter = Linear; WrapS = Repeat; WrapT = Repeat; };"), std::string::npos);
}

TEST(FxText, ShaderHeaderFilterAndRetryWhenMissing) {
  EXPECT_EQ(FilterShaderHeader("  float a;\r\n\r\n\t// note\n  b = 1; // tail\n  c;\nX"), "float a;\nb = 1; c;\n");
  EXPECT_EQ(FilterShaderHeader("x"), "");
  ResetShaderHeader();
  std::string missing = "/tmp/velmor-no-such-header.cgh";
  LoadShaderHeader(missing.c_str());
  EXPECT_EQ(GetShaderHeader(), "");
  LoadShaderHeader(TempDir().Write("header.cgh", "float _noisefast(float x) { return x; }\n\n").c_str());
  EXPECT_EQ(GetShaderHeader(), "float _noisefast(float x) { return x; }\n");
  LoadShaderHeader(missing.c_str());  // already loaded: kept
  EXPECT_FALSE(GetShaderHeader().empty());
  ResetShaderHeader();
}

// What each matrix semantic feeds, and in which layout, is pinned on the
// driver by FxGLTest.EveryMatrixSemanticMultipliesAsTheEngineDoes.
TEST(FxMatrixSemantics, OtherSemanticsAndTypesAreLeftAlone) {
  CFxDiagnostics diag;
  auto fx = CFxEffect::Create(
      "float4x4 a : WorldViewProjection; float4x4 b : CAMERA; float3x3 c : WORLD; float4 d : WORLD;"
      "technique T { pass {} }",
      "t", diag);
  ASSERT_TRUE(fx) << diag.Listing();
  const float I[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  for (CFxParameter &p : fx->Parameters()) {
    uint32_t serial = p.Serial();
    EXPECT_FALSE(SetMatrixParameter(p, I, I, I)) << p.name;
    EXPECT_EQ(p.Serial(), serial);
  }
}
