// The generated main() of each stage: attributes, outputs, varyings.
#include "FxTestSupport.h"
#include "fx/FxEffect.h"

#include <gtest/gtest.h>

namespace {
class OutputsEffect : public testing::Test {
 protected:
  void SetUp() override {
    m_Fx = CFxEffect::Create(ReadText(FxEffectsDir() + "outputs.cgfx"), "outputs.cgfx", m_Diag);
    ASSERT_TRUE(m_Fx) << m_Diag.Listing();
  }
  CFxPassProgram Pass(size_t index) {
    CFxPassProgram program;
    EXPECT_TRUE(m_Fx->TranslatePass(m_Fx->Techniques()[0].passes[index], program, m_Diag)) << m_Diag.Listing();
    return program;
  }
  static bool Has(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

  CFxDiagnostics m_Diag;
  std::unique_ptr<CFxEffect> m_Fx;
};
}  // namespace

TEST_F(OutputsEffect, AttributesOnFixedIndicesAndVaryingsNamedBySemantic) {
  CFxPassProgram p = Pass(0);
  std::vector<std::pair<int, std::string>> expected = {{0, "cg_ATTR0"}, {1, "cg_ATTR1"},   {3, "cg_ATTR3"},
                                                       {4, "cg_ATTR4"}, {8, "cg_ATTR8"},   {13, "cg_ATTR13"},
                                                       {14, "cg_ATTR14"}, {15, "cg_ATTR15"}};
  EXPECT_EQ(p.attributes, expected);
  // Uniform arguments are kept, HPOS is POSITION, varyings are vec4 named by
  // semantic, and colours clamp.
  for (const char *part : {"cg_in0.frame.tangent = cg_ATTR14.xyz;", "cg_in0.uv0 = cg_ATTR8.xy;",
                           "VSOut cg_ret = VS(cg_in0, gWVP, 2.0);", "gl_Position = cg_ret.hpos;",
                           "gl_PointSize = cg_ret.size;", "COLOR0 = clamp(cg_ret.light.diffuse, 0.0, 1.0);",
                           "TEXCOORD6 = vec4(cg_ret.tangent, 1.0);"})
    EXPECT_TRUE(Has(p.vertex, part)) << part << "\n" << p.vertex;
  for (const char *v : {"COLOR0", "COLOR1", "TEXCOORD0", "TEXCOORD6"}) {
    std::string decl = std::string("varying vec4 ") + v + ";";
    EXPECT_TRUE(Has(p.vertex, decl)) << v;
    EXPECT_TRUE(Has(p.fragment, decl)) << v;
  }
  // Several colour outputs go to gl_FragData, never mixed with gl_FragColor.
  for (const char *part : {"gl_FragData[2] = cg_in5;", "gl_FragDepth = cg_in6;", "cg_in1 = gl_FragCoord;",
                           "cg_in2 = (gl_FrontFacing ? 1.0 : -1.0);"})
    EXPECT_TRUE(Has(p.fragment, part)) << part << "\n" << p.fragment;
  EXPECT_FALSE(Has(p.fragment, "gl_FragColor")) << p.fragment;
  EXPECT_EQ(p.vertexKey, "VS(gWVP, 2.0)");
  EXPECT_EQ(p.fragmentKey, "MRT()");
}

TEST_F(OutputsEffect, AStageWithoutPartnerUsesTheBuiltInVaryings) {
  CFxPassProgram vertexOnly = Pass(1), fragmentOnly = Pass(2);
  EXPECT_TRUE(vertexOnly.fragment.empty());
  EXPECT_TRUE(fragmentOnly.vertex.empty());
  EXPECT_TRUE(fragmentOnly.attributes.empty());
  for (const char *part : {"gl_FrontColor = cg_ret.light.diffuse;", "gl_TexCoord[0] = cg_ret.uv;"})
    EXPECT_TRUE(Has(vertexOnly.vertex, part)) << part << "\n" << vertexOnly.vertex;
  EXPECT_FALSE(Has(vertexOnly.vertex, "varying")) << vertexOnly.vertex;
  for (const char *part : {"cg_in0 = gl_Color;", "cg_in1 = gl_TexCoord[1].xy;"})
    EXPECT_TRUE(Has(fragmentOnly.fragment, part)) << part << "\n" << fragmentOnly.fragment;
  EXPECT_EQ(GlslangErrors(fragmentOnly.fragment, true), "");
}
