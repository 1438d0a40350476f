// The sound kernels on eight lanes with fused multiply-adds. The build
// compiles this unit alone for AVX2 and FMA (on x86-64); nothing here runs
// unless the processor has them.
#include "audio/SoundKernelsBody.h"

const SoundKernels *Avx2SoundKernels() {
#if defined(__AVX2__) && defined(__FMA__)
  static constexpr SoundKernels kernels = SoundVector::KernelsOf<SoundVector::V8>("avx2");
  return &kernels;
#else
  return nullptr;
#endif
}
