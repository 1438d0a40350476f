// SignalGenerator: each waveform at chosen times, the sign conventions that
// scenes rely on (square below zero at 0, inversion about Offset), and the
// wave type that has no wave.
#include "nodes/value/SignalGeneratorNode.h"
#include "support/TestNodes.h"

#include <gtest/gtest.h>

namespace {
struct Generator {
  TestGraph g;
  CNode *node = g.Add<CSignalGeneratorNode>(CSignalGeneratorNode::CreateInfo(), "SignalGenerator1");
  void Set(const char *port, const char *text) { node->FindInPort(port)->SetText(text); }
  float At(float time) {
    node->Update(time, &g.frame);
    return static_cast<CPortFloat *>(node->FindOutPort("Value"))->m_Value;
  }
};
}  // namespace

TEST(SignalGenerator, WaveformsFollowFrequencyPhaseOffsetAndAmplitude) {
  // t = 2 * time + 0.1; value = 0.5 + 3 * w(t):
  //   def wave(k, t):  # k: 0 sine, 1 square, 2 triangle, 3 sawtooth
  //     if k == 0: return math.sin(2 * math.pi * t)
  //     if k == 1: return 1 if math.sin(2 * math.pi * t) > 0 else -1
  //     if k == 2: u = t - 0.25; return 1 - 4 * abs(math.floor(u + 0.5) - u)
  //     return 2 * (t - math.floor(t + 0.5))
  const struct {
    float time;
    float expected[4];
  } cases[] = {
      {0.3f, {-2.353170f, -2.5f, -1.9f, -1.3f}},
      {1.05f, {3.353170f, 3.5f, 2.9f, 1.7f}},
      {-0.42f, {3.494080f, 3.5f, 3.38f, 2.06f}},
  };
  Generator gen;
  gen.Set("Frequency", "2");
  gen.Set("Phase", "0.1");
  gen.Set("Offset", "0.5");
  gen.Set("Amplitude", "3");
  const char *types[] = {"Sine", "Square", "Triangle", "Sawtooth"};
  for (int k = 0; k < 4; ++k) {
    gen.Set("WaveformType", types[k]);
    for (const auto &c : cases) EXPECT_NEAR(gen.At(c.time), c.expected[k], 2e-5) << types[k] << " at " << c.time;
  }
}

TEST(SignalGenerator, ShapesAtTheirEdges) {
  Generator gen;
  gen.Set("WaveformType", "Square");
  EXPECT_EQ(gen.At(0.0f), -1.0f);  // sin(0) is not above 0
  EXPECT_EQ(gen.At(0.25f), 1.0f);

  gen.Set("WaveformType", "Sawtooth");  // -1 to 1 within each cycle
  EXPECT_EQ(gen.At(0.0f), 0.0f);
  EXPECT_NEAR(gen.At(0.49f), 0.98f, 1e-5);
  EXPECT_NEAR(gen.At(0.51f), -0.98f, 1e-5);

  gen.Set("WaveformType", "Triangle");  // in phase with the sine
  EXPECT_EQ(gen.At(0.0f), 0.0f);
  EXPECT_EQ(gen.At(0.25f), 1.0f);
  EXPECT_EQ(gen.At(0.75f), -1.0f);
}

TEST(SignalGenerator, InvertMirrorsAboutOffset) {
  Generator gen;
  gen.Set("Offset", "1");
  gen.Set("Invert", "on");
  EXPECT_FLOAT_EQ(gen.At(0.0f), 1.0f);
  EXPECT_LT(gen.At(0.01f), 1.0f);
  EXPECT_NEAR(gen.At(0.25f), 0.0f, 1e-6);
}

TEST(SignalGenerator, TheTypeBeyondTheNamedOnesGivesOffset) {
  Generator gen;
  gen.Set("WaveformType", "9");  // the range stops at 5, which has no wave
  EXPECT_EQ(static_cast<CPortInt *>(gen.node->FindInPort("WaveformType"))->m_Value, 5);
  gen.Set("Offset", "-2.5");
  EXPECT_EQ(gen.At(0.3f), -2.5f);
  EXPECT_EQ(gen.At(0.8f), -2.5f);
}
