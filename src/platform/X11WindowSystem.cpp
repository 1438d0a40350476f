#include "platform/X11WindowSystem.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xrandr.h>
#include <X11/extensions/dpms.h>
#include <X11/keysym.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "core/Log.h"
#include "platform/X11ErrorTrap.h"

namespace {

struct OwnedWindow {
  Window window;
  Window owner;
  Colormap colormap;
  Cursor cursor;
};

struct SavedCrtc {
  RRCrtc crtc;
  RRMode mode;
  int x, y;
  Rotation rotation;
  std::vector<RROutput> outputs;
};

uintptr_t VirtualKey(KeySym sym) {
  if (sym >= XK_a && sym <= XK_z) return 'A' + (sym - XK_a);
  if (sym >= XK_A && sym <= XK_Z) return 'A' + (sym - XK_A);
  if (sym >= XK_0 && sym <= XK_9) return '0' + (sym - XK_0);
  if (sym >= XK_F1 && sym <= XK_F12) return 0x70 + (sym - XK_F1);
  switch (sym) {
    case XK_BackSpace: return 0x08;
    case XK_Tab: return 0x09;
    case XK_Return: return 0x0D;
    case XK_Shift_L: case XK_Shift_R: return 0x10;
    case XK_Control_L: case XK_Control_R: return 0x11;
    case XK_Alt_L: case XK_Alt_R: return 0x12;
    case XK_Escape: return 0x1B;
    case XK_space: return 0x20;
    case XK_Left: return 0x25;
    case XK_Up: return 0x26;
    case XK_Right: return 0x27;
    case XK_Down: return 0x28;
    default: return 0;
  }
}

class CX11WindowSystem final : public IWindowSystem {
 public:
  explicit CX11WindowSystem(Display *display) : m_Display(display) {
    m_Root = DefaultRootWindow(display);
    m_DeleteAtom = XInternAtom(display, "WM_DELETE_WINDOW", False);
    int event, error, major = 0, minor = 0;
    m_HasRandr15 = XRRQueryExtension(display, &event, &error) && XRRQueryVersion(display, &major, &minor) &&
                   (major > 1 || (major == 1 && minor >= 5));
  }

  ~CX11WindowSystem() override {
    RestoreModes();
    while (!m_Windows.empty()) DestroyWindow(m_Windows.front().window);
    XCloseDisplay(m_Display);
  }

  std::vector<PlatformMonitor> Monitors() override {
    std::vector<PlatformMonitor> result;
    if (!m_HasRandr15) {
      PlatformMonitor whole;
      whole.deviceName = whole.adapterName = whole.monitorName = "DISPLAY";
      whole.rect = {0, 0, DesktopWidth(), DesktopHeight()};
      whole.attached = whole.primary = true;
      result.push_back(whole);
      return result;
    }
    int count = 0;
    XRRMonitorInfo *monitors = XRRGetMonitors(m_Display, m_Root, True, &count);
    XRRScreenResources *res = XRRGetScreenResourcesCurrent(m_Display, m_Root);
    for (int i = 0; i < count; ++i) {
      const XRRMonitorInfo &m = monitors[i];
      PlatformMonitor p;
      p.deviceName = AtomName(m.name);
      p.monitorName = p.deviceName;
      for (int o = 0; o < m.noutput && res; ++o) {
        XRROutputInfo *info = XRRGetOutputInfo(m_Display, res, m.outputs[o]);
        if (!info) continue;
        if (!p.adapterName.empty()) p.adapterName += "+";
        p.adapterName += info->name;
        XRRFreeOutputInfo(info);
      }
      if (p.adapterName.empty()) p.adapterName = "virtual";
      p.rect = {m.x, m.y, m.x + m.width, m.y + m.height};
      p.attached = m.width > 0 && m.height > 0;
      p.primary = m.primary;
      result.push_back(p);
    }
    if (res) XRRFreeScreenResources(res);
    if (monitors) XRRFreeMonitors(monitors);
    std::stable_partition(result.begin(), result.end(), [](const PlatformMonitor &m) { return m.primary; });
    return result;
  }

