#include "app/AppTypeWin.h"

#include <cmath>

#include "app/MovieRecorder.h"
#include "app/UserApp3d.h"
#include "core/Clock.h"
#include "core/Log.h"
#include "core/Numeric.h"
#include "core/Random.h"
#include "platform/Desktop.h"
#include "platform/MessageQueue.h"
#include "render/RenderWin.h"

CAppTypeWin *g_AppType = nullptr;

namespace {
constexpr float kNominalFrame = 0.033333335f;
constexpr float kMaxAccumulated = 0.25f;
constexpr float kMinRemainder = 0.0001f;

void DispatchToHost(const WindowMessage &m, void *user) {
  static_cast<CAppTypeWin *>(user)->WinProc(m.window, m.message, m.wparam, m.lparam);
}
}  // namespace

CAppTypeWin::CAppTypeWin(CUserApp3d *userApp) : m_UserApp(userApp) {
  m_OwnDesktop = std::make_unique<CHeadlessDesktop>(&DispatchToHost, this);
  m_Desktop = m_OwnDesktop.get();
  m_Timer.Start();
  g_AppType = this;
  SeedSharedRandom(StartSeed());
}

CAppTypeWin::~CAppTypeWin() {
  if (g_AppType == this) g_AppType = nullptr;
}

void CAppTypeWin::SetMode(int mode) {
  m_Mode = mode;
  m_Settings = SettingsFor(mode, m_AppType);
  if (auto *win = dynamic_cast<CRenderWin *>(m_Render)) win->m_Settings = m_Settings;
}

void CAppTypeWin::ShutdownApp() {
  WindowHandle first = m_Render ? m_Render->GetWindowHandle(0) : 0;
  WinProc(first, WM_CLOSE, 0, 0);
}

intptr_t CAppTypeWin::WinProc(WindowHandle window, uint32_t message, uintptr_t wparam, intptr_t lparam) {
  switch (message) {
    case WM_DESTROY:
      Log("Received WM_DESTROY. Do postquit %ld", static_cast<long>(m_DoPostQuit));
      if (m_DoPostQuit) MessageQueue().PostQuit(0);
      break;
    case WM_CLOSE:
      Log("Received WM_CLOSE");
      if (m_Render) m_Render->Cleanup3DEnvironment();
      m_Desktop->DestroyWindow(window);
      return 0;
    default:
      break;
  }
  if (m_Render) m_Render->MsgProc(window, message, wparam, lparam);
  return 0;
}

void CAppTypeWin::Dispatch(const WindowMessage &m) { WinProc(m.window, m.message, m.wparam, m.lparam); }

bool CAppTypeWin::RunApp() {
  m_Timer.Start();
  Log("Max fps set to %ld", static_cast<long>(SatInt(m_MaxFps)));
  m_UserApp->Update(0.0001f);

  bool recording = false;
  if (m_Settings.recording) {
    if (m_MovieFile.empty()) m_MovieFile = "movie.avi";
    if (m_Recorder) recording = m_Recorder->StartMovie(m_MovieFile);
  }
  // The first still comes with the first movie frame, whatever the length.
  float recordTime = 0.0f, lastStill = m_RecordSeconds * 0.5f - 3.0f;

  Log("** Entering main message loop ** ");
  WindowMessage msg;
  for (;;) {
    if (MessageQueue().Peek(msg)) {
      if (msg.message == WM_QUIT) break;
      Dispatch(msg);
      continue;
    }
    BeforeFrame();
    if (m_Paused) {
      if (m_Render) m_Render->Render3DEnvironment(true);
      GetClock().Sleep(10);
    } else if (m_Settings.recording) {
      RunRecordFrame(recordTime, lastStill);
    } else {
      RunFrame();
    }
    AfterFrame();
  }
  if (recording) m_Recorder->EndMovie();
  Log("** Exiting main message loop ** ");
  return true;
}

void CAppTypeWin::RunFrame() {
  if (m_AppType != APPTYPE_Screensaver) {
    if (m_Desktop->IsScreensaverRunning()) {
      if (!m_VisualizerPaused) Log("Screensaver is running. Pausing visualizer");
      GetClock().Sleep(20);
      m_VisualizerPaused = true;
      return;
    }
    if (m_VisualizerPaused) {
      m_VisualizerPaused = false;
      Log("Screensaver has stopped running. Resuming visualizer");
    }
  }

  UpdateFrameRate();
  // The smoothed estimate, not this frame's raw delta, feeds the simulation.
  m_TimeAccumulator += 1.0f / m_Fps;
  if (m_TimeAccumulator > kMaxAccumulated) m_TimeAccumulator = kMaxAccumulated;
  while (m_TimeAccumulator >= m_UpdateStep) {
    m_TimeAccumulator -= m_UpdateStep;
    m_UserApp->Update(m_UpdateStep);
  }
  if (m_TimeAccumulator > kMinRemainder) {
    m_UserApp->Update(m_TimeAccumulator);
    m_TimeAccumulator = 0.0f;
  }

  if (m_Settings.hostPresents) {
    m_UserApp->Render();
    m_UserApp->FrameFinished();
    ++m_FrameCount;
    return;
  }
  if (m_Render) m_Render->Render3DEnvironment(false);
  LimitFrameRate();
  ++m_FrameCount;
}

