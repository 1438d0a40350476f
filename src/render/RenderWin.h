#pragma once
// The renderer's windows and the monitors they cover. It lists the monitors
// with their modes, makes the windows a start mode asks for (a child of a
// given window, one borderless window per monitor, or a framed window of
// fixed size) and keeps the virtual and unit rectangles the projection rests
// on. Nothing here draws; the window system is reached through
// IWindowSystem, so a fake can stand in for X11.

#include <array>
#include <deque>
#include <string>
#include <vector>

#include "core/RunMode.h"
#include "render/Render.h"

class IWindowSystem;

struct CDisplayMode {
  int width = 0;
  int height = 0;
  int bpp = 0;
  int refreshRate = 0;
  int index = 0;
};

struct CMonitor {
  std::string m_DeviceName;  // the key of its config.xml entry
  std::string m_AdapterName;
  std::string m_MonitorName;
  uintptr_t m_Handle = 0;  // 0 when the monitor is not part of the desktop
  CRect m_Rect;
  int m_Index = -1;
  bool LeaveBlack = false;
  // The display mode to set; all 0 keeps the current one.
  int Width = 0;
  int Height = 0;
  int BPP = 0;
  int m_RefreshRate = 0;
  int m_SelectedMode = 0;
  std::vector<CDisplayMode> m_Modes;  // filled by ListModes
};

struct CRenderWindow {
  CMonitor *monitor = nullptr;  // only for full-screen windows
  bool fullScreen = false;
  WindowHandle handle = 0;
};

// Client rectangles of the framed windows, by start mode.
CRect FramedWindowRect(int mode);

class CRenderWin : public CRender {
 public:
  // `windows` is not owned and may be null when there is no display: then
  // there are no monitors and no window can be made.
  explicit CRenderWin(IWindowSystem *windows);

  bool Init() override;
  bool CreateScreen(int mode, WindowHandle parent, bool visible) override;
  void DestroyScreen() override;
  bool IsRenderWindow(WindowHandle window) override;
  WindowHandle GetWindowHandle(int index) const override;

  // Re-reads the monitors' rectangles and moves the full-screen windows.
  void UpdateMonitorRects();
  // Counts a frame; in the test window, puts the rate in the title once a
  // second.
  void UpdateFps();
  WindowHandle GetMainWindow() const { return GetWindowHandle(0); }
  // Fills the monitor's modes: at least 24 bits, one per size and depth,
  // ascending.
  void ListModes(CMonitor &monitor);
  void LogMonitor(const CMonitor &monitor);
  CMonitor *FindMonitor(const std::string &deviceName);
  // Writes a picture of what was drawn last; the file name written, empty
  // when this renderer can't make pictures.
  virtual std::string Screenshot(const std::string &path);
  // Record mode's movie, for renderers that can read their pictures back;
  // without that BeginMovie fails and the rest does nothing.
  virtual bool BeginMovie(const std::string &) { return false; }
  virtual void AddMovieFrame(int) {}
  virtual void EndMovie() {}
  // The swap interval of every render window (1: wait for the display's
  // refresh); nothing for a renderer without one.
  virtual void SetSwapInterval(int) {}
  // The title is the application's name followed by " Visualizer".
  void SetAppName(const std::string &name);
  IWindowSystem *GetWindowSystem() const { return m_WindowSystem; }

  std::array<CMonitor, MaxRenderUnits> m_Monitors;
  int m_MonitorCount = 0;
  std::deque<CRenderWindow> m_Windows;
  std::string m_Title = " Visualizer";
  int m_DesktopWidth = 0;
  int m_DesktopHeight = 0;
  int m_DesktopBPP = 0;
  std::string m_DesktopText;  // "WxHxB" of the desktop, for the usage statistics
  float m_Fps = 0.0f;
  int m_Mode = 0;  // the start mode of the last CreateScreen or Initialize3DEnvironment
  // What the host's mode means for drawing, handed over by the host.
  RunSettings m_Settings;

 protected:
  void EnumerateMonitors();
  bool CreateFramed(int mode, const char *logText, const char *errorText, bool visible);
  bool CreateChild(int mode, WindowHandle parent, bool visible);
  bool CreateFullScreen(bool visible);
  // Sets both rects to the client area of the last window.
  void TakeWindowRects();

  IWindowSystem *m_WindowSystem;

 private:
  int m_FpsFrames = 0;
  int64_t m_FpsMark = 0;
};
