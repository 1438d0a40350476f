#pragma once
// Shared by the audio tests: packets made from functions of the sample index,
// and counting what the log said.

#include "support/LogCapture.h"

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace SoundTest {
constexpr double Pi = 3.14159265358979323846;

// Interleaved samples: channel c of frame n is f(first + n, c).
inline std::vector<float> Samples(int frames, int channels, const std::function<float(int, int)> &f, int first = 0) {
  std::vector<float> s(static_cast<size_t>(frames) * channels);
  for (int n = 0; n < frames; ++n)
    for (int c = 0; c < channels; ++c) s[static_cast<size_t>(n) * channels + c] = f(first + n, c);
  return s;
}

// A sine whose period is `period` samples.
inline float Sine(int n, double period, double amplitude = 1.0) {
  return static_cast<float>(amplitude * std::sin(2.0 * Pi * n / period));
}

// How many logged lines read exactly `text`.
inline int CountLines(const LogCapture &log, const std::string &text) {
  int n = 0;
  for (const std::string &l : log.lines) n += l == text;
  return n;
}
}  // namespace SoundTest
