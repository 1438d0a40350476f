// The grid simulations at a step per frame: the liquid at 128 x 128 cells
// with its default 10000 particles, the Turing pattern at its default
// 256 x 256, each with heap allocations per steady frame, against the
// simplest pass of the same shape (one weighted splat of the particles, one
// ring average of the image).
#include <vector>

#include "nodes/sim/Fluid2dNode.h"
#include "nodes/sim/SimNodeHarness.h"
#include "nodes/sim/TuringPatternNode.h"
#include "support/CountingAllocator.h"
#include "support/RatioReporter.h"

namespace {
template <typename N>
void StepEveryFrame(benchmark::State &state, SimNode<N> &sim) {
  sim.Steps(10);  // the sizes are reached
  CountingAllocator::Scope allocs;
  sim.Steps(30);
  state.counters["allocs_per_frame"] = static_cast<double>(allocs.Allocations()) / 30.0;
  for (auto _ : state) sim.Steps(1);
}

void BM_Fluid2dStep(benchmark::State &state) {
  SimNode<CFluid2dNode> fluid("Fluid2d", {{"GridCellsX", "128"}, {"GridCellsY", "128"}});
  StepEveryFrame(state, fluid);
  state.counters["particles"] = static_cast<double>(fluid.node->Fluid().Particles().size());
}
BENCHMARK(BM_Fluid2dStep)->Unit(benchmark::kMicrosecond);

// Each of 10000 particles adds a weight to its nine nodes of 128 x 128.
void BM_PlainSplat(benchmark::State &state) {
  std::vector<float> grid(128 * 128);
  std::vector<float> xs(10000), ys(10000);
  for (int i = 0; i < 10000; ++i) xs[i] = 40 + (i % 100) * 0.5f, ys[i] = 40 + (i / 100) * 0.5f;
  for (auto _ : state) {
    for (int i = 0; i < 10000; ++i) {
      const int cx = static_cast<int>(xs[i]), cy = static_cast<int>(ys[i]);
      const float fx = xs[i] - cx, fy = ys[i] - cy;
      for (int j = 0; j < 3; ++j)
        for (int k = 0; k < 3; ++k) grid[(cy + j) * 128 + cx + k] += fx * fy;
    }
    benchmark::DoNotOptimize(grid.data());
  }
}
BENCHMARK(BM_PlainSplat)->Unit(benchmark::kMicrosecond);

void BM_TuringPatternStep(benchmark::State &state) {
  SimNode<CTuringPatternNode> turing("TuringPattern");
  StepEveryFrame(state, turing);
}
BENCHMARK(BM_TuringPatternStep)->Unit(benchmark::kMicrosecond);

// One average of nine wrapped samples for every cell of 256 x 256.
void BM_PlainRingAverage(benchmark::State &state) {
  constexpr int w = 256;
  std::vector<float> in(w * w, 0.5f), out(w * w);
  const int dx[9] = {2, 1, 0, -1, -2, -1, 0, 1, 2}, dy[9] = {0, 1, 2, 1, 0, -1, -2, -1, 1};
  for (auto _ : state) {
    for (int k = 0; k < 9; ++k)
      for (int y = 0; y < w; ++y)
        for (int x = 0; x < w; ++x) out[y * w + x] += in[((y + dy[k]) & (w - 1)) * w + ((x + dx[k]) & (w - 1))];
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_PlainRingAverage)->Unit(benchmark::kMicrosecond);
}  // namespace

VELMOR_BENCHMARK_MAIN_WITH_RATIOS({"BM_Fluid2dStep", "BM_PlainSplat"}, {"BM_TuringPatternStep", "BM_PlainRingAverage"})
