#pragma once
// The analysis' hot loops: the transform of a channel pair and the search
// for a waveform's shift. They are built once for any processor and, on
// x86-64, once more for processors with AVX2 and FMA; the widest set the
// processor runs is chosen when first asked for.

#include <vector>

// Tables of the transform, built once per transform object.
struct SoundFFTTables {
  static constexpr int InputSize = 576;
  static constexpr int Size = 1024;
  static constexpr int Bins = Size / 2;
  // The transform is done as Side x Side: columns, a twiddle, rows.
  static constexpr int Side = 32;
  static_assert(Side * Side == Size && InputSize % Side == 0);

  SoundFFTTables();

  alignas(32) float window[InputSize];
  alignas(32) float equalise[Bins];
  // W(Size, row * column) at [row * Side + column].
  alignas(32) float twiddleRe[Size];
  alignas(32) float twiddleIm[Size];
  // W(Side, k) for k below Side / 2.
  float sideRe[Side / 2];
  float sideIm[Side / 2];
};

// Scratch space of the transform; nothing in it lives past one call.
struct SoundFFTWork {
  alignas(32) float inRe[SoundFFTTables::InputSize];
  alignas(32) float inIm[SoundFFTTables::InputSize];
  alignas(32) float midRe[SoundFFTTables::Size];
  alignas(32) float midIm[SoundFFTTables::Size];
  alignas(32) float outRe[SoundFFTTables::Size];
  alignas(32) float outIm[SoundFFTTables::Size];
};

// Per octave of the waveform search: the offsets to try, and weights over
// the compared part that ignore both ends and count the middle fully, with
// the first and last index that count.
struct SoundAlignTables {
  static constexpr int Samples = 576;
  static constexpr int Shown = 480;
  static constexpr int MaxOffset = Samples - Shown;
  static constexpr int MaxOctaves = 8;

  SoundAlignTables();

  int octaves = 0;
  int offsets[MaxOctaves] = {};
  int first[MaxOctaves] = {};
  int last[MaxOctaves] = {};
  float weights[MaxOctaves][Shown] = {};
  // The part of each octave's copies that the search can read, directly
  // or through the octaves above it: only that much is halved.
  int currentFrom[MaxOctaves] = {}, currentTo[MaxOctaves] = {};
  int previousFrom[MaxOctaves] = {}, previousTo[MaxOctaves] = {};
};

struct SoundKernels {
  const char *name;
  // Spectra of two channels of InputSize samples each (low-passed and
  // windowed here), as equalised magnitudes of Bins values each.
  void (*transformPair)(const SoundFFTTables &tables, SoundFFTWork &work, const float *left, const float *right,
                        float *outLeft, float *outRight);
  // The shift, 0 to MaxOffset - 1, that best matches `current` to the
  // Shown samples of `previous`, searched coarse to fine.
  int (*alignSearch)(const SoundAlignTables &tables, const float *current, const float *previous);
};

// Every set this build has and this processor runs, the generic one first.
const std::vector<const SoundKernels *> &AvailableSoundKernels();
// The widest available set, unless VELMOR_SOUND_KERNELS names another.
const SoundKernels &ChosenSoundKernels();
