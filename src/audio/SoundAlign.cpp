#include "audio/SoundAlign.h"

#include <algorithm>
#include <cstring>

namespace {
const SoundAlignTables &Tables() {
  static const SoundAlignTables tables;
  return tables;
}
}  // namespace

void CWaveformAligner::Align(float (&waveform)[Channels][Samples]) {
  int offsets[Channels];
  for (int c = 0; c < Channels; ++c)
    offsets[c] = m_Kernels->alignSearch(Tables(), waveform[c], m_Previous[c] + m_Offsets[c]);
  for (int c = 0; c < Channels; ++c) {
    std::memcpy(m_Previous[c], waveform[c], sizeof m_Previous[c]);
    m_Offsets[c] = offsets[c];
    if (offsets[c] > 0) {
      std::memmove(waveform[c], waveform[c] + offsets[c], Shown * sizeof(float));
      std::fill(waveform[c] + Shown, waveform[c] + Samples, 0.0f);
    }
  }
}
