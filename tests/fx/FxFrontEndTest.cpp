// Parsing, checking and the effect model; broken input ends in located errors.
#include "FxGLSupport.h"
#include "fx/FxEffect.h"
#include "fx/FxListing.h"

#include <gtest/gtest.h>

namespace {
std::unique_ptr<CFxEffect> Create(const std::string &text, CFxDiagnostics &diag) {
  return CFxEffect::Create(text, "t.cgfx", diag);
}

// Translates the only pass; returns the listing of errors (empty: success).
std::string Translate(const std::string &text) {
  CFxDiagnostics diag;
  auto fx = Create(text, diag);
  CFxPassProgram program;
  return fx && fx->TranslatePass(fx->Techniques()[0].passes[0], program, diag) ? "" : diag.Listing();
}

const char *kPassPS = "technique T { pass { FragmentProgram = compile glslf PS(); } }\n";
}  // namespace

TEST(FxEffectModel, ParametersWithSemanticsAnnotationsAndDefaults) {
  CFxDiagnostics diag;
  auto fx = Create(
      "texture t1 <string UIName = \"Texture1\";> : DIFFUSE;\n"
      "texture t2 : NORMAL <string UIName = \"Texture2\";>;\n"
      "float3 c : COLOR <float3 UIMin = {0, 0, 0}; bool UIHidden = false; int Steps = 4; float2 R = float2(1, 2);"
      " float4 Q = 0.5;> = {1, 0.5, 0.25};\n"
      "float4x4 m = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};\n"
      "static const float kHalf = 0.5;\n"
      "float2 h = kHalf * 2;\n"
      "string Script = \"STANDARDSGLOBAL\";\n"
      "sampler2D s = sampler_state { Texture = <t1>; MinFilter = Nearest; WrapS = Clamp; };\n"
      "technique A <string Group = \"x\";> { pass P0 <int Index = 0;> { DepthMask = false; } }\n"
      "technique B { pass { } pass Second { } }\n",
      diag);
  ASSERT_TRUE(fx) << diag.Listing();
  const auto &params = fx->Parameters();
  ASSERT_EQ(params.size(), 7u);  // static constants are not parameters
  EXPECT_EQ(params[0].semantic, "DIFFUSE");
  EXPECT_EQ(params[0].annotations[0].text, "Texture1");
  EXPECT_EQ(params[1].annotations[0].text, "Texture2");  // semantic first: EffectFiles.ParametersBecomePorts...
  ASSERT_EQ(params[2].annotations.size(), 5u);  // c's type and values: the listing below
  EXPECT_EQ(params[2].FindAnnotation("Steps")->values, std::vector<float>{4});
  EXPECT_EQ(params[2].FindAnnotation("R")->values, (std::vector<float>{1, 2}));
  EXPECT_EQ(params[2].FindAnnotation("Q")->values, (std::vector<float>{0.5f, 0.5f, 0.5f, 0.5f}));
  EXPECT_EQ(params[3].defaults[1], 2);  // row by row
  EXPECT_EQ(params[4].defaults, (std::vector<float>{1, 1}));
  EXPECT_EQ(params[5].stringValue, "STANDARDSGLOBAL");
  EXPECT_EQ(params[6].textureName, "t1");
  ASSERT_EQ(params[6].samplerStates.size(), 2u);
  EXPECT_EQ(params[6].samplerStates[1].values[0], 0x2900);
  ASSERT_EQ(fx->Techniques().size(), 2u);
  EXPECT_EQ(fx->Techniques()[0].passes[0].annotations[0].name, "Index");
  EXPECT_EQ(fx->Techniques()[1].passes[1].name, "Second");
  std::string listing = DescribeEffect(*fx);
  EXPECT_NE(listing.find("parameter float3 c : COLOR = (1, 0.5, 0.25)\n  annotation float3 UIMin = (0, 0, 0)\n"), std::string::npos) << listing;
  EXPECT_NE(listing.find("    DepthMask = false\n"), std::string::npos) << listing;

  float m[16] = {};
  m[1] = 5;
  uint32_t serial = fx->Parameters()[3].Serial();
  fx->FindParameter("m")->SetMatrixfc(m);
  EXPECT_EQ(fx->FindParameter("m")->Value()[4], 5);  // given by columns, seen transposed
  EXPECT_NE(fx->FindParameter("m")->Serial(), serial);
}

