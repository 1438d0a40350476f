#pragma once
// The host of the program: message pump, clock, frame pacing and the
// renderer's frame. It runs a CUserApp3d.

#include <cstdint>
#include <memory>
#include <string>

#include "app/FrameTimer.h"
#include "core/RunMode.h"
#include "platform/WindowMessage.h"

class CUserApp3d;
class CRender;
class IDesktop;
class IMovieRecorder;

constexpr int FRAME_RING = 128;

class CAppTypeWin {
 public:
  explicit CAppTypeWin(CUserApp3d *userApp);
  virtual ~CAppTypeWin();
  CAppTypeWin(const CAppTypeWin &) = delete;
  CAppTypeWin &operator=(const CAppTypeWin &) = delete;

  virtual void ShutdownApp();
  virtual intptr_t WinProc(WindowHandle window, uint32_t message, uintptr_t wparam, intptr_t lparam);

  bool RunApp();
  void RunFrame();
  void RunRecordFrame(float &time, float &lastStill);
  void UpdateFrameRate();
  void LimitFrameRate();

  // Called in the loop around each frame (also while paused): what a host
  // does between frames, such as polling the monitors' power or taking a
  // picture of what was just drawn.
  virtual void BeforeFrame() {}
  virtual void AfterFrame() {}

  // Where window-system requests go; a headless stand-in by default.
  void SetDesktop(IDesktop *desktop) { m_Desktop = desktop; }
  void SetMovieRecorder(IMovieRecorder *recorder) { m_Recorder = recorder; }
  CUserApp3d *GetUserApp() const { return m_UserApp; }

  // Changes the mode and what follows from it for the other layers.
  void SetMode(int mode);

  int m_AppType = APPTYPE_Default;
  int m_Mode = MODE_FullScreen;
  RunSettings m_Settings = SettingsFor(MODE_FullScreen, APPTYPE_Default);
  WindowHandle m_ParentWindow = 0;
  std::string m_MovieFile;
  std::string m_File;
  std::string m_ConfigFile;
  float m_MaxFps = 30.0f;
  // Scene seconds a recording runs; the movie holds its second half.
  float m_RecordSeconds = 30.0f;
  float m_TimeAccumulator = 0.0f;
  float m_UpdateStep = 0.033333335f;
  bool m_DoPostQuit = true;
  bool m_VisualizerPaused = false;
  bool m_Paused = false;
  std::string m_AppPath;
  std::string m_UserPath;
  CRender *m_Render = nullptr;
  CFrameTimer m_Timer;
  float m_Fps = 30.0f;
  int m_FrameCount = 0;
  float m_FrameTimes[FRAME_RING] = {};
  int m_FrameTimeIndex = 0;
  int64_t m_LastFrameCounter = 0;

 protected:
  void Dispatch(const WindowMessage &message);

  CUserApp3d *m_UserApp;
  IDesktop *m_Desktop = nullptr;
  IMovieRecorder *m_Recorder = nullptr;

 private:
  std::unique_ptr<IDesktop> m_OwnDesktop;
};

// The host of this process, set by its constructor.
extern CAppTypeWin *g_AppType;
