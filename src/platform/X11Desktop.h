#pragma once
// The desktop as the host sees it on X11: whether the server's own screen
// saver is active (MIT-SCREEN-SAVER), and destroying the program's windows.

#include <functional>

#include "platform/Desktop.h"

class IWindowSystem;

class CX11Desktop : public IDesktop {
 public:
  using WindowProc = std::function<void(const WindowMessage &)>;
  // `destroy` takes the program's windows down (the renderer's screen);
  // `proc` then receives WM_DESTROY, as a window procedure would.
  CX11Desktop(IWindowSystem &windows, std::function<void(WindowHandle)> destroy, WindowProc proc);
  bool IsScreensaverRunning() override;
  void DestroyWindow(WindowHandle window) override;

 private:
  IWindowSystem &m_Windows;
  std::function<void(WindowHandle)> m_Destroy;
  WindowProc m_Proc;
};
