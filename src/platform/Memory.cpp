#include "platform/Memory.h"

#include <cstdlib>  // defines __GLIBC__ when the C library is glibc
#if defined(__GLIBC__)
#include <malloc.h>
#endif

void KeepFreedMemoryMapped() {
#if defined(__GLIBC__)
  // Blocks up to 32 MiB (the allocator's largest threshold: a 4K target's
  // colour buffer) come from the heap rather than their own mapping, and up
  // to 256 MiB of free heap is kept rather than handed back.
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 256 << 20);
#endif
}
