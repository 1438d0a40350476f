// The effect files we install: each becomes a described node type (their
// strict GLSL check is the effect compiler's corpus test); the Blur file and
// the Shader header keep the contracts their users rely on.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "fx/FxManager.h"
#include "fx/FxTestSupport.h"
#include "fx/FxText.h"
#include "nodes/effect/EffectTestSupport.h"
#include "nodes/effect/FxNode.h"
#include "nodes/effect/ShaderText.h"
#include "scene/NodeFactory.h"
#include "scene/Port.h"
#include "support/LogCapture.h"

namespace {
std::vector<std::string> ShippedEffectNames() {
  std::vector<std::string> names;
  for (const auto &e : std::filesystem::directory_iterator(AssetsDir() + "nodes/effect"))
    if (e.path().extension() == ".cgfx") names.push_back(e.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

struct ShippedEffects : testing::Test {
  ShippedEffects() { manager.Init(nullptr); }
  ~ShippedEffects() override { manager.Free(); }
  CFxManager manager;
};
}  // namespace

TEST_F(ShippedEffects, EachBecomesADescribedNodeTypeWithNamedPorts) {
  CNodeFactoryRef factory;
  size_t before = factory->Types().size();
  FxLogCapture log;
  CNEFx::AddNodesToFactory(*factory, (AssetsDir() + "nodes/effect").c_str());
  EXPECT_TRUE(log.errors.empty()) << log.errors.front();
  std::vector<std::string> names = ShippedEffectNames();
  ASSERT_GE(names.size(), 10u);
  ASSERT_EQ(factory->Types().size(), before + names.size());
  for (size_t i = 0; i < names.size(); ++i) {
    const CNodeInfo *info = factory->Types()[before + i];
    SCOPED_TRACE(info->m_TypeName);
    EXPECT_EQ(info->m_TypeName + ".cgfx", names[i]);
    EXPECT_NE(info->m_Desc, "A simple effect");
    // Seven common ports, then at least one of the effect's own.
    ASSERT_GT(info->m_InPorts.size(), 7u);
    for (size_t p = 7; p < info->m_InPorts.size(); ++p) {
      EXPECT_FALSE(info->m_InPorts[p]->m_Name.empty()) << "port " << p;
      EXPECT_FALSE(info->m_InPorts[p]->m_Desc.empty()) << info->m_InPorts[p]->m_Name;
    }
  }
}

TEST_F(ShippedEffects, BlurOffersTheParametersAndPassesTheBlurNodeLooksUp) {
  std::unique_ptr<CFx> fx(manager.LoadEffect((AssetsDir() + "nodedata/blur.cgfx").c_str()));
  ASSERT_TRUE(fx);
  EXPECT_EQ(EffectProblems(*fx->Effect()), "");
  for (const char *name : {"srcSampler", "gSourceTextureSize", "gBrightness"})
    EXPECT_TRUE(fx->GetNamedParameter(name)) << name;
  std::unique_ptr<FxTechniqueRecord> technique(fx->GetBestTechnique());
  ASSERT_TRUE(technique);
  std::vector<std::string> passes;
  for (const CFxPass &p : technique->technique->passes) passes.push_back(p.name);
  EXPECT_EQ(passes, (std::vector<std::string>{"horizontalPass9", "verticalPass9", "horizontalPass21", "verticalPass21"}));
}

// Texts as users write them, with the shipped header in front: a header the
// loader filter mangles (it drops the last byte) stops compiling here.
TEST_F(ShippedEffects, ShaderHeaderHelpersCompileWithAndWithoutTheNoiseVolume) {
  ResetShaderHeader();
  LoadShaderHeader((AssetsDir() + "nodedata/shader.cgh").c_str());
  ASSERT_FALSE(GetShaderHeader().empty());
  const std::string vertex =
      "struct PSInput{float4 hpos:POSITION;float2 tex:TEXCOORD0;};\n"
      "PSInput VS_Program(VSInput vi){PSInput pi;pi.hpos=mul(gWVP,float4(vi.pos,1.0));pi.tex=vi.tex;return pi;}\n";
  const char *const bodies[] = {
      "return color1 * (0.5 + 0.5 * _noise(float3(pi.tex * 8.0, time)));",
      "float3 p = float3(pi.tex * 4.0, time);\n"
      "float v = _noisefast(p) + _fbmfast(p, 4) + _turbulencefast(p, 3) + _ridgedmffast(p, 5);\n"
      "return float4(_hue(v) + _noisegradientfast(p) * 0.1, 1.0);",
      "return float4(_hue(pi.tex.x), 1.0);",
  };
  for (const char *body : bodies) {
    SCOPED_TRACE(body);
    ShaderTextures none;
    std::string text = ComposeShaderText(vertex + "float4 PS_Program(PSInput pi):COLOR{\n" + body + "\n}\n", none);
    std::unique_ptr<CFx> fx(manager.ParseEffect(text.c_str()));
    ASSERT_TRUE(fx) << text;
    EXPECT_EQ(EffectProblems(*fx->Effect()), "");
  }
  ResetShaderHeader();
}
