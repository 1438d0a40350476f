#pragma once
// The program as the desktop's screensaver: reads its command line and
// configuration, opens its windows, and ends at the first touch of mouse or
// keyboard (in the modes where input ends it).

#include <functional>
#include <memory>
#include <string>

#include "app/AppTypeWin.h"
#include "app/CommandLine.h"
#include "app/MovieRecorder.h"
#include "platform/X11WindowSystem.h"

class CSerialize;

class CAppTypeScreensaver : public CAppTypeWin, private IMovieRecorder {
 public:
  using RendererMaker = std::function<std::unique_ptr<CRender>()>;
  CAppTypeScreensaver(CUserApp3d *userApp, RendererMaker makeRenderer);
  ~CAppTypeScreensaver() override;

  // Reads the command line (arguments after the program's name), the
  // configuration, and opens the windows for the modes that have them.
  bool Init(const std::string &commandLine);
  int Run();
  int RunSaver();
  void ShutdownApp() override;
  void InterruptSaver();
  void ToggleFullscreen();
  intptr_t WinProc(WindowHandle window, uint32_t message, uintptr_t wparam, intptr_t lparam) override;
  void Serialize(CSerialize &serializer);

  // Monitors put to sleep pause the drawing, waking resumes it (full screen
  // only); the server's power state is polled about once a second.
  void MonitorPower(PowerState power);
  void BeforeFrame() override;
  void AfterFrame() override;

  int m_MouseMoves = 0;
  bool m_PreviewWaiting = false;
  bool m_SendUsageInfo = true;
  // The usage statistics' service; VELMOR_STATS_URL in the environment wins.
  std::string m_StatsUrl;
  // Run options for unattended runs: stop after this many seconds (0: never),
  // and save a picture into the folder every so many seconds.
  double m_RunSeconds = 0.0;
  std::string m_PictureFolder;
  double m_PictureEvery = 1.0;

 private:
  bool CreateRenderer();
  void WaitForPreview();
  void Screenshot(const std::string &path);
  // Record mode writes through the renderer into the user's Screenshots.
  bool StartMovie(const std::string &file) override;
  bool WriteMovieFrame(int framesPerSecond) override;
  void EndMovie() override;
  bool SaveScreenshot(const std::string &file) override;
  double Seconds() const;

  RendererMaker m_MakeRenderer;
  std::unique_ptr<CRender> m_OwnedRender;
  std::unique_ptr<IDesktop> m_WindowDesktop;
  int m_LastX = 0, m_LastY = 0;
  uint32_t m_PreviewTimerDue = 0;
  bool m_PreviewTimer = false;
  bool m_ScreenshotPending = false;
  uint32_t m_LastPowerPoll = 0;
  uint32_t m_StartMs = 0;
  double m_NextPicture = 0.0;
};

// Virtual key of F9, which saves a picture in any mode.
constexpr uintptr_t VK_F9 = 0x78;
