#include "expr/ProgramFunctions.h"

#include "audio/SoundReader.h"
#include "core/Clock.h"
#include "core/Numeric.h"
#include "expr/Expression.h"
#include "expr/FunctionList.h"
#include "expr/Noise.h"

#include <cmath>

namespace ExprEval {
namespace {

// k selects a field when it lies within 1e-05 of its index, in single precision.
bool Selects(float k, int index) { return std::fabs(k - static_cast<float>(index)) < 1e-05f; }

int WholeNumber(double value) { return SatInt<int32_t>(value); }

// The hash forms of rand: of value, or of *state, which then receives the
// hash word as a signed number. 0 to 1.
double HashDraw(double value, double *state) {
  uint32_t h = static_cast<uint32_t>(WholeNumber(state ? *state : value)) * 0x19A7146Fu + 0x985B60ECu;
  if (state) *state = static_cast<int32_t>(h);
  return static_cast<double>((h >> 16) & 0x7FFFu) / 32767.0;
}

}  // namespace

RandomState *g_CurrentRandomState = nullptr;

double EPTimeNode::Evaluate() {
  float k = static_cast<float>(EvaluateArgument(0));
  WallTime now = GetClock().LocalTime();
  if (Selects(k, 0)) return now.hour;
  if (Selects(k, 1)) return now.minute;
  if (Selects(k, 2)) return now.second;
  if (Selects(k, 3)) return now.millisecond;
  return 0.0;
}

double EPDateNode::Evaluate() {
  float k = static_cast<float>(EvaluateArgument(0));
  WallTime now = GetClock().LocalTime();
  if (Selects(k, 0)) return now.year;
  if (Selects(k, 1)) return now.month;
  if (Selects(k, 2)) return now.day;
  if (Selects(k, 3)) return now.dayOfWeek;
  return 0.0;
}

// Each argument is evaluated once per factor of its square.
double EPLengthNode::Evaluate() {
  double sum = 0.0;
  for (size_t i = 0; i < GetArgumentCount(); ++i) {
    double a = EvaluateArgument(i);
    sum += a * EvaluateArgument(i);
  }
  return std::sqrt(sum);
}

// The sound functions take their last, optional argument only when no
// music plays, and evaluate nothing else then.
double EPBeatNode::Evaluate() {
  const ISoundReader &sound = GetSoundReader();
  if (sound.HasMusic()) return sound.Level();
  return GetArgumentCount() == 1 ? EvaluateArgument(0) : 0.0;
}

// band(channel, speed, band [, fallback]).
double EPBandNode::Evaluate() {
  const ISoundReader &sound = GetSoundReader();
  if (!sound.HasMusic()) return GetArgumentCount() == 4 ? EvaluateArgument(3) : 0.0;
  int channel = WholeNumber(EvaluateArgument(0));
  int speed = WholeNumber(EvaluateArgument(1));
  int band = WholeNumber(EvaluateArgument(2));
  if (channel < -1 || channel > 1 || band < 0 || band > 2) return 0.0;
  if (speed < 1 || speed > 3) speed = 0;
  if (channel == -1) return (sound.Band(speed, 0, band) + sound.Band(speed, 1, band)) * 0.5f;
  return sound.Band(speed, channel, band);
}

// waveform(channel, t [, fallback]): t before channel.
double EPWaveformNode::Evaluate() {
  const ISoundReader &sound = GetSoundReader();
  if (!sound.HasMusic()) return GetArgumentCount() == 3 ? EvaluateArgument(2) : 0.0;
  float t = static_cast<float>(EvaluateArgument(1));
  int channel = WholeNumber(EvaluateArgument(0));
  return sound.GetWaveform(channel, t);
}

double EPSpectrumNode::Evaluate() {
  const ISoundReader &sound = GetSoundReader();
  if (!sound.HasMusic()) return GetArgumentCount() == 3 ? EvaluateArgument(2) : 0.0;
  float t = static_cast<float>(EvaluateArgument(1));
  int channel = WholeNumber(EvaluateArgument(0));
  return sound.GetSpectrum(channel, t);
}

double EPSmoothStepNode::Evaluate() {
  float lo = static_cast<float>(EvaluateArgument(0));
  float hi = static_cast<float>(EvaluateArgument(1));
  float x = static_cast<float>(EvaluateArgument(2));
  if (x < lo) return 0.0;
  if (x > hi) return 1.0;
  float u = (x - lo) / (hi - lo);
  return u * u * (3.0f - 2.0f * u);
}

// Unlike `^`, never fails.
double EPPowFunctionNode::Evaluate() {
  double a = EvaluateArgument(0);
  return std::pow(a, EvaluateArgument(1));
}

double EPNoise1FunctionNode::Evaluate() { return SimplexNoise1(static_cast<float>(EvaluateArgument(0))); }

// The noise functions evaluate their arguments last to first.
double EPNoise2FunctionNode::Evaluate() {
  float y = static_cast<float>(EvaluateArgument(1));
  float x = static_cast<float>(EvaluateArgument(0));
  return SimplexNoise2(x, y);
}

double EPNoise3FunctionNode::Evaluate() {
  float z = static_cast<float>(EvaluateArgument(2));
  float y = static_cast<float>(EvaluateArgument(1));
  float x = static_cast<float>(EvaluateArgument(0));
  return SimplexNoise3(x, y, z);
}

// rand(): the current state, 0 to 1. rand(x): a hash of x. rand(&s): the
// hash of s, which then holds the hash word: a generator kept in the text.
// A value argument wins over a reference.
double rand_FunctionNode::Evaluate() {
  if (GetArgumentCount() == 1) return HashDraw(EvaluateArgument(0), nullptr);
  if (GetReferenceCount() == 1) return HashDraw(0.0, GetReference(0));
  return RandomUnsigned(GetCurrentRandomState());
}

// The same three forms as rand, from -1 to 1.
double srand_FunctionNode::Evaluate() {
  if (GetArgumentCount() == 1) return 2.0 * HashDraw(EvaluateArgument(0), nullptr) - 1.0;
  if (GetReferenceCount() == 1) return 2.0 * HashDraw(0.0, GetReference(0)) - 1.0;
  return RandomSigned(GetCurrentRandomState());
}

double srandom_FunctionNode::Evaluate() { return RandomSigned(SharedRandom()); }

// random() or random(lo, hi) from the shared generator, hi evaluated first.
// A single argument counts as none and is not evaluated.
double random_FunctionNode::Evaluate() {
  if (GetArgumentCount() != 2) return RandomRange(0.0f, 1.0f);
  double hi = EvaluateArgument(1);
  double lo = EvaluateArgument(0);
  return RandomRange(static_cast<float>(lo), static_cast<float>(hi));
}

void AddProgramFunctions(FunctionList &list) {
  list.Add(new EPTimeFactory);
  list.Add(new EPDateFactory);
  list.Add(new EPLengthFactory);
  list.Add(new EPBeatNodeFactory);
  list.Add(new EPBandNodeFactory);
  list.Add(new EPWaveformFactory);
  list.Add(new EPSmoothStepFactory);
  list.Add(new EPSpectrumFactory);
  list.Add(new srandom_FunctionFactory);
  list.Add(new srand_FunctionFactory);
  list.Add(new rand_FunctionFactory);
  list.Add(new random_FunctionFactory);
  list.Add(new EPPowFunctionFactory);
  list.Add(new EPNoise1FunctionFactory);
  list.Add(new EPNoise2FunctionFactory);
  list.Add(new EPNoise3FunctionFactory);
}

}  // namespace ExprEval
