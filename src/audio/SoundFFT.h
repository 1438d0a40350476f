#pragma once
// The spectrum of one frame: 576 samples, Hann windowed, zero padded to a
// 1024-point complex transform, as equalised magnitudes of 512 bins.

class CSoundFFT {
 public:
  static constexpr int InputSize = 576;
  static constexpr int Size = 1024;
  static constexpr int Bins = Size / 2;
  static_assert(InputSize % 4 == 0);

  CSoundFFT();

  // Spectra of two channels of InputSize samples each, Bins values out each.
  void TransformPair(const float *left, const float *right, float *outLeft, float *outRight);

 private:
  void LoadFirstStages(const float *left, const float *right);
  void LaterStages();

  int m_BitReverse[Size];
  float m_Window[InputSize];
  float m_Equalise[Bins];
  // Windowed input; the zero padding past InputSize is never written.
  float m_InRe[Size] = {};
  float m_InIm[Size] = {};
  alignas(16) float m_Re[Size];
  alignas(16) float m_Im[Size];
  // Twiddle factors of every stage, one after another: the stage of size s
  // holds s / 2 of them from index s / 2 (so that wide stages are aligned).
  alignas(16) float m_Cos[Size];
  alignas(16) float m_Sin[Size];
};
