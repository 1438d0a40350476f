// The frame loop: how simulated time advances, how the frame rate is
// estimated and capped, and how the program shuts down. All against a fake
// clock, so nothing here depends on real time.
#include "app/AppTypeWin.h"
#include "app/MovieRecorder.h"
#include "app/UserApp3d.h"
#include "core/FakeClock.h"
#include "platform/Desktop.h"
#include "platform/MessageQueue.h"
#include "platform/Signals.h"
#include "support/FakeUserApp.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace {
class FakeDesktop : public IDesktop {
 public:
  explicit FakeDesktop(CAppTypeWin &host) : m_Host(host) {}
  bool IsScreensaverRunning() override { return saverRunning; }
  void DestroyWindow(WindowHandle w) override {
    destroyed.push_back(w);
    m_Host.WinProc(w, WM_DESTROY, 0, 0);
  }
  bool saverRunning = false;
  std::vector<WindowHandle> destroyed;

 private:
  CAppTypeWin &m_Host;
};

class FakeRecorder : public IMovieRecorder {
 public:
  bool StartMovie(const std::string &f) override {
    movie = f;
    return true;
  }
  bool WriteMovieFrame(int fps) override {
    ++frames;
    EXPECT_EQ(fps, 25);
    return true;
  }
  void EndMovie() override { ended = true; }
  bool SaveScreenshot(const std::string &f) override {
    stills.push_back(f);
    return true;
  }
  std::string movie;
  int frames = 0;
  bool ended = false;
  std::vector<std::string> stills;
};

class FrameLoop : public testing::Test {
 protected:
  FrameLoop() : host(&app), desktop(host) {
    MessageQueue().Clear();
    host.SetDesktop(&desktop);
    host.m_AppType = APPTYPE_Default;
    clk().frequency = 1000000;
    host.m_MaxFps = 0;  // no limiter unless a test asks for one
  }
  ~FrameLoop() override { MessageQueue().Clear(); }
  CFakeClock &clk() { return fake.clock; }
  // Runs frames whose real duration is `seconds` each.
  void Frames(int n, double seconds) {
    for (int i = 0; i < n; ++i) {
      clk().Advance(seconds);
      host.RunFrame();
    }
  }

  CScopedFakeClock fake;
  FakeUserApp app;
  CAppTypeWin host;
  FakeDesktop desktop;
};
}  // namespace

TEST_F(FrameLoop, FirstFramesTakeANominalStepWhateverTheClockSays) {
  Frames(2, 0.7);
  EXPECT_FLOAT_EQ(host.m_Fps, 30.0f);
  ASSERT_EQ(app.updates.size(), 2u);
  EXPECT_FLOAT_EQ(app.updates[0], 0.033333335f);
  EXPECT_FLOAT_EQ(app.updates[1], 0.033333335f);
  EXPECT_EQ(host.m_FrameCount, 2);
}

TEST_F(FrameLoop, SlowFramesAreCappedAtAQuarterSecondOfSimulation) {
  Frames(200, 0.5);  // 2 frames per second
  EXPECT_NEAR(host.m_Fps, 2.0f, 0.05f);
  app.updates.clear();
  Frames(1, 0.5);
  // Seven full steps and the rest: 0.25 s, not the 0.5 s that passed.
  ASSERT_EQ(app.updates.size(), 8u);
  EXPECT_NEAR(app.Sum(), 0.25f, 1e-5f);
  EXPECT_NEAR(app.updates.back(), 0.25f - 7 * 0.033333335f, 1e-5f);
}

