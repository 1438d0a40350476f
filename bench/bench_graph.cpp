// Pulling values through ports, and whole frames of a scene graph, with the
// heap allocations of the steady state counted.
#include <cmath>
#include <memory>
#include <vector>

#include "nodes/value/SinNode.h"
#include "render/RecordRender.h"
#include "scene/Dag.h"
#include "scene/NodeFactory.h"
#include "support/CountingAllocator.h"
#include "support/RatioReporter.h"
#include "support/TestDrawNodes.h"
#include "support/TestNodes.h"

namespace {
constexpr int kNodes = 1000;

// A chain of Sin nodes, each one's value driving the next one's offset: one
// pull of the last visits every node once.
void BM_PullValueChain(benchmark::State &state) {
  TestGraph g;
  std::vector<CNode *> chain;
  for (int i = 0; i < kNodes; ++i) {
    chain.push_back(g.Add<CSinNode>(CSinNode::CreateInfo(), "Sin"));
    if (i > 0) chain[i]->Connect("Offset", "Value", chain[i - 1]);
  }
  float t = 0.0f;
  chain.back()->Pull(t);  // first pull outside the count
  // Counted over plain pulls, away from the harness's own bookkeeping.
  CountingAllocator::Scope allocs;
  for (int i = 0; i < 1000; ++i) {
    g.NewStep();
    chain.back()->Pull(t += 0.01f);
  }
  state.counters["allocs_per_pull"] = static_cast<double>(allocs.Allocations()) / 1000.0;
  for (auto _ : state) {
    t += 0.01f;
    g.NewStep();
    chain.back()->Pull(t);
    benchmark::DoNotOptimize(chain.back()->m_OutPorts[0]);
  }
  state.counters["ns_per_node"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kNodes, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_PullValueChain)->Unit(benchmark::kMicrosecond);

// The same arithmetic on plain floats: what the ports and pulls add on top.
void BM_PlainSinChain(benchmark::State &state) {
  float t = 0.0f;
  for (auto _ : state) {
    t += 0.01f;
    float offset = 0.0f;
    for (int i = 0; i < kNodes; ++i) {
      const float p = 1.0f, x = t + p * offset;
      const float y = x > p ? x - std::floor(x / p) * p : (x < 0 ? std::floor((p - x) / p) * p + x : x);
      offset = (std::sin(6.2831855f * y / p - 1.5707964f) + 1.0f) * 0.5f;
    }
    benchmark::DoNotOptimize(offset);
  }
}
BENCHMARK(BM_PlainSinChain)->Unit(benchmark::kMicrosecond);

// A binary tree of groups over drawing leaves, about 1000 nodes, with four
// effects: update, draw list build and draw against the recorder.
struct FrameScene {
  CNodeFactoryRef factory;
  CDag dag;
  CTestEffect effects[4] = {{"A", 1}, {"B", 2}, {"C", 1}, {"D", 1}};
  CRecordRender render{1280, 720};

  FrameScene() {
    dag.m_Factory = &*factory;
    factory->AddNodeType(CTestRootNode::CreateInfo());
    factory->AddNodeType(CTestDrawNode::CreateInfo());
    factory->AddNodeType(CTestGroupNode::CreateInfo());
    render.m_Recording = false;
    dag.AddNode("Screen");
    std::vector<CNode *> level;
    for (int i = 0; i < 500; ++i) {
      auto *leaf = static_cast<CTestDrawNode *>(dag.AddNode("TestDraw"));
      leaf->effect = &effects[i % 4];
      level.push_back(leaf);
    }
    while (level.size() > 1) {
      std::vector<CNode *> next;
      for (size_t i = 0; i < level.size(); i += 2) {
        CNode *group = dag.AddNode("TestGroup");
        group->Connect("Object1", "Object", level[i]);
        if (i + 1 < level.size()) group->Connect("Object2", "Object", level[i + 1]);
        next.push_back(group);
      }
      level = next;
    }
    dag.m_Screen->Connect("Object1", "Object", level[0]);
    static_cast<CTestRootNode *>(dag.m_Screen)->record = false;
    render.m_Callbacks.onRender = [this] { dag.Draw(&render); };
  }
};

void BM_SceneFrame(benchmark::State &state) {
  FrameScene s;
  for (int i = 0; i < 3; ++i) {  // warm: pools and group lists reach their size
    s.dag.Update(0.033f);
    s.render.Render3DEnvironment(false);
  }
  CountingAllocator::Scope allocs;
  for (int i = 0; i < 1000; ++i) {
    s.dag.Update(0.033f);
    s.render.Render3DEnvironment(false);
  }
  state.counters["allocs_per_frame"] = static_cast<double>(allocs.Allocations()) / 1000.0;
  for (auto _ : state) {
    s.dag.Update(0.033f);
    s.render.Render3DEnvironment(false);
  }
  const double nodes = static_cast<double>(s.dag.m_Nodes.size());
  state.counters["nodes"] = nodes;
  state.counters["ns_per_node"] = benchmark::Counter(static_cast<double>(state.iterations()) * nodes,
                                                     benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_SceneFrame)->Unit(benchmark::kMicrosecond);

// The update half alone, as the baseline of the whole frame.
void BM_SceneUpdateOnly(benchmark::State &state) {
  FrameScene s;
  s.dag.Update(0.033f);
  for (auto _ : state) s.dag.Update(0.033f);
}
BENCHMARK(BM_SceneUpdateOnly)->Unit(benchmark::kMicrosecond);
}  // namespace

VELMOR_BENCHMARK_MAIN_WITH_RATIOS({"BM_PullValueChain", "BM_PlainSinChain"}, {"BM_SceneFrame", "BM_SceneUpdateOnly"})
