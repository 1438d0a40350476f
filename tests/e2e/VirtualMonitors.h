#pragma once
// RandR virtual monitors on the test's X server, named prefix0, prefix1, ...
// They last while the connection that made them does. The first takes over
// the screen's output, so that the automatic monitor of that output goes
// away and only these count.

#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

#include <string>
#include <vector>

struct MonitorRect {
  int x, y, width, height;
};

// True when the server then counts exactly these monitors.
inline bool AddVirtualMonitors(Display *display, const std::string &prefix, const std::vector<MonitorRect> &monitors) {
  Window root = DefaultRootWindow(display);
  XRRScreenResources *res = XRRGetScreenResourcesCurrent(display, root);
  for (size_t i = 0; i < monitors.size(); ++i) {
    const RROutput output = i == 0 && res && res->noutput ? res->outputs[0] : 0;
    XRRMonitorInfo *m = XRRAllocateMonitor(display, output ? 1 : 0);
    m->name = XInternAtom(display, (prefix + std::to_string(i)).c_str(), False);
    m->primary = i == 0;
    m->x = monitors[i].x;
    m->y = monitors[i].y;
    m->width = monitors[i].width;
    m->height = monitors[i].height;
    m->mwidth = monitors[i].width / 4;
    m->mheight = monitors[i].height / 4;
    if (output) m->outputs[0] = output;
    XRRSetMonitor(display, root, m);
    XRRFreeMonitors(m);
  }
  if (res) XRRFreeScreenResources(res);
  XSync(display, False);
  int count = 0;
  XRRMonitorInfo *now = XRRGetMonitors(display, root, True, &count);
  if (now) XRRFreeMonitors(now);
  return count == static_cast<int>(monitors.size());
}

inline void DeleteVirtualMonitors(Display *display, const std::string &prefix, size_t count) {
  for (size_t i = 0; i < count; ++i)
    XRRDeleteMonitor(display, DefaultRootWindow(display), XInternAtom(display, (prefix + std::to_string(i)).c_str(), False));
}
