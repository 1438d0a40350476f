// Particles in steady state (as many born as die each frame) at 10k, 100k
// and the port's maximum rate: update cost per particle and heap
// allocations per frame, against the bare motion arithmetic.
#include <memory>
#include <string>
#include <vector>

#include "nodes/BuiltinNodes.h"
#include "nodes/object/ParticlesNode.h"
#include "render/Matrix.h"
#include "scene/NodeFactory.h"
#include "scene/Port.h"
#include "support/CountingAllocator.h"
#include "support/RatioReporter.h"

namespace {
constexpr float kStep = 0.033333335f;

// A rate of `n` a second and a life of one second: about n alive.
struct SteadyParticles {
  explicit SteadyParticles(int n) {
    InstallBuiltinNodes();
    factory->Init();
    node.reset(static_cast<CParticlesNode *>(factory->CreateNode("Particles")));
    node->FindInPort("ParticlesPerSec")->SetText(std::to_string(n).c_str());
    node->FindInPort("TimeToLive")->SetText("1");
    node->FindInPort("TimeToLiveVar")->SetText("0");
    node->FindInPort("SpreadMax")->SetText("30");
    for (int i = 0; i < 60; ++i) Step();  // two lives: the pool has grown for good
  }
  void Step() {
    frame.DeltaTime = kStep;
    frame.Time += kStep;
    node->m_Updated = false;
    node->Update(frame.Time, &frame);
    for (CPort *p : node->m_InPorts) p->m_Changed = false;
  }
  CNodeFactoryRef factory;
  FrameInfo frame;
  std::unique_ptr<CParticlesNode> node;
};

void BM_ParticlesUpdate(benchmark::State &state) {
  SteadyParticles p(static_cast<int>(state.range(0)));
  CountingAllocator::Scope allocs;
  for (int i = 0; i < 30; ++i) p.Step();
  state.counters["allocs_per_frame"] = static_cast<double>(allocs.Allocations()) / 30.0;
  double particles = 0;
  for (auto _ : state) {
    p.Step();
    particles += p.node->LiveCount();
  }
  state.counters["live"] = p.node->LiveCount();
  state.counters["ns_per_particle"] =
      benchmark::Counter(particles, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_ParticlesUpdate)->Arg(10000)->Arg(100000)->Arg(CParticlesNode::MaxParticles)->Unit(benchmark::kMillisecond);

// Only the motion of the same number of particles in a plain array.
void BM_PlainParticleMotion(benchmark::State &state) {
  struct P {
    CVector3 position, velocity;
  };
  std::vector<P> ps(static_cast<size_t>(state.range(0)), P{{0, 0, 0}, {0, 1, 0}});
  const CVector3 g{0, -9.8f, 0};
  for (auto _ : state) {
    for (P &p : ps) {
      p.position = p.position + p.velocity * kStep;
      p.velocity = p.velocity + g * kStep;
    }
    benchmark::DoNotOptimize(ps.data());
  }
}
BENCHMARK(BM_PlainParticleMotion)->Arg(10000)->Arg(100000)->Arg(CParticlesNode::MaxParticles)->Unit(benchmark::kMillisecond);
}  // namespace

VELMOR_BENCHMARK_MAIN_WITH_RATIOS({"BM_ParticlesUpdate/10000", "BM_PlainParticleMotion/10000"},
                                  {"BM_ParticlesUpdate/100000", "BM_PlainParticleMotion/100000"},
                                  {"BM_ParticlesUpdate/1000000", "BM_PlainParticleMotion/1000000"})
