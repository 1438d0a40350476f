#include "render/RenderWin.h"

#include <algorithm>
#include <cstdio>

#include "core/Clock.h"
#include "core/Log.h"
#include "core/RunMode.h"
#include "platform/X11WindowSystem.h"

namespace {
CRect ToRect(const PlatformRect &r) { return {r.left, r.top, r.right, r.bottom}; }
PlatformRect ToPlatform(const CRect &r) { return {r.left, r.top, r.right, r.bottom}; }
}  // namespace

CRect FramedWindowRect(int mode) {
  switch (mode) {
    case MODE_Test: return {50, 50, 1074, 818};
    case MODE_Record: return {50, 50, 850, 650};
    case MODE_Screenshot: return {50, 50, 1330, 1074};
    default: return {};
  }
}

CRenderWin::CRenderWin(IWindowSystem *windows) : m_WindowSystem(windows) {}

void CRenderWin::SetAppName(const std::string &name) { m_Title = (name + " Visualizer").substr(0, 199); }

bool CRenderWin::Init() {
  m_Fps = 0.0f;
  if (m_WindowSystem) {
    m_DesktopWidth = m_WindowSystem->DesktopWidth();
    m_DesktopHeight = m_WindowSystem->DesktopHeight();
    m_DesktopBPP = m_WindowSystem->DesktopBitsPerPixel();
  }
  EnumerateMonitors();
  char text[64];
  snprintf(text, sizeof(text), "%ldx%ldx%ld", static_cast<long>(m_DesktopWidth), static_cast<long>(m_DesktopHeight),
           static_cast<long>(m_DesktopBPP));
  m_DesktopText = text;
  Log("Desktop: %s", text);
  for (int i = 0; i < m_MonitorCount; ++i) {
    const CMonitor &m = m_Monitors[i];
    Log("Monitor %ld: \"%s\" \"%s\" LeaveBlack:%ld %ld,%ld,%ld,%ld", static_cast<long>(i), m.m_DeviceName.c_str(),
        m.m_AdapterName.c_str(), static_cast<long>(m.LeaveBlack), static_cast<long>(m.m_Rect.left),
        static_cast<long>(m.m_Rect.top), static_cast<long>(m.m_Rect.right), static_cast<long>(m.m_Rect.bottom));
  }
  return true;
}

void CRenderWin::EnumerateMonitors() {
  m_MonitorCount = 0;
  if (!m_WindowSystem) return;
  for (const PlatformMonitor &p : m_WindowSystem->Monitors()) {
    if (m_MonitorCount >= MaxRenderUnits) break;
    CMonitor &m = m_Monitors[m_MonitorCount];
    m = CMonitor{};
    m.m_DeviceName = p.deviceName.substr(0, 127);
    m.m_AdapterName = p.adapterName;
    m.m_MonitorName = p.monitorName;
    if (p.attached) {
      m.m_Rect = ToRect(p.rect);
      m.m_Handle = static_cast<uintptr_t>(m_MonitorCount + 1);
    }
    ++m_MonitorCount;
  }
}

CMonitor *CRenderWin::FindMonitor(const std::string &deviceName) {
  for (int i = 0; i < m_MonitorCount; ++i)
    if (m_Monitors[i].m_DeviceName == deviceName) return &m_Monitors[i];
  return nullptr;
}

void CRenderWin::ListModes(CMonitor &monitor) {
  monitor.m_Modes.clear();
  if (!m_WindowSystem) return;
  for (const PlatformMode &p : m_WindowSystem->Modes(monitor.m_DeviceName)) {
    if (p.bitsPerPixel < 24) continue;
    bool known = std::any_of(monitor.m_Modes.begin(), monitor.m_Modes.end(), [&](const CDisplayMode &m) {
      return m.width == p.width && m.height == p.height && m.bpp == p.bitsPerPixel;
    });
    if (!known)
      monitor.m_Modes.push_back(
          {p.width, p.height, p.bitsPerPixel, p.refreshRate, static_cast<int>(monitor.m_Modes.size())});
  }
  std::sort(monitor.m_Modes.begin(), monitor.m_Modes.end(), [](const CDisplayMode &a, const CDisplayMode &b) {
    if (a.width != b.width) return a.width < b.width;
    if (a.height != b.height) return a.height < b.height;
    if (a.bpp != b.bpp) return a.bpp < b.bpp;
    return a.refreshRate < b.refreshRate;
  });
}

