// Cg as effect authors write it, checked as `velmor-tool fx --glsl --validate`
// checks it (strict GLSL, linked on the display's GL), with the pixel it draws.
#include "FxGLSupport.h"
#include "fx/FxEffect.h"
#include "fx/FxListing.h"

namespace {
class FxCgFeatures : public FxGLTest {
 protected:
  // Empty when the effect compiles and links; otherwise what failed.
  std::string Compiles(const std::string &text) {
    CFxDiagnostics diag;
    auto effect = CFxEffect::Create(text, "t.cgfx", diag);
    if (!effect) return diag.Listing();
    if (std::string problems = EffectProblems(*effect); !problems.empty()) return problems;
    std::unique_ptr<CFx> fx(m_Manager->ParseEffect(text.c_str()));
    if (!fx) return "the manager refused the effect";
    for (const CFxTechnique &t : fx->Effect()->Techniques())
      if (!m_Manager->ValidateTechnique(*fx, t)) return "technique " + t.name + " does not link";
    return "";
  }
};
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
      {"number forms", QuadEffect("float4 PS() : COLOR { return float4(.5, 2e-3 * 125, 0x1F / 124.0, 1.5f - 1); }"),
       {0.5f, 0.25f, 0.25f, 0.5f}},
      {"overloads rank by the cheapest conversion: bool goes to int before float",
       QuadEffect("float F(float a) { return 0.25; }\nfloat F(float3 a) { return 0.5; }\nfloat F(int a) { return 0.75; }\n"
                  "float4 PS() : COLOR { return float4(F(1), F(1.0), F(float3(1, 1, 1)), F(true)); }"),
       {0.75f, 0.25f, 0.5f, 0.75f}},
      {"multi-element matrix swizzles and row casts",
       QuadEffect("float4x4 M = {0.125, 0, 0, 0, 0, 0.375, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};\n"
                  "float3x4 N = {0.25, 0.5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};\n"
                  "float4 PS() : COLOR { return float4(M._m00_m11, (float2)N[0]); }"),
       {0.125f, 0.375f, 0.25f, 0.5f}},
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
       std::string(kQuadVS) + "float4 PS(uniform float v) : COLOR { return float4(v, 0, 0, 1); }\n"
           "pixelshader gPrograms[2] = {compile fp40 PS(0.25), compile ps_3_0 PS(0.75)};\n"
           "technique T { pass P { VertexProgram = compile vp40 QuadVS(); PixelShader = (gPrograms[1]); } }\n",
       {0.75f, 0, 0, 1}},
      {"a varying the vertex program never writes reads (0, 0, 0, 1)",
       QuadEffect("float4 PS(float4 extra : TEXCOORD3, float4 c : COLOR) : COLOR { return extra + c * 2; }"), {0, 0, 0, 3}},
      {"parameters named by GLSL reserved words",
       QuadEffect("float4 sample = {0.5, 0.25, 0, 1}; float input = 0.5;\nfloat4 PS() : COLOR { return sample * input; }"),
       {0.25f, 0.125f, 0, 0.5f}},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.feature);
    EXPECT_EQ(Compiles(row.text), "") << row.text;
    EXPECT_THAT(Run(row.text, [](CFx &) {}), Near4(row.pixel, 1e-4f)) << row.text;
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
