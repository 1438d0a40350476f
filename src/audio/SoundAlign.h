#pragma once
// Consecutive frames are cut from the stream at arbitrary places, so a drawn
// wave would jitter. Each new frame is shifted, per channel, by up to 95
// samples so that its shown part matches what was shown last time, searched
// coarse to fine over halved copies of both.

#include "audio/SoundKernels.h"

class CWaveformAligner {
 public:
  static constexpr int Samples = SoundAlignTables::Samples;
  static constexpr int Shown = SoundAlignTables::Shown;
  static constexpr int Channels = 2;

  explicit CWaveformAligner(const SoundKernels &kernels = ChosenSoundKernels()) : m_Kernels(&kernels) {}

  // Shifts both channels in place: sample i takes sample i + offset for the
  // shown part, and the rest becomes 0. The unshifted samples become the
  // reference for the next frame.
  void Align(float (&waveform)[Channels][Samples]);
  // The shift chosen for the last frame.
  int Offset(int channel) const { return m_Offsets[channel]; }

 private:
  const SoundKernels *m_Kernels;
  float m_Previous[Channels][Samples] = {};
  int m_Offsets[Channels] = {};
};
