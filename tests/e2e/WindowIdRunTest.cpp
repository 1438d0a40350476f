// The program drawing inside a window it was handed, as the desktop's saver
// and its preview hand one over, and ending cleanly on SIGTERM.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "e2e/VelmorProcess.h"
// After GoogleTest: Xlib defines None and Bool as macros.
#include "e2e/XServer.h"

namespace {
using namespace std::chrono_literals;

constexpr auto kStartup = 20s;

// The last: the desktop's saver destroys its window before it stops us.
enum Handover { LongOption, ShortOptionHex, RootWithEnvironment, RootWindowDestroyedFirst };
const char *const kHandoverNames[] = {"WindowIdDecimal", "WindowIdHex", "RootInXscreensaverWindow",
                                      "RootWindowDestroyedFirst"};

struct Invocation {
  std::vector<std::string> args;
  std::vector<std::string> env;
};

Invocation HandOver(Handover how, Window window) {
  char hex[32];
  snprintf(hex, sizeof(hex), "0x%lx", static_cast<unsigned long>(window));
  switch (how) {
    case LongOption: return {{"--window-id", std::to_string(window)}, {}};
    case ShortOptionHex: return {{"-window-id", hex}, {}};
    case RootWithEnvironment:
    case RootWindowDestroyedFirst: return {{"-root"}, {std::string("XSCREENSAVER_WINDOW=") + hex}};
  }
  return {};
}

class WindowIdRun : public testing::TestWithParam<Handover> {};
}  // namespace

TEST_P(WindowIdRun, DrawsIntoTheGivenWindowAndEndsOnSigterm) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: the program needs an X server";
  XServer x;
  ASSERT_TRUE(x.Ok()) << "DISPLAY is set but the X server can't be opened";
  const Window host = x.CreateWindow(200, 150);
  ASSERT_TRUE(x.WindowExists(host));

  VelmorProcess velmor;
  const Invocation run = HandOver(GetParam(), host);
  ASSERT_TRUE(velmor.Start(run.args, run.env));

  // Its drawing window sits inside ours and fills it.
  std::vector<Window> inside;
  velmor.PollWhileRunning(kStartup, 50ms, [&] { return !(inside = x.Children(host)).empty(); });
  ASSERT_EQ(inside.size(), 1u) << velmor.Output() << Joined(velmor.LogLines());
  MonitorRect child{};
  ASSERT_TRUE(x.Geometry(inside[0], child));
  EXPECT_EQ(child.width, 200);
  EXPECT_EQ(child.height, 150);

  // Reading our window reads what the program drew into it. Preview waits
  // half a second before the first frame, and a scene may fade in. The
  // scene is chosen at random and some are mostly night (star fields,
  // falling trails): one lit pixel in a hundred is a picture.
  double lit = 0.0;
  velmor.PollWhileRunning(10s, 100ms, [&] { return (lit = x.LitShare(host)) >= 0.01; });
  EXPECT_GE(lit, 0.01) << "the window stays black\n" << Joined(velmor.LogLines());

  // The pointer crossing a preview never ends it.
  x.SweepPointer(60);
  std::this_thread::sleep_for(200ms);
  ASSERT_TRUE(velmor.Running()) << velmor.Output() << Joined(velmor.LogLines());

  const bool destroyed = GetParam() == RootWindowDestroyedFirst;
  const size_t before = velmor.LogLines().size();
  if (destroyed) {
    XDestroyWindow(x.Get(), host);
    XSync(x.Get(), False);
  }
  velmor.Signal(SIGTERM);
  ASSERT_TRUE(velmor.WaitForExit(3s)) << "still running 3 s after SIGTERM\n" << Joined(velmor.LogLines());
  EXPECT_TRUE(velmor.ExitedCleanly()) << "status " << velmor.ExitStatus() << "\n" << velmor.Output();
  const std::vector<std::string> log = velmor.LogLines();
  // The normal end of a saver: no X errors, nothing marked as an error.
  for (size_t i = before; i < log.size(); ++i)
    EXPECT_TRUE(log[i].find("X error") == std::string::npos && log[i].find("!ERROR!") == std::string::npos) << log[i];
  if (destroyed) return;
  EXPECT_TRUE(InOrder(log, kShutdownLines)) << Joined(log);
  // The window belongs to whoever handed it over: it stays, emptied.
  EXPECT_TRUE(x.WindowExists(host));
  EXPECT_TRUE(x.Children(host).empty());
}

INSTANTIATE_TEST_SUITE_P(Forms, WindowIdRun, testing::Values(LongOption, ShortOptionHex, RootWithEnvironment, RootWindowDestroyedFirst),
                         [](const testing::TestParamInfo<Handover> &info) { return kHandoverNames[info.param]; });
