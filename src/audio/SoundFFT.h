#pragma once
// The spectrum of one frame: 576 samples through a gentle low-pass against
// aliasing, Hann windowed, zero padded to a 1024-point complex transform, as
// equalised magnitudes of 512 bins.

#include "audio/SoundKernels.h"

class CSoundFFT {
 public:
  static constexpr int InputSize = SoundFFTTables::InputSize;
  static constexpr int Size = SoundFFTTables::Size;
  static constexpr int Bins = SoundFFTTables::Bins;

  explicit CSoundFFT(const SoundKernels &kernels = ChosenSoundKernels()) : m_Kernels(&kernels) {}

  // Spectra of two channels of InputSize samples each, Bins values out each.
  // The inputs are real, so one complex transform carries both.
  void TransformPair(const float *left, const float *right, float *outLeft, float *outRight) {
    m_Kernels->transformPair(m_Tables, m_Work, left, right, outLeft, outRight);
  }

 private:
  const SoundKernels *m_Kernels;
  SoundFFTTables m_Tables;
  SoundFFTWork m_Work;
};
