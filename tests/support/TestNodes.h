#pragma once
// Small node types for graph tests: a value source, a guarded node and a
// sink, each counting how often it runs.

#include <memory>
#include <string>
#include <vector>

#include "scene/Node.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

// Out = In * 2 + time; unguarded, like the value nodes.
class CTestValueNode : public CNode {
 public:
  static CNodeInfo *CreateInfo(const char *type = "TestValue") {
    auto *info = new CNodeInfo(7, type, [] { return static_cast<CNode *>(new CTestValueNode); }, "test value");
    info->AddInPort(new CPortFloat("In", "input", 0.0f, 0.01f, -100.0f, 100.0f));
    info->AddOutPort(new CPortFloat("Out", "output", 0.0f, 0.01f, 0.0f, 1.0f));
    return info;
  }
  bool Init() override {
    m_In = InPort<CPortFloat>("In");
    m_Out = OutPort<CPortFloat>("Out");
    return true;
  }
  void Update(float time, FrameInfo *) override {
    ++m_Runs;
    UpdateInPorts(time);
    m_Out->m_Value = m_In->m_Value * 2.0f + time;
    m_Out->m_Changed = true;
  }
  CPortFloat *m_In = nullptr, *m_Out = nullptr;
  int m_Runs = 0;
};

// Runs once per step however often it is pulled, like stateful nodes.
class CTestGuardedNode : public CTestValueNode {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = CTestValueNode::CreateInfo("TestGuarded");
    info->m_Creator = [] { return static_cast<CNode *>(new CTestGuardedNode); };
    return info;
  }
  void Update(float time, FrameInfo *frame) override {
    if (m_Updated) return;
    CTestValueNode::Update(time, frame);
  }
};

// Owns node type records and nodes for one test.
struct TestGraph {
  std::vector<std::unique_ptr<CNodeInfo>> infos;
  std::vector<std::unique_ptr<CNode>> nodes;
  FrameInfo frame;

  template <typename N>
  N *Add(CNodeInfo *info, const char *name) {
    infos.emplace_back(info);
    CNode *n = info->Instantiate();
    n->m_Name = name;
    n->m_Frame = &frame;
    nodes.emplace_back(n);
    return static_cast<N *>(n);
  }
  void NewStep() {
    for (auto &n : nodes) n->m_Updated = false;
  }
};
