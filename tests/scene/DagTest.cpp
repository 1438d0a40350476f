// Graph evaluation: what one step does and in which order, warm-up, mesh
// generation, device passes, draw lists against the recording renderer,
// names, addresses and the factory.
#include "scene/Dag.h"
#include "scene/NodeFactory.h"
#include "support/LogCapture.h"
#include "support/TestDrawNodes.h"

#include <gtest/gtest.h>

namespace {
class DagTest : public testing::Test {
 protected:
  DagTest() {
    for (CNodeInfo *info : {CTestRootNode::CreateInfo(), CTestDrawNode::CreateInfo(), CTestGroupNode::CreateInfo(),
                            CTestMeshNode::CreateInfo(), CTestMeshUserNode::CreateInfo()})
      factory->AddNodeType(info);
    dag.m_Factory = &*factory;
  }
  template <typename N>
  N *Add(const char *type) {
    return static_cast<N *>(dag.AddNode(type));
  }
  void Connect(const char *out, const char *in) { ASSERT_TRUE(dag.CreateConnection(out, in)) << out << " -> " << in; }

  CNodeFactoryRef factory;
  CDag dag;
};
}  // namespace

TEST_F(DagTest, WarmupRunsHiddenStepsAndBuildsNoDrawList) {
  auto *root = Add<CTestRootNode>("Screen");
  ASSERT_EQ(dag.m_Screen, root);
  dag.m_WarmupTime = 1.0f;
  dag.Update(0.016f);
  ASSERT_EQ(root->times.size(), 31u);
  for (int i = 0; i < 30; ++i) EXPECT_TRUE(root->warmups[i]);
  EXPECT_FALSE(root->warmups.back());
  EXPECT_FLOAT_EQ(root->times[0], WARMUP_STEP);
  EXPECT_NEAR(root->times.back(), 30 * WARMUP_STEP + 0.016f, 1e-5);
  EXPECT_EQ(root->drawListBuilds, 1);
  dag.Update(0.016f);  // warmed up: one step
  EXPECT_EQ(root->times.size(), 32u);
  EXPECT_FALSE(dag.m_FrameInfo.Warmup);
}

TEST_F(DagTest, WithoutAScreenNothingRunsAndTheFirstScreenBecomesRoot) {
  auto *draw = Add<CTestDrawNode>("TestDraw");
  CRecordRender render;
  dag.Update(0.1f);
  dag.Draw(&render);
  EXPECT_EQ(dag.m_FrameInfo.Time, 0.0f);
  EXPECT_FALSE(draw->m_Updated);
  EXPECT_TRUE(render.m_Calls.empty());
  auto *first = Add<CTestRootNode>("Screen");
  auto *second = Add<CTestRootNode>("Screen");
  EXPECT_EQ(dag.m_Screen, first);
  EXPECT_EQ(second->m_Name, "Screen2");
  EXPECT_TRUE(dag.RemoveNode("Screen1"));
  EXPECT_EQ(dag.m_Screen, nullptr);
  EXPECT_FALSE(dag.RemoveNode("Screen1"));
  dag.Update(0.1f);
  EXPECT_TRUE(second->times.empty());
}

TEST_F(DagTest, StepClearsFlagsOnlyOnNodesThatRanAndRestartZeroesFeedbackScenes) {
  auto *root = Add<CTestRootNode>("Screen");
  auto *reached = Add<CTestDrawNode>("TestDraw");
  auto *unreached = Add<CTestDrawNode>("TestDraw");
  Connect("TestDraw1.Object", "Screen1.Object1");
  dag.Update(0.5f);
  EXPECT_TRUE(reached->m_Updated);
  EXPECT_FALSE(unreached->m_Updated);
  EXPECT_FALSE(reached->m_InPorts[0]->m_Changed);
  EXPECT_FALSE(reached->m_OutPorts[0]->m_Changed);
  EXPECT_TRUE(unreached->m_InPorts[0]->m_Changed);
  EXPECT_FALSE(root->m_InPorts[0]->m_Changed);
  EXPECT_FALSE(dag.m_FrameInfo.Restart);

  // Deactivate marks a restart: only a feedback scene starts again from 0.
  dag.Deactivate();
  dag.Update(0.5f);
  EXPECT_FLOAT_EQ(root->times.back(), 1.0f);
  dag.m_HasFeedback = true;
  dag.Deactivate();
  dag.Update(0.25f);
  EXPECT_FLOAT_EQ(root->times.back(), 0.25f);
  EXPECT_FLOAT_EQ(dag.m_Elapsed, 0.25f);
}

