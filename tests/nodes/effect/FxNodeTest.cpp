// Effect files as node types: which ports a file's parameters give, how the
// folder is read, and what an instance feeds its effect in a frame.
#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include "fx/FxManager.h"
#include "nodes/effect/FxNode.h"
#include "render/RecordRender.h"
#include "render/RenderTypes.h"
#include "scene/NodeFactory.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {
const char kProgram[] = R"(
float4x4 gWVP : WORLDVIEWPROJECTION;
float4 VS(float3 p : POSITION) : POSITION { return mul(gWVP, float4(p, 1.0)); }
float4 PS() : COLOR { return gTint * gGain; }
technique T { pass p0 { VertexProgram = compile glslv VS(); FragmentProgram = compile glslf PS(); } }
)";

// An effect with one parameter of every kind a port is made for.
const char kAllKinds[] = R"(
string Info : VELMORINFO <string Description = "Every kind of port";> = "";
float gTime : TIME;
float gElapsed : ELAPSEDTIME;
float gGain <string UIName = "Gain"; string UIDesc = "How bright"; float UIMin = 0.5; float UIMax = 4; float UIStep = 0.25;> = 2;
float gPlain <string UIName = "Plain";>;
float3 gDir <string UIName = "Dir"; float3 UIMin = {-1, -2, -3}; float UIStep = 0.5;> = {1, 2, 3};
float4 gTint : DIFFUSE <string UIName = "Tint"; string UIDesc = "Color";> = {0.5, 0.25, 1, 1};
int gCount <string UIName = "Count";> = 7;
bool gFlag <string UIName = "Flag";> = false;
texture gTex : DIFFUSE <string UIName = "Image";>;
texture gLost <string UIName = "Lost";>;
sampler2D gSampler = sampler_state { Texture = <gTex>; };
)";

struct EffectFiles : testing::Test {
  EffectFiles() { manager.Init(nullptr); }
  ~EffectFiles() override { manager.Free(); }
  const CNodeInfo *Register(const std::string &name, const std::string &text) {
    dir.Write("nodes/effect/" + name + ".cgfx", text);
    CNEFx::AddNodesToFactory(*factory, (dir / "nodes/effect").c_str());
    return factory->FindType(name.c_str());
  }
  CNodeFactoryRef factory;
  TempDir dir;
  CFxManager manager;
  LogCapture log;
};

std::vector<std::string> PortNames(const std::vector<CPort *> &ports) {
  std::vector<std::string> names;
  for (const CPort *p : ports) names.push_back(p->m_Name);
  return names;
}
}  // namespace

