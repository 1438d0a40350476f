// What scenes read of the analysis: spectrum, bands and their smoothing, the
// beat level, the readers' limits, and when music counts as playing.
#include "audio/SoundAnalyzer.h"
#include "core/FakeClock.h"
#include "platform/SoundScriptedSource.h"
#include "SoundTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace SoundTest;

namespace {
SoundFrame MakeFrame(const std::function<float(int, int)> &f) {
  SoundFrame frame;
  frame.count = SoundFrame::Pairs;
  for (int n = 0; n < SoundFrame::Pairs; ++n)
    for (int c = 0; c < 2; ++c) frame.samples[2 * n + c] = f(n, c);
  return frame;
}

// A sine that completes `bin` periods in 1024 samples lands on that bin.
float OnBin(int n, int bin, double amplitude = 1.0) { return Sine(n, 1024.0 / bin, amplitude); }

// Expected peak: half the amplitude times the window's sum (288), after the
// two-tap low-pass (gain cos(pi bin / 1024)) and the equalisation.
double Peak(int bin, double amplitude) {
  const double eq = -0.1 * std::log((512.0 - bin) / 512.0);
  return amplitude * std::cos(Pi * bin / 1024.0) * 144.0 * eq;
}

int ArgMax(const float *v, int n) { return static_cast<int>(std::max_element(v, v + n) - v); }
}  // namespace

TEST(SoundAnalysis, SineOnABinPeaksThereWithTheEqualisation) {
  auto analyzer = std::make_unique<CSoundAnalyzer>();
  analyzer->ProcessFrame(MakeFrame([](int n, int c) { return c == 0 ? OnBin(n, 100, 0.5) : OnBin(n, 200, 0.25); }), 60);
  const float *left = analyzer->m_Spectrum[0], *right = analyzer->m_Spectrum[1];
  EXPECT_EQ(ArgMax(left, 512), 100);
  EXPECT_EQ(ArgMax(right, 512), 200);
  EXPECT_NEAR(left[100], Peak(100, 0.5), 0.01 * Peak(100, 0.5));
  EXPECT_NEAR(right[200], Peak(200, 0.25), 0.01 * Peak(200, 0.25));
  // Each channel hears only itself.
  EXPECT_LT(left[200], 1e-3 * left[100]);
  EXPECT_LT(right[100], 1e-3 * right[200]);
  // The lowest bin is weighted 0, whatever the offset of the signal.
  analyzer->ProcessFrame(MakeFrame([](int, int) { return 0.7f; }), 60);
  EXPECT_EQ(analyzer->m_Spectrum[0][0], 0.0f);
  EXPECT_EQ(analyzer->m_Spectrum[1][0], 0.0f);
}

TEST(SoundAnalysis, BandLimitsNormalisationAndLevel) {
  const int *limits = CSoundAnalyzer::BandLimits();
  EXPECT_EQ(std::vector<int>(limits, limits + 4), (std::vector<int>{9, 35, 134, 512}));

  auto analyzer = std::make_unique<CSoundAnalyzer>();
  // A sine in each band, on the left; right has only the middle one.
  const int bins[3] = {20, 60, 300};
  for (int b = 0; b < 3; ++b) {
    analyzer->ProcessFrame(MakeFrame([&](int n, int c) { return c == 0 || b == 1 ? OnBin(n, bins[b]) : 0.0f; }), 60);
    for (int other = 0; other < 3; ++other)
      if (other != b) {
        EXPECT_LT(analyzer->m_Bands[0][0][other], 0.05f * analyzer->m_Bands[0][0][b]) << b;
      }
  }

  auto noise = [](int n, int c) { return static_cast<float>(std::sin(n * 12.9898 + c * 78.233) * 0.6); };
  analyzer->ProcessFrame(MakeFrame(noise), 60);
  const double norm[3] = {0.32678157, 0.38087377, 0.19988893};
  for (int c = 0; c < 2; ++c)
    for (int b = 0; b < 3; ++b) {
      double sum = 0;
      for (int i = limits[b]; i < limits[b + 1]; ++i) sum += analyzer->m_Spectrum[c][i];
      EXPECT_NEAR(analyzer->m_Bands[0][c][b], sum / (limits[b + 1] - limits[b]) / norm[b], 1e-4) << c << b;
    }
  const float (&v)[2][3] = analyzer->m_Bands[0];
  EXPECT_FLOAT_EQ(analyzer->m_Level, (v[0][0] + v[0][1] + v[1][0] + v[1][1]) * 0.25f);

  // Loud sound goes past 1 everywhere except through GetSpectrum.
  analyzer->ProcessFrame(MakeFrame([](int n, int) { return OnBin(n, 60, 100.0); }), 60);
  EXPECT_GT(analyzer->m_Spectrum[0][60], 1.0f);
  EXPECT_GT(analyzer->m_Bands[0][0][1], 1.0f);
  EXPECT_GT(analyzer->m_Level, 1.0f);
  EXPECT_EQ(analyzer->GetSpectrum(0, 60.0f / 255.0f), 1.0f);
}

