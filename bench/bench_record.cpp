// velmor-tool record at 1280x720: frames a second written into a lossless
// movie with sound, beside the same frames drawn without a movie, and the
// encoding overhead as the ratio of the two. Each figure is the difference
// of a long and a one-frame run, so start-up (loading, effect compiling,
// the window) is left out.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include "support/TempDir.h"

namespace {
constexpr int kFrames = 60, kFps = 30;

double RunSeconds(const std::string &args) {
  const std::string cmd = "cd '" VELMOR_SOURCE_ROOT "/assets' && ASAN_OPTIONS=detect_leaks=0 '" VELMOR_TOOL_BINARY
                          "' record scenes/plasma.vms --audio music/demo-track.wav --size 1280x720 --fps " +
                          std::to_string(kFps) + " " + args + " >/dev/null 2>&1";
  const auto start = std::chrono::steady_clock::now();
  const int status = std::system(cmd.c_str());
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return status == 0 ? seconds : -1.0;
}

// Seconds per frame of `args` beyond the first.
double PerFrame(const std::string &args) {
  const double one = RunSeconds("--seconds " + std::to_string(1.0 / kFps) + " " + args);
  const double many = RunSeconds("--seconds " + std::to_string(double(kFrames) / kFps) + " " + args);
  return one < 0 || many < 0 ? -1.0 : (many - one) / (kFrames - 1);
}

void BM_RecordBesideRender(benchmark::State &state) {
  if (!getenv("DISPLAY")) return state.SkipWithError("needs an X server (DISPLAY)");
  TempDir dir;
  for (auto _ : state) {
    const double render = PerFrame("--no-movie -o " + dir / "none.avi");
    const double record = PerFrame("-o " + dir / "movie.avi");
    if (render <= 0 || record <= 0) return state.SkipWithError("velmor-tool record failed");
    state.SetIterationTime(record * kFrames);
    state.counters["record_fps"] = 1.0 / record;
    state.counters["render_fps"] = 1.0 / render;
    state.counters["overhead_ratio"] = record / render;
  }
}
BENCHMARK(BM_RecordBesideRender)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);
}  // namespace

BENCHMARK_MAIN();