TEST_F(FrameLoop, RemaindersAreCarriedNotLost) {
  // Just under 30 fps: each frame is one step plus a sliver that piles up.
  const double frame = 0.0334;
  Frames(300, frame);
  const size_t before = app.updates.size();
  const float carried = host.m_TimeAccumulator;
  Frames(100, frame);
  float expected = 0.0f;
  for (float dt : std::vector<float>(app.updates.begin() + before, app.updates.end())) {
    EXPECT_TRUE(dt == host.m_UpdateStep || dt > 0.0001f) << dt;
    expected += dt;
  }
  // Simulated time equals what the estimate fed in, up to the carry.
  EXPECT_NEAR(expected + host.m_TimeAccumulator - carried, 100.0f / host.m_Fps, 2e-3f);
  EXPECT_LE(host.m_TimeAccumulator, 0.0001f);
}

TEST_F(FrameLoop, EstimatorFollowsRealChangesAndIgnoresStalls) {
  Frames(200, 1.0 / 60.0);
  EXPECT_NEAR(host.m_Fps, 60.0f, 0.5f);
  Frames(1, 10.0);  // a stall counts as one nominal frame
  EXPECT_GT(host.m_Fps, 50.0f);
  Frames(200, 1.0 / 60.0);
  // The window is 64 frames: after 10 slow ones it spans 1.4 s, and a jump of
  // more than 3 is taken at once rather than smoothed.
  Frames(10, 1.0 / 20.0);
  EXPECT_NEAR(host.m_Fps, 64.0f / 1.4f, 1.5f);
  Frames(100, 1.0 / 20.0);
  EXPECT_NEAR(host.m_Fps, 20.0f, 0.5f);
}

TEST_F(FrameLoop, WithoutAHighResolutionCounterTheMillisecondClockServes) {
  CScopedFakeClock lowRes;
  lowRes.clock.highResolution = false;
  CAppTypeWin host2(&app);
  host2.SetDesktop(&desktop);
  host2.m_MaxFps = 0;
  for (int i = 0; i < 300; ++i) {
    lowRes.clock.Advance(0.025);
    host2.RunFrame();
  }
  EXPECT_NEAR(host2.m_Fps, 40.0f, 1.0f);
  host2.m_MaxFps = 30;  // the limiter sleeps a whole frame at once
  host2.LimitFrameRate();
  EXPECT_EQ(lowRes.clock.sleeps, std::vector<uint32_t>{33});
}

TEST_F(FrameLoop, LimiterSleepsInFinerStepsUntilTheFrameIsDue) {
  host.m_MaxFps = 30;
  clk().autoAdvance = 20;  // reading the counter costs 20 microseconds
  host.LimitFrameRate();   // first call only rebases
  EXPECT_TRUE(clk().sleeps.empty());
  const int64_t start = clk().counter;
  host.LimitFrameRate();
  const int64_t waited = clk().counter - start;
  // r(30) = 1.0304..: the frame ends between 1/(30*r) and a tick later.
  EXPECT_GE(waited, 32348);
  EXPECT_LT(waited, 33400);
  ASSERT_FALSE(clk().sleeps.empty());
  EXPECT_EQ(clk().sleeps.front(), 5u);
  // Coarse sleeps first, then finer ones as the frame comes due. The frame
  // is due (at 1/(c*r)) before the zero sleeps would start (1 ms before 1/(c/r)).
  EXPECT_TRUE(std::is_sorted(clk().sleeps.rbegin(), clk().sleeps.rend()));
  EXPECT_EQ(clk().sleeps.back(), 1u);

  clk().sleeps.clear();
  host.m_LastFrameCounter = clk().counter + 1000000;  // the counter went back
  host.LimitFrameRate();
  EXPECT_TRUE(clk().sleeps.empty());
  EXPECT_LT(host.m_LastFrameCounter, clk().counter);

  host.m_MaxFps = 0;
  host.LimitFrameRate();
  EXPECT_TRUE(clk().sleeps.empty());
}

