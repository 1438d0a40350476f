#pragma once
// The test's own connection to the X server the program runs on: virtual
// monitors, windows for the program to draw into, pictures of windows and
// synthetic pointer motion.

#include <string>
#include <vector>

#include "e2e/VirtualMonitors.h"

class XServer {
 public:
  XServer();
  ~XServer();
  XServer(const XServer &) = delete;
  XServer &operator=(const XServer &) = delete;

  bool Ok() const { return m_Display != nullptr; }
  Display *Get() const { return m_Display; }

  // Virtual monitors for as long as this connection lasts.
  bool AddMonitors(const std::vector<MonitorRect> &monitors);

  // A mapped black top-level window.
  Window CreateWindow(int width, int height);
  bool WindowExists(Window window);
  std::vector<Window> Children(Window parent);
  // Mapped children of the root that are not in `before`.
  std::vector<Window> NewTopLevelWindows(const std::vector<Window> &before);
  bool Geometry(Window window, MonitorRect &out);

  // Share of the window's pixels that are not black, 0 when it can't be read.
  double LitShare(Window window);

  // Moves the pointer to (x, y) on the root, as a real mouse would.
  void MovePointer(int x, int y);
  // Eight big moves across the left of the screen at height y, 10 ms apart.
  void SweepPointer(int y);

 private:
  Display *m_Display = nullptr;
  size_t m_Monitors = 0;
  std::vector<Window> m_Windows;
};