  std::vector<PlatformMode> Modes(const std::string &deviceName) override {
    std::vector<PlatformMode> modes;
    WithMonitor(deviceName, [&](const XRRMonitorInfo &m, XRRScreenResources *res) {
      int bits = DesktopBitsPerPixel();
      // A monitor without outputs only has the size it was given.
      if (m.noutput == 0) modes.push_back({m.width, m.height, bits, 0});
      for (int o = 0; o < m.noutput; ++o) {
        XRROutputInfo *info = XRRGetOutputInfo(m_Display, res, m.outputs[o]);
        if (!info) continue;
        for (int i = 0; i < info->nmode; ++i)
          if (const XRRModeInfo *mi = FindMode(res, info->modes[i]))
            modes.push_back({static_cast<int>(mi->width), static_cast<int>(mi->height), bits, RefreshRate(*mi)});
        XRRFreeOutputInfo(info);
      }
    });
    return modes;
  }

  int DesktopWidth() override { return DisplayWidth(m_Display, DefaultScreen(m_Display)); }
  int DesktopHeight() override { return DisplayHeight(m_Display, DefaultScreen(m_Display)); }
  int DesktopBitsPerPixel() override { return DefaultDepth(m_Display, DefaultScreen(m_Display)); }
  std::string DisplayName() override { return DisplayString(m_Display); }

  WindowHandle CreateWindow(const WindowSpec &windowSpec) override {
    CX11ErrorTrap trap(m_Display);
    Window parent = m_Root;
    int x = windowSpec.rect.left, y = windowSpec.rect.top;
    unsigned width = static_cast<unsigned>(std::max(windowSpec.rect.right - windowSpec.rect.left, 1));
    unsigned height = static_cast<unsigned>(std::max(windowSpec.rect.bottom - windowSpec.rect.top, 1));
    if (windowSpec.kind == WK_Child) {
      XWindowAttributes pa;
      if (!windowSpec.parent || !XGetWindowAttributes(m_Display, windowSpec.parent, &pa) || trap.Failed()) return 0;
      parent = windowSpec.parent;
      x = y = 0;
      width = static_cast<unsigned>(pa.width);
      height = static_cast<unsigned>(pa.height);
    }
    Visual *visual = DefaultVisual(m_Display, DefaultScreen(m_Display));
    int depth = DefaultDepth(m_Display, DefaultScreen(m_Display));
    if (m_VisualId) {
      XVisualInfo want{};
      want.visualid = m_VisualId;
      int n = 0;
      if (XVisualInfo *vi = XGetVisualInfo(m_Display, VisualIDMask, &want, &n)) {
        visual = vi->visual;
        depth = vi->depth;
        XFree(vi);
      }
    }
    XSetWindowAttributes attr{};
    attr.colormap = XCreateColormap(m_Display, m_Root, visual, AllocNone);
    attr.background_pixel = 0;
    attr.border_pixel = 0;
    attr.override_redirect = windowSpec.kind == WK_Popup;
    attr.event_mask = StructureNotifyMask | ExposureMask | KeyPressMask | KeyReleaseMask | ButtonPressMask |
                      ButtonReleaseMask | PointerMotionMask | FocusChangeMask;
    unsigned long mask = CWColormap | CWBackPixel | CWBorderPixel | CWOverrideRedirect | CWEventMask;
    Window w = XCreateWindow(m_Display, parent, x, y, width, height, 0, depth, InputOutput, visual, mask, &attr);
    XSync(m_Display, False);
    if (!w || trap.Failed()) {
      XFreeColormap(m_Display, attr.colormap);
      return 0;
    }
    XStoreName(m_Display, w, windowSpec.title.c_str());
    if (windowSpec.kind == WK_Framed) {
      XSetWMProtocols(m_Display, w, &m_DeleteAtom, 1);
      XSizeHints hints{};
      hints.flags = PPosition | PSize;
      hints.x = x;
      hints.y = y;
      hints.width = static_cast<int>(width);
      hints.height = static_cast<int>(height);
      XSetWMNormalHints(m_Display, w, &hints);
    }
    Cursor cursor = windowSpec.hideCursor ? BlankCursor(w) : 0;
    if (cursor) XDefineCursor(m_Display, w, cursor);
    m_Windows.push_back({w, static_cast<Window>(windowSpec.owner), attr.colormap, cursor});
    AddOwnX11Resource(w);
    if (windowSpec.visible) XMapRaised(m_Display, w);
    XSync(m_Display, False);
    return static_cast<WindowHandle>(w);
  }

