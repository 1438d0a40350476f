// The sound analysis of one stereo frame (both channels' spectra, bands,
// alignment) against one 1024-point complex FFT from FFTW, measured in the
// same run, and the heap allocations made per frame in steady state.

#include "audio/SoundAnalyzer.h"
#include "core/FakeClock.h"
#include "support/CountingAllocator.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

namespace {
// Something like music: a few partials that move from frame to frame, and
// a little noise.
void FillFrame(SoundFrame &frame, int index) {
  uint32_t seed = 12345u + static_cast<uint32_t>(index);
  frame.count = SoundFrame::Pairs;
  for (int n = 0; n < SoundFrame::Pairs; ++n) {
    const double t = (index * SoundFrame::Pairs + n) / 44100.0;
    seed = seed * 1664525u + 1013904223u;
    const double noise = (static_cast<double>(seed >> 8) / 16777216.0 - 0.5) * 0.05;
    const double s = 0.4 * std::sin(2 * M_PI * 80 * t) + 0.2 * std::sin(2 * M_PI * 440 * t) +
                     0.1 * std::sin(2 * M_PI * 3100 * t) + noise;
    frame.samples[2 * n] = static_cast<float>(s);
    frame.samples[2 * n + 1] = static_cast<float>(0.8 * s + 0.05 * std::sin(2 * M_PI * 660 * t));
  }
}

void BM_ProcessFrame(benchmark::State &state) {
  auto analyzer = std::make_unique<CSoundAnalyzer>();
  SoundFrame frames[8];
  for (int i = 0; i < 8; ++i) FillFrame(frames[i], i);
  analyzer->ProcessFrame(frames[0], 60.0f);  // tables built
  int i = 0;
  CountingAllocator::Scope allocations;
  for (auto _ : state) {
    analyzer->ProcessFrame(frames[i++ & 7], 60.0f);
    benchmark::DoNotOptimize(analyzer->m_Level);
  }
  state.counters["allocs/frame"] =
      static_cast<double>(allocations.Allocations()) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_ProcessFrame);

// The two kernels on their own, with every set this processor runs.
void BM_TransformPair(benchmark::State &state) {
  const SoundKernels &kernels = *AvailableSoundKernels()[state.range(0)];
  state.SetLabel(kernels.name);
  auto fft = std::make_unique<CSoundFFT>(kernels);
  SoundFrame frame;
  FillFrame(frame, 3);
  float left[576], right[576], out[2][512];
  for (int n = 0; n < 576; ++n) {
    left[n] = frame.samples[2 * n];
    right[n] = frame.samples[2 * n + 1];
  }
  for (auto _ : state) {
    fft->TransformPair(left, right, out[0], out[1]);
    benchmark::DoNotOptimize(out[0][7]);
  }
}
BENCHMARK(BM_TransformPair)->DenseRange(0, static_cast<int>(AvailableSoundKernels().size()) - 1);

void BM_Align(benchmark::State &state) {
  const SoundKernels &kernels = *AvailableSoundKernels()[state.range(0)];
  state.SetLabel(kernels.name);
  CWaveformAligner aligner(kernels);
  SoundFrame frames[8];
  for (int i = 0; i < 8; ++i) FillFrame(frames[i], i);
  float wave[2][576];
  int i = 0;
  for (auto _ : state) {
    const SoundFrame &frame = frames[i++ & 7];
    for (int n = 0; n < 576; ++n) {
      wave[0][n] = frame.samples[2 * n];
      wave[1][n] = frame.samples[2 * n + 1];
    }
    aligner.Align(wave);
    benchmark::DoNotOptimize(wave[0][0]);
  }
}
BENCHMARK(BM_Align)->DenseRange(0, static_cast<int>(AvailableSoundKernels().size()) - 1);

// One update step of the program: a poll that reads 735 pairs (1/60 s) from
// a source, frames them, and analyses what completed.
class CSteadySource final : public ISoundSource {
 public:
  CSteadySource() {
    for (uint32_t i = 0; i < 2 * Frames; ++i) m_Data[i] = static_cast<float>(std::sin(i * 0.01));
  }
  SoundResult Start(SoundMixFormat &format) override {
    format = SoundMixFormat{};
    return SoundOk();
  }
  void Stop() override {}
  SoundResult GetNextPacketSize(uint32_t &frames) override {
    frames = m_Ready ? Frames : 0;
    return SoundOk();
  }
  SoundResult GetBuffer(SoundPacket &packet) override {
    packet = SoundPacket{m_Data, Frames, false};
    return SoundOk();
  }
  SoundResult ReleaseBuffer(uint32_t) override {
    m_Ready = false;
    return SoundOk();
  }
  std::string ErrorText() const override { return {}; }
  void Refill() { m_Ready = true; }

