#include "platform/GlxContext.h"

#include <GL/glx.h>

#include <cstdio>
#include <cstring>
#include <map>

#include "core/Log.h"
#include "platform/X11ErrorTrap.h"
#include "platform/X11WindowSystem.h"

namespace {

using SwapIntervalEXT = void (*)(Display *, GLXDrawable, int);
using SwapIntervalMESA = int (*)(unsigned);

class CGlxContext final : public IGLContext {
 public:
  explicit CGlxContext(Display *display) : m_Display(display) {}
  ~CGlxContext() override { DestroyContext(); }

  unsigned long ChooseConfig(int colorBits) override {
    int channel = colorBits >= 24 ? 8 : 5;
    const int attributes[] = {GLX_X_RENDERABLE, True, GLX_DRAWABLE_TYPE, GLX_WINDOW_BIT, GLX_RENDER_TYPE,
                              GLX_RGBA_BIT, GLX_RED_SIZE, channel, GLX_GREEN_SIZE, channel, GLX_BLUE_SIZE, channel,
                              GLX_ALPHA_SIZE, colorBits >= 32 ? 8 : 0, GLX_DEPTH_SIZE, 24, GLX_DOUBLEBUFFER, True,
                              None};
    int count = 0;
    GLXFBConfig *configs = glXChooseFBConfig(m_Display, DefaultScreen(m_Display), attributes, &count);
    if (!configs || count == 0) {
      if (configs) XFree(configs);
      return 0;
    }
    m_Config = configs[0];
    XFree(configs);
    XVisualInfo *vi = glXGetVisualFromFBConfig(m_Display, m_Config);
    if (!vi) {
      m_Config = nullptr;
      return 0;
    }
    m_VisualId = vi->visualid;
    XFree(vi);
    return m_VisualId;
  }

  GLPixelFormat PixelFormat() const override {
    GLPixelFormat f;
    if (!m_Config) return f;
    int value = 0;
    auto get = [&](int attribute) {
      value = 0;
      glXGetFBConfigAttrib(m_Display, m_Config, attribute, &value);
      return value;
    };
    f.id = get(GLX_FBCONFIG_ID);
    f.colorBits = get(GLX_BUFFER_SIZE);
    f.depthBits = get(GLX_DEPTH_SIZE);
    f.stencilBits = get(GLX_STENCIL_SIZE);
    f.doubleBuffer = get(GLX_DOUBLEBUFFER) != 0;
    f.software = get(GLX_CONFIG_CAVEAT) == GLX_SLOW_CONFIG;
    return f;
  }

  bool AcceptsWindow(WindowHandle window) override {
    CX11ErrorTrap trap(m_Display);
    XWindowAttributes a;
    if (!m_Config || !window || !XGetWindowAttributes(m_Display, window, &a) || trap.Failed()) return false;
    return XVisualIDFromVisual(a.visual) == m_VisualId;
  }

  bool CreateContext() override {
    if (!m_Config) return false;
    CX11ErrorTrap trap(m_Display);
    m_Context = glXCreateNewContext(m_Display, m_Config, GLX_RGBA_TYPE, nullptr, True);
    if (trap.Failed() && m_Context) {
      glXDestroyContext(m_Display, m_Context);
      m_Context = nullptr;
    }
    return m_Context != nullptr;
  }

  bool HasContext() const override { return m_Context != nullptr; }

  bool MakeCurrent(WindowHandle window) override {
    CX11ErrorTrap trap(m_Display);
    const GLXWindow drawable = window ? DrawableOf(window) : 0;
    if (window && !drawable) return false;
    Bool ok = glXMakeContextCurrent(m_Display, drawable, drawable, window ? m_Context : nullptr);
    // A window the desktop destroyed first: nothing to draw into, and
    // nothing wrong with us.
    if (!ok && (X11ResourceLost(window) || X11ResourceLost(drawable))) return true;
    return ok && !trap.Failed();
  }

  void SwapBuffers(WindowHandle window) override {
    if (!window) return;
    if (const GLXWindow drawable = DrawableOf(window)) glXSwapBuffers(m_Display, drawable);
  }

  bool SetSwapInterval(WindowHandle window, int interval) override {
    const char *extensions = glXQueryExtensionsString(m_Display, DefaultScreen(m_Display));
    if (!extensions) return false;
    if (strstr(extensions, "GLX_EXT_swap_control")) {
      auto f = reinterpret_cast<SwapIntervalEXT>(
          glXGetProcAddressARB(reinterpret_cast<const GLubyte *>("glXSwapIntervalEXT")));
      if (f) {
        CX11ErrorTrap trap(m_Display);
        f(m_Display, window, interval);
        return !trap.Failed();
      }
    }
    if (strstr(extensions, "GLX_MESA_swap_control")) {
      auto f = reinterpret_cast<SwapIntervalMESA>(
          glXGetProcAddressARB(reinterpret_cast<const GLubyte *>("glXSwapIntervalMESA")));
      if (f) return f(static_cast<unsigned>(interval)) == 0;
    }
    return false;
  }

  void DestroyContext() override {
    if (!m_Context) return;
    if (glXGetCurrentContext() == m_Context) glXMakeCurrent(m_Display, None, nullptr);
    glXDestroyContext(m_Display, m_Context);
    m_Context = nullptr;
    for (const auto &[window, drawable] : m_Drawables) {
      glXDestroyWindow(m_Display, drawable);
      XSync(m_Display, False);  // errors about a drawable gone arrive while it is still known as ours
      RemoveOwnX11Resource(drawable);
    }
    m_Drawables.clear();
  }

 private:
  // Each window gets a drawable of its own that lives as long as the
  // context: Mesa frees a plain window's back buffer as soon as the context
  // moves to another window, so the monitors drawn before the last one
  // would never show their picture when all are presented together.
  GLXWindow DrawableOf(WindowHandle window) {
    auto it = m_Drawables.find(window);
    if (it != m_Drawables.end()) return it->second;
    if (!m_Config) return 0;
    CX11ErrorTrap trap(m_Display);
    GLXWindow drawable = glXCreateWindow(m_Display, m_Config, static_cast<Window>(window), nullptr);
    XSync(m_Display, False);
    if (!drawable || trap.Failed()) return 0;
    m_Drawables[window] = drawable;
    AddOwnX11Resource(drawable);
    return drawable;
  }

  Display *m_Display;
  GLXFBConfig m_Config = nullptr;
  unsigned long m_VisualId = 0;
  GLXContext m_Context = nullptr;
  std::map<WindowHandle, GLXWindow> m_Drawables;
};

}  // namespace

std::unique_ptr<IGLContext> CreateGlxContext(IWindowSystem &windows) {
  auto *display = static_cast<Display *>(windows.NativeDisplay());
  int major = 0, minor = 0;
  if (!display || !glXQueryVersion(display, &major, &minor) || major < 1 || (major == 1 && minor < 3)) {
    LogError("GLX 1.3 is not available on display \"%s\"", windows.DisplayName().c_str());
    fprintf(stderr, "velmor: GLX 1.3 is not available on display \"%s\"\n", windows.DisplayName().c_str());
    return nullptr;
  }
  return std::make_unique<CGlxContext>(display);
}