TEST(SoundAnalysis, SmoothingFollowsTheFrameRate) {
  const float loud = 8.0f;
  for (float fps : {60.0f, 30.0f}) {
    auto a = std::make_unique<CSoundAnalyzer>();
    // Silence: every smoothed speed falls from its start of 1 by its own rate.
    a->ProcessFrame(MakeFrame([](int, int) { return 0.0f; }), fps);
    const double e = 14.0 / fps;
    EXPECT_NEAR(a->m_Bands[1][0][0], std::pow(0.5, e), 1e-5);
    EXPECT_NEAR(a->m_Bands[2][0][0], std::pow(0.91, e), 1e-5);
    EXPECT_NEAR(a->m_Bands[3][0][0], std::pow(0.96, e), 1e-5);

    // A loud low band: the fast speed rises by the quicker rate.
    a->ProcessFrame(MakeFrame([&](int n, int) { return OnBin(n, 20, loud); }), fps);
    const double v = a->m_Bands[0][0][0];
    ASSERT_GT(v, std::pow(0.5, e));
    const double r1 = std::pow(0.2, e), r2 = std::pow(0.91, e);
    EXPECT_NEAR(a->m_Bands[1][0][0], std::pow(0.5, e) * r1 + v * (1 - r1), 1e-5);
    EXPECT_NEAR(a->m_Bands[2][0][0], std::pow(0.91, e) * r2 + v * (1 - r2), 1e-5);
  }
}

TEST(SoundAnalysis, ReadersLimitTheirArguments) {
  auto a = std::make_unique<CSoundAnalyzer>();
  EXPECT_TRUE(a->GetWaveform(0, 0.5f) == 0.0f && a->GetSpectrum(0, 0.5f) == 0.0f) << "nothing analysed yet";

  a->ProcessFrame(MakeFrame([](int n, int c) { return c == 0 ? OnBin(n, 30, 0.2) : static_cast<float>(n) / 1000.0f; }), 60);
  const auto &w = a->m_Waveform;
  for (int c : {2, -2}) EXPECT_TRUE(a->GetWaveform(c, 0.5f) == 0.0f && a->GetSpectrum(c, 0.5f) == 0.0f) << c;
  EXPECT_FLOAT_EQ(a->GetWaveform(1, -1.0f), w[1][0]);
  EXPECT_FLOAT_EQ(a->GetWaveform(1, 2.0f), w[1][479]);
  EXPECT_FLOAT_EQ(a->GetWaveform(1, NAN), w[1][0]);
  EXPECT_FLOAT_EQ(a->GetWaveform(1, 0.5f), (w[1][239] + w[1][240]) * 0.5f);
  EXPECT_FLOAT_EQ(a->GetWaveform(-1, 0.25f), (a->GetWaveform(0, 0.25f) + a->GetWaveform(1, 0.25f)) * 0.5f);

  const auto &s = a->m_Spectrum;
  EXPECT_FLOAT_EQ(a->GetSpectrum(0, 2.0f), s[0][255]);
  EXPECT_FLOAT_EQ(a->GetSpectrum(0, -1.0f), s[0][0]);
  EXPECT_FLOAT_EQ(a->GetSpectrum(0, 30.0f / 255.0f), s[0][30]);
  for (float t : {0.0f, 0.1f, 0.33f, 1.0f}) EXPECT_EQ(a->GetSpectrum(-1, t), a->GetSpectrum(0, t));
  EXPECT_NE(a->GetSpectrum(1, 0.1f), a->GetSpectrum(0, 0.1f));

  EXPECT_EQ(a->Band(0, 0, 1), a->m_Bands[0][0][1]);
  EXPECT_TRUE(a->Band(4, 0, 0) == 0.0f && a->Band(0, 2, 0) == 0.0f && a->Band(0, 0, -1) == 0.0f);
  EXPECT_EQ(a->FrameCounter(), 1);
}