 private:
  static constexpr uint32_t Frames = 735;
  float m_Data[2 * Frames];
  bool m_Ready = true;
};

void BM_UpdateSound(benchmark::State &state) {
  CScopedFakeClock clock;
  auto analyzer = std::make_unique<CSoundAnalyzer>();
  auto source = std::make_unique<CSteadySource>();
  CSteadySource *steady = source.get();
  analyzer->Capture().SetSource(std::move(source));
  for (int i = 0; i < 100; ++i) {  // start, and let the frame pool settle
    clock.clock.Advance(0.020);
    steady->Refill();
    analyzer->UpdateSound(60.0f);
  }
  const int framesBefore = analyzer->FrameCounter();
  CountingAllocator::Scope allocations;
  for (auto _ : state) {
    clock.clock.Advance(0.020);
    steady->Refill();
    analyzer->UpdateSound(60.0f);
  }
  const double frames = analyzer->FrameCounter() - framesBefore;
  state.counters["allocs/frame"] = frames > 0 ? static_cast<double>(allocations.Allocations()) / frames : 0.0;
  state.counters["frames/update"] = frames / static_cast<double>(state.iterations());
}
BENCHMARK(BM_UpdateSound);

void BM_FFTW_Complex1024(benchmark::State &state) {
  fftwf_complex *in = fftwf_alloc_complex(1024);
  fftwf_complex *out = fftwf_alloc_complex(1024);
  fftwf_plan plan = fftwf_plan_dft_1d(1024, in, out, FFTW_FORWARD, FFTW_MEASURE);
  for (int i = 0; i < 1024; ++i) {
    in[i][0] = static_cast<float>(std::sin(i * 0.1));
    in[i][1] = static_cast<float>(std::cos(i * 0.37));
  }
  for (auto _ : state) {
    fftwf_execute(plan);
    benchmark::DoNotOptimize(out[5][0]);
  }
  fftwf_destroy_plan(plan);
  fftwf_free(in);
  fftwf_free(out);
}
BENCHMARK(BM_FFTW_Complex1024);

// Keeps each benchmark's CPU time per iteration (the median, when repeated)
// for the ratio at the end.
class CRatioReporter : public benchmark::ConsoleReporter {
 public:
  std::map<std::string, double> ns;
  void ReportRuns(const std::vector<Run> &runs) override {
    for (const Run &r : runs) {
      const bool median = r.run_type == Run::RT_Aggregate && r.aggregate_name == "median";
      if (r.run_type == Run::RT_Iteration || median) ns[r.run_name.function_name] = r.GetAdjustedCPUTime();
    }
    ConsoleReporter::ReportRuns(runs);
  }
};
}  // namespace

int main(int argc, char **argv) {
  benchmark::Initialize(&argc, argv);
  CRatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const auto frame = reporter.ns.find("BM_ProcessFrame");
  const auto fftw = reporter.ns.find("BM_FFTW_Complex1024");
  if (frame != reporter.ns.end() && fftw != reporter.ns.end() && fftw->second > 0)
    printf("\nProcessFrame / one FFTW 1024-point complex transform (CPU time): %.2fx (%.0f ns vs %.0f ns; target 4x)\n",
           frame->second / fftw->second, frame->second, fftw->second);
  benchmark::Shutdown();
  return 0;
}
