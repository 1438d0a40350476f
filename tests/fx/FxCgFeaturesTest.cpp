// Cg as effect authors write it, through the path of `velmor-tool fx --glsl --validate`
// (strict GLSL from glslangValidator, linked on the display's GL), with the pixel it draws;
// what GLSL 1.20 cannot express is refused with the construct and its line.
#include "FxGLSupport.h"
#include "fx/FxEffect.h"
#include "fx/FxListing.h"
#include "fx/FxText.h"

#include <filesystem>

namespace {
class FxCgFeatures : public FxGLTest {
 protected:
  // Empty when the effect compiles and links; otherwise what failed.
  std::string Compiles(const std::string &text, const std::string &folder = {}) {
    CFxDiagnostics diag;
    auto effect = CFxEffect::Create(text, "t.cgfx", diag, FxFolderIncludes(folder));
    if (!effect) return diag.Listing();
    for (const CFxTechnique &t : effect->Techniques())
      for (const CFxPass &p : t.passes) {
        CFxPassProgram program;
        if (!effect->TranslatePass(p, program, diag)) return diag.Listing();
        for (bool fragment : {false, true}) {
          const std::string &glsl = fragment ? program.fragment : program.vertex;
          std::string strict = glsl.empty() ? "" : GlslangErrors(glsl, fragment);
          if (!strict.empty()) return strict + glsl;
        }
      }
    std::unique_ptr<CFx> fx(m_Manager->ParseEffect(text.c_str()));
    if (!fx) return "the manager refused the effect";
    for (const CFxTechnique &t : fx->Effect()->Techniques())
      if (!m_Manager->ValidateTechnique(*fx, t)) return "technique " + t.name + " does not link";
    return "";
  }
};

std::string WithPass(const std::string &declarations, const std::string &states) {
  return kQuadVS + declarations + "\ntechnique T { pass P { VertexProgram = compile vp40 QuadVS(); " + states + " } }\n";
}
}  // namespace

TEST_F(FxCgFeatures, EachFeatureCompilesLinksAndDrawsItsValue) {
  struct Row { const char *feature; std::string text; Float4 pixel; };
  const Row rows[] = {
      {"(T)scalar fills every member, arrays and nested structs too",
       QuadEffect("struct In { float2 v; }; struct S { float a; In inner[2]; float3x3 m; };\n"
                  "float4 PS() : COLOR { S s = (S)0.5; S z = (S)0; return float4(s.a, s.inner[1].v.y, s.m[2][1], z.m[1][1] + 1); }"),
       {0.5f, 0.5f, 0.5f, 1}},
      {"a function writes a parameter: a copy starting from its value",
       QuadEffect("float gScale = 2;\nfloat Twice() { gScale *= 2; return gScale; }\n"
                  "float4 PS() : COLOR { float a = Twice(); return float4(a, gScale, 0, 1) / 8; }"),
       {0.5f, 0.5f, 0, 0.125f}},
      {"indexed semantics in any case on inputs and outputs",
       "void VS(float4 p : POSITION0, float3 n : NORMAL0, float3 t : TANGENT0, float3 b : BINORMAL0, float2 uv : texcoord0,\n"
       "        out float4 h : POSITION0, out float4 c : TexCoord7) { h = p; c = float4(0.25, uv.x * 0, n.x * 0, 1); }\n"
       "float4 PS(float4 c : TEXCOORD7) : COLOR0 { return c; }\n"
       "technique T { pass { VertexProgram = compile gp4vp VS(); FragmentProgram = compile gp4fp PS(); } }\n",
       {0.25f, 0, 0, 1}},
      {"compile latest and other vendors' profile names",
       std::string(kQuadVS) + "float4 PS() : COLOR { return float4(0.5, 0.25, 0, 1); }\n"
           "technique T { pass { VertexProgram = compile latest QuadVS(); FragmentProgram = compile gp5fp PS(); } }\n",
       {0.5f, 0.25f, 0, 1}},
      {"scalar and shorter constructors from a vector",
       QuadEffect("float4 PS() : COLOR { float3 v = float3(0.25, 0.5, 0.75); return float4(float(v), float2(v.zyx), 1); }"),
       {0.25f, 0.75f, 0.5f, 1}},
      {"arrays of arrays: constants, locals and parameters",
       QuadEffect("static const float kGrid[2][3] = {{0.125, 0.25, 0.375}, {0.5, 0.625, 0.75}};\nfloat gM[2][2] = {{1, 2}, {3, 4}};\n"
                  "float4 PS() : COLOR { float l[2][2]; l[1][0] = 0.5; int i = 1;\n"
                  " return float4(kGrid[1][2], kGrid[i][0], l[1][0], gM[1][1] / 4); }"),
       {0.75f, 0.5f, 0.5f, 1}},
      {"interfaces and structs with methods",
       QuadEffect("interface Shade { float4 at(float x); };\n"
                  "struct Flat : Shade { float4 c; float4 at(float x) { return c * x; } };\n"
                  "float4 PS() : COLOR { Flat f; f.c = float4(0.25, 0.5, 1, 2); return f.at(0.5); }"),
       {0.125f, 0.25f, 0.5f, 1}},
      {"annotations without values, .stpq swizzles",
       QuadEffect("float gA <string UIName; float UIMin; bool Hidden;> = 0.5;\n"
                  "float4 PS() : COLOR { float4 v = float4(0.125, 0.25, 0.5, 1) * gA * 2; return v.qpts; }"),
       {1, 0.5f, 0.25f, 0.125f}},
      {"switch with shared labels and default",
       QuadEffect("int gMode = 3;\nfloat Pick(int m) { float r;\n switch (m) { case 1: r = 0.125; break; case 2: case 3: r = 0.25; break;\n"
                  " default: r = 0.5; break; }\n return r; }\n"
                  "float4 PS() : COLOR { return float4(Pick(gMode), Pick(7), Pick(1), 1); }"),
       {0.25f, 0.5f, 0.125f, 1}},
      {"program variables and arrays picked by constant index",
       WithPass("float4 PS(uniform float v) : COLOR { return float4(v, 0, 0, 1); }\n"
                "pixelshader gPrograms[2] = {compile fp40 PS(0.25), compile ps_3_0 PS(0.75)};\n",
                "PixelShader = (gPrograms[1]);"),
       {0.75f, 0, 0, 1}},
      {"a varying the vertex program never writes reads (0, 0, 0, 1)",
       QuadEffect("float4 PS(float4 extra : TEXCOORD3) : COLOR { return extra; }"), {0, 0, 0, 1}},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.feature);
    EXPECT_EQ(Compiles(row.text), "") << row.text;
    EXPECT_THAT(Run(row.text, [](CFx &) {}), Near4(row.pixel, 1e-4f)) << row.text;
  }
}