namespace {
class MusicState : public testing::Test {
 protected:
  void SetUp() override {
    auto source = std::make_unique<CSoundScriptedSource>();
    m_Source = source.get();
    m_Sound = std::make_unique<CSoundAnalyzer>();
    m_Sound->Capture().SetSource(std::move(source));
    m_Sound->m_CaptureSound = true;
  }
  // One update step of 20 ms, with or without a packet of music.
  void Step(bool music) {
    m_Clock.clock.Advance(0.020);
    if (music) m_Source->Queue(Samples(882, 2, [](int n, int) { return OnBin(n, 40, 0.3); }));
    m_Sound->UpdateSound(50.0f);
  }
  void Silence(double seconds) {
    for (int i = 0; i < static_cast<int>(seconds * 50 + 0.5); ++i) Step(false);
  }

  CScopedFakeClock m_Clock;
  LogCapture m_Log;
  CSoundScriptedSource *m_Source = nullptr;
  std::unique_ptr<CSoundAnalyzer> m_Sound;
};
}  // namespace

TEST_F(MusicState, MusicStopsAfterTheSilenceTimeAndReturnsAtOnce) {
  m_Sound->UpdateSound(50.0f);  // starts capture, nothing else
  EXPECT_EQ(m_Source->starts, 1);
  EXPECT_EQ(&GetSoundReader(), m_Sound.get());
  EXPECT_FALSE(m_Sound->HasMusic());

  Step(true);
  EXPECT_TRUE(m_Sound->HasMusic());
  EXPECT_GT(m_Sound->FrameCounter(), 0);
  EXPECT_GT(GetSoundReader().Level(), 0.0f);

  // Silent polls queue zero frames: the bands decay while music still plays.
  const float level = m_Sound->m_Bands[1][0][1];
  Silence(9.9);
  EXPECT_TRUE(m_Sound->HasMusic());
  EXPECT_LT(m_Sound->m_Bands[1][0][1], 0.01f * level);
  EXPECT_EQ(m_Sound->LastCount(), 0);
  Silence(0.2);
  EXPECT_FALSE(m_Sound->HasMusic());
  Step(true);
  EXPECT_TRUE(m_Sound->HasMusic());

  // The configuration switch hides the music but capture goes on.
  m_Sound->m_CaptureSound = false;
  const int frames = m_Sound->FrameCounter();
  Step(true);
  EXPECT_FALSE(m_Sound->HasMusic());
  EXPECT_GT(m_Sound->FrameCounter(), frames);

  // No silence allowed at all: the second silent update ends the music.
  m_Sound->m_CaptureSound = true;
  m_Sound->m_MaxSilenceTime = 0;
  Step(false);
  EXPECT_TRUE(m_Sound->HasMusic());
  Step(false);
  EXPECT_FALSE(m_Sound->HasMusic());

  m_Sound.reset();
  EXPECT_FALSE(GetSoundReader().HasMusic()) << "a destroyed analyser is no longer read";
}