void CRenderWin::LogMonitor(const CMonitor &m) {
  Log("------ Monitor \"%s\" \"%s\" -------", m.m_DeviceName.c_str(), m.m_MonitorName.c_str());
  Log("Monitor rect : %ld,%ld %ldx%ld", static_cast<long>(m.m_Rect.left), static_cast<long>(m.m_Rect.top),
      static_cast<long>(m.m_Rect.Width()), static_cast<long>(m.m_Rect.Height()));
  for (const CDisplayMode &mode : m.m_Modes)
    Log("%4ldx%4ldx%2ld %2ldhz", static_cast<long>(mode.width), static_cast<long>(mode.height),
        static_cast<long>(mode.bpp), static_cast<long>(mode.refreshRate));
  Log("------ Monitor info end ----");
}

bool CRenderWin::CreateScreen(int mode, WindowHandle parent, bool visible) {
  m_Mode = mode;
  bool ok = true;
  switch (mode) {
    case MODE_Preview:
      Log("Creating preview window");
      ok = CreateChild(mode, parent, visible) || LogError("Unable to create preview window");
      break;
    case MODE_HostChild:
      Log("Creating child window. Parent: %lx", static_cast<unsigned long>(parent));
      ok = CreateChild(mode, parent, visible) || LogError("Unable to create child window");
      break;
    case MODE_FullScreen: ok = CreateFullScreen(visible) || LogError("Unable to create full window"); break;
    case MODE_Test: ok = CreateFramed(mode, "Creating test window", "Unable to create test window", visible); break;
    case MODE_Record:
      ok = CreateFramed(mode, "Creating test window", "Unable to create record window", visible);
      break;
    case MODE_Screenshot:
      ok = CreateFramed(mode, "Creating test window", "Unable to create screenshot window", visible);
      break;
    default: return true;
  }
  if (!ok) return false;
  Log("Window(s) created. Current %ld,%ld,%ld,%ld.", static_cast<long>(m_UnitRect.left),
      static_cast<long>(m_UnitRect.top), static_cast<long>(m_UnitRect.Width()), static_cast<long>(m_UnitRect.Height()));
  return true;
}

bool CRenderWin::CreateChild(int mode, WindowHandle parent, bool visible) {
  if (!m_WindowSystem) return false;
  WindowSpec windowSpec;
  windowSpec.kind = WK_Child;
  windowSpec.parent = parent;
  windowSpec.title = mode == MODE_Preview ? m_Title + " Preview" : m_Title;
  windowSpec.visible = visible;
  WindowHandle w = m_WindowSystem->CreateWindow(windowSpec);
  if (!w) return false;
  m_Windows.push_back({nullptr, false, w});
  TakeWindowRects();
  return true;
}

bool CRenderWin::CreateFramed(int mode, const char *logText, const char *errorText, bool visible) {
  Log("%s", logText);
  WindowHandle w = 0;
  if (m_WindowSystem) {
    WindowSpec windowSpec;
    windowSpec.kind = WK_Framed;
    windowSpec.rect = ToPlatform(FramedWindowRect(mode));
    windowSpec.title = m_Title;
    windowSpec.visible = visible;
    w = m_WindowSystem->CreateWindow(windowSpec);
  }
  if (!w) return LogError("%s", errorText);
  m_Windows.push_back({nullptr, false, w});
  TakeWindowRects();
  return true;
}

