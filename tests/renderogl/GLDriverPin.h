#pragma once
// Mesa loads its driver with dlopen and unloads it when the display closes.
// Allocations the driver never frees then show up at exit without a module
// name, and no suppression can match them. Pinning keeps the driver mapped,
// so the suppressions below name it. Include from one file per test binary.

#include <dlfcn.h>
#include <link.h>

#include <cstring>

void PinGLDriver() {
  dl_iterate_phdr(
      [](dl_phdr_info *info, size_t, void *) {
        const char *name = info->dlpi_name;
        if (name && (strstr(name, "_dri.so") || strstr(name, "libLLVM") || strstr(name, "libgallium")))
          dlopen(name, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
        return 0;
      },
      nullptr);
}

extern "C" const char *__lsan_default_suppressions() {
  return "leak:_dri.so\nleak:libLLVM\nleak:libgallium\nleak:libGLX_mesa\nleak:libglapi\n";
}
