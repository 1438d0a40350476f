#pragma once
// The one GL context that every render window shares, and the frame buffer
// configuration all of those windows are made with. No GLX type crosses
// this header.

#include <memory>
#include <string>

#include "platform/WindowMessage.h"

class IWindowSystem;

struct GLPixelFormat {
  int id = 0;
  int colorBits = 0;
  int depthBits = 0;
  int stencilBits = 0;
  bool doubleBuffer = false;
  bool software = false;  // the configuration is marked slow
};

class IGLContext {
 public:
  virtual ~IGLContext() = default;
  // Picks RGBA8, double buffer, depth 24. The visual id windows must be made
  // with, 0 when no configuration fits.
  virtual unsigned long ChooseConfig(int colorBits) = 0;
  virtual GLPixelFormat PixelFormat() const = 0;
  // Whether the window was made on the chosen configuration's visual, so
  // the context can be made current on it.
  virtual bool AcceptsWindow(WindowHandle window) = 0;
  virtual bool CreateContext() = 0;
  virtual bool HasContext() const = 0;
  // Window 0 leaves no context current.
  virtual bool MakeCurrent(WindowHandle window) = 0;
  virtual void SwapBuffers(WindowHandle window) = 0;
  // False when the driver offers no swap control.
  virtual bool SetSwapInterval(WindowHandle window, int interval) = 0;
  virtual void DestroyContext() = 0;
};

// A GLX context on the window system's display; null after a logged error
// when the display has no GLX 1.3.
std::unique_ptr<IGLContext> CreateGlxContext(IWindowSystem &windows);
