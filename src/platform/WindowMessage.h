#pragma once
// The few window messages the host logic reacts to. The numbers are the
// classic ones, so that hosts and logs written for them read the same; the
// X11 event source translates events into these.

#include <cstdint>

using WindowHandle = uintptr_t;  // an X11 window id; 0 is no window

enum : uint32_t {
  WM_NULL = 0x0000,
  WM_DESTROY = 0x0002,
  WM_PAINT = 0x000F,
  WM_CLOSE = 0x0010,
  WM_QUIT = 0x0012,
  WM_SHOWWINDOW = 0x0018,
  WM_ACTIVATEAPP = 0x001C,
  WM_KEYDOWN = 0x0100,
  WM_KEYUP = 0x0101,
  WM_CHAR = 0x0102,
  WM_SYSKEYDOWN = 0x0104,
  WM_TIMER = 0x0113,
  WM_MOUSEMOVE = 0x0200,
  WM_LBUTTONDOWN = 0x0201,
  WM_LBUTTONUP = 0x0202,
  WM_RBUTTONDOWN = 0x0204,
  WM_RBUTTONUP = 0x0205,
  WM_MBUTTONDOWN = 0x0207,
  WM_MBUTTONUP = 0x0208,
  WM_MOUSEWHEEL = 0x020A,
  WM_SIZE = 0x0005,
  WM_USER = 0x0400,
};

struct WindowMessage {
  WindowHandle window = 0;
  uint32_t message = WM_NULL;
  uintptr_t wparam = 0;
  intptr_t lparam = 0;
};

// Packs a pointer position the way mouse messages carry it.
constexpr intptr_t MakePointParam(int x, int y) {
  return static_cast<intptr_t>((static_cast<uint32_t>(y & 0xFFFF) << 16) | static_cast<uint32_t>(x & 0xFFFF));
}
constexpr int PointParamX(intptr_t p) { return static_cast<int16_t>(p & 0xFFFF); }
constexpr int PointParamY(intptr_t p) { return static_cast<int16_t>((p >> 16) & 0xFFFF); }