TEST_F(DagTest, MeshesAreGeneratedOnceAfterThePullAndUploadedPerUnit) {
  Add<CTestRootNode>("Screen");
  auto *mesh = Add<CTestMeshNode>("TestMesh");
  auto *user = Add<CTestMeshUserNode>("TestMeshUser");
  auto *unreached = Add<CTestDrawNode>("TestDraw");
  Connect("TestMesh1.Mesh", "TestMeshUser1.Mesh");
  // The user feeds nothing the root reads, so pull it through the root's object port.
  user->m_OutPorts[0]->m_Type = PT_Object;
  Connect("TestMeshUser1.Object", "Screen1.Object1");
  dag.Update(0.1f);
  EXPECT_EQ(mesh->generated, 1);
  EXPECT_FALSE(mesh->m_Dirty);
  EXPECT_EQ(mesh->CPDMesh::m_DirtyUnits, ALL_UNITS);
  dag.Update(0.1f);  // nothing changed
  EXPECT_EQ(mesh->generated, 1);
  mesh->FindInPort("Size")->m_Changed = true;  // as a command would
  dag.Update(0.1f);
  EXPECT_EQ(mesh->generated, 2);

  CRecordRender render;
  render.SetUnits({{0, 0, 100, 100}, {100, 0, 200, 100}});
  const int restoresBefore = mesh->restores;
  dag.Draw(&render);  // unit 0: new nodes rebuild their device objects once
  EXPECT_EQ(mesh->deviceUpdates, 1);
  EXPECT_EQ(mesh->restores, restoresBefore + 1);
  dag.Draw(&render);
  EXPECT_EQ(mesh->deviceUpdates, 1);
  render.SwitchToRenderUnit(1);
  dag.Draw(&render);
  EXPECT_EQ(mesh->deviceUpdates, 2);
  EXPECT_EQ(mesh->CPDMesh::m_DirtyUnits & 3u, 0u);

  // Activate makes every node and mesh pending again, reached or not.
  dag.Activate();
  EXPECT_TRUE(mesh->m_Dirty);
  EXPECT_EQ(unreached->m_DirtyUnits, ALL_UNITS);

  // A node that joins after frames have run has its mesh generated and
  // uploaded; the one removed is never touched again.
  auto *late = Add<CTestMeshNode>("TestMesh");
  EXPECT_TRUE(dag.RemoveNode("TestMesh1"));
  Connect("TestMesh2.Mesh", "TestMeshUser1.Mesh");
  dag.Update(0.1f);
  dag.Draw(&render);
  EXPECT_EQ(std::pair(late->generated, late->deviceUpdates), std::pair(1, 1));
}

TEST_F(DagTest, RestoreDeviceStopsAtTheFirstFailure) {
  Add<CTestRootNode>("Screen");
  auto *a = Add<CTestMeshNode>("TestMesh");
  auto *b = Add<CTestMeshNode>("TestMesh");
  auto *c = Add<CTestMeshNode>("TestMesh");
  b->failRestore = true;
  CRecordRender render;
  EXPECT_FALSE(dag.RestoreDevice(&render));
  EXPECT_EQ(a->restores, 1);
  EXPECT_EQ(b->restores, 1);
  EXPECT_EQ(c->restores, 0);
  EXPECT_EQ(a->CNode::m_DirtyUnits & 1u, 0u);
}

TEST_F(DagTest, PrepareDeviceLeavesANodeWhoseHostWorkRunsForALaterCall) {
  Add<CTestRootNode>("Screen");
  auto *busy = Add<CTestMeshNode>("TestMesh");
  auto *ready = Add<CTestMeshNode>("TestMesh");
  dag.Activate();
  busy->hostWorkDone = false;
  CRecordRender render;
  EXPECT_FALSE(dag.PrepareDevice(&render, 0.0));
  EXPECT_EQ(std::pair(busy->restores, ready->restores), std::pair(0, 1)) << "the others are readied meanwhile";
  busy->hostWorkDone = true;
  EXPECT_TRUE(dag.PrepareDevice(&render, 0.0));
  EXPECT_EQ(std::pair(busy->restores, busy->hostWorkStarts), std::pair(1, 1));
}

TEST_F(DagTest, DrawListGroupsByEffectInOrderOfFirstUse) {
  Add<CTestRootNode>("Screen");
  auto *group = Add<CTestGroupNode>("TestGroup");
  auto *a = Add<CTestDrawNode>("TestDraw");
  auto *b = Add<CTestDrawNode>("TestDraw");
  auto *c = Add<CTestDrawNode>("TestDraw");
  CTestEffect e1("E1", 2), e2("E2", 1);
  a->effect = &e1;
  b->effect = &e2;
  c->effect = &e1;
  group->FindInPort("X")->SetText("5");
  a->FindInPort("Red")->SetText("0.5");
  Connect("TestDraw1.Object", "TestGroup1.Object1");
  Connect("TestDraw2.Object", "TestGroup1.Object2");
  Connect("TestGroup1.Object", "Screen1.Object1");
  Connect("TestDraw3.Object", "Screen1.Object2");
  dag.Update(0.1f);
  CRecordRender render;
  render.ClearCalls();
  dag.m_DrawList.Draw(&render);
  const std::vector<std::string> item_a = {"E1.SetColor 50", "E1.SetMatrix 5", "SetTransform 0", "E1.Commit", "Draw TestDraw1"};
  const std::vector<std::string> item_c = {"E1.SetColor 100", "E1.SetMatrix 0", "SetTransform 0", "E1.Commit", "Draw TestDraw3"};
  std::vector<std::string> expected = {"E1.Begin"};
  for (int pass = 0; pass < 2; ++pass) {
    expected.push_back("E1.BeginPass " + std::to_string(pass));
    expected.insert(expected.end(), item_a.begin(), item_a.end());
    expected.insert(expected.end(), item_c.begin(), item_c.end());
    expected.push_back("E1.EndPass " + std::to_string(pass));
  }
  expected.insert(expected.end(), {"E1.End", "E2.Begin", "E2.BeginPass 0", "E2.SetColor 100", "E2.SetMatrix 5",
                                   "SetTransform 0", "E2.Commit", "Draw TestDraw2", "E2.EndPass 0", "E2.End"});
  EXPECT_EQ(render.m_Calls, expected);
}

