// Nodes: how a graph is pulled (guarded versus unguarded updates, local
// evaluation through a chain), connecting by name, and the cycle guard.
#include "nodes/value/SinNode.h"
#include "support/LogCapture.h"
#include "support/TestNodes.h"

#include <gtest/gtest.h>

#include <memory>

namespace {
// A type whose Init looks up one port under a name or class it never declared.
class CMisnamedNode : public CNode {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(7, "Misnamed", [] { return static_cast<CNode *>(new CMisnamedNode); }, "");
    info->AddInPort(new CPortFloat("Valeu", "", 0, 0, 0, 1));
    return info;
  }
  bool Init() override { return InPort<CPortFloat>("Value") || InPort<CPortInt>("Valeu"); }
};

class Nodes : public testing::Test {
 protected:
  CTestValueNode *Value(const std::string &name) { return g.Add<CTestValueNode>(CTestValueNode::CreateInfo(), name.c_str()); }
  CTestGuardedNode *Guarded(const char *name) { return g.Add<CTestGuardedNode>(CTestGuardedNode::CreateInfo(), name); }
  TestGraph g;
};
}  // namespace

TEST_F(Nodes, PortsAreClonedOwnedAndInitFindsThem) {
  auto *n = Value("A");
  EXPECT_EQ(n->m_InPorts[0]->m_Node, n);
  EXPECT_TRUE(n->m_InPorts[0]->m_IsInput && !n->m_OutPorts[0]->m_IsInput);
  EXPECT_NE(n->m_InPorts[0], g.infos[0]->m_InPorts[0]);
  EXPECT_EQ(n->m_In, n->m_InPorts[0]);
  EXPECT_TRUE(n->m_DirtyUnits == ALL_UNITS && n->m_Changed);
  EXPECT_EQ(n->FindInPort("in"), nullptr);  // exact case
}

// A type whose ports Init finds makes its node silently: the every-node-type test.
TEST_F(Nodes, APortInitCannotFindIsLoggedWithItsTypeAndTheNodeIsNotMade) {
  LogCapture log;
  std::unique_ptr<CNodeInfo> info(CMisnamedNode::CreateInfo());
  EXPECT_EQ(std::unique_ptr<CNode>(info->Instantiate()), nullptr);
  EXPECT_EQ(log.errors, (std::vector<std::string>{
                            "Node type \"Misnamed\" has no in port \"Value\" of the kind it expects",
                            "Node type \"Misnamed\" has no in port \"Valeu\" of the kind it expects",
                            "Unable to initialise a node of type \"Misnamed\""}));
}

TEST_F(Nodes, UnguardedRunsPerConsumerGuardedOncePerStep) {
  auto *value = Value("Value"), *a = Value("A"), *b = Value("B");
  auto *guarded = Guarded("Guarded"), *sink = Guarded("Sink");
  // value feeds a and b; guarded feeds nothing yet.
  ASSERT_TRUE(a->Connect("In", "Out", value));
  ASSERT_TRUE(b->Connect("In", "Out", value));
  ASSERT_TRUE(sink->Connect("In", "Out", a));
  g.NewStep();
  sink->Pull(0);
  b->Pull(0);
  EXPECT_EQ(value->m_Runs, 2);

  ASSERT_TRUE(a->Connect("In", "Out", guarded));  // replaces the source
  ASSERT_TRUE(b->Connect("In", "Out", guarded));
  g.NewStep();
  sink->Pull(0);
  b->Pull(0);
  EXPECT_EQ(guarded->m_Runs, 1);
  EXPECT_TRUE(guarded->m_Updated);
}

TEST_F(Nodes, LocalEvaluationCarriesTheTimeThroughAChain) {
  auto *first = Value("First"), *second = Value("Second"), *consumer = Value("Consumer");
  second->Connect("In", "Out", first);
  consumer->Connect("In", "Out", second);
  first->m_In->m_Value = 1.0f;
  // Out(second) = (1 * 2 + t) * 2 + t for each local time t.
  for (float t : {0.0f, 0.25f, 1.0f}) {
    consumer->m_In->Update(t);
    EXPECT_FLOAT_EQ(consumer->m_In->m_Value, (2.0f + t) * 2.0f + t);
  }
  EXPECT_EQ(first->m_Runs, 3);
  EXPECT_EQ(second->m_Frame, consumer->m_Frame);
}

