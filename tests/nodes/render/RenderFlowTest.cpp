// The render stages: what a chain from Screen draws, in which order, with
// which camera, and the full-screen rectangle's buffers.
#include "nodes/BuiltinNodes.h"
#include "nodes/render/RenderObjectNode.h"
#include "scene/Dag.h"
#include "scene/NodeFactory.h"
#include "support/FailingRender.h"
#include "support/LogCapture.h"
#include "support/TestDrawNodes.h"

#include <gtest/gtest.h>

#include <memory>

namespace {
// Offers an effect on its out-port.
class CEffectSourceNode : public CNode {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(5, "TestEffect", [] { return static_cast<CNode *>(new CEffectSourceNode); }, "");
    info->AddOutPort(new CPortEffect("Effect", ""));
    return info;
  }
  void Update(float, FrameInfo *) override { static_cast<CPortEffect *>(m_OutPorts[0])->m_Value = effect; }
  CPDEffect *effect = nullptr;
};

class RenderFlow : public testing::Test {
 protected:
  RenderFlow() {
    InstallBuiltinNodes();
    factory->Init();
    factory->AddNodeType(CEffectSourceNode::CreateInfo());
    factory->AddNodeType(CTestMeshNode::CreateInfo());
    dag.m_Factory = &*factory;
    render.m_Callbacks.onRender = [this] { dag.Draw(&render); };
  }
  CNode *Add(const char *type) { return dag.AddNode(type); }
  // A TestEffect node offering an effect of `passes` passes.
  void AddEffect(int passes) {
    effect = std::make_unique<CTestEffect>("E", passes);
    static_cast<CEffectSourceNode *>(Add("TestEffect"))->effect = effect.get();
  }
  void Connect(std::initializer_list<std::pair<const char *, const char *>> links) {
    for (auto [out, in] : links) ASSERT_TRUE(dag.CreateConnection(out, in)) << out << " -> " << in;
  }
  std::vector<std::string> Frame() {
    dag.Update(0.04f);
    render.ClearCalls();
    render.Render3DEnvironment(false);
    std::vector<std::string> calls;
    for (const auto &c : render.m_Calls)
      if (c.rfind("SwitchToRenderUnit", 0) && c.rfind("Present", 0) && c.rfind("Render3DEnvironment", 0) &&
          c.rfind("SetRenderState", 0))
        calls.push_back(c);
    return calls;
  }

  CNodeFactoryRef factory;
  std::unique_ptr<CTestEffect> effect;
  CDag dag;
  CRecordRender render{200, 100};
};
}  // namespace

TEST_F(RenderFlow, ScreenSetsTheViewportThenRunsTheChainFromItsFarEnd) {
  Add("Screen");
  EXPECT_TRUE(Frame().empty());  // nothing on Render: nothing drawn
  CNode *clear = Add("Clear");
  clear->FindInPort("Color")->SetText("0.5 0.25 1 1");
  dag.m_Screen->FindInPort("Viewport")->SetText("0.5 0 0.5 1");
  Connect({{"Clear1.Render", "Screen1.Render"}});
  EXPECT_EQ(Frame(), (std::vector<std::string>{"SetViewport 0.5 0 0.5 1", "Clear 0.5 0.25 1 1 1 3"}));
}