  void DestroyWindow(WindowHandle window) override {
    for (size_t i = 0; i < m_Windows.size();)
      if (m_Windows[i].owner == window && m_Windows[i].window != window) DestroyWindow(m_Windows[i].window);
      else ++i;
    auto it = std::find_if(m_Windows.begin(), m_Windows.end(), [&](const OwnedWindow &o) { return o.window == window; });
    if (it == m_Windows.end()) return;
    OwnedWindow owned = *it;
    m_Windows.erase(it);
    CX11ErrorTrap trap(m_Display);
    XDestroyWindow(m_Display, owned.window);
    XFreeColormap(m_Display, owned.colormap);
    if (owned.cursor) XFreeCursor(m_Display, owned.cursor);
    XSync(m_Display, False);
    RemoveOwnX11Resource(owned.window);
  }

  bool GetClientRect(WindowHandle window, PlatformRect &out) override {
    CX11ErrorTrap trap(m_Display);
    XWindowAttributes a;
    if (!window || !XGetWindowAttributes(m_Display, window, &a) || trap.Failed()) return false;
    out = {0, 0, a.width, a.height};
    return true;
  }

  void MoveWindow(WindowHandle window, const PlatformRect &r) override {
    CX11ErrorTrap trap(m_Display);
    XMoveResizeWindow(m_Display, window, r.left, r.top, static_cast<unsigned>(std::max(r.right - r.left, 1)),
                      static_cast<unsigned>(std::max(r.bottom - r.top, 1)));
    XRaiseWindow(m_Display, window);
    XSync(m_Display, False);
  }

  void SetTitle(WindowHandle window, const std::string &title) override {
    CX11ErrorTrap trap(m_Display);
    XStoreName(m_Display, window, title.c_str());
    XFlush(m_Display);
  }

  void ShowWindow(WindowHandle window) override {
    CX11ErrorTrap trap(m_Display);
    XMapRaised(m_Display, window);
    XSync(m_Display, False);
  }

  void SetWindowVisual(unsigned long visualId) override { m_VisualId = visualId; }

  bool SetMode(const std::string &deviceName, int width, int height) override {
    bool done = false;
    WithMonitor(deviceName, [&](const XRRMonitorInfo &m, XRRScreenResources *res) {
      if (m.noutput == 0) return;
      XRROutputInfo *out = XRRGetOutputInfo(m_Display, res, m.outputs[0]);
      if (!out) return;
      RRMode mode = 0;
      for (int i = 0; i < out->nmode && !mode; ++i) {
        const XRRModeInfo *mi = FindMode(res, out->modes[i]);
        if (mi && static_cast<int>(mi->width) == width && static_cast<int>(mi->height) == height) mode = mi->id;
      }
      XRRCrtcInfo *crtc = out->crtc ? XRRGetCrtcInfo(m_Display, res, out->crtc) : nullptr;
      if (mode && crtc) {
        SavedCrtc saved{out->crtc, crtc->mode, crtc->x, crtc->y, crtc->rotation,
                        std::vector<RROutput>(crtc->outputs, crtc->outputs + crtc->noutput)};
        CX11ErrorTrap trap(m_Display);
        Status s = XRRSetCrtcConfig(m_Display, res, out->crtc, CurrentTime, crtc->x, crtc->y, mode, crtc->rotation,
                                    crtc->outputs, crtc->noutput);
        XSync(m_Display, False);
        done = s == RRSetConfigSuccess && !trap.Failed();
        if (done) m_SavedCrtcs.push_back(saved);
      }
      if (crtc) XRRFreeCrtcInfo(crtc);
      XRRFreeOutputInfo(out);
    });
    return done;
  }