void CAppTypeWin::RunRecordFrame(float &t, float &lastStill) {
  // A fixed clock: the movie's speed doesn't depend on the machine's.
  const float start = m_RecordSeconds * 0.5f;
  UpdateFrameRate();
  m_UserApp->Update(0.04f);
  t += 0.04f;
  if (m_Render) m_Render->Render3DEnvironment(false);
  if (t >= start && m_Recorder) m_Recorder->WriteMovieFrame(25);
  if (t >= start + 0.1f && t - lastStill >= 3.0f) {
    lastStill = t;
    std::string still = m_MovieFile;
    size_t dot = still.rfind(".avi");
    if (dot != std::string::npos) still.replace(dot, 4, ".png");
    if (m_Recorder) m_Recorder->SaveScreenshot(still);
  }
  if (t > m_RecordSeconds) ShutdownApp();
  ++m_FrameCount;
}

void CAppTypeWin::UpdateFrameRate() {
  const int n = m_FrameCount;
  m_Timer.Tick();
  float dt = m_Timer.GetDelta();
  const bool hi = m_Timer.m_HighResolution;
  int W = hi ? 64 : 128;

  if (n == 0) {
    m_Fps = 30.0f;
    m_FrameTimeIndex = 0;
  }
  const int prev = (m_FrameTimeIndex + FRAME_RING - 1) % FRAME_RING;
  if (n <= FRAME_RING) {
    const float b = hi ? 0.6f : 0.8f;
    if (n < 2)
      dt = kNominalFrame;
    else if (dt > 1.0f || dt < 0.0f)
      dt = 1.0f / m_Fps;
    const float oldest = m_FrameTimes[0];
    const float t = m_FrameTimes[prev] + dt;
    m_FrameTimes[m_FrameTimeIndex] = t;
    m_FrameTimeIndex = (m_FrameTimeIndex + 1) % FRAME_RING;
    if (n > 0) m_Fps = b * m_Fps + (1.0f - b) * static_cast<float>(n) / (t - oldest);
    return;
  }
  // The window shrinks with the frame rate, to about 10% of its base size.
  if (m_Fps < 60.0f) W = SatInt((m_Fps / 60.0f * 0.9f + 0.1f) * static_cast<float>(W));
  if (W < 1) W = 1;
  if (W > FRAME_RING) W = FRAME_RING;
  // A stall counts as one nominal frame.
  if (dt > 5.0f / m_Fps || dt > 1.0f || dt < 0.0f) dt = kNominalFrame;
  const float oldest = m_FrameTimes[(m_FrameTimeIndex - W + FRAME_RING) % FRAME_RING];
  const float t = m_FrameTimes[prev] + dt;
  m_FrameTimes[m_FrameTimeIndex] = t;
  m_FrameTimeIndex = (m_FrameTimeIndex + 1) % FRAME_RING;
  const float e = static_cast<float>(W) / (t - oldest);
  const float b = hi ? 0.87f : 0.93f;
  if (std::fabs(m_Fps - e) > 3.0f)
    m_Fps = e;  // a real change is taken at once
  else
    m_Fps = (1.0f - b) * e + b * m_Fps;
}

void CAppTypeWin::LimitFrameRate() {
  const float c = m_MaxFps;
  if (c <= 0.0f) return;
  float lo = c, hi = c;
  const float b = -0.002f * c;
  const float d = b * b + 4.0f;
  if (d > 0.0f) {
    const float r = (std::sqrt(d) - b) / 2.0f;
    if (r > 1.0f) {
      lo = c / r;
      hi = c * r;
    }
  }
  IClock &clock = GetClock();
  if (!m_Timer.m_HighResolution) {
    clock.Sleep(static_cast<uint32_t>(SatInt(1000.0f / c)));
    return;
  }
  int64_t now = clock.Counter();
  if (m_LastFrameCounter != 0) {
    const int64_t freq = m_Timer.m_Frequency;
    const int64_t minTicks = SatInt<int64_t>(static_cast<double>(freq) / hi);
    const int64_t targetTicks = SatInt<int64_t>(static_cast<double>(freq) / lo);
    for (;;) {
      now = clock.Counter();
      const int64_t delta = now - m_LastFrameCounter;
      // A counter that went back (a change of processor) ends the wait.
      if (delta >= minTicks || now < m_LastFrameCounter) break;
      const int64_t left = targetTicks - delta;
      if (left > freq / 100)
        clock.Sleep(5);
      else if (left > freq / 1000)
        clock.Sleep(1);
      else
        for (int i = 0; i < 10; ++i) clock.Sleep(0);
    }
  }
  m_LastFrameCounter = now;
}
