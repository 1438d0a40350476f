#include "e2e/XServer.h"

#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace {
// Reading a window that is being torn down must not end the test program.
int IgnoreErrors(Display *, XErrorEvent *) { return 0; }
const char kMonitorPrefix[] = "VELMOR-E2E-";
}  // namespace

XServer::XServer() {
  m_Display = XOpenDisplay(nullptr);
  if (m_Display) XSetErrorHandler(&IgnoreErrors);
}

XServer::~XServer() {
  if (!m_Display) return;
  for (Window w : m_Windows) XDestroyWindow(m_Display, w);
  DeleteVirtualMonitors(m_Display, kMonitorPrefix, m_Monitors);
  XCloseDisplay(m_Display);
}

bool XServer::AddMonitors(const std::vector<MonitorRect> &monitors) {
  m_Monitors = monitors.size();
  return m_Display && AddVirtualMonitors(m_Display, kMonitorPrefix, monitors);
}

Window XServer::CreateWindow(int width, int height) {
  XSetWindowAttributes attr{};
  attr.background_pixel = BlackPixel(m_Display, DefaultScreen(m_Display));
  Window w = XCreateWindow(m_Display, DefaultRootWindow(m_Display), 0, 0, static_cast<unsigned>(width),
                           static_cast<unsigned>(height), 0, CopyFromParent, InputOutput, CopyFromParent, CWBackPixel,
                           &attr);
  XMapRaised(m_Display, w);
  XSync(m_Display, False);
  m_Windows.push_back(w);
  return w;
}

bool XServer::WindowExists(Window window) {
  XWindowAttributes a;
  return XGetWindowAttributes(m_Display, window, &a) != 0;
}

std::vector<Window> XServer::Children(Window parent) {
  Window root = 0, up = 0, *children = nullptr;
  unsigned count = 0;
  std::vector<Window> result;
  if (XQueryTree(m_Display, parent, &root, &up, &children, &count)) result.assign(children, children + count);
  if (children) XFree(children);
  return result;
}

std::vector<Window> XServer::NewTopLevelWindows(const std::vector<Window> &before) {
  std::vector<Window> result;
  for (Window w : Children(DefaultRootWindow(m_Display))) {
    XWindowAttributes a;
    if (std::find(before.begin(), before.end(), w) != before.end()) continue;
    if (XGetWindowAttributes(m_Display, w, &a) && a.map_state == IsViewable) result.push_back(w);
  }
  return result;
}

bool XServer::Geometry(Window window, MonitorRect &out) {
  XWindowAttributes a;
  if (!XGetWindowAttributes(m_Display, window, &a)) return false;
  out = {a.x, a.y, a.width, a.height};
  return true;
}

double XServer::LitShare(Window window) {
  XWindowAttributes a;
  if (!XGetWindowAttributes(m_Display, window, &a) || a.width <= 0 || a.height <= 0) return 0.0;
  XImage *image = XGetImage(m_Display, window, 0, 0, static_cast<unsigned>(a.width), static_cast<unsigned>(a.height),
                            AllPlanes, ZPixmap);
  if (!image) return 0.0;
  // A few levels of noise above black still count as black.
  constexpr unsigned long kLevel = 8;
  long lit = 0;
  for (int y = 0; y < a.height; ++y)
    for (int x = 0; x < a.width; ++x) {
      unsigned long p = XGetPixel(image, x, y);
      if (((p >> 16) & 0xFF) > kLevel || ((p >> 8) & 0xFF) > kLevel || (p & 0xFF) > kLevel) ++lit;
    }
  XDestroyImage(image);
  return static_cast<double>(lit) / (static_cast<double>(a.width) * a.height);
}

void XServer::MovePointer(int x, int y) {
  XTestFakeMotionEvent(m_Display, -1, x, y, CurrentTime);
  XFlush(m_Display);
}

void XServer::SweepPointer(int y) {
  for (int i = 0; i < 8; ++i) {
    MovePointer(20 + 15 * i, y);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}
