// The Shader node: the text it compiles around what the user typed, when it
// composes again, and the expression that adjusts its inputs.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "fx/FxManager.h"
#include "fx/FxText.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/EffectTestSupport.h"
#include "nodes/effect/ShaderNode.h"
#include "portdata/PDTexture.h"
#include "render/RecordRender.h"
#include "scene/NodeInfo.h"
#include "scene/NodeFactory.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/LogCapture.h"

namespace {
// Offers a texture of a chosen dimension.
class CTextureSourceNode : public CNode, public CPDTexture {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(4, "TestTexture", [] { return static_cast<CNode *>(new CTextureSourceNode); }, "");
    info->AddOutPort(new CPortTexture("Texture", ""));
    return info;
  }
  void Update(float, FrameInfo *) override { static_cast<CPortTexture *>(m_OutPorts[0])->SetTexture(this); }
};

size_t Count(const std::string &text, const std::string &what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

struct ShaderNode : testing::Test {
  ShaderNode() {
    InstallBuiltinNodes();
    factory->Init();
    factory->AddNodeType(CTextureSourceNode::CreateInfo());
    ResetShaderHeader();
    manager.Init(nullptr);
    render.m_FxManager = &manager;
    node.reset(static_cast<CShaderNode *>(factory->CreateNode("Shader")));
    node->m_Render = &render;
  }
  ~ShaderNode() override {
    if (HasFailure())
      for (const std::string &e : log.errors) std::printf("logged: %s\n", e.c_str());
    node->InvalidateDevice(&render);
    manager.Free();
    ResetShaderHeader();
  }
  void Frame(float time = 1.0f) {
    frame.Time = time;
    frame.DeltaTime = 0.5f;
    node->m_Updated = false;
    node->m_DirtyUnits = 0;
    node->Update(time, &frame);
    // As the graph does after a frame: nothing counts as changed any more.
    for (CPort *p : node->m_InPorts) {
      p->m_Changed = false;
      if (p->m_Source) p->m_Source->m_Changed = false;
    }
  }
  // As an editor sets a value.
  void Set(const char *port, const std::string &text) {
    CPort *p = node->FindInPort(port);
    p->SetText(text.c_str());
    p->m_Changed = true;
  }
  void SetText(const std::string &text) { Set("Shader", text); }

  CNodeFactoryRef factory;
  CFxManager manager;
  CRecordRender render{64, 64};
  FrameInfo frame;
  std::unique_ptr<CShaderNode> node;
  LogCapture log;
};

const char kMinimal[] =
    "float4 VS_Program(VSInput vi) : POSITION { return mul(gWVP, float4(vi.pos, 1.0)); }\n"
    "float4 PS_Program() : COLOR { return float4(1.0, 0.0, 0.0, 1.0); }\n";
}  // namespace

TEST_F(ShaderNode, TheDefaultTextCompilesAndOnlyTheNamesATextUsesAreDeclared) {
  // What the default text draws is Pictures.ShaderDefaultTextDrawsARadialFalloffOnARenderRect's.
  ASSERT_TRUE(node->RestoreDevice(&render));
  ASSERT_TRUE(node->GetFx());
  EXPECT_EQ(EffectProblems(*node->GetFx()->Effect()), "");

  // Only the names a text uses are declared.
  SetText(kMinimal);
  ASSERT_TRUE(node->RestoreDevice(&render));
  const std::string &used = node->ComposedText();
  EXPECT_EQ(Count(used, "float4x4"), 1u);
  EXPECT_EQ(Count(used, "gFastPerlinNoiseSampler"), 0u);
  EXPECT_EQ(Count(used, "sampler1D gPermutation1dSampler"), 1u);
  EXPECT_NE(used.find("\ntechnique Tech1{pass Pass1{"), std::string::npos);
  // A text with a technique of its own gets none added.
  SetText(std::string(kMinimal) +
          "technique Mine { pass P { VertexProgram = compile glslv VS_Program(); FragmentProgram = compile glslf "
          "PS_Program(); } }\n");
  ASSERT_TRUE(node->RestoreDevice(&render));
  EXPECT_EQ(Count(node->ComposedText(), "technique"), 1u);
}

