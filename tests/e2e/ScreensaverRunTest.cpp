// The screensaver as the desktop starts it: full screen on every monitor,
// drawing, and gone within a second of the mouse moving.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "e2e/VelmorProcess.h"
// After GoogleTest: Xlib defines None and Bool as macros.
#include "e2e/XServer.h"

namespace {
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Starting up under the sanitizers takes a few seconds; a healthy run is
// far inside this.
constexpr auto kStartup = 20s;
constexpr MonitorRect kLeft{0, 0, 160, 120}, kRight{160, 0, 160, 120};

bool Same(const MonitorRect &a, const MonitorRect &b) {
  return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}

// The host tests pin the whole line.
bool IsMouseStop(const std::string &line) { return line.rfind("Mouse movement detected (", 0) == 0; }
}  // namespace

TEST(ScreensaverRun, FullScreenOnBothMonitorsUntilTheMouseMoves) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: the program needs an X server";
  XServer x;
  ASSERT_TRUE(x.Ok()) << "DISPLAY is set but the X server can't be opened";
  ASSERT_TRUE(x.AddMonitors({kLeft, kRight})) << "the X server needs RandR 1.5 monitors";
  const std::vector<Window> before = x.Children(DefaultRootWindow(x.Get()));

  VelmorProcess velmor;
  ASSERT_TRUE(velmor.Start({"/s"}));

  // One window per monitor, covering it exactly.
  std::vector<Window> windows;
  velmor.PollWhileRunning(kStartup, 50ms, [&] { return (windows = x.NewTopLevelWindows(before)).size() >= 2; });
  ASSERT_EQ(windows.size(), 2u) << velmor.Output() << Joined(velmor.LogLines());
  MonitorRect first{}, second{};
  ASSERT_TRUE(x.Geometry(windows[0], first) && x.Geometry(windows[1], second));
  if (first.x > second.x) std::swap(windows[0], windows[1]), std::swap(first, second);
  EXPECT_TRUE(Same(first, kLeft)) << first.x << "," << first.y << " " << first.width << "x" << first.height;
  EXPECT_TRUE(Same(second, kRight)) << second.x << "," << second.y << " " << second.width << "x" << second.height;

  // Each window shows a picture. The first scene may fade in from black, so
  // each gets a few seconds to light up; the scene is chosen at random and
  // some are mostly night (thin vector lines, star fields): one lit pixel in
  // a hundred is a picture.
  for (Window w : windows) {
    double lit = 0.0;
    velmor.PollWhileRunning(10s, 100ms, [&] { return (lit = x.LitShare(w)) >= 0.01; });
    EXPECT_GE(lit, 0.01) << "window " << w << " stays black\n" << Joined(velmor.LogLines());
  }
  ASSERT_TRUE(velmor.Running()) << velmor.Output() << Joined(velmor.LogLines());

  // Big moves across the left monitor: a few are tolerated, then it stops.
  const auto moved = Clock::now();
  x.SweepPointer(60);
  const bool ended = velmor.WaitForExit(3s);
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - moved);
  ASSERT_TRUE(ended) << "still running 3 s after the mouse moved\n" << Joined(velmor.LogLines());
  EXPECT_LT(took.count(), 1000) << "ended " << took.count() << " ms after the mouse moved";
  EXPECT_TRUE(velmor.ExitedCleanly()) << "status " << velmor.ExitStatus() << "\n" << velmor.Output();

  const std::vector<std::string> log = velmor.LogLines();
  const auto stop = std::find_if(log.begin(), log.end(), IsMouseStop);
  ASSERT_NE(stop, log.end()) << Joined(log);
  EXPECT_TRUE(InOrder(std::vector<std::string>(stop, log.end()), kShutdownLines)) << Joined(log);
  EXPECT_TRUE(x.NewTopLevelWindows(before).empty()) << "the full-screen windows outlive the program";
}