  void RestoreModes() override {
    if (m_SavedCrtcs.empty()) return;
    XRRScreenResources *res = XRRGetScreenResourcesCurrent(m_Display, m_Root);
    CX11ErrorTrap trap(m_Display);
    for (auto it = m_SavedCrtcs.rbegin(); it != m_SavedCrtcs.rend() && res; ++it)
      XRRSetCrtcConfig(m_Display, res, it->crtc, CurrentTime, it->x, it->y, it->mode, it->rotation,
                       it->outputs.data(), static_cast<int>(it->outputs.size()));
    XSync(m_Display, False);
    if (res) XRRFreeScreenResources(res);
    m_SavedCrtcs.clear();
  }

  PowerState GetPowerState() override {
    int event, error;
    if (!DPMSQueryExtension(m_Display, &event, &error) || !DPMSCapable(m_Display)) return POWER_Unknown;
    CARD16 level = 0;
    BOOL enabled = False;
    if (!DPMSInfo(m_Display, &level, &enabled) || !enabled) return POWER_On;
    switch (level) {
      case DPMSModeStandby: return POWER_Standby;
      case DPMSModeSuspend: return POWER_Suspend;
      case DPMSModeOff: return POWER_Off;
      default: return POWER_On;
    }
  }

  void *NativeDisplay() override { return m_Display; }

  bool PollEvent(WindowMessage &out) override {
    while (XPending(m_Display)) {
      XEvent e;
      XNextEvent(m_Display, &e);
      if (Translate(e, out)) return true;
    }
    return false;
  }

 private:
  bool Owns(Window w) const {
    return std::any_of(m_Windows.begin(), m_Windows.end(), [&](const OwnedWindow &o) { return o.window == w; });
  }

  bool FocusIsOurs() {
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(m_Display, &focus, &revert);
    return Owns(focus);
  }

  bool Translate(XEvent &e, WindowMessage &out) {
    out = WindowMessage{static_cast<WindowHandle>(e.xany.window), WM_NULL, 0, 0};
    switch (e.type) {
      case ClientMessage:
        if (static_cast<Atom>(e.xclient.data.l[0]) != m_DeleteAtom) return false;
        out.message = WM_CLOSE;
        return true;
      case DestroyNotify:
        // Windows destroyed through DestroyWindow were already reported by
        // the caller; only a window taken away by someone else is news.
        out.window = static_cast<WindowHandle>(e.xdestroywindow.window);
        if (!Owns(e.xdestroywindow.window)) return false;
        m_Windows.erase(std::remove_if(m_Windows.begin(), m_Windows.end(),
                                       [&](const OwnedWindow &o) { return o.window == e.xdestroywindow.window; }),
                        m_Windows.end());
        out.message = WM_DESTROY;
        return true;
      case MotionNotify:
        out.message = WM_MOUSEMOVE;
        out.lparam = MakePointParam(e.xmotion.x, e.xmotion.y);
        return true;
      case ButtonPress:
      case ButtonRelease: return TranslateButton(e.xbutton, e.type == ButtonPress, out);
      case KeyPress:
      case KeyRelease:
        out.message = e.type == KeyPress ? WM_KEYDOWN : WM_KEYUP;
        out.wparam = VirtualKey(XLookupKeysym(&e.xkey, 0));
        return true;
      case FocusOut:
        // The program lost the keyboard to another one: a grab (the
        // desktop's saver takes one while it blanks), the pointer wandering
        // with focus following it, or focus moving between our own windows
        // (one per monitor) is no such loss.
        if (e.xfocus.mode != NotifyNormal || e.xfocus.detail == NotifyPointer ||
            e.xfocus.detail == NotifyInferior || FocusIsOurs())
          return false;
        out.message = WM_ACTIVATEAPP;
        out.wparam = 0;
        return true;
      case Expose:
        out.message = WM_PAINT;
        return e.xexpose.count == 0;
      case MapNotify:
      case UnmapNotify:
        out.window = static_cast<WindowHandle>(e.type == MapNotify ? e.xmap.window : e.xunmap.window);
        out.message = WM_SHOWWINDOW;
        out.wparam = e.type == MapNotify;
        return true;
      case ConfigureNotify:
        out.window = static_cast<WindowHandle>(e.xconfigure.window);
        out.message = WM_SIZE;
        out.lparam = MakePointParam(e.xconfigure.width, e.xconfigure.height);
        return true;
      default: return false;
    }
  }