TEST_F(ShaderNode, AnEmptyTextDrawsNothingAndABadTextFailsTheDevice) {
  SetText("");
  EXPECT_TRUE(node->RestoreDevice(&render));
  EXPECT_EQ(node->Begin(), nullptr);
  SetText("float4 PS_Program( : COLOR {");
  EXPECT_FALSE(node->RestoreDevice(&render));
  EXPECT_FALSE(log.errors.empty());
  EXPECT_EQ(node->FindInPort("Shader")->GetText(), "float4 PS_Program( : COLOR {");  // the user's text stays
  EXPECT_EQ(node->Begin(), nullptr);
}

TEST_F(ShaderNode, ConnectedTexturesGetSamplersAndANewTextWhenTheirKindChanges) {
  auto *source = static_cast<CTextureSourceNode *>(factory->CreateNode("TestTexture"));
  std::unique_ptr<CNode> owner(source);
  const std::string sampling = "float4 PS_Program(float2 t : TEXCOORD0) : COLOR { return tex2D(tex1, t); }\n";
  SetText("float4 VS_Program(VSInput vi) : POSITION { return float4(vi.pos, 1.0); }\n" + sampling);
  ASSERT_TRUE(node->Connect("Texture1", "Texture", source));
  Frame();
  ASSERT_TRUE(node->RestoreDevice(&render));
  EXPECT_NE(node->ComposedText().find("sampler2D tex1 = sampler_state {"), std::string::npos);
  Frame();
  EXPECT_EQ(node->m_DirtyUnits, 0u);  // same texture, same kind: the text stands

  source->m_Mode = 3;
  Frame();
  EXPECT_EQ(node->m_DirtyUnits, ALL_UNITS);
  SetText("float4 VS_Program(VSInput vi) : POSITION { return float4(vi.pos, 1.0); }\n"
          "float4 PS_Program(float2 t : TEXCOORD0) : COLOR { return tex3D(tex1, float3(t, 0.5)); }\n");
  ASSERT_TRUE(node->RestoreDevice(&render));
  EXPECT_NE(node->ComposedText().find("sampler3D tex1 = sampler_state {"), std::string::npos);
  // A sampler the user declares is kept: FxText.AddSamplerDeclaresWhatTheTextureNeeds.
}

TEST_F(ShaderNode, TheExpressionAdjustsInputsAndKeepsPermForTheNodesLife) {
  Set("In1", "1 2 3");
  Set("Expression", "in1.y = in1.x + time; col2.r = 0.25; perm = perm + 1; time = 100");
  Frame(2.0f);
  EXPECT_FLOAT_EQ(node->In(0)[0], 1);
  EXPECT_FLOAT_EQ(node->In(0)[1], 3);
  EXPECT_FLOAT_EQ(node->Color(1)[0], 0.25f);
  EXPECT_FLOAT_EQ(node->Time(), 100);
  Frame(3.0f);
  EXPECT_FLOAT_EQ(node->In(0)[1], 4);  // from the port again, not from last frame
  EXPECT_EQ(node->Perm(), 2);
  Set("Expression", "perm = perm + 10");
  Frame();
  EXPECT_EQ(node->Perm(), 12);
  Set("Expression", "");
  Frame(4.0f);
  EXPECT_FLOAT_EQ(node->In(0)[1], 2);
  EXPECT_FLOAT_EQ(node->Time(), 4);
}

TEST_F(ShaderNode, BeginFeedsInputsAndTheItemColor) {
  SetText("float4 VS_Program(VSInput vi) : POSITION { return mul(gWVP, float4(vi.pos + in1, 1.0)); }\n"
          "float4 PS_Program() : COLOR { return color * color2 * time; }\n");
  Set("In1", "1 2 3");
  Set("Color2", "0.5 0.5 0.5 1");
  Frame(2.0f);
  ASSERT_TRUE(node->RestoreDevice(&render));
  PassHandle pass = node->Begin();
  ASSERT_TRUE(pass);
  CFx *fx = node->GetFx();
  EXPECT_EQ(fx->GetNamedParameter("in1")->Value(), (std::vector<float>{1, 2, 3}));
  EXPECT_EQ(fx->GetNamedParameter("color2")->Value(), (std::vector<float>{0.5f, 0.5f, 0.5f, 1}));
  EXPECT_EQ(fx->GetNamedParameter("time")->Value(), std::vector<float>{2});
  node->BeginPass(pass);
  const float item[4] = {1, 0, 0, 1};
  node->SetColor(item);
  node->Commit();
  EXPECT_EQ(fx->GetNamedParameter("color")->Value(), (std::vector<float>{1, 0, 0, 1}));
  node->EndPass(pass);
  node->End();
}
