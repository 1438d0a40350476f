// A mesh generator in a running scene: generated once after the update,
// uploaded on the draw, generated again only when one of its ports changes,
// and its buffers gone when the scene leaves the screen.
#include <gtest/gtest.h>

#include "nodes/BuiltinNodes.h"
#include "render/RecordRender.h"
#include "scene/Dag.h"
#include "scene/NodeFactory.h"
#include "scene/Port.h"
#include "support/TestDrawNodes.h"

namespace {
class CEffectSource : public CNode {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(5, "MeshFlowEffect", [] { return static_cast<CNode *>(new CEffectSource); }, "");
    info->AddOutPort(new CPortEffect("Effect", ""));
    return info;
  }
  void Update(float, FrameInfo *) override { static_cast<CPortEffect *>(m_OutPorts[0])->m_Value = &effect; }
  CTestEffect effect{"E", 1};
};
}  // namespace

TEST(MeshFlow, GeneratedOnceUploadedOnDrawAndReleasedWithTheScene) {
  InstallBuiltinNodes();
  CNodeFactoryRef factory;
  factory->Init();
  factory->AddNodeType(CEffectSource::CreateInfo());
  CDag dag;
  CRecordRender render;
  render.m_Callbacks.onRender = [&] { dag.Draw(&render); };
  dag.AddNode("Screen");
  dag.AddNode("RenderObject");
  dag.AddNode("MeshObject");
  CNode *cube = dag.AddNode("Cube");
  dag.AddNode("MeshFlowEffect");
  ASSERT_TRUE(dag.CreateConnection("RenderObject1.Render", "Screen1.Render"));
  ASSERT_TRUE(dag.CreateConnection("MeshObject1.Object", "RenderObject1.Object"));
  ASSERT_TRUE(dag.CreateConnection("Cube1.Mesh", "MeshObject1.Mesh"));
  ASSERT_TRUE(dag.CreateConnection("MeshFlowEffect1.Effect", "MeshObject1.Effect"));

  ASSERT_TRUE(dag.RestoreDevice(&render));
  dag.Activate();
  dag.Update(0.04f);
  render.Render3DEnvironment(false);
  EXPECT_EQ(render.Calls("CreateVertexBuffer"), std::vector<std::string>{"CreateVertexBuffer 24 1 4 vb1"});
  EXPECT_EQ(render.Calls("DrawIndexedPrimitive"), std::vector<std::string>{"DrawIndexedPrimitive 4 24 12"});

  // Nothing changed: drawn again from the same buffers, no upload.
  render.ClearCalls();
  dag.Update(0.04f);
  render.Render3DEnvironment(false);
  EXPECT_TRUE(render.Calls("Lock").empty());
  EXPECT_EQ(render.Calls("DrawIndexedPrimitive").size(), 1u);

  // A changed size regenerates and uploads into the buffers it has.
  CPort *size = cube->FindInPort("Size");
  size->SetText("2 2 2");
  size->m_Changed = true;  // as a command or a connection would leave it
  render.ClearCalls();
  dag.Update(0.04f);
  render.Render3DEnvironment(false);
  EXPECT_TRUE(render.Calls("Create").empty());
  EXPECT_EQ(render.Calls("Lock").size(), 2u);
  EXPECT_FLOAT_EQ(render.VertexBuffer(1)->Vertices<VertexPNTBTC>()[0].y, 1.0f);

  dag.Deactivate();
  dag.InvalidateDevice(&render);
  EXPECT_EQ(render.VertexBuffer(1), nullptr);
  EXPECT_EQ(render.IndexBuffer(1), nullptr);
  EXPECT_TRUE(render.m_Faults.empty());
}
