// The X11 window system against the test run's X server (Xvfb): monitors,
// windows of each kind, bad window ids and event translation.

#include <gtest/gtest.h>
// After GoogleTest: Xlib defines None and Bool as macros.
#include <X11/Xlib.h>

#include <cstdlib>

#include "platform/GlxContext.h"
#include "platform/X11Desktop.h"
#include "platform/X11WindowSystem.h"
#include "renderogl/GLDriverPin.h"
#include "support/LogCapture.h"

namespace {
// A connection to the test run's X server, or a skip where there is none.
class X11 : public testing::Test {
 protected:
  void SetUp() override {
    if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: X11 tests need an X server";
    ws = OpenX11WindowSystem();
    ASSERT_NE(ws, nullptr);
  }
  std::unique_ptr<IWindowSystem> ws;
};
}  // namespace

TEST(X11WindowSystem, NoDisplayGivesNullAndAnError) {
  LogCapture log;
  EXPECT_EQ(OpenX11WindowSystem(":986"), nullptr);
  EXPECT_EQ(log.LastError(), "Unable to open X display \":986\"");
}

TEST_F(X11, MonitorsCoverTheScreenAndListModes) {
  auto monitors = ws->Monitors();
  ASSERT_FALSE(monitors.empty());
  EXPECT_TRUE(monitors.front().primary || monitors.size() == 1);
  int right = 0, bottom = 0;
  for (const auto &m : monitors) {
    EXPECT_FALSE(m.deviceName.empty());
    EXPECT_TRUE(m.attached);
    right = std::max(right, m.rect.right);
    bottom = std::max(bottom, m.rect.bottom);
  }
  EXPECT_EQ(right, ws->DesktopWidth());
  EXPECT_EQ(bottom, ws->DesktopHeight());
  auto modes = ws->Modes(monitors.front().deviceName);
  ASSERT_FALSE(modes.empty());
  EXPECT_GE(modes.front().bitsPerPixel, 24);
  EXPECT_TRUE(ws->Modes("no such monitor").empty());
  // A mode the monitor doesn't have is refused, and nothing changes.
  EXPECT_FALSE(ws->SetMode(monitors.front().deviceName, 123, 45));
  EXPECT_EQ(ws->Monitors().front().rect.right, monitors.front().rect.right);
}

TEST_F(X11, WindowsOfEachKindAndBadParents) {
  WindowSpec framed;
  framed.rect = {10, 20, 74, 68};
  framed.title = "framed";
  WindowHandle parent = ws->CreateWindow(framed);
  ASSERT_NE(parent, 0u);
  PlatformRect r;
  ASSERT_TRUE(ws->GetClientRect(parent, r));
  EXPECT_EQ(r.right - r.left, 64);
  EXPECT_EQ(r.bottom - r.top, 48);

  WindowSpec child;
  child.kind = WK_Child;
  child.parent = parent;
  WindowHandle c = ws->CreateWindow(child);
  ASSERT_NE(c, 0u);
  ASSERT_TRUE(ws->GetClientRect(c, r));
  EXPECT_EQ(r.right, 64) << "a child covers its parent";
  EXPECT_EQ(r.bottom, 48);

  WindowSpec popup;
  popup.kind = WK_Popup;
  popup.rect = {0, 0, 32, 16};
  popup.owner = parent;
  popup.hideCursor = true;
  WindowHandle p = ws->CreateWindow(popup);
  ASSERT_NE(p, 0u);

  // A window id that names nothing is an error in the log, not an exit.
  child.parent = 0x7ffffff0;
  EXPECT_EQ(ws->CreateWindow(child), 0u);
  EXPECT_FALSE(ws->GetClientRect(0x7ffffff0, r));

  ws->DestroyWindow(parent);  // takes the owned popup along
  EXPECT_FALSE(ws->GetClientRect(p, r));
  ws->DestroyWindow(parent);  // unknown now: ignored
  EXPECT_EQ(ws->GetPowerState(), POWER_Unknown) << "Xvfb has no DPMS";
}

