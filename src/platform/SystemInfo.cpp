#include "platform/SystemInfo.h"

#include <cstdio>
#include <random>
#include <sys/random.h>
#include <sys/sysinfo.h>
#include <unistd.h>

SystemFacts GetSystemFacts() {
  SystemFacts f;
  f.processors = sysconf(_SC_NPROCESSORS_ONLN);
  struct sysinfo info = {};
  if (sysinfo(&info) == 0) {
    f.memoryBytes = static_cast<uint64_t>(info.totalram) * info.mem_unit;
    f.availableBytes = static_cast<uint64_t>(info.freeram) * info.mem_unit;
  }
  // Free memory alone misses the caches the kernel gives back on demand.
  if (FILE *in = fopen("/proc/meminfo", "r")) {
    char line[256];
    unsigned long long kb = 0;
    while (fgets(line, sizeof(line), in))
      if (sscanf(line, "MemAvailable: %llu kB", &kb) == 1) f.availableBytes = kb * 1024;
    fclose(in);
  }
  return f;
}

void RandomBytes(unsigned char *out, size_t count) {
  size_t done = 0;
  while (done < count) {
    const ssize_t n = getrandom(out + done, count - done, 0);
    if (n <= 0) break;
    done += static_cast<size_t>(n);
  }
  // Without the kernel's source an identity still has to be made.
  std::random_device fallback;
  for (; done < count; ++done) out[done] = static_cast<unsigned char>(fallback());
}