TEST_F(FxCgFeatures, PassStatesOfBothDialectsReachGLAndReset) {
  struct Row { const char *state; GLenum query; bool capability; float set, reset; };  // capability: glIsEnabled
  const Row rows[] = {
      {"CullMode = CW;", GL_CULL_FACE, true, 1, 0},
      {"AlphaBlendEnable = true;", GL_BLEND, true, 1, 0},
      {"BlendEquationSeparate = int2(Add, Max);", GL_BLEND_EQUATION_ALPHA, false, GL_MAX, GL_FUNC_ADD},
      {"SrcBlend = SrcAlpha;", GL_BLEND_SRC_RGB, false, GL_SRC_ALPHA, GL_ONE},
      {"DestBlend = InvSrcAlpha;", GL_BLEND_DST_RGB, false, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO},
      {"ZFunc = Greater;", GL_DEPTH_FUNC, false, GL_GREATER, GL_LESS},
      {"ScissorTestEnable = true;", GL_SCISSOR_TEST, true, 1, 0},
      {"FillMode = Wireframe;", GL_POLYGON_MODE, false, GL_LINE, GL_FILL},
      {"LogicOp = Xor;", GL_LOGIC_OP_MODE, false, GL_XOR, GL_COPY},
      {"StencilFuncSeparate = int4(Back, Greater, 3, 255);", GL_STENCIL_BACK_FUNC, false, GL_GREATER, GL_ALWAYS},
      {"ClipPlaneEnable[1] = true;", GL_CLIP_PLANE1, true, 1, 0},
      {"ShadeModel = Flat;", GL_SHADE_MODEL, false, GL_FLAT, GL_SMOOTH},
      {"PointSize = gSize * 2;", GL_POINT_SIZE, false, 6, 1},
  };
  std::string states;
  for (const Row &row : rows) states += row.state;
  std::string text = WithPass("float gSize = 3;\nfloat4 PS() : COLOR { return 1; }\n", states + "FragmentProgram = compile latest PS();");
  ASSERT_EQ(Compiles(text), "");
  CFx *fx = Parse(text);
  FxTechniqueRecord *t = Technique(fx);
  ASSERT_NE(t, nullptr);
  auto read = [](const Row &row) {
    float v[4] = {};
    if (!row.capability) glGetFloatv(row.query, v);
    return row.capability ? (glIsEnabled(row.query) ? 1.0f : 0.0f) : v[0];
  };
  const Row &pointSize = rows[std::size(rows) - 1];
  for (float size : {3.0f, 5.0f}) {
    Set(*fx, "gSize", {size});  // a computed state follows its parameter
    FxPassRecord *p = fx->Begin(t);
    ASSERT_TRUE(fx->BeginPass(p));
    for (const Row &row : rows) EXPECT_EQ(read(row), &row == &pointSize ? size * 2 : row.set) << row.state;
    fx->EndPass(p);
    fx->End();
    for (const Row &row : rows) EXPECT_EQ(read(row), row.reset) << row.state << " after the pass";
  }
}

