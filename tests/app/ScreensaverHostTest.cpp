// The screensaver host: what starts in each mode, which input ends the
// program in which mode, the preview's settling wait, monitor power and the
// configuration file.
#include "app/AppTypeScreensaver.h"
#include "app/VelmorApp.h"
#include "core/FakeClock.h"
#include "engine/Velmor.h"
#include "platform/MessageQueue.h"
#include "render/RecordRender.h"
#include "support/FakeUserApp.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

namespace {
class CNoWindowsRender : public CRecordRender {
 public:
  bool CreateScreen(int, WindowHandle, bool) override { return false; }
};

class ScreensaverHost : public testing::Test {
 protected:
  ScreensaverHost() { MessageQueue().Clear(); }
  ~ScreensaverHost() override { MessageQueue().Clear(); }
  // A host whose renderer is a recorder (kept in `render` for inspection).
  std::unique_ptr<CAppTypeScreensaver> Host(CUserApp3d *app, bool failingWindows = false) {
    auto host = std::make_unique<CAppTypeScreensaver>(app, [this, failingWindows]() -> std::unique_ptr<CRender> {
      std::unique_ptr<CRecordRender> r = failingWindows ? std::make_unique<CNoWindowsRender>() : std::make_unique<CRecordRender>(64, 48);
      render = r.get();
      return r;
    });
    host->m_ConfigFile = dir / "config.xml";
    return host;
  }
  bool QuitPosted() {
    WindowMessage m;
    while (MessageQueue().Peek(m))
      if (m.message == WM_QUIT) return true;
    return false;
  }
  void Move(CAppTypeScreensaver &host, int x, int y) { host.WinProc(0, WM_MOUSEMOVE, 0, MakePointParam(x, y)); }

  LogCapture log;
  CScopedFakeClock clock;
  TempDir dir;
  FakeUserApp app;
  CRecordRender *render = nullptr;
};
}  // namespace

TEST_F(ScreensaverHost, ModesWithoutWindowsStartNothing) {
  for (const char *line : {"/c", "/a 5"}) {
    auto host = Host(&app);
    ASSERT_TRUE(host->Init(line));
    EXPECT_EQ(render, nullptr) << line;
    EXPECT_EQ(app.inits, 0);
    host->Run();
  }
  EXPECT_EQ(app.configures, 1);
}

TEST_F(ScreensaverHost, StartFailuresAreReported) {
  auto noRenderer = std::make_unique<CAppTypeScreensaver>(&app, [] { return std::unique_ptr<CRender>(); });
  EXPECT_FALSE(noRenderer->Init("/s"));
  EXPECT_EQ(log.LastError(), "Unable to find a render system that could run!");
  noRenderer.reset();
  auto noWindows = Host(&app, true);
  EXPECT_FALSE(noWindows->Init("/s"));
  EXPECT_EQ(log.LastError(), "Unable to create window(s)");
  noWindows.reset();
  app.initResult = false;
  auto noProject = Host(&app);
  EXPECT_FALSE(noProject->Init("/t"));
}

TEST_F(ScreensaverHost, InputEndsTheProgramOnlyInTheModesWhereItShould) {
  const struct {
    const char *line, *screen;
    uint32_t message;
    uintptr_t wparam;
    const char *stop;  // the log line of an end, or null: the program goes on
  } cases[] = {
      {"/s", "CreateScreen 2", WM_RBUTTONDOWN, 0, "Mouse click detected. Stopping screensaver."},
      {"/s", "CreateScreen 2", WM_KEYDOWN, 'A', "Keyboard press detected. Stopping screensaver."},
      {"/s", "CreateScreen 2", WM_KEYDOWN, VK_F9, nullptr},  // a picture, not an end
      {"/s", "CreateScreen 2", WM_ACTIVATEAPP, 0, "WM_ACTIVATEAPP detected. Stopping screensaver."},
      {"/p 77", "CreateScreen 1 77", WM_KEYDOWN, 'A', nullptr},  // the desktop closes a preview
      {"/t", "CreateScreen 3", WM_LBUTTONDOWN, 0, nullptr},
      {"/t", "CreateScreen 3", WM_ACTIVATEAPP, 0, nullptr},
      {"/r m.avi s.vms", "CreateScreen 6", WM_KEYDOWN, 'A', nullptr},
      {"/r m.avi s.vms", "CreateScreen 6", WM_ACTIVATEAPP, 0, "WM_ACTIVATEAPP detected. Stopping screensaver."},
  };
  for (const auto &c : cases) {
    log.lines.clear();
    auto host = Host(&app);
    ASSERT_TRUE(host->Init(c.line));
    EXPECT_EQ(render->Calls(c.screen).size(), 1u) << c.line;
    host->WinProc(0, c.message, c.wparam, 0);
    EXPECT_EQ(QuitPosted(), c.stop != nullptr) << c.line << " message " << c.message;
    EXPECT_TRUE(!c.stop || log.Has(c.stop)) << c.line;
  }
}

