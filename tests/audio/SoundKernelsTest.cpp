// The analysis' inner loops, for every instruction set this processor runs:
// each must give the transform and the waveform shift that the plain
// definitions give (and so a periodic wave stands still).
#include "audio/SoundAlign.h"
#include "audio/SoundFFT.h"
#include "audio/SoundKernels.h"
#include "SoundTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

using namespace SoundTest;

TEST(SoundKernels, TheWidestSetTheProcessorRunsIsThere) {
  const auto &sets = AvailableSoundKernels();
  ASSERT_FALSE(sets.empty());
  EXPECT_STREQ(sets.front()->name, "generic");
#if defined(__x86_64__)
  // A build that lost its AVX2 unit would still work, only slower: catch it.
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) {
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_STREQ(sets[1]->name, "avx2");
  }
#endif
  if (!std::getenv("VELMOR_SOUND_KERNELS")) {
    EXPECT_EQ(&ChosenSoundKernels(), sets.back());
  }
}

class SoundKernelSet : public testing::TestWithParam<int> {
 protected:
  const SoundKernels &Kernels() const { return *AvailableSoundKernels()[GetParam()]; }
};

INSTANTIATE_TEST_SUITE_P(Available, SoundKernelSet,
                         testing::Range(0, static_cast<int>(AvailableSoundKernels().size())),
                         [](const testing::TestParamInfo<int> &info) {
                           return std::string(AvailableSoundKernels()[info.param]->name);
                         });

TEST_P(SoundKernelSet, TransformIsTheLowPassedWindowedEqualisedDft) {
  // Both channels at once must equal a direct DFT of each, low-passed, Hann
  // windowed over 576 samples and zero padded to 1024.
  float left[576], right[576];
  uint32_t seed = 7;
  auto next = [&] {
    seed = seed * 1664525u + 1013904223u;
    return static_cast<float>(seed >> 8) / 16777216.0f - 0.5f;
  };
  for (int n = 0; n < 576; ++n) {
    left[n] = next();
    right[n] = 0.3f * next() + 0.2f;
  }
  auto fft = std::make_unique<CSoundFFT>(Kernels());
  float out[2][512];
  fft->TransformPair(left, right, out[0], out[1]);
  const float *in[2] = {left, right};
  for (int c = 0; c < 2; ++c) {
    double worst = 0, largest = 0;
    for (int k = 0; k < 512; ++k) {
      double re = 0, im = 0;
      for (int n = 0; n < 576; ++n) {
        const double y = n == 0 ? in[c][0] : (in[c][n] + in[c][n - 1]) * 0.5;
        const double x = y * (0.5 + 0.5 * std::sin(n * 2 * Pi / 576 - Pi / 2));
        re += x * std::cos(2 * Pi * k * n / 1024);
        im -= x * std::sin(2 * Pi * k * n / 1024);
      }
      const double expected = -0.1 * std::log((512.0 - k) / 512.0) * std::hypot(re, im);
      worst = std::max(worst, std::fabs(out[c][k] - expected));
      largest = std::max(largest, expected);
    }
    EXPECT_LT(worst, 1e-5 * largest + 1e-6) << "channel " << c;
  }
}

namespace {
// The search as plainly described: halved copies of both in full, every
// candidate's weighted error summed in double, coarse to fine.
int ReferenceSearch(const float *current, const float *previous) {
  const int samples = 576, maxOffset = 96, octaves = 6;
  std::vector<std::vector<double>> cur{std::vector<double>(current, current + samples)};
  std::vector<std::vector<double>> old{std::vector<double>(previous, previous + 480)};
  for (int o = 1; o < octaves; ++o) {
    std::vector<double> c(cur.back().size() / 2), p(old.back().size() / 2);
    for (size_t i = 0; i < c.size(); ++i) c[i] = (cur.back()[2 * i] + cur.back()[2 * i + 1]) * 0.5;
    for (size_t i = 0; i < p.size(); ++i) p[i] = (old.back()[2 * i] + old.back()[2 * i + 1]) * 0.5;
    cur.push_back(c);
    old.push_back(p);
  }
  int lo = 0, hi = maxOffset >> (octaves - 1), best = 0;
  for (int o = octaves - 1; o >= 0; --o) {
    const int n = (samples >> o) - (maxOffset >> o);
    double bestErr = HUGE_VAL;
    best = lo;
    for (int offset = lo; offset < hi; ++offset) {
      double err = 0;
      for (int i = 0; i < n; ++i) {
        const double ramp = (i < n / 2 ? 2.0 * i : 2.0 * n - 2 - 2.0 * i) / n;
        const double w = std::clamp((ramp - 0.8) * 5 + 0.8, 0.0, 1.0);
        err += std::fabs((cur[o][i + offset] - old[o][i]) * w);
      }
      if (err < bestErr) {
        bestErr = err;
        best = offset;
      }
    }
    if (o > 0) {
      lo = std::max(2 * best - 1, 0);
      hi = std::min(2 * best + 3, maxOffset >> (o - 1));
    }
  }
  return best;
}
}  // namespace

TEST_P(SoundKernelSet, AlignmentChoosesWhatThePlainSearchChooses) {
  // Something like music: partials that beat against each other, so that the
  // best shift wanders over the whole range from frame to frame.
  CWaveformAligner aligner(Kernels());
  float wave[2][576], previous[2][576] = {};
  int previousOffset[2] = {0, 0}, distinct = 0, last = -1;
  for (int frame = 0; frame < 60; ++frame) {
    for (int i = 0; i < 576; ++i) {
      const int n = frame * 576 + i;
      wave[0][i] = Sine(n, 97.3) + Sine(n, 31.1, 0.4) + Sine(n, 7.7, 0.1);
      wave[1][i] = Sine(n, 203.9, 0.7) + Sine(n, 12.3, 0.3);
    }
    int expected[2];
    for (int c = 0; c < 2; ++c) expected[c] = ReferenceSearch(wave[c], previous[c] + previousOffset[c]);
    std::copy(&wave[0][0], &wave[0][0] + 2 * 576, &previous[0][0]);
    aligner.Align(wave);
    for (int c = 0; c < 2; ++c) {
      ASSERT_EQ(aligner.Offset(c), expected[c]) << "frame " << frame << " channel " << c;
      previousOffset[c] = expected[c];
      EXPECT_EQ(wave[c][479], previous[c][479 + expected[c]]) << "shown from the shift on";
      if (expected[c] > 0) {
        EXPECT_EQ(wave[c][575], 0.0f) << "what the shift leaves is zero";
      }
    }
    distinct += aligner.Offset(0) != last;
    last = aligner.Offset(0);
  }
  EXPECT_GT(distinct, 20) << "the frames should ask for many different shifts";
}