TEST_F(FrameLoop, ShutdownGoesCloseDestroyQuit) {
  LogCapture log;
  app.closeAfter = 4;
  EXPECT_TRUE(host.RunApp());
  EXPECT_EQ(app.updates.front(), 0.0001f);
  EXPECT_EQ(desktop.destroyed, std::vector<WindowHandle>{0});
  const std::vector<std::string> expected = {"Max fps set to 0", "** Entering main message loop ** ",
                                             "Received WM_CLOSE", "Received WM_DESTROY. Do postquit 1",
                                             "** Exiting main message loop ** "};
  EXPECT_EQ(log.lines, expected);

  // A signal takes the same path.
  LogCapture log2;
  app.closeAfter = 0;
  app.updates.clear();
  RequestClose();
  EXPECT_TRUE(host.RunApp());
  EXPECT_TRUE(log2.Has("Received WM_CLOSE"));
  EXPECT_EQ(app.updates.size(), 1u);  // messages go before frames

  // With postquit off, destroying the window does not end the loop.
  host.m_DoPostQuit = false;
  host.ShutdownApp();
  WindowMessage m;
  EXPECT_FALSE(MessageQueue().Peek(m));
}

TEST_F(FrameLoop, AnotherScreensaverPausesTheVisualizerWithoutAJump) {
  LogCapture log;
  Frames(10, 1.0 / 30.0);
  const size_t updates = app.updates.size();
  const int frames = host.m_FrameCount;
  desktop.saverRunning = true;
  Frames(5, 1.0 / 30.0);
  EXPECT_EQ(app.updates.size(), updates);
  EXPECT_EQ(host.m_FrameCount, frames);
  desktop.saverRunning = false;
  Frames(1, 1.0 / 30.0);
  // The 0.17 s of pause are not replayed: only what the smoothed estimate
  // lets through (here about 0.04 s) reaches the simulation.
  EXPECT_GT(app.Sum(updates), 0.03f);
  EXPECT_LT(app.Sum(updates), 0.05f);
  EXPECT_EQ(std::count(log.lines.begin(), log.lines.end(), "Screensaver is running. Pausing visualizer"), 1);
  EXPECT_TRUE(log.Has("Screensaver has stopped running. Resuming visualizer"));

  // The screensaver itself never asks.
  host.m_AppType = APPTYPE_Screensaver;
  desktop.saverRunning = true;
  Frames(1, 1.0 / 30.0);
  EXPECT_EQ(host.m_FrameCount, frames + 2);
}

TEST_F(FrameLoop, HostDrivenModeRendersThroughTheApplication) {
  host.SetMode(MODE_HostDriven);
  host.m_MaxFps = 30;
  Frames(3, 1.0 / 30.0);
  EXPECT_EQ(app.renders, 3);
  EXPECT_EQ(app.finished, 3);
  EXPECT_TRUE(clk().sleeps.empty());  // the host presents: no limiter
}

TEST_F(FrameLoop, RecordModeRunsOnAFixedClockAndWritesItsSecondHalf) {
  // Seconds recorded; frames from half of them to just over all of them,
  // 0.04 s apart; a still with the first frame and every 3 s after it.
  struct Case {
    float seconds;
    int frames;
    size_t stills;
  } cases[] = {{30.0f, 376, 5}, {2.0f, 27, 1}};
  for (const Case &c : cases) {
    FakeRecorder recorder;
    host.SetMovieRecorder(&recorder);
    host.SetMode(MODE_Record);
    host.m_RecordSeconds = c.seconds;
    app.updates.clear();
    EXPECT_TRUE(host.RunApp());
    EXPECT_EQ(recorder.movie, "movie.avi");
    EXPECT_TRUE(recorder.ended);
    EXPECT_NEAR(recorder.frames, c.frames, 1) << c.seconds;
    ASSERT_EQ(recorder.stills.size(), c.stills) << c.seconds;
    for (const auto &s : recorder.stills) EXPECT_EQ(s, "movie.png");
    for (size_t i = 1; i < app.updates.size(); ++i) ASSERT_FLOAT_EQ(app.updates[i], 0.04f);
  }
}
