#pragma once
// Sound tracks written by the tests themselves.

#include <cmath>
#include <cstdint>
#include <functional>
#include <string>

#include "support/TempDir.h"

inline constexpr int kRate = 44100;

// A mono 16-bit WAV of `seconds` from a sample function.
inline void WriteWav(const TempDir &dir, const std::string &name, double seconds, const std::function<double(double)> &sample) {
  const uint32_t n = static_cast<uint32_t>(seconds * kRate);
  std::string data;
  auto put = [&](uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) data.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
  };
  data += "RIFF";
  put(36 + 2 * n, 4);
  data += "WAVEfmt ";
  put(16, 4), put(1, 2), put(1, 2), put(kRate, 4), put(kRate * 2, 4), put(2, 2), put(16, 2);
  data += "data";
  put(2 * n, 4);
  for (uint32_t i = 0; i < n; ++i)
    put(static_cast<uint16_t>(static_cast<int16_t>(std::lround(sample(double(i) / kRate) * 32000.0))), 2);
  dir.Write(name, data);
}