TEST_F(DagTest, DrawListPoolIsReusedAcrossFramesWithoutStaleEffects) {
  CDrawList list;
  for (int i = 0; i < 350; ++i) list.NewItem()->m_Effect = reinterpret_cast<CPDEffect *>(&list);
  const size_t capacity = list.PoolCapacity();
  list.Reset();
  CDrawItem *again = list.NewItem();
  EXPECT_EQ(list.PoolCapacity(), capacity);
  EXPECT_EQ(again->matrix.m[0], 1.0f);
  EXPECT_EQ(again->m_Effect, nullptr);
}

TEST_F(DagTest, GeneratedNamesAndAddresses) {
  LogCapture log;
  auto *first = Add<CTestDrawNode>("TestDraw");
  EXPECT_EQ(first->m_Name, "TestDraw1");
  first->m_Name = "TestDraw2";
  EXPECT_EQ(Add<CTestDrawNode>("TestDraw")->m_Name, "TestDraw1");
  EXPECT_EQ(Add<CTestDrawNode>("TestDraw")->m_Name, "TestDraw3");
  EXPECT_EQ(dag.AddNode("testdraw"), nullptr);
  EXPECT_EQ(log.LastError(), "Unknown node: \"testdraw\"");
  EXPECT_EQ(dag.FindNode("TestDraw"), nullptr);

  auto *group = Add<CTestGroupNode>("TestGroup");
  std::string component = "unset";
  EXPECT_EQ(dag.FindInPort("TestGroup1.X", &component), group->FindInPort("X"));
  EXPECT_EQ(component, "");
  EXPECT_EQ(dag.FindInPort("..TestGroup1..X.y.", &component), group->FindInPort("X"));
  EXPECT_EQ(component, "y");
  EXPECT_EQ(dag.FindInPort("TestGroup1"), nullptr);
  EXPECT_EQ(dag.FindInPort("Nobody.X"), nullptr);
  EXPECT_EQ(dag.FindOutPort("TestGroup1.Object.whatever"), group->FindOutPort("Object"));
  EXPECT_EQ(dag.FindOutPort("TestGroup1.X"), nullptr);

  EXPECT_FALSE(dag.CreateConnection("TestDraw1.Nope", "TestGroup1.Object1"));
  Connect("TestDraw1.Object", "TestGroup1.Object1");
  // Removal clears the in-port whatever out-port was named.
  EXPECT_TRUE(dag.RemoveConnection("TestDraw3.Object", "TestGroup1.Object1"));
  EXPECT_FALSE(group->FindInPort("Object1")->IsConnected());
  EXPECT_FALSE(dag.RemoveConnection("TestDraw3.Object", "TestGroup1.Nope"));

  // Removing a node disconnects everything it fed.
  Connect("TestDraw1.Object", "TestGroup1.Object2");
  EXPECT_TRUE(dag.RemoveNode("TestDraw1"));
  EXPECT_FALSE(group->FindInPort("Object2")->IsConnected());
}

TEST(NodeFactory, NamesAreExactDuplicatesRefusedAndReferencesCounted) {
  LogCapture log;
  const int before = CNodeFactory::RefCount();
  {
    CNodeFactoryRef factory;
    factory->AddNodeType(CTestDrawNode::CreateInfo());
    factory->AddNodeType(CTestDrawNode::CreateInfo());
    EXPECT_EQ(log.LastError(), "Node name isn't unique (TestDraw)");
    EXPECT_EQ(factory->Types().size(), 1u);
    factory->AddNodeType(nullptr);
    EXPECT_EQ(factory->CreateNode("testdraw"), nullptr);
    EXPECT_NE(std::unique_ptr<CNode>(factory->CreateNode("TestDraw")), nullptr);
    {
      CNodeFactoryRef second;
      EXPECT_EQ(&*second, &*factory);
      EXPECT_EQ(CNodeFactory::RefCount(), before + 2);
    }
  }
  EXPECT_EQ(CNodeFactory::RefCount(), before);
  CNodeFactoryRef fresh;
  EXPECT_TRUE(fresh->Types().empty());  // the last release destroyed the old one
}