TEST_F(Nodes, ConnectErrorsNameTheAddressUpdateReportsChangesAndDisconnectDropsOneSource) {
  LogCapture log;
  auto *a = Value("A"), *b = Value("B");
  EXPECT_FALSE(b->Connect("In", "Out", nullptr));
  EXPECT_EQ(log.LastError(), "Connection node is null (Out -> In)");
  EXPECT_FALSE(b->Connect("Nope", "Out", a));
  EXPECT_EQ(log.LastError(), "Unknown in port (Out -> Nope)");
  EXPECT_FALSE(b->Connect("In", "Nope", a));
  EXPECT_EQ(log.LastError(), "Unknown out port (Nope -> In)");
  ASSERT_TRUE(b->Connect("In", "Out", a));
  b->m_Changed = false;
  EXPECT_TRUE(b->UpdateInPorts(0));
  EXPECT_TRUE(b->m_Changed);
  b->Disconnect(b);
  EXPECT_TRUE(b->m_In->IsConnected());
  b->Disconnect(a);
  EXPECT_FALSE(b->m_In->IsConnected());

  CNode bare;  // without ports the flag stays as it was
  bare.m_Changed = false;
  EXPECT_FALSE(bare.UpdateInPorts(0));
  EXPECT_FALSE(bare.m_Changed);
}

TEST_F(Nodes, CycleIsLoggedOnceAndCut) {
  LogCapture log;
  auto *a = Value("A"), *b = Value("B");
  auto *c = Guarded("C");
  a->Connect("In", "Out", b);
  b->Connect("In", "Out", c);
  c->Connect("In", "Out", a);
  for (int step = 0; step < 3; ++step) {
    g.NewStep();
    a->Pull(0);
  }
  ASSERT_EQ(log.errors.size(), 1u);
  EXPECT_EQ(log.errors[0], "Cycle in graph: A -> B -> C -> A. The connection back to \"A\" is not evaluated");
  EXPECT_EQ(c->m_Runs, 3);
  EXPECT_EQ(a->m_Runs, 3);
}

TEST_F(Nodes, TooDeepChainIsCutWithoutOverflowingTheStack) {
  LogCapture log;
  std::vector<CTestValueNode *> chain;
  for (int i = 0; i < MAX_PULL_DEPTH + 50; ++i) {
    chain.push_back(Value("N" + std::to_string(i)));
    if (i > 0) chain[i]->Connect("In", "Out", chain[i - 1]);
  }
  chain.back()->Pull(0);
  ASSERT_FALSE(log.errors.empty());
  EXPECT_NE(log.errors[0].find("Graph is deeper than 2000 nodes"), std::string::npos);
  EXPECT_EQ(chain[0]->m_Runs, 0);
}

TEST_F(Nodes, WaveStartsAtMinAndOffsetIsInPeriods) {
  auto *sin = g.Add<CSinNode>(CSinNode::CreateInfo(), "Sin1");
  auto *out = static_cast<CPortFloat *>(sin->FindOutPort("Value"));
  sin->FindInPort("Min")->SetText("-2");
  sin->FindInPort("Max")->SetText("4");
  sin->FindInPort("Frequency")->SetText("0.5");  // period 2 s
  const struct {
    float t, expected;
  } cases[] = {{0.0f, -2.0f}, {1.0f, 4.0f}, {0.5f, 1.0f}, {2.0f, -2.0f}, {3.0f, 4.0f}, {-1.0f, 4.0f}, {-0.5f, 1.0f}};
  for (auto c : cases) {
    sin->Update(c.t, &g.frame);
    EXPECT_NEAR(out->m_Value, c.expected, 1e-4) << "t=" << c.t;
  }
  sin->FindInPort("Offset")->SetText("0.5");  // half a period later
  sin->Update(0.0f, &g.frame);
  EXPECT_NEAR(out->m_Value, 4.0f, 1e-4);
}