TEST_F(EffectFiles, ParametersBecomePortsAfterTheCommonOnes) {
  const CNodeInfo *info = Register("AllKinds", std::string(kAllKinds) + kProgram);
  ASSERT_TRUE(info);
  EXPECT_EQ(info->m_Desc, "Every kind of port");
  EXPECT_EQ(info->m_Group, 5);
  EXPECT_EQ(PortNames(info->m_OutPorts), std::vector<std::string>{"Effect"});
  // Time parameters are fed by the node; a texture without semantic is refused.
  EXPECT_EQ(PortNames(info->m_InPorts),
            (std::vector<std::string>{"DepthTest", "DepthWrite", "AALine", "AlphaBlend", "SrcBlend", "DstBlend",
                                      "CullMode", "Gain", "Plain", "Dir", "Tint", "Count", "Flag", "Image"}));
  EXPECT_TRUE(log.Has("Effect: \"" + (dir / "nodes/effect/AllKinds.cgfx") + "\" Param: \"gLost\" is missing semantics"));

  // (value, min, max, step) from the annotations, or the defaults where there are none.
  auto *gain = dynamic_cast<CPortFloat *>(info->m_InPorts[7]);
  auto *plain = dynamic_cast<CPortFloat *>(info->m_InPorts[8]);
  auto *dirPort = dynamic_cast<CPortVector *>(info->m_InPorts[9]);
  auto *tint = dynamic_cast<CPortColor *>(info->m_InPorts[10]);
  auto *count = dynamic_cast<CPortInt *>(info->m_InPorts[11]);
  auto *flag = dynamic_cast<CPortBool *>(info->m_InPorts[12]);
  ASSERT_TRUE(gain && plain && dirPort && tint && count && flag);
  EXPECT_EQ(gain->m_Desc, "How bright");
  EXPECT_EQ(std::make_tuple(gain->m_Value, gain->m_Min, gain->m_Max, gain->m_Step), std::make_tuple(2.f, 0.5f, 4.f, 0.25f));
  EXPECT_EQ(std::make_tuple(plain->m_Value, plain->m_Min, plain->m_Max, plain->m_Step), std::make_tuple(0.f, 0.f, 1.f, 0.01f));
  EXPECT_EQ(dirPort->GetText(), "1 2 3");
  // One step for every axis; no UIMax gives the default.
  EXPECT_EQ(std::make_tuple(dirPort->m_Min.z, dirPort->m_Max.x, dirPort->m_Step.y), std::make_tuple(-3.f, 10000.f, 0.5f));
  EXPECT_FLOAT_EQ(tint->m_Value.g, 0.25f);
  // Int and Bool ports ignore the file's value.
  EXPECT_EQ(std::make_pair(count->m_Value, count->m_Min), std::make_pair(0, -10000));
  EXPECT_TRUE(flag->m_Value);
  EXPECT_TRUE(dynamic_cast<CPortTexture *>(info->m_InPorts[13]));
}

TEST_F(EffectFiles, TheFolderIsReadInNameOrderAndBrokenFilesAreSkipped) {
  std::string body = "float4 gTint = 1; float gGain = 1;" + std::string(kProgram);
  dir.Write("nodes/effect/Zebra.cgfx", body);
  dir.Write("nodes/effect/Apple.cgfx", body);
  dir.Write("nodes/effect/Broken.cgfx", "float4 oops(");
  dir.Write("nodes/effect/.Hidden.cgfx", body);
  dir.Write("nodes/effect/Notes.txt", body);
  size_t before = factory->Types().size();
  CNEFx::AddNodesToFactory(*factory, (dir / "nodes/effect").c_str());
  std::vector<std::string> added;
  for (size_t i = before; i < factory->Types().size(); ++i) added.push_back(factory->Types()[i]->m_TypeName);
  EXPECT_EQ(added, (std::vector<std::string>{"Apple", "Zebra"}));
  // Without annotations the description is the default and the ports nameless.
  const CNodeInfo *apple = factory->FindType("Apple");
  EXPECT_EQ(apple->m_Desc, "A simple effect");
  EXPECT_EQ(apple->m_InPorts.size(), 9u);
  EXPECT_EQ(apple->m_InPorts[7]->m_Name, "");
  EXPECT_TRUE(log.Has("Loading effect \"" + (dir / "nodes/effect/Broken.cgfx") + "\"..."));
  EXPECT_TRUE(log.Has("Failed to load effect. Skipping it"));
  // A missing folder adds nothing and is no failure.
  CNEFx::AddNodesToFactory(*factory, (dir / "nowhere").c_str());
  EXPECT_EQ(factory->Types().size(), before + 2);
}

// One instance in a frame, against the GL-free effect manager.
struct EffectInstance : EffectFiles {
  void SetUp() override {
    ASSERT_TRUE(Register("AllKinds", std::string(kAllKinds) + kProgram));
    node.reset(static_cast<CNEFx *>(factory->CreateNode("AllKinds")));
    render.m_FxManager = &manager;
    node->m_Render = &render;
    frame.Time = 12.5f;
    frame.DeltaTime = 0.25f;
  }
  void TearDown() override {
    if (node) node->InvalidateDevice(&render);
  }
  // Sets ports from their texts and runs a frame.
  void Set(std::initializer_list<std::pair<const char *, const char *>> ports) {
    for (auto [port, text] : ports) node->FindInPort(port)->SetText(text);
    node->m_Updated = false;
    node->Update(frame.Time, &frame);
  }
  const std::vector<float> &Value(const char *parameter) {
    return node->GetFx()->GetNamedParameter(parameter)->Value();
  }
  CRecordRender render{64, 64};
  FrameInfo frame;
  std::unique_ptr<CNEFx> node;
};

