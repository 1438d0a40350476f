#pragma once
// What the host asks of the desktop beyond messages: is another screensaver
// running, and destroying a window (which delivers WM_DESTROY).

#include "platform/WindowMessage.h"

class IDesktop {
 public:
  virtual ~IDesktop() = default;
  virtual bool IsScreensaverRunning() = 0;
  // Destroys the window; the window procedure receives WM_DESTROY before
  // this returns. Window 0 stands for the program's window when it has none.
  virtual void DestroyWindow(WindowHandle window) = 0;
};

// Without a display: no other saver, and windows are only names.
class CHeadlessDesktop : public IDesktop {
 public:
  using WindowProc = void (*)(const WindowMessage &message, void *user);
  CHeadlessDesktop(WindowProc proc, void *user) : m_Proc(proc), m_User(user) {}
  bool IsScreensaverRunning() override { return false; }
  void DestroyWindow(WindowHandle window) override { m_Proc(WindowMessage{window, WM_DESTROY, 0, 0}, m_User); }

 private:
  WindowProc m_Proc;
  void *m_User;
};
