#pragma once
// X protocol errors must not end the program (Xlib's default handler exits):
// a window id from the command line may name nothing, a mode may be refused.
// The handler counts errors; a trap tells whether one arrived while it lived.
// Only platform code includes this header.

#include <X11/Xlib.h>

// Installs the counting handler once per process.
void InstallX11ErrorHandler();
unsigned long X11ErrorCount();

// Windows and drawables we made. The desktop may destroy a saver's window
// before we stop (its normal way of ending us): errors saying that one of
// these is gone are expected, neither logged nor counted, and the resource
// is marked lost.
void AddOwnX11Resource(unsigned long id);
void RemoveOwnX11Resource(unsigned long id);
bool X11ResourceLost(unsigned long id);

class CX11ErrorTrap {
 public:
  explicit CX11ErrorTrap(Display *display) : m_Display(display), m_Start(X11ErrorCount()) {}
  // Syncs, so that errors of requests made so far have arrived.
  bool Failed() {
    XSync(m_Display, False);
    return X11ErrorCount() != m_Start;
  }

 private:
  Display *m_Display;
  unsigned long m_Start;
};
