#pragma once
// The window system as the renderer needs it: monitors with their modes,
// plain windows over rectangles or inside a parent, titles, display modes
// and the events of those windows. No X11 type crosses this header, so the
// monitor and window logic above it runs against a fake in tests.

#include <memory>
#include <string>
#include <vector>

#include "platform/MessageQueue.h"
#include "platform/WindowMessage.h"

struct PlatformRect {
  int left = 0, top = 0, right = 0, bottom = 0;
};

struct PlatformMonitor {
  std::string deviceName;   // stable key, e.g. the RandR monitor name "DP-1"
  std::string adapterName;  // the outputs that feed it
  std::string monitorName;
  PlatformRect rect;        // desktop coordinates
  bool attached = false;    // part of the desktop now
  bool primary = false;
};

struct PlatformMode {
  int width = 0, height = 0, bitsPerPixel = 0, refreshRate = 0;
};

enum WindowKind {
  WK_Child,     // inside `parent`, covering its client area
  WK_Popup,     // borderless, above everything, over `rect`
  WK_Framed,    // a normal top-level window with a title bar, client area `rect`
};

struct WindowSpec {
  WindowKind kind = WK_Framed;
  WindowHandle parent = 0;
  WindowHandle owner = 0;  // a popup's first sibling; destroyed together
  PlatformRect rect;
  std::string title;
  bool visible = true;
  bool hideCursor = false;
};

// What the X server reports of the monitors' power.
enum PowerState { POWER_Unknown, POWER_On, POWER_Standby, POWER_Suspend, POWER_Off };

class IWindowSystem : public IEventSource {
 public:
  // The monitors in the order the server lists them, the primary first.
  virtual std::vector<PlatformMonitor> Monitors() = 0;
  // Every mode the monitor's outputs offer, unsorted, duplicates included.
  virtual std::vector<PlatformMode> Modes(const std::string &deviceName) = 0;
  virtual int DesktopWidth() = 0;
  virtual int DesktopHeight() = 0;
  virtual int DesktopBitsPerPixel() = 0;
  // The name of the display the system is connected to.
  virtual std::string DisplayName() = 0;

  // 0 when the window can't be made.
  virtual WindowHandle CreateWindow(const WindowSpec &spec) = 0;
  // Destroys a window and its owned windows; an unknown window is ignored.
  virtual void DestroyWindow(WindowHandle window) = 0;
  // Client area in the coordinates a child or popup was placed in; false
  // for a window that is gone.
  virtual bool GetClientRect(WindowHandle window, PlatformRect &out) = 0;
  virtual void MoveWindow(WindowHandle window, const PlatformRect &rect) = 0;
  virtual void SetTitle(WindowHandle window, const std::string &title) = 0;
  virtual void ShowWindow(WindowHandle window) = 0;
  // The visual that windows made from now on use (a GL frame buffer
  // configuration's); 0 for the default.
  virtual void SetWindowVisual(unsigned long visualId) = 0;

  // Sets the monitor's display mode; false when there is no such mode or
  // the server refuses it. RestoreMode undoes every change.
  virtual bool SetMode(const std::string &deviceName, int width, int height) = 0;
  virtual void RestoreModes() = 0;
  virtual PowerState GetPowerState() = 0;

  // The native connection for the GL context layer; null in fakes.
  virtual void *NativeDisplay() = 0;
};

// Opens the X display named by `displayName` (null: $DISPLAY). Null, after
// an error in the log, when there is none.
std::unique_ptr<IWindowSystem> OpenX11WindowSystem(const char *displayName = nullptr);