TEST_F(X11, EventsBecomeWindowMessages) {
  WindowSpec windowSpec;
  windowSpec.rect = {0, 0, 16, 16};
  WindowHandle w = ws->CreateWindow(windowSpec);
  ASSERT_NE(w, 0u);
  WindowMessage m;
  while (ws->PollEvent(m)) {
  }
  auto *display = static_cast<Display *>(ws->NativeDisplay());
  XEvent e{}, b{}, k{}, lost{}, grabbed{};
  e.xclient.type = ClientMessage;
  e.xclient.format = 32;
  e.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
  e.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
  b.xbutton.type = ButtonPress;
  b.xbutton.button = Button3;
  b.xbutton.x = 5;
  b.xbutton.y = 7;
  k.xkey.type = KeyPress;
  k.xkey.display = display;
  k.xkey.keycode = XKeysymToKeycode(display, XStringToKeysym("F9"));
  // Focus going to another program is a loss; a grab is not.
  lost.xfocus.type = grabbed.xfocus.type = FocusOut;
  lost.xfocus.mode = NotifyNormal;
  grabbed.xfocus.mode = NotifyGrab;
  lost.xfocus.detail = grabbed.xfocus.detail = NotifyNonlinear;
  for (auto [event, mask] : {std::pair{&e, NoEventMask}, {&b, ButtonPressMask}, {&k, KeyPressMask},
                             {&grabbed, FocusChangeMask}, {&lost, FocusChangeMask}}) {
    event->xany.window = w;
    XSendEvent(display, w, False, mask, event);
  }
  XSync(display, False);

  std::vector<WindowMessage> got;
  while (ws->PollEvent(m)) got.push_back(m);
  ASSERT_EQ(got.size(), 4u);
  EXPECT_EQ(got[0].message, WM_CLOSE);
  EXPECT_EQ(got[0].window, w);
  EXPECT_EQ(got[1].message, WM_RBUTTONDOWN);
  EXPECT_EQ(PointParamX(got[1].lparam), 5);
  EXPECT_EQ(PointParamY(got[1].lparam), 7);
  EXPECT_EQ(got[2].message, WM_KEYDOWN);
  EXPECT_EQ(got[2].wparam, 0x78u);
  EXPECT_EQ(got[3].message, WM_ACTIVATEAPP);
  EXPECT_EQ(got[3].wparam, 0u);

  // A window destroyed by someone else is reported once; our own are not.
  XDestroyWindow(display, w);
  XSync(display, False);
  bool destroyed = false;
  while (ws->PollEvent(m)) destroyed |= m.message == WM_DESTROY && m.window == w;
  EXPECT_TRUE(destroyed);
}

TEST_F(X11, NoSaverRunningAndDestroyDeliversWmDestroy) {
  std::vector<WindowHandle> destroyed;
  std::vector<uint32_t> messages;
  CX11Desktop desktop(
      *ws, [&](WindowHandle w) { destroyed.push_back(w); },
      [&](const WindowMessage &m) { messages.push_back(m.message); });
  EXPECT_FALSE(desktop.IsScreensaverRunning());
  desktop.DestroyWindow(42);
  EXPECT_EQ(destroyed, std::vector<WindowHandle>{42});
  EXPECT_EQ(messages, std::vector<uint32_t>{WM_DESTROY});
}

TEST_F(X11, ConfigContextAndSwapOnAWindow) {
  auto gl = CreateGlxContext(*ws);
  ASSERT_NE(gl, nullptr) << "the X server offers no GLX 1.3";
  unsigned long visual = gl->ChooseConfig(24);
  ASSERT_NE(visual, 0u);
  GLPixelFormat f = gl->PixelFormat();
  EXPECT_TRUE(f.doubleBuffer);
  EXPECT_GE(f.depthBits, 24);
  WindowSpec windowSpec;
  windowSpec.rect = {0, 0, 8, 8};
  ws->SetWindowVisual(visual);
  WindowHandle w = ws->CreateWindow(windowSpec);
  EXPECT_TRUE(gl->AcceptsWindow(w));
  ASSERT_TRUE(gl->CreateContext());
  EXPECT_TRUE(gl->MakeCurrent(w));
  PinGLDriver();
  gl->SwapBuffers(w);
  EXPECT_TRUE(gl->MakeCurrent(0));
  gl->DestroyContext();
  EXPECT_FALSE(gl->HasContext());
}
