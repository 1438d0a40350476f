#include "platform/X11Desktop.h"

#include <X11/Xlib.h>
#include <X11/extensions/scrnsaver.h>

#include "platform/X11WindowSystem.h"

CX11Desktop::CX11Desktop(IWindowSystem &windows, std::function<void(WindowHandle)> destroy, WindowProc proc)
    : m_Windows(windows), m_Destroy(std::move(destroy)), m_Proc(std::move(proc)) {}

bool CX11Desktop::IsScreensaverRunning() {
  auto *display = static_cast<Display *>(m_Windows.NativeDisplay());
  int event, error;
  if (!display || !XScreenSaverQueryExtension(display, &event, &error)) return false;
  XScreenSaverInfo *info = XScreenSaverAllocInfo();
  if (!info) return false;
  bool on = XScreenSaverQueryInfo(display, DefaultRootWindow(display), info) && info->state == ScreenSaverOn;
  XFree(info);
  return on;
}

void CX11Desktop::DestroyWindow(WindowHandle window) {
  if (m_Destroy) m_Destroy(window);
  if (m_Proc) m_Proc(WindowMessage{window, WM_DESTROY, 0, 0});
}