TEST_F(EffectInstance, RestoreLoadsTheTypesFileAndAWhiteNullTexture) {
  EXPECT_EQ(node->Begin(), nullptr) << "no device effect yet, nothing drawn";
  ASSERT_TRUE(node->RestoreDevice(&render));
  ASSERT_TRUE(node->GetFx());
  // White stand-ins for open 2D and 1D ports (what they sample is
  // Pictures.OpenTexturePortsSampleWhite's), gone with the device objects.
  ASSERT_TRUE(render.Texture(1) && render.Texture(2));
  node->InvalidateDevice(&render);
  EXPECT_FALSE(node->GetFx());
  EXPECT_FALSE(render.Texture(1));
  EXPECT_FALSE(render.Texture(2));
  render.m_FxManager = nullptr;
  EXPECT_FALSE(node->RestoreDevice(&render));
}

TEST_F(EffectInstance, AFrameFeedsTimePortValuesAndTheItemColor) {
  ASSERT_TRUE(node->RestoreDevice(&render));
  Set({{"Gain", "3"}, {"Dir", "0.5 0 -1"}, {"Tint", "0.5 1 1 0.5"}, {"Count", "4"}, {"Flag", "false"}});
  EXPECT_EQ(node->OutPort<CPortEffect>("Effect")->m_Value, node.get());

  PassHandle pass = node->Begin();
  ASSERT_TRUE(pass);
  EXPECT_EQ(Value("gTime"), std::vector<float>{12.5f});
  EXPECT_EQ(Value("gElapsed"), std::vector<float>{0.25f});
  node->BeginPass(pass);
  for (auto [name, value] : {std::pair<const char *, std::vector<float>>{"gGain", {3}},
                             {"gDir", {0.5f, 0, -1}}, {"gCount", {4}}, {"gFlag", {0}}})
    EXPECT_EQ(Value(name), value) << name;
  // The DIFFUSE color is the port's times the drawn item's.
  const float item[4] = {0.5f, 0.5f, 1, 1};
  node->SetColor(item);
  CMatrix world;
  world.m[12] = 7;
  node->SetMatrix(0, world);
  node->Commit();
  EXPECT_EQ(Value("gTint"), (std::vector<float>{0.25f, 0.5f, 1, 0.5f}));
  EXPECT_FLOAT_EQ(node->GetFx()->m_World[12], 7);
  EXPECT_EQ(node->NextPass(pass), nullptr);
  node->EndPass(pass);
  node->End();
}

TEST_F(EffectInstance, BeginAppliesTheStatePorts) {
  ASSERT_TRUE(node->RestoreDevice(&render));
  Set({{"DepthWrite", "false"}, {"SrcBlend", "1"}, {"DstBlend", "1"}, {"CullMode", "0"}});
  ASSERT_TRUE(node->Begin());
  // Alpha blending off resets the factors, then the ports set them.
  const std::pair<int, int> expected[] = {{RS_DepthTest, 1},        {RS_DepthWrite, 0},       {RS_AlphaTest, 0},
                                          {RS_SrcBlend, BLEND_One}, {RS_DstBlend, BLEND_One}, {RS_CullMode, CULL_None}};
  for (auto [state, value] : expected) EXPECT_EQ(render.m_States[state], value) << "state " << state;
  Set({{"AlphaBlend", "true"}});
  node->Begin();
  EXPECT_EQ(render.m_States[RS_AlphaTest], 1);
}