TEST_F(ScreensaverHost, TheSixthRealMouseMoveEndsFullScreenAndPreviewsOnlyCount) {
  auto host = Host(&app);
  ASSERT_TRUE(host->Init("/s"));
  for (int i = 0; i < 20; ++i) Move(*host, i % 2 * 5, i % 2 * 5);  // jitter within 5 pixels
  EXPECT_EQ(host->m_MouseMoves, 0);
  for (int i = 1; i <= 5; ++i) Move(*host, i * 10, 0);
  EXPECT_FALSE(QuitPosted());
  Move(*host, 60, 3);
  EXPECT_TRUE(log.Has("Mouse movement detected (10 3). Stopping screensaver."));
  EXPECT_TRUE(QuitPosted());
  host.reset();

  auto preview = Host(&app);
  ASSERT_TRUE(preview->Init("/p 77"));
  EXPECT_FALSE(preview->m_PreviewWaiting);  // the settling wait ended on its timer
  EXPECT_GE(clock.clock.Milliseconds(), 500u);
  for (int i = 1; i <= 8; ++i) Move(*preview, i * 10, 0);
  EXPECT_EQ(preview->m_MouseMoves, 8);
  EXPECT_FALSE(QuitPosted());
}

TEST_F(ScreensaverHost, SleepingMonitorsPauseFullScreenOnly) {
  auto host = Host(&app);
  ASSERT_TRUE(host->Init("/s"));
  host->MonitorPower(POWER_Off);
  EXPECT_TRUE(host->m_Paused);
  EXPECT_TRUE(log.Has("SC_MONITORPOWER 2 detected. Pausing screensaver"));
  host->MonitorPower(POWER_On);
  EXPECT_FALSE(host->m_Paused);
  EXPECT_TRUE(log.Has("SC_MONITORPOWER -1 detected. Resuming screensaver"));
  host.reset();
  auto test = Host(&app);
  ASSERT_TRUE(test->Init("/t"));
  test->MonitorPower(POWER_Standby);
  EXPECT_FALSE(test->m_Paused);
}

TEST_F(ScreensaverHost, ConfigurationSetsTheEngineAndTheRenderer) {
  dir.Write("config.xml",
            "<Velmor><Screensaver Project=\"[userpath]mine.vmp\" SceneMinRunTime=\"12\" SceneMaxRunTime=\"34\" "
            "AutoGotoNextScene=\"false\" RandomizeScene=\"true\" CaptureSound=\"false\" MaxSilenceTime=\"7\">"
            "<Renderer Type=\"1\" AllScreensSame=\"true\"/><Config SendAnonymousUsageInfo=\"false\"/>"
            "</Screensaver></Velmor>");
  CVelmorApp velmor(&CVelmorApp::MakeVelmorEngine);
  auto host = Host(&velmor);
  ASSERT_TRUE(host->Init("/c"));  // configuration mode reads the file but opens nothing
  EXPECT_EQ(velmor.m_ProjectFile, "[userpath]mine.vmp");
  auto *engine = dynamic_cast<CVelmor *>(velmor.GetEngine());
  ASSERT_NE(engine, nullptr);
  EXPECT_EQ(engine->m_SceneMinRunTime, 12);
  EXPECT_EQ(engine->m_SceneMaxRunTime, 34);
  EXPECT_FALSE(engine->m_AutoGotoNextScene);
  EXPECT_FALSE(engine->m_CaptureSound);
  EXPECT_EQ(engine->m_MaxSilenceTime, 7);
  EXPECT_FALSE(host->m_SendUsageInfo);
  EXPECT_TRUE(log.Has("Config: 1 0 12 34 0 7"));
  EXPECT_TRUE(log.Has("Project file requested \"[userpath]mine.vmp\" from config"));

  // A missing file leaves the defaults; the visualizer's differ.
  CVelmorApp visualizer(&CVelmorApp::MakeVelmorEngine);
  visualizer.m_IsScreensaver = false;
  auto host2 = Host(&visualizer);
  host2->m_ConfigFile = dir / "missing.xml";
  ASSERT_TRUE(host2->Init("/c"));
  auto *engine2 = dynamic_cast<CVelmor *>(visualizer.GetEngine());
  ASSERT_NE(engine2, nullptr);
  EXPECT_EQ(engine2->m_SceneMaxRunTime, 20);
  EXPECT_FALSE(engine2->m_CaptureSound);
}