TEST_F(RenderFlow, RenderRectBuildsItsGridAndDrawsItOncePerPass) {
  Add("Screen");
  CNode *rect = Add("RenderRect");
  Add("Clear");
  AddEffect(2);
  Connect({{"RenderRect1.Render", "Screen1.Render"}, {"Clear1.Render", "RenderRect1.Render"}});
  rect->FindInPort("TesselateW")->SetText("2");
  rect->FindInPort("TesselateH")->SetText("3");
  // The first draw builds the grid; without an effect nothing more is drawn.
  EXPECT_EQ(Frame(), (std::vector<std::string>{"CreateVertexBuffer 12 0 4 vb1", "CreateIndexBuffer 36 0 ib1", "Lock vb1",
                                               "Unlock vb1", "Lock ib1", "Unlock ib1", "SetViewport 0 0 1 1",
                                               "Clear 0 0 0 1 1 3"}));
  Connect({{"TestEffect1.Effect", "RenderRect1.Effect"}});
  Frame();
  ASSERT_EQ(render.Calls("E.BeginPass").size(), 2u);
  ASSERT_EQ(render.Calls("DrawIndexedPrimitive").size(), 2u);
  EXPECT_EQ(render.Calls("DrawIndexedPrimitive")[0], "DrawIndexedPrimitive 4 0 12");
  EXPECT_TRUE(render.m_Faults.empty()) << render.m_Faults[0];

  // Where the grid's points and texture coordinates lie is pinned by their
  // pixels: Pictures.ShaderDefaultTextDrawsARadialFalloffOnARenderRect.
  const uint16_t *ix = render.IndexBuffer(1)->Indices();
  EXPECT_EQ(std::vector<uint16_t>(ix, ix + 6), (std::vector<uint16_t>{0, 4, 3, 4, 0, 1}));

  // Rebuilding smaller keeps the buffers and draws fewer triangles;
  // larger replaces them.
  rect->FindInPort("TesselateW")->SetText("1");
  ASSERT_TRUE(rect->RestoreDevice(&render));
  EXPECT_NE(render.VertexBuffer(1), nullptr);
  Frame();
  EXPECT_EQ(render.Calls("DrawIndexedPrimitive")[0], "DrawIndexedPrimitive 4 0 6");
  rect->FindInPort("TesselateW")->SetText("100000");  // clamped so 16-bit indices reach every vertex
  ASSERT_TRUE(rect->RestoreDevice(&render));
  EXPECT_EQ(render.VertexBuffer(1), nullptr);
  ASSERT_NE(render.VertexBuffer(2), nullptr);
  EXPECT_EQ(render.VertexBuffer(2)->m_Size, 256 * 4);
  // A changed port marks every unit for a rebuild before the next draw.
  rect->FindInPort("TesselateH")->m_Changed = true;
  rect->Update(0, &dag.m_FrameInfo);
  EXPECT_EQ(rect->m_DirtyUnits, ALL_UNITS);
  EXPECT_TRUE(render.m_Faults.empty());
}

TEST_F(RenderFlow, FailedBufferCreationIsReportedAndDrawsNothing) {
  LogCapture log;
  CFailingRender failing;
  failing.m_VertexBuffersLeft = 0;
  CNode *rect = Add("RenderRect");
  EXPECT_FALSE(rect->RestoreDevice(&failing));
  const std::string prefix =
      "FAILED : \"!(dObjs->m_VertexBuffer = render->CreateVertexBuffer(vertexCount, 0, VBF_PNTBTC))\" in "
      "\"nodes\\render\\RenderRectNode\"(";
  EXPECT_EQ(log.LastError().rfind(prefix, 0), 0u) << log.LastError();
}

TEST_F(RenderFlow, RenderObjectDrawsItsObjectThroughItsOwnCamera) {
  Add("Screen");
  CNode *ro = Add("RenderObject");
  Add("MeshObject");
  Add("TestMesh");
  AddEffect(1);
  Connect({{"RenderObject1.Render", "Screen1.Render"},
           {"MeshObject1.Object", "RenderObject1.Object"},
           {"TestMesh1.Mesh", "MeshObject1.Mesh"}});
  Frame();
  EXPECT_TRUE(render.Calls("E.").empty());  // no effect: no item
  Connect({{"TestEffect1.Effect", "MeshObject1.Effect"}});
  ro->FindInPort("Pos")->SetText("1 2 3");
  ro->FindInPort("Col")->SetText("0.5 1 1 1");
  Frame();
  // Its own camera, then the object at Pos with Col.
  EXPECT_EQ(render.Calls("SetCamera").size(), 1u);
  EXPECT_EQ(render.Calls("E.SetMatrix"), std::vector<std::string>{"E.SetMatrix 1"});
  EXPECT_EQ(render.Calls("E.SetColor"), std::vector<std::string>{"E.SetColor 50"});

  // ScaleByAspect stretches the camera's view (where it looks from is
  // Pictures.CubeUnderRenderObjectCoversItsProjectedSquareOverTheClearColor's).
  const CCamera &camera = static_cast<CRenderObjectNode *>(ro)->Camera();
  EXPECT_FLOAT_EQ(camera.m_View.m[0], 1.0f);
  ro->FindInPort("ScaleByAspect")->SetText("true");
  Frame();  // the draw sets Aspect to 2; the next update uses it
  Frame();
  EXPECT_FLOAT_EQ(camera.m_View.m[0], 2.0f);
}
