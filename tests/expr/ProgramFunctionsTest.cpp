// The functions that read the program: clock, sound, random generators,
// and the small numeric helpers that come with them.

#include "ExprTestSupport.h"
#include "audio/SoundReader.h"
#include "core/FakeClock.h"
#include "core/Random.h"
#include "expr/ExprEvaluator.h"

#include <cmath>

namespace {

using ExprTest::Eval;

// Music that answers with numbers telling which value was asked for.
class FakeMusic final : public ISoundReader {
 public:
  FakeMusic() { SetSoundReader(this); }
  ~FakeMusic() override { SetSoundReader(nullptr); }
  bool HasMusic() const override { return music; }
  float Level() const override { return 0.75f; }
  float GetWaveform(int channel, float t) const override { return channel * 10.0f + t; }
  float GetSpectrum(int channel, float t) const override { return channel * 100.0f + t; }
  float Band(int speed, int channel, int band) const override { return speed * 100.0f + channel * 10.0f + band + 0.5f; }
  int FrameCounter() const override { return 1; }
  bool music = true;
};

TEST(ClockFunctions, TimeAndDateFieldsOfTheLocalClock) {
  CScopedFakeClock fake;
  fake.clock.local = WallTime{2024, 5, 17, 13, 45, 30, 250, 5};
  EXPECT_EQ(Eval("time(0)"), 13.0);
  EXPECT_EQ(Eval("time(1)"), 45.0);
  EXPECT_EQ(Eval("time(2)"), 30.0);
  EXPECT_EQ(Eval("time(3)"), 250.0);
  EXPECT_EQ(Eval("time(4)"), 0.0);
  EXPECT_EQ(Eval("time(0.000001)"), 13.0);  // within 1e-05, in single precision
  EXPECT_EQ(Eval("time(1.0001)"), 0.0);
  EXPECT_EQ(Eval("time(-1)"), 0.0);
  EXPECT_EQ(Eval("date(0)"), 2024.0);
  EXPECT_EQ(Eval("date(1)"), 5.0);
  EXPECT_EQ(Eval("date(2)"), 17.0);
  EXPECT_EQ(Eval("date(3)"), 5.0);
  EXPECT_EQ(Eval("date(2.5)"), 0.0);
  fake.clock.local.dayOfWeek = 0;
  EXPECT_EQ(Eval("date(3)"), 0.0);  // Sunday
}

TEST(ClockFunctions, AskTheClockAtEachEvaluation) {
  CScopedFakeClock fake;
  ExprTest::Language<> l;
  l.expression.Parse("time(2)");
  EXPECT_EQ(l.expression.Evaluate(), 30.0);
  fake.clock.local.second = 31;
  EXPECT_EQ(l.expression.Evaluate(), 31.0);
}

TEST(SoundFunctions, WithoutMusicTheFallbackOrZero) {
  EXPECT_EQ(Eval("beat()"), 0.0);
  EXPECT_EQ(Eval("beat(0.5)"), 0.5);
  EXPECT_EQ(Eval("band(0, 0, 0)"), 0.0);
  EXPECT_EQ(Eval("band(0, 0, 0, 7)"), 7.0);
  EXPECT_EQ(Eval("waveform(0, 0.5)"), 0.0);
  EXPECT_EQ(Eval("waveform(0, 0.5, 3)"), 3.0);
  EXPECT_EQ(Eval("spectrum(1, 0.5, 4)"), 4.0);
  EXPECT_EQ(Eval("a = 0; waveform(a = 1, a = 2); a"), 0.0);
}

TEST(SoundFunctions, BeatWithMusicIgnoresTheFallback) {
  FakeMusic music;
  EXPECT_EQ(Eval("beat()"), 0.75);
  EXPECT_EQ(Eval("a = 0; beat(a = 1) + a"), 0.75);
}

TEST(SoundFunctions, BandsByChannelSpeedAndBand) {
  FakeMusic music;
  EXPECT_EQ(Eval("band(0, 0, 0)"), 0.5);
  EXPECT_EQ(Eval("band(1, 2, 2)"), 212.5);
  EXPECT_EQ(Eval("band(-1, 0, 1)"), (1.5 + 11.5) / 2);  // mean of left and right
  EXPECT_EQ(Eval("band(2, 0, 0)"), 0.0);                // no such channel
  EXPECT_EQ(Eval("band(0, 0, 3)"), 0.0);                // no such band
  EXPECT_EQ(Eval("band(0, 0, -1)"), 0.0);
  EXPECT_EQ(Eval("band(0, 7, 0)"), 0.5);  // other speeds read the instantaneous row
  EXPECT_EQ(Eval("band(0, 3, 1)"), 301.5);
  EXPECT_EQ(Eval("band(0.9, 1.9, 2.9)"), 102.5);  // truncated toward zero
  EXPECT_EQ(Eval("band(-1.5, 0, 0)"), (0.5 + 10.5) / 2);
  EXPECT_EQ(Eval("a = 0; band(0, 0, 0, a = 1) + a"), 0.5);
  EXPECT_EQ(Eval("a = 0; band(a = a * 10 + 1, a = a * 10 + 2, a = a * 10 + 2); a"), 122.0);
}

TEST(SoundFunctions, WaveformAndSpectrumReadTheirPositionFirst) {
  FakeMusic music;
  EXPECT_EQ(Eval("waveform(1, 0.1)"), static_cast<double>(10.0f + 0.1f));
  EXPECT_EQ(Eval("spectrum(1, 0.25, 9)"), 100.25);
  EXPECT_EQ(Eval("waveform(-1, 0.5)"), -9.5);
  EXPECT_EQ(Eval("a = 0; waveform(a = a * 10 + 1, a = a * 10 + 2); a"), 21.0);
}

TEST(HelperFunctions, LengthSmoothstepAndPow) {
  EXPECT_EQ(Eval("length(3, 4)"), 5.0);
  EXPECT_EQ(Eval("length(1, 2, 2)"), 3.0);
  EXPECT_EQ(Eval("smoothstep(0, 1, 0.5)"), 0.5);
  EXPECT_EQ(Eval("smoothstep(0, 1, -1)"), 0.0);
  EXPECT_EQ(Eval("smoothstep(0, 1, 2)"), 1.0);
  EXPECT_EQ(Eval("smoothstep(0, 2, 0.5)"), 0.15625);
  float u = (0.3f - 0.1f) / (0.9f - 0.1f);
  EXPECT_EQ(Eval("smoothstep(0.1, 0.9, 0.3)"), static_cast<double>(u * u * (3.0f - 2.0f * u)));
  EXPECT_EQ(Eval("pow(2, 10)"), 1024.0);
  EXPECT_EQ(Eval("pow(10, 400)"), INFINITY);  // never fails
}

// rand(x): h = x * 0x19A7146F + 0x985B60EC in 32 bits; ((h >> 16) & 0x7FFF) / 32767.
double HashUnit(int32_t x) {
  uint32_t h = static_cast<uint32_t>(x) * 0x19A7146Fu + 0x985B60ECu;
  return ((h >> 16) & 0x7FFF) / 32767.0;
}

TEST(RandomFunctions, HashFormsAreRepeatable) {
  EXPECT_DOUBLE_EQ(Eval("rand(5)"), 0.1923276467177343);
  EXPECT_EQ(Eval("rand(5)"), HashUnit(5));
  EXPECT_EQ(Eval("rand(5.9)"), HashUnit(5));
  EXPECT_EQ(Eval("rand(-1.7)"), HashUnit(-1));
  EXPECT_EQ(Eval("srand(5)"), 2.0 * HashUnit(5) - 1.0);
  EXPECT_EQ(Eval("rand(10 ^ 20)"), HashUnit(INT32_MAX));  // saturated, not undefined
}

TEST(RandomFunctions, ReferenceFormKeepsItsStateInTheVariable) {
  ExprTest::Language<> l;
  EXPECT_DOUBLE_EQ(l.Eval("s = 0; rand(&s)"), 0.1902829065828425);
  EXPECT_EQ(l.Var("s"), -1738841876.0);  // the hash word, as a signed number
  double second = l.Eval("rand(&s)");
  EXPECT_DOUBLE_EQ(second, 0.13672292245246742);
  EXPECT_EQ(l.Var("s"), 293656384.0);
  EXPECT_EQ(l.Eval("s = 0; srand(&s)"), 2.0 * 0.1902829065828425 - 1.0);
  EXPECT_EQ(l.Eval("s = 3; rand(5, &s) + s"), HashUnit(5) + 3.0);  // a value wins
}

TEST(RandomFunctions, PlainFormsDrawFromTheCurrentState) {
  RandomState state, expected;
  SeedRandomState(state, 77);
  SeedRandomState(expected, 77);
  ExprEval::SetCurrentRandomState(&state);
  ExprTest::Language<> l;
  l.expression.Parse("rand()");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(l.expression.Evaluate(), static_cast<double>(RandomUnsigned(expected)));
  l.expression.Parse("srand()");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(l.expression.Evaluate(), static_cast<double>(RandomSigned(expected)));
  ExprEval::SetCurrentRandomState(nullptr);
}

TEST(RandomFunctions, RandomAndSrandomUseTheSharedGenerator) {
  SeedSharedRandom(1);
  EXPECT_EQ(Eval("random()"), static_cast<double>(0x852e6c16u * 2.3283064e-10f));
  SeedSharedRandom(1);
  EXPECT_EQ(Eval("random(2, 10)"), static_cast<double>(6.1619167f));
  SeedSharedRandom(1);
  EXPECT_EQ(Eval("random(99)"), static_cast<double>(0x852e6c16u * 2.3283064e-10f));
  SeedSharedRandom(1);
  EXPECT_EQ(Eval("srandom()"), static_cast<double>(static_cast<int32_t>(0x852e6c16u) * 4.656613e-10f));
}

// Two evaluators seeded alike repeat each other's rand() whatever else draws.
TEST(RandomFunctions, EachEvaluatorHasItsOwnStream) {
  CExprEvaluator first, second, other;
  for (CExprEvaluator *e : {&first, &second, &other}) {
    e->Attach();
    e->SeedRandom(42);
  }
  first.Compile("rand()");
  second.Compile("srandom(); rand()");
  other.Compile("rand() + srand() + random()");
  std::vector<double> a, b;
  for (int i = 0; i < 5; ++i) a.push_back(first.Evaluate());
  for (int i = 0; i < 5; ++i) {
    other.Evaluate();
    b.push_back(second.Evaluate());
  }
  EXPECT_EQ(a, b);
  EXPECT_NE(a[0], a[1]);
  // Seeding again repeats the sequence: what a RandomSeed port relies on.
  first.SeedRandom(42);
  EXPECT_EQ(first.Evaluate(), a[0]);
}

}  // namespace
