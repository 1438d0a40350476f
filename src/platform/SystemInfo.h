#pragma once
// Facts of the machine for the usage statistics, and random bytes for an
// installation's identity.

#include <cstddef>
#include <cstdint>

struct SystemFacts {
  long processors = 1;
  uint64_t memoryBytes = 0;
  uint64_t availableBytes = 0;  // what programs can still get without swapping
};

SystemFacts GetSystemFacts();
// Fills `out` from the kernel's random source.
void RandomBytes(unsigned char *out, size_t count);
