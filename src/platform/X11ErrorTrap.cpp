#include "platform/X11ErrorTrap.h"

#include <atomic>

#include "core/Log.h"

namespace {
std::atomic<unsigned long> g_Errors{0};

int CountError(Display *display, XErrorEvent *event) {
  char text[256];
  XGetErrorText(display, event->error_code, text, sizeof(text));
  Log("X error %ld (%s), request %ld.%ld", static_cast<long>(event->error_code), text,
      static_cast<long>(event->request_code), static_cast<long>(event->minor_code));
  ++g_Errors;
  return 0;
}
}  // namespace

void InstallX11ErrorHandler() {
  static bool installed = false;
  if (installed) return;
  installed = true;
  XSetErrorHandler(&CountError);
}

unsigned long X11ErrorCount() { return g_Errors.load(); }