  static bool TranslateButton(const XButtonEvent &b, bool press, WindowMessage &out) {
    out.lparam = MakePointParam(b.x, b.y);
    switch (b.button) {
      case Button1: out.message = press ? WM_LBUTTONDOWN : WM_LBUTTONUP; return true;
      case Button2: out.message = press ? WM_MBUTTONDOWN : WM_MBUTTONUP; return true;
      case Button3: out.message = press ? WM_RBUTTONDOWN : WM_RBUTTONUP; return true;
      case Button4:
      case Button5:
        if (!press) return false;
        out.message = WM_MOUSEWHEEL;
        out.wparam = static_cast<uintptr_t>(static_cast<uint16_t>(b.button == Button4 ? 120 : -120)) << 16;
        return true;
      default: return false;
    }
  }

  std::string AtomName(Atom atom) {
    char *name = atom ? XGetAtomName(m_Display, atom) : nullptr;
    std::string s = name ? name : "";
    if (name) XFree(name);
    return s;
  }

  template <class F>
  void WithMonitor(const std::string &deviceName, F &&f) {
    if (!m_HasRandr15) return;
    int count = 0;
    XRRMonitorInfo *monitors = XRRGetMonitors(m_Display, m_Root, True, &count);
    XRRScreenResources *res = XRRGetScreenResourcesCurrent(m_Display, m_Root);
    for (int i = 0; i < count && res; ++i)
      if (AtomName(monitors[i].name) == deviceName) {
        f(monitors[i], res);
        break;
      }
    if (res) XRRFreeScreenResources(res);
    if (monitors) XRRFreeMonitors(monitors);
  }

  static const XRRModeInfo *FindMode(const XRRScreenResources *res, RRMode id) {
    for (int i = 0; i < res->nmode; ++i)
      if (res->modes[i].id == id) return &res->modes[i];
    return nullptr;
  }

  static int RefreshRate(const XRRModeInfo &m) {
    if (!m.hTotal || !m.vTotal) return 0;
    return static_cast<int>(std::lround(static_cast<double>(m.dotClock) / (static_cast<double>(m.hTotal) * m.vTotal)));
  }

  Cursor BlankCursor(Window w) {
    static const char bits[1] = {0};
    Pixmap blank = XCreateBitmapFromData(m_Display, w, bits, 1, 1);
    XColor black{};
    Cursor c = XCreatePixmapCursor(m_Display, blank, blank, &black, &black, 0, 0);
    XFreePixmap(m_Display, blank);
    return c;
  }

  Display *m_Display;
  Window m_Root;
  Atom m_DeleteAtom;
  bool m_HasRandr15 = false;
  unsigned long m_VisualId = 0;
  std::vector<OwnedWindow> m_Windows;
  std::vector<SavedCrtc> m_SavedCrtcs;
};

}  // namespace

std::unique_ptr<IWindowSystem> OpenX11WindowSystem(const char *displayName) {
  InstallX11ErrorHandler();
  Display *display = XOpenDisplay(displayName);
  if (!display) {
    const char *name = displayName ? displayName : getenv("DISPLAY");
    LogError("Unable to open X display \"%s\"", name ? name : "");
    fprintf(stderr, "velmor: unable to open X display \"%s\"\n", name ? name : "");
    return nullptr;
  }
  return std::make_unique<CX11WindowSystem>(display);
}