bool CRenderWin::CreateFullScreen(bool visible) {
  if (!m_WindowSystem) return false;
  int number = 0;
  for (int i = 0; i < m_MonitorCount; ++i) {
    CMonitor &m = m_Monitors[i];
    if (!m.m_Handle) continue;
    ++number;
    Log("Creating full screen window %ld (%ld %ld %ld x %ld)", static_cast<long>(number),
        static_cast<long>(m.m_Rect.left), static_cast<long>(m.m_Rect.top), static_cast<long>(m.m_Rect.Width()),
        static_cast<long>(m.m_Rect.Height()));
    WindowSpec windowSpec;
    windowSpec.kind = WK_Popup;
    windowSpec.owner = GetMainWindow();
    windowSpec.rect = ToPlatform(m.m_Rect);
    windowSpec.title = m_Title;
    windowSpec.visible = visible;
    windowSpec.hideCursor = true;
    WindowHandle w = m_WindowSystem->CreateWindow(windowSpec);
    if (!w) return false;
    m_Windows.push_back({&m, true, w});
  }
  return true;
}

void CRenderWin::TakeWindowRects() {
  PlatformRect client;
  if (m_Windows.empty() || !m_WindowSystem->GetClientRect(m_Windows.back().handle, client)) return;
  m_UnitRect = m_VirtualRect = ToRect(client);
}

void CRenderWin::UpdateMonitorRects() {
  if (!m_WindowSystem) return;
  std::vector<PlatformMonitor> now = m_WindowSystem->Monitors();
  for (int i = 0; i < m_MonitorCount; ++i) {
    CMonitor &m = m_Monitors[i];
    if (!m.m_Handle) continue;
    for (const PlatformMonitor &p : now)
      if (p.deviceName == m.m_DeviceName && p.attached) m.m_Rect = ToRect(p.rect);
  }
  for (const CRenderWindow &w : m_Windows) {
    if (!w.fullScreen || !w.handle || !w.monitor) continue;
    const CRect &r = w.monitor->m_Rect;
    Log("SetWindowPos: %ld %ld %ld %ld %ld", static_cast<long>(w.handle), static_cast<long>(r.left),
        static_cast<long>(r.top), static_cast<long>(r.Width()), static_cast<long>(r.Height()));
    m_WindowSystem->MoveWindow(w.handle, ToPlatform(r));
  }
}

void CRenderWin::DestroyScreen() {
  // Full-screen windows go with the first one, which owns them; the rest are
  // already gone when asked again.
  for (const CRenderWindow &w : m_Windows)
    if (m_WindowSystem) m_WindowSystem->DestroyWindow(w.handle);
  m_Windows.clear();
}

bool CRenderWin::IsRenderWindow(WindowHandle window) {
  for (const CRenderWindow &w : m_Windows)
    if (w.handle == window) return !w.monitor || !w.monitor->LeaveBlack;
  return false;
}

WindowHandle CRenderWin::GetWindowHandle(int index) const {
  if (index < 0 || index >= static_cast<int>(m_Windows.size())) return 0;
  return m_Windows[static_cast<size_t>(index)].handle;
}

void CRenderWin::UpdateFps() {
  if (m_Mode != MODE_Test) return;
  IClock &clock = GetClock();
  int64_t now = clock.Counter();
  ++m_FpsFrames;
  if (m_FpsMark == 0) m_FpsMark = now;
  double seconds = static_cast<double>(now - m_FpsMark) / static_cast<double>(clock.Frequency());
  if (seconds <= 1.0) return;
  m_Fps = static_cast<float>(m_FpsFrames / seconds);
  m_FpsFrames = 0;
  m_FpsMark = now;
  char text[64];
  snprintf(text, sizeof(text), "%.02f fps", static_cast<double>(m_Fps));
  if (m_WindowSystem && GetMainWindow()) m_WindowSystem->SetTitle(GetMainWindow(), text);
}

std::string CRenderWin::Screenshot(const std::string &) { return std::string(); }
