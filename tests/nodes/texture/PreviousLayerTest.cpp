// PreviousLayer: the sampling flags it offers, and the life of one layer:
// taken from the pools and held, drawn into, given back.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "nodes/BuiltinNodes.h"
#include "nodes/texture/PreviousLayerNode.h"
#include "render/Camera.h"
#include "scene/NodeFactory.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/RecordTargets.h"

namespace {
struct PreviousLayer : testing::Test {
  PreviousLayer() {
    InstallBuiltinNodes();
    factory->Init();
    node.reset(static_cast<CPreviousLayerNode *>(factory->CreateNode("PreviousLayer")));
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
  CRecordRender render{640, 480};
  FrameInfo frame;
  std::unique_ptr<CPreviousLayerNode> node;
};
}  // namespace

TEST_F(PreviousLayer, OffersAClampedTwoDimensionalTextureThatWantsMipMapsWhenAsked) {
  Update();
  EXPECT_EQ(std::pair(Color()->m_Flags, Color()->m_Mode), std::pair(0x20u, 2));
  Color()->m_Changed = false;

  WantMipMaps(true);
  Update();
  EXPECT_EQ(Color()->m_Flags, 0x28u);
  EXPECT_TRUE(Color()->m_Changed);  // samplers rebuild for the new flags
  // Before the first layer there is no picture to sample (with no target
  // for one neither: LayerDraw.LayersGoIntoTheTargetThatThePostprocessingSceneReads...).
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
  CRenderTarget *target = render.LastTarget();
  ASSERT_NE(target, nullptr);
  EXPECT_FALSE(target->m_Color->m_Flags & TEXF_Pooled) << "held: no release by anyone else recycles it";
  EXPECT_EQ(node->GetTexture(&render), target->m_Color);

  CCamera inside;
  LookAt(inside, {0, 0, -5}, {0, 0, 0}, {0, 1, 0});
  render.SetCamera(inside);
  node->EndLayer(&render);
  EXPECT_EQ(render.GetCamera()->m_Eye, before.m_Eye);
  EXPECT_TRUE(target->m_Color->m_Flags & TEXF_HasMipmaps);

  node->FreeLayer(&render);
  EXPECT_TRUE(target->m_Color->m_Flags & TEXF_Pooled);
  node->FreeLayer(&render);  // a second hand-back is no release
  EXPECT_EQ(Calls(), (std::vector<std::string>{"CreateTarget 320x240", "BeginTarget 320x240", "SetCamera",
                                               "EndTarget 320x240", "SetCamera", "GenerateMipmaps tex1",
                                               "ReleaseTarget pooled"}));
  EXPECT_EQ(node->GetTexture(&render), target->m_Color);  // the last target's
}

TEST_F(PreviousLayer, ADeviceResetDuringThePostprocessingDrawKeepsTheLayer) {
  Update();
  ASSERT_TRUE(node->BeginLayer(&render));
  node->EndLayer(&render);
  EXPECT_FALSE(render.LastTarget()->m_Color->m_Flags & TEXF_HasMipmaps) << "without mipmaps left as drawn";
  EXPECT_TRUE(render.Calls("GenerateMipmaps").empty());
  Calls();
  node->ResetDevice(&render);
  EXPECT_TRUE(Calls().empty());
  EXPECT_EQ(node->GetTexture(&render), render.LastTarget()->m_Color);
  EXPECT_FALSE(render.LastTarget()->m_Color->m_Flags & TEXF_Pooled);
  // EndLayer once more has nothing to end.
  node->EndLayer(&render);
  EXPECT_TRUE(Calls().empty());
}