// Broken text fails to load and type errors in code a pass reaches fail its
// translation, both with the file and line.
TEST(FxDiagnostics, BrokenEffectsAndTypeErrorsReportFileAndLine) {
  const std::string pass = kPassPS, vs = kQuadVS;  // vs: four lines
  const struct { std::string text; const char *message; } cases[] = {
      {"float4 f() {\n  return 1\n}\ntechnique T { pass {} }", "t.cgfx(3): expected ';', found '}'"},
      {"technique T {\n pass {\n  ZWriteEnabled = true;\n }\n}", "t.cgfx(3): unknown state 'ZWriteEnabled'"},
      {"technique T { pass { BlendFunc = int2(SrcAlpha, Sideways); } }", "t.cgfx(1): bad value 'Sideways' for BlendFunc"},
      {"technique T { pass { BlendFunc = SrcAlpha; } }", "t.cgfx(1): BlendFunc takes 2 values, not 1"},
      {"sampler2D s = sampler_state {\n Texture = <nothing>; };\ntechnique T { pass {} }",
       "t.cgfx(1): sampler 's' names no texture parameter 'nothing'"},
      {"sampler2D s = sampler_state { Fuzz = 1; }; technique T { pass {} }", "t.cgfx(1): unknown sampler state 'Fuzz'"},
      {"float4 PS() : COLOR { return 1; }\ntechnique T { pass { FragmentProgram = compile ps_9 PS(); } }",
       "t.cgfx(2): unknown profile 'ps_9'"},
      {"float x = ;\ntechnique T { pass {} }", "t.cgfx(1): unexpected ';'"},
      {"mystery x;\ntechnique T { pass {} }", "t.cgfx(1): unknown type 'mystery'"},
      {"float x = 1;", "t.cgfx(1): the effect has no technique"},
      {"float3 x = {1, 2};\ntechnique T { pass {} }", "t.cgfx(1): initialiser has 2 values, float3 needs 3"},
      {"float4 PS() : COLOR { float4 v = 1; return v.xq; }\n" + pass, "t.cgfx(1): no member 'xq' in float4"},
      {"float4 PS() : COLOR { float4x4 m = 1; return m * float4(1, 1, 1, 1); }\n" + pass,
       "t.cgfx(1): operator '*' cannot combine float4x4 and float4"},
      {"float4 PS() : COLOR { return mul(float3x3(1,0,0,0,1,0,0,0,1), float2(1, 1)).xyzz; }\n" + pass,
       "t.cgfx(1): mul(float3x3, float2): the vector is too short"},
      {"float4 PS() : COLOR { return tex2D(1, float2(0, 0)); }\n" + pass, "t.cgfx(1): tex2D needs a sampler2D, not int"},
      {"float F(float a) { return a; }\nfloat F(half a) { return a; }\nfloat4 PS() : COLOR { return F(1); }\n" + pass,
       "t.cgfx(3): ambiguous call of F with (int)"},
      {"float4 PS() : COLOR { const float k = 1; k = 2; return k; }\n" + pass, "t.cgfx(1): cannot assign to const 'k'"},
      {"sampler2D g;\nfloat4 PS() : COLOR { g = g; return 1; }\n" + pass, "t.cgfx(2): cannot assign to parameter 'g' of type sampler2D"},
      {"float4 PS() : COLOR { int i = 1 & 2; return i; }\n" + pass, "t.cgfx(1): operator '&' is not supported"},
      {"float4 PS(float4 c) : COLOR { return c; }\n" + pass, "t.cgfx(1): an entry input or output has no semantic"},
      {"float4 PS() : TEXCOORD0 { return 1; }\n" + pass, "t.cgfx(1): unknown fragment output semantic 'TEXCOORD0'"},
      // What GLSL 1.20 cannot express, named with its construct.
      {vs + "float4 PS() : COLOR { return 1; }\ntechnique T { pass { GeometryProgram = compile gp4gp PS(); } }\n",
       "t.cgfx(6): geometry programs (GeometryProgram = compile gp4gp) cannot be translated to GLSL 1.20"},
      {vs + "float4 PS() : COLOR { return 1; }\n"
            "technique T { pass { VertexProgram = compile vp40 QuadVS();\n HullShader = compile hs_5_0 PS(); } }\n",
       "t.cgfx(7): tessellation programs (HullShader = compile hs_5_0) cannot be translated to GLSL 1.20"},
      {vs + "sampler2DARRAY gLayers;\n", "t.cgfx(5): texture arrays and buffers ('sampler2DARRAY') cannot be translated to GLSL 1.20"},
      {vs + "cbuffer Lights { float4 gColor; };\n", "t.cgfx(5): constant buffers ('cbuffer') cannot be translated to GLSL 1.20"},
      {QuadEffect("interface Shade { float4 at(); };\nfloat4 PS() : COLOR { Shade s;\n return s.at(); }"),
       "t.cgfx(6): 's' is of interface type Shade: interface values cannot be translated to GLSL 1.20, use a struct that implements it"},
      {vs + "uniform float4 gColor : BUFFER[0];\n", "t.cgfx(5): constant buffers (semantic BUFFER of 'gColor') cannot be translated to GLSL 1.20"},
      {QuadEffect("float4 PS() : COLOR { float a[3] = {1, 2, 3}; return a[3]; }"),
       "t.cgfx(5): index 3 is out of range for float[3] (0 to 2)"},
      {QuadEffect("float4 PS() : COLOR { float4 v = 1;\n return v[-1]; }"), "t.cgfx(6): index -1 is out of range for float4 (0 to 3)"},
      {QuadEffect("float4 PS() : COLOR { float r = 0;\n switch (2) { case 1: r = 1; case 2: r = 2; break; }\n return r; }"),
       "t.cgfx(6): a case that runs on into the next is not supported: end it with break"},
      {QuadEffect("float4 PS() : COLOR { float r = 0;\n for (int i = 0; i < 2; i++) switch (i) { case 0: continue; }\n return r; }"),
       "t.cgfx(6): continue inside a switch is not supported"},
  };
  for (const auto &c : cases) EXPECT_EQ(Translate(c.text), std::string(c.message) + "\n") << c.text;
}

// Every cut of every corpus file, bare, with a burst of openers or with a
// later part joined on, ends in an effect or in located errors.
TEST(FxRobustness, TruncatedAndMangledCorpusNeverCrashes) {
  for (const std::string &path : FxCorpusFiles()) {
    const std::string text = ReadText(path);
    for (size_t cut = 0; cut < text.size(); cut += 97)
      for (const std::string &tail : {std::string(), std::string("{ ( [ < \" ;"), text.substr(cut + cut % 13)}) {
        CFxDiagnostics diag;
        if (auto fx = Create(text.substr(0, cut) + tail, diag))
          for (const CFxTechnique &t : fx->Techniques()) fx->TranslateTechnique(t, diag);
        else
          EXPECT_TRUE(diag.HasErrors() && diag.Messages()[0].rfind("t.cgfx(", 0) == 0) << diag.Listing();
      }
  }
}
