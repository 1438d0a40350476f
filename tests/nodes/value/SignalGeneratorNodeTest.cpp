// SignalGenerator: each waveform at chosen times, and the edges scenes rely
// on (square below zero at 0, inversion about Offset, the type with no wave).
#include "nodes/value/SignalGeneratorNode.h"
#include "support/TestNodes.h"

#include <gtest/gtest.h>

#include <cmath>

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
  // value = 0.5 + 3 * w(t), t = 2 * time + 0.1:
  //   sine: sin(2 pi t); square: 1 if sin(2 pi t) > 0 else -1
  //   triangle: u = t - 0.25; 1 - 4 * abs(floor(u + 0.5) - u); sawtooth: 2 * (t - floor(t + 0.5))
  //   random, 1-d simplex noise with the reference table's entries perm[0..3] = 151, 160, 137, 91, perm[255] = 180:
  //     cell(v) = int(v) if v > 0 else int(v) - 1; grad(h, x) = (-1 if h & 8 else 1) * ((h & 7) + 1) * x
  //     i = cell(t); x0 = t - i
  //     0.395 * sum((1 - d * d) ** 4 * grad(perm[(i + c) & 255], d) for c, d in ((0, x0), (1, x0 - 1)))
  const struct { float time; float expected[5]; } cases[] = {
      {0.3f, {-2.353170f, -2.5f, -1.9f, -1.3f, 0.705155f}},
      {1.05f, {3.353170f, 3.5f, 2.9f, 1.7f, 0.161101f}},
      {-0.42f, {3.494080f, 3.5f, 3.38f, 2.06f, 1.370463f}},
  };
  Generator gen;
  for (auto [port, text] : {std::pair{"Frequency", "2"}, {"Phase", "0.1"}, {"Offset", "0.5"}, {"Amplitude", "3"}})
    gen.Set(port, text);
  const char *types[] = {"Sine", "Square", "Triangle", "Sawtooth", "Random"};
  for (int k = 0; k < 5; ++k) {
    gen.Set("WaveformType", types[k]);
    for (const auto &c : cases) EXPECT_NEAR(gen.At(c.time), c.expected[k], 2e-5) << types[k] << " at " << c.time;
  }
}

TEST(SignalGenerator, ShapesAtTheirEdges) {
  const struct { const char *type; float time, value; } edges[] = {{"Square", 0, -1},  // sin(0) is not above 0
               {"Square", 0.25f, 1},     {"Sawtooth", 0, 0},    {"Sawtooth", 0.49f, 0.98f}, {"Sawtooth", 0.51f, -0.98f},
               {"Triangle", 0, 0},       {"Triangle", 0.25f, 1}, {"Triangle", 0.75f, -1},  {"Random", 0, 0}};
  Generator gen;
  for (const auto &e : edges) {
    gen.Set("WaveformType", e.type);
    const float exact = e.value == std::round(e.value) ? 0 : 1e-5f;
    EXPECT_NEAR(gen.At(e.time), e.value, exact) << e.type << " at " << e.time;
  }
}

TEST(SignalGenerator, InvertMirrorsAboutOffsetAndTypeFiveIsFlat) {
  Generator gen;
  gen.Set("Offset", "1");
  gen.Set("Invert", "on");
  EXPECT_FLOAT_EQ(gen.At(0.0f), 1.0f);
  EXPECT_LT(gen.At(0.01f), 1.0f);
  EXPECT_NEAR(gen.At(0.25f), 0.0f, 1e-6);

  gen.Set("WaveformType", "9");  // the range stops at 5, which has no wave
  EXPECT_EQ(static_cast<CPortInt *>(gen.node->FindInPort("WaveformType"))->m_Value, 5);
  EXPECT_EQ(gen.At(0.3f), 1.0f);
  EXPECT_EQ(gen.At(0.8f), 1.0f);
}
