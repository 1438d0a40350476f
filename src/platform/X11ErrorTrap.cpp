#include "platform/X11ErrorTrap.h"

#include <atomic>
#include <map>

#include "core/Log.h"

namespace {
std::atomic<unsigned long> g_Errors{0};
// Own resources, true once an error said they are gone. X calls, and so
// this handler, run on the main thread only.
std::map<unsigned long, bool> g_Own;

bool SaysGone(const XErrorEvent &e) {
  // Extension errors (GLX) come above the core codes.
  return e.error_code == BadWindow || e.error_code == BadDrawable || e.error_code >= 128;
}

int CountError(Display *display, XErrorEvent *event) {
  if (auto it = g_Own.find(event->resourceid); it != g_Own.end() && SaysGone(*event)) {
    it->second = true;
    return 0;
  }
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

void AddOwnX11Resource(unsigned long id) { g_Own[id] = false; }
void RemoveOwnX11Resource(unsigned long id) { g_Own.erase(id); }
bool X11ResourceLost(unsigned long id) {
  auto it = g_Own.find(id);
  return it != g_Own.end() && it->second;
}
