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
using ExprTest::ExpectValues;

// Music whose values tell which one was asked for.
class FakeMusic final : public ISoundReader {
 public:
  FakeMusic() { SetSoundReader(this); }
  ~FakeMusic() override { SetSoundReader(nullptr); }
  bool HasMusic() const override { return true; }
  float Level() const override { return 0.75f; }
  float GetWaveform(int channel, float t) const override { return channel * 10.0f + t; }
  float GetSpectrum(int channel, float t) const override { return channel * 100.0f + t; }
  float Band(int speed, int channel, int band) const override { return speed * 100.0f + channel * 10.0f + band + 0.5f; }
  int FrameCounter() const override { return 1; }
};

TEST(ClockFunctions, FieldsOfTheLocalClockAskedAtEachCall) {
  CScopedFakeClock fake;
  fake.clock.local = WallTime{2024, 5, 17, 13, 45, 30, 250, 5};
  ExpectValues({{"time(0)", 13}, {"time(1)", 45}, {"time(2)", 30}, {"time(3)", 250}, {"time(4)", 0},
                {"time(0.000001)", 13}, {"time(1.0001)", 0}, {"time(-1)", 0}, {"date(0)", 2024}, {"date(1)", 5},
                {"date(2)", 17}, {"date(3)", 5}, {"date(2.5)", 0}});
  fake.clock.local.dayOfWeek = 0;
  EXPECT_EQ(Eval("date(3)"), 0.0);  // Sunday
  ExprTest::Language<> l;
  l.expression.Parse("time(2)");
  fake.clock.local.second = 31;
  EXPECT_EQ(l.expression.Evaluate(), 31.0);
}

TEST(SoundFunctions, WithoutMusicTheFallbackOrZero) {
  ExpectValues({{"beat()", 0}, {"beat(0.5)", 0.5}, {"band(0, 0, 0)", 0}, {"band(0, 0, 0, 7)", 7},
                {"waveform(0, 0.5)", 0}, {"waveform(0, 0.5, 3)", 3}, {"spectrum(1, 0.5, 4)", 4},
                {"a = 0; waveform(a = 1, a = 2); a", 0}});
}

TEST(SoundFunctions, WithMusic) {
  FakeMusic music;
  ExpectValues({{"beat()", 0.75},
                {"a = 0; beat(a = 1) + a", 0.75},  // the fallback is not evaluated
                {"band(0, 0, 0)", 0.5},
                {"band(1, 2, 2)", 212.5},
                {"band(-1, 0, 1)", (1.5 + 11.5) / 2},  // mean of left and right
                {"band(2, 0, 0)", 0},                  // no such channel
                {"band(0, 0, 3)", 0},                  // no such band
                {"band(0, 7, 0)", 0.5},                // other speeds read the instantaneous row
                {"band(0, 3, 1)", 301.5},
                {"band(0.9, 1.9, 2.9)", 102.5},  // truncated toward zero
                {"a = 0; band(0, 0, 0, a = 1) + a", 0.5},
                {"a = 0; band(a = a * 10 + 1, a = a * 10 + 2, a = a * 10 + 2); a", 122},
                {"waveform(1, 0.1)", 10.0f + 0.1f},  // t in single precision
                {"spectrum(1, 0.25, 9)", 100.25},
                {"a = 0; waveform(a = a * 10 + 1, a = a * 10 + 2); a", 21}});  // t first
}

TEST(HelperFunctions, LengthSmoothstepAndPow) {
  float u = (0.3f - 0.1f) / (0.9f - 0.1f);
  ExpectValues({{"length(3, 4)", 5}, {"length(1, 2, 2)", 3}, {"smoothstep(0, 1, 0.5)", 0.5},
                {"smoothstep(0, 1, -1)", 0}, {"smoothstep(0, 1, 2)", 1}, {"smoothstep(0, 2, 0.5)", 0.15625},
                {"smoothstep(0.1, 0.9, 0.3)", u * u * (3.0f - 2.0f * u)}, {"pow(2, 10)", 1024},
                {"pow(10, 400)", INFINITY}});
}

// Pinned from h = x * 0x19A7146F + 0x985B60EC in 32 bits, ((h >> 16) & 0x7FFF) / 32767.
TEST(RandomFunctions, HashAndReferenceForms) {
  const double r5 = 0.1923276467177343, rMinus1 = 0.9898983733634449;
  ExpectValues({{"rand(5)", r5}, {"rand(5.9)", r5}, {"rand(-1.7)", rMinus1}, {"srand(5)", 2 * r5 - 1},
                {"rand(10 ^ 20)", rMinus1},  // saturated to INT32_MAX, which hashes like -1
                {"s = 0; rand(&s)", 0.1902829065828425}, {"s = 0; rand(&s); s", -1738841876},
                {"s = 0; rand(&s); rand(&s)", 0.13672292245246742}, {"s = 0; rand(&s); rand(&s); s", 293656384},
                {"s = 0; srand(&s)", 2 * 0.1902829065828425 - 1},
                {"s = 3; rand(5, &s) + s", r5 + 3}});  // a value wins over a reference
}

TEST(RandomFunctions, PlainFormsDrawFromTheCurrentState) {
  RandomState state, expected;
  SeedRandomState(state, 77);
  SeedRandomState(expected, 77);
  ExprEval::SetCurrentRandomState(&state);
  ExprTest::Language<> l;
  l.expression.Parse("rand()");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(l.expression.Evaluate(), RandomUnsigned(expected));
  l.expression.Parse("srand()");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(l.expression.Evaluate(), RandomSigned(expected));
  ExprEval::SetCurrentRandomState(nullptr);
}

TEST(RandomFunctions, RandomAndSrandomUseTheSharedGenerator) {
  const uint32_t kFirstWordOfSeed1 = 0x852e6c16u;
  for (auto [text, value] : std::vector<std::pair<const char *, float>>{
           {"random()", kFirstWordOfSeed1 * 2.3283064e-10f},
           {"random(99)", kFirstWordOfSeed1 * 2.3283064e-10f},  // one argument counts as none
           {"random(2, 10)", 6.1619167f},
           {"srandom()", static_cast<int32_t>(kFirstWordOfSeed1) * 4.656613e-10f}}) {
    SeedSharedRandom(1);
    EXPECT_EQ(Eval(text), value) << text;
  }
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
  first.SeedRandom(42);  // what a RandomSeed port does before each evaluation
  EXPECT_EQ(first.Evaluate(), a[0]);
}

}  // namespace
