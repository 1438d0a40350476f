// The sound kernels on four lanes, for any processor.
#include "audio/SoundKernelsBody.h"

const SoundKernels &GenericSoundKernels() {
  static constexpr SoundKernels kernels = SoundVector::KernelsOf<SoundVector::V4>("generic");
  return kernels;
}
