// The simulation nodes in their steady state: Grass on a dense mesh (cost per
// straw against the bare Verlet motion of the same points, and what drawing
// its blades costs), Asteroids and Shatter per frame; heap allocations per
// steady frame for each.
#include <cmath>
#include <string>
#include <vector>

#include "nodes/sim/AsteroidsNode.h"
#include "nodes/sim/GrassNode.h"
#include "nodes/sim/ShatterNode.h"
#include "nodes/sim/SimNodeHarness.h"
#include "render/RecordRender.h"
#include "support/CountingAllocator.h"
#include "support/RatioReporter.h"

namespace {
// A plane of side x side vertices: one straw each.
struct Meadow : SimNode<CGrassNode> {
  explicit Meadow(int side) : SimNode("Grass", {{"WindDir", "3 0 1"}}) {
    const std::string t = std::to_string(side - 1);
    Feed("Mesh", "Plane", {{"TesselateW", t.c_str()}, {"TesselateH", t.c_str()}});
    Steps(30);
  }
};

template <typename Step>
void CountAllocations(benchmark::State &state, Step step) {
  CountingAllocator::Scope allocs;
  for (int i = 0; i < 30; ++i) step();
  state.counters["allocs_per_frame"] = static_cast<double>(allocs.Allocations()) / 30.0;
}

void BM_GrassUpdate(benchmark::State &state) {
  Meadow m(static_cast<int>(state.range(0)));
  CountAllocations(state, [&] { m.Steps(1); });
  const int straws = m.node->Straws().Count();
  for (auto _ : state) m.Steps(1);
  state.counters["straws"] = straws;
  state.counters["ns_per_straw"] = benchmark::Counter(static_cast<double>(straws) * state.iterations(),
                                                      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_GrassUpdate)->Arg(64)->Arg(256)->Unit(benchmark::kMillisecond);

// Only the Verlet motion of the two moving points of as many straws.
void BM_PlainVerlet(benchmark::State &state) {
  struct P {
    CVector3 pos, prev;
  };
  std::vector<P> ps(2 * static_cast<size_t>(state.range(0) * state.range(0)), P{{0, 1, 0}, {0, 1, 0}});
  const CVector3 g{0, -4 * 0.0011f, 0};
  for (auto _ : state) {
    for (P &p : ps) {
      const CVector3 now = p.pos;
      p.pos = p.pos * 1.99f - p.prev * 0.99f + g;
      p.prev = now;
    }
    benchmark::DoNotOptimize(ps.data());
  }
}
BENCHMARK(BM_PlainVerlet)->Arg(64)->Arg(256)->Unit(benchmark::kMillisecond);

// Filling the blades of every straw into the ring of buffers.
void BM_GrassDraw(benchmark::State &state) {
  Meadow m(static_cast<int>(state.range(0)));
  CRecordRender render;
  render.m_Recording = false;
  m.node->RestoreDevice(&render);
  CGrassStraws &straws = m.node->Straws();
  CountAllocations(state, [&] { straws.Draw(&render); });
  for (auto _ : state) straws.Draw(&render);
  m.node->InvalidateDevice(&render);
}
BENCHMARK(BM_GrassDraw)->Arg(256)->Unit(benchmark::kMillisecond);

void BM_AsteroidsFrame(benchmark::State &state) {
  const std::string rocks = std::to_string(state.range(0));
  SimNode<CAsteroidsNode> a("Asteroids", {{"NumAsteroids", rocks.c_str()}});
  a.Steps(30);
  CountAllocations(state, [&] { a.Steps(1); });
  for (auto _ : state) a.Steps(1);
}
BENCHMARK(BM_AsteroidsFrame)->Arg(10)->Arg(1000)->Unit(benchmark::kMicrosecond);

// Steps while the shards fall (between rebuilds), and one rebuild.
void BM_ShatterStep(benchmark::State &state) {
  SimNode<CShatterNode> s("Shatter", {{"ShatterDelay", "0"}, {"ShatterTime", "1000"}});
  s.Steps(2);
  CountAllocations(state, [&] { s.Steps(1); });
  for (auto _ : state) s.Steps(1);
  state.counters["shards"] = s.node->Plane().Count();
}
BENCHMARK(BM_ShatterStep)->Unit(benchmark::kMicrosecond);

void BM_ShatterRebuild(benchmark::State &state) {
  CShatterPlane plane;
  plane.Rebuild(static_cast<int>(state.range(0)));
  for (auto _ : state) plane.Rebuild(static_cast<int>(state.range(0)));
  state.counters["shards"] = plane.Count();
}
BENCHMARK(BM_ShatterRebuild)->Arg(1000)->Arg(CShatterPlane::MaxPoints)->Unit(benchmark::kMillisecond);
}  // namespace

VELMOR_BENCHMARK_MAIN_WITH_RATIOS({"BM_GrassUpdate/64", "BM_PlainVerlet/64"}, {"BM_GrassUpdate/256", "BM_PlainVerlet/256"})
