// PreviousLayer: its catalogue record, the sampling flags it offers, and the
// life of one layer: taken from the pools and held, drawn into, given back.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <memory>

#include "nodes/BuiltinNodes.h"
#include "nodes/texture/PreviousLayerNode.h"
#include "render/Camera.h"
#include "scene/NodeFactory.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/RecordTargets.h"

namespace {
struct PreviousLayer : testing::Test {
  PreviousLayer() {
    InstallBuiltinNodes();
    factory->Init();
    node.reset(static_cast<CPreviousLayerNode *>(factory->CreateNode("PreviousLayer")));
    node->SetTargetSource(&targets);
    node->m_Frame = &frame;
    render.SetViewport(0.0f, 0.0f, 1.0f, 1.0f);
  }
  void Update() {
    node->m_Updated = false;
    node->Update(frame.Time, &frame);
  }
  CPortTexture *Color() { return node->OutPort<CPortTexture>("Color"); }
  void WantMipMaps(bool on) { node->FindInPort("CreateMipMaps")->SetText(on ? "1" : "0"); }
  std::vector<std::string> Calls() {
    std::vector<std::string> calls = CallsStartingWith(
        render, {"CreateTarget", "BeginTarget", "EndTarget", "ReleaseTarget", "GenerateMipmaps", "SetCamera"});
    render.ClearCalls();
    return calls;
  }

  CNodeFactoryRef factory;
  CRecordTargets targets;
  CRecordRender render{640, 480};
  FrameInfo frame;
  std::unique_ptr<CPreviousLayerNode> node;
};
}  // namespace

TEST_F(PreviousLayer, CatalogueRecordSitsBeforeShaderInTheTextureGroup) {
  const CNodeInfo *info = node->m_Info;
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->m_Group, 4);
  ASSERT_EQ(info->m_InPorts.size(), 1u);
  EXPECT_EQ(info->m_InPorts[0]->m_Name, "CreateMipMaps");
  EXPECT_FALSE(static_cast<CPortBool *>(info->m_InPorts[0])->m_Value);
  ASSERT_EQ(info->m_OutPorts.size(), 1u);
  EXPECT_EQ(info->m_OutPorts[0]->m_Type, PT_Texture);  // named Color, as Color() finds it

  std::vector<std::string> order;
  for (const CNodeInfo *t : factory->Types()) order.push_back(t->m_TypeName);
  auto at = [&](const char *name) { return std::find(order.begin(), order.end(), name) - order.begin(); };
  EXPECT_EQ(at("PreviousLayer") + 1, at("Shader"));
  EXPECT_LT(at("TransformMesh"), at("PreviousLayer"));  // other texture types come between
}

TEST_F(PreviousLayer, OffersAClampedTwoDimensionalTextureThatWantsMipMapsWhenAsked) {
  Update();
  EXPECT_EQ(Color()->m_Value, node.get());
  EXPECT_EQ(Color()->m_Flags, 0x20u);
  EXPECT_EQ(Color()->m_Mode, 2);
  Color()->m_Changed = false;

  WantMipMaps(true);
  Update();
  EXPECT_EQ(Color()->m_Flags, 0x28u);
  EXPECT_TRUE(Color()->m_Changed);  // samplers rebuild for the new flags
  // Before the first layer there is no picture to sample.
  EXPECT_EQ(node->GetTexture(&render), nullptr);
}

TEST_F(PreviousLayer, ALayerIsHeldWhileDrawnAndGivenBackAfterwards) {
  WantMipMaps(true);
  Update();
  render.SetViewport(0.25f, 0.0f, 0.5f, 0.5f);
  CCamera before;
  LookAt(before, {0, 0, 5}, {1, 2, 3}, {0, 1, 0});
  render.SetCamera(before);
  render.ClearCalls();

  ASSERT_TRUE(node->BeginLayer(&render));
  CRenderTarget *target = targets.Last();
  ASSERT_NE(target, nullptr);
  // Not pooled while held: no release by anyone else recycles it.
  EXPECT_FALSE(target->m_Color->m_Flags & TEXF_Pooled);
  EXPECT_EQ(node->GetTexture(&render), target->m_Color);

  CCamera inside;
  LookAt(inside, {0, 0, -5}, {0, 0, 0}, {0, 1, 0});
  render.SetCamera(inside);
  node->EndLayer(&render);
  EXPECT_EQ(render.GetCamera()->m_Eye.x, before.m_Eye.x);
  EXPECT_EQ(render.GetCamera()->m_Eye.z, before.m_Eye.z);
  EXPECT_TRUE(target->m_Color->m_Flags & TEXF_HasMipmaps);

  node->FreeLayer(&render);
  EXPECT_TRUE(target->m_Color->m_Flags & TEXF_Pooled);
  node->FreeLayer(&render);  // a second hand-back is no release
  EXPECT_EQ(Calls(), (std::vector<std::string>{"CreateTarget 320x240", "BeginTarget 320x240", "SetCamera",
                                               "EndTarget 320x240", "SetCamera", "GenerateMipmaps tex1",
                                               "ReleaseTarget pooled"}));
  EXPECT_EQ(node->GetTexture(&render), target->m_Color);  // the last target's
}

TEST_F(PreviousLayer, WithoutMipMapsTheTargetIsLeftAsDrawn) {
  Update();
  ASSERT_TRUE(node->BeginLayer(&render));
  node->EndLayer(&render);
  node->FreeLayer(&render);
  EXPECT_FALSE(targets.Last()->m_Color->m_Flags & TEXF_HasMipmaps);
  EXPECT_TRUE(render.Calls("GenerateMipmaps").empty());
}

TEST_F(PreviousLayer, ADeviceResetDuringThePostprocessingDrawKeepsTheLayer) {
  ASSERT_TRUE(node->BeginLayer(&render));
  node->EndLayer(&render);
  render.ClearCalls();
  node->ResetDevice(&render);
  EXPECT_TRUE(Calls().empty());
  EXPECT_EQ(node->GetTexture(&render), targets.Last()->m_Color);
  EXPECT_FALSE(targets.Last()->m_Color->m_Flags & TEXF_Pooled);
  // EndLayer once more has nothing to end.
  node->EndLayer(&render);
  EXPECT_TRUE(Calls().empty());
}

TEST_F(PreviousLayer, NoTargetMeansNoLayer) {
  targets.fail = true;
  EXPECT_FALSE(node->BeginLayer(&render));
  node->EndLayer(&render);
  node->FreeLayer(&render);
  EXPECT_EQ(Calls(), std::vector<std::string>{"CreateTarget 640x480"});
  EXPECT_EQ(node->GetTexture(&render), nullptr);
}