TEST_F(FxCgFeatures, SamplerStatesOfBothDialectsAreRead) {
  struct Row { const char *states, *listed; };  // listed: the sampler's state lines in the listing
  const Row rows[] = {
      {"MinFilter = Linear; MipFilter = Point;", "  MinFilter = LinearMipMapNearest\n"},
      {"MipFilter = Linear; MinFilter = Point;", "  MinFilter = NearestMipMapLinear\n"},
      {"MinFilter = LinearMipMapLinear; MipFilter = None;", "  MinFilter = Linear\n"},
      {"MaxMipLevel = 3; MinMipLevel = 1; MaxLOD = 2.5; MinLOD = 0.5;",
       "  MaxMipLevel = 3\n  MinMipLevel = 1\n  MaxLOD = 2.5\n  MinLOD = 0.5\n"},
      {"CompareMode = CompareRToTexture; CompareFunc = LEqual; DepthMode = Intensity;",
       "  CompareMode = CompareRToTexture\n  CompareFunc = LEqual\n  DepthMode = Intensity\n"},
      {"AddressU = Mirror; MagFilter = Anisotropic;", "  WrapS = MirroredRepeat\n  MagFilter = Linear\n"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.states);
    std::string text = QuadEffect(std::string("texture gTex;\nsampler2D gS = sampler_state { Texture = <gTex>; ") +
                                  row.states + " };\nfloat4 PS(float2 uv : TEXCOORD0) : COLOR { return tex2D(gS, uv); }");
    ASSERT_EQ(Compiles(text), "");
    CFxDiagnostics diag;
    std::string listing = DescribeEffect(*CFxEffect::Create(text, "t.cgfx", diag));
    EXPECT_NE(listing.find(std::string("  Texture = <gTex>\n") + row.listed), std::string::npos) << listing;
  }
}

TEST_F(FxCgFeatures, WhatGlsl120CannotExpressIsRefusedWithTheConstructAndLine) {
  struct Row { std::string text; const char *message; };  // the message with the line it must name
  const std::string vs = kQuadVS;  // four lines
  const Row rows[] = {
      {vs + "float4 PS() : COLOR { return 1; }\ntechnique T { pass { GeometryProgram = compile gp4gp PS(); } }\n",
       "t.cgfx(6): geometry programs (GeometryProgram = compile gp4gp)"},
      {vs + "float4 PS() : COLOR { return 1; }\n"
            "technique T { pass { VertexProgram = compile vp40 QuadVS();\n HullShader = compile hs_5_0 PS(); } }\n",
       "t.cgfx(7): tessellation programs (HullShader"},
      {vs + "sampler2DARRAY gLayers;\n", "t.cgfx(5): texture arrays and buffers ('sampler2DARRAY')"},
      {vs + "cbuffer Lights { float4 gColor; };\n", "t.cgfx(5): constant buffers ('cbuffer')"},
      {QuadEffect("interface Shade { float4 at(); };\nfloat4 PS() : COLOR { Shade s;\n return s.at(); }"),
       "t.cgfx(6): 's' is of interface type Shade"},
      {vs + "uniform float4 gColor : BUFFER[0];\n", "t.cgfx(5): constant buffers (semantic BUFFER of 'gColor')"},
      {QuadEffect("float4 PS() : COLOR { float a[3] = {1, 2, 3}; return a[3]; }"),
       "t.cgfx(5): index 3 is out of range for float[3]"},
      {QuadEffect("float4 PS() : COLOR { float4 v = 1;\n return v[-1]; }"), "t.cgfx(6): index -1 is out of range for float4"},
      {QuadEffect("float4 PS() : COLOR { float r = 0;\n switch (2) { case 1: r = 1; case 2: r = 2; break; }\n return r; }"),
       "t.cgfx(6): a case that runs on into the next"},
      {QuadEffect("float4 PS() : COLOR { float r = 0;\n for (int i = 0; i < 2; i++) switch (i) { case 0: continue; }\n return r; }"),
       "t.cgfx(6): continue inside a switch"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.text);
    CFxDiagnostics diag;
    auto effect = CFxEffect::Create(row.text, "t.cgfx", diag);
    bool translated = effect != nullptr;
    for (const CFxTechnique &t : effect ? effect->Techniques() : std::vector<CFxTechnique>{})
      for (const CFxPass &p : t.passes) {
        CFxPassProgram program;
        translated = effect->TranslatePass(p, program, diag) && translated;
      }
    EXPECT_FALSE(translated);
    EXPECT_NE(diag.Listing().find(row.message), std::string::npos) << diag.Listing();
  }
}

// Effects written the way third-party effect packs are: lighting, shading,
// multi-pass blur, shadow look-ups, environment maps.
TEST_F(FxCgFeatures, AuthoredEffectsCompileAndLink) {
  std::string dir = FxEffectsDir() + "authored/";
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(dir)) names.push_back(entry.path().filename());
  EXPECT_GE(names.size(), 20u) << dir;
  for (const std::string &name : names) EXPECT_EQ(Compiles(ReadText(dir + name), dir), "") << name;
}
