// The Voronoi sweep against Boost.Polygon's exact sweep on the same sites
// (sites per millisecond), the metaball surface walk at the default and the
// largest grid (voxels visited per second), and heap allocations per steady
// frame of both node types.
#include <boost/polygon/voronoi.hpp>
#include <cmath>
#include <random>
#include <vector>

#include "nodes/sim/MetaballField.h"
#include "nodes/sim/MetaballsNode.h"
#include "nodes/sim/SimNodeHarness.h"
#include "nodes/sim/Voronoi.h"
#include "nodes/sim/VoronoiNode.h"
#include "support/CountingAllocator.h"
#include "support/RatioReporter.h"

namespace {
constexpr int kRange = 1 << 20;

std::vector<boost::polygon::point_data<int>> IntegerSites(int n) {
  std::mt19937 rng(3);
  std::uniform_int_distribution<int> c(0, kRange);
  std::vector<boost::polygon::point_data<int>> s;
  for (int i = 0; i < n; ++i) s.emplace_back(c(rng), c(rng));
  return s;
}

void BM_VoronoiSweep(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  std::vector<CVoronoi::Point> points;
  for (const auto &p : IntegerSites(n))
    points.push_back({p.x() * 2.0f / kRange - 1.0f, p.y() * 2.0f / kRange - 1.0f});
  CVoronoi voronoi;
  voronoi.GenerateVoronoi(points.data(), n, -1, 1, -1, 1);
  CountingAllocator::Scope allocs;
  for (auto _ : state) {
    voronoi.GenerateVoronoi(points.data(), n, -1, 1, -1, 1);
    benchmark::DoNotOptimize(voronoi.Edges().data());
  }
  state.counters["allocs_per_run"] = static_cast<double>(allocs.Allocations()) / state.iterations();
  state.counters["sites_per_ms"] = benchmark::Counter(static_cast<double>(n) * state.iterations() / 1000.0,
                                                      benchmark::Counter::kIsRate);
}
BENCHMARK(BM_VoronoiSweep)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

void BM_BoostVoronoi(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  const auto sites = IntegerSites(n);
  boost::polygon::voronoi_diagram<double> vd;
  for (auto _ : state) {
    vd.clear();  // a diagram must be empty before it is built again
    boost::polygon::construct_voronoi(sites.begin(), sites.end(), &vd);
    benchmark::DoNotOptimize(vd.num_edges());
  }
  state.counters["sites_per_ms"] = benchmark::Counter(static_cast<double>(n) * state.iterations() / 1000.0,
                                                      benchmark::Counter::kIsRate);
}
BENCHMARK(BM_BoostVoronoi)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

// Throws the surface away: only the walk and the field are timed.
struct DiscardSink : CMetaballField::Sink {
  VertexPNTC vertices[CMetaballField::MaxVertices];
  uint16_t indices[CMetaballField::MaxIndices];
  long long triangles = 0;
  DiscardSink() { m_Vertices = vertices, m_Indices = indices; }
  void Flush(int, int indexCount, bool) override { triangles += indexCount / 3; }
};

void BM_MetaballSurface(benchmark::State &state) {
  std::vector<MetaBall> balls;
  for (int i = 0; i < 10; ++i)
    balls.push_back({{0.5f * std::sin(i * 2.1f), 0.5f * std::cos(i * 1.3f), 0.4f * std::sin(i * 0.7f + 1)}, {}, {}, 0, 1});
  CMetaballField field;
  field.SetGrid(static_cast<int>(state.range(0)));
  DiscardSink sink;
  double voxels = 0;
  for (auto _ : state) {
    field.Polygonise(balls.data(), static_cast<int>(balls.size()), 100.0f, sink);
    voxels += field.VisitedVoxels();
  }
  state.counters["voxels"] = field.VisitedVoxels();
  state.counters["cells_per_s"] = benchmark::Counter(voxels, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_MetaballSurface)->Arg(50)->Arg(CMetaballField::MaxGrid)->Unit(benchmark::kMillisecond);

void BM_VoronoiNodeFrame(benchmark::State &state) {
  SimNode<CVoronoiNode> v("Voronoi");
  v.Set("NumPoints", "2000");
  v.Set("Expression", "pos.x = sin(pointnr + time) * 0.9; pos.y = cos(pointnr * 1.7 + time * 0.3) * 0.9;");
  v.Steps(30);
  CountingAllocator::Scope allocs;
  for (auto _ : state) v.Steps();
  state.counters["allocs_per_frame"] = static_cast<double>(allocs.Allocations()) / state.iterations();
}
BENCHMARK(BM_VoronoiNodeFrame)->Unit(benchmark::kMillisecond);

// Motion of the balls plus the surface walk a draw makes, through a sink.
void BM_MetaballsNodeFrame(benchmark::State &state) {
  SimNode<CMetaballsNode> m("Metaballs");
  m.Steps(30);
  const auto &node = *m.node;
  CMetaballField field;
  field.SetGrid(50);
  DiscardSink sink;
  field.Polygonise(node.Balls().data(), node.BallCount(), node.Level(), sink);  // the open list grows once
  CountingAllocator::Scope allocs;
  for (auto _ : state) {
    m.Steps();
    field.Polygonise(node.Balls().data(), node.BallCount(), node.Level(), sink);
  }
  state.counters["allocs_per_frame"] = static_cast<double>(allocs.Allocations()) / state.iterations();
}
BENCHMARK(BM_MetaballsNodeFrame)->Unit(benchmark::kMicrosecond);
}  // namespace

VELMOR_BENCHMARK_MAIN_WITH_RATIOS({"BM_VoronoiSweep/1000", "BM_BoostVoronoi/1000"},
                                  {"BM_VoronoiSweep/10000", "BM_BoostVoronoi/10000"})
