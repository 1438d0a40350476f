#include "app/AppTypeScreensaver.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <tinyxml.h>

#include "app/Folders.h"
#include "app/UserApp3d.h"
#include "core/Clock.h"
#include "core/Log.h"
#include "core/Paths.h"
#include "core/Trace.h"
#include "platform/MessageQueue.h"
#include "platform/X11Desktop.h"
#include "platform/X11WindowSystem.h"
#include "render/RenderWin.h"
#include "scene/SerializeXML.h"

namespace {
constexpr int kMouseThreshold = 5;

// A message box has no place in a screensaver on this desktop: the text
// goes where a user looking for it will find it.
void ReportFailure(const char *caption) {
  fprintf(stderr, "%s: %s\n", caption, GetFirstError());
  Log("%s: %s", caption, GetFirstError());
}

bool HasWindows(int mode) {
  return mode == MODE_Preview || mode == MODE_FullScreen || mode == MODE_Test || mode == MODE_Record ||
         mode == MODE_Screenshot;
}
}  // namespace

CAppTypeScreensaver::CAppTypeScreensaver(CUserApp3d *userApp, RendererMaker makeRenderer)
    : CAppTypeWin(userApp), m_MakeRenderer(std::move(makeRenderer)) {
  Log("-------------------------- Starting Screensaver --------------------------");
  m_Render = nullptr;
  m_MaxFps = 30.0f;
  m_AppType = APPTYPE_Screensaver;
  SetMode(m_Mode);
}

CAppTypeScreensaver::~CAppTypeScreensaver() {
  MessageQueue().SetEventSource(nullptr);
  SetDesktop(nullptr);
  m_WindowDesktop.reset();
  m_Render = nullptr;
  m_OwnedRender.reset();
}

bool CAppTypeScreensaver::CreateRenderer() {
  m_Render = nullptr;
  m_OwnedRender.reset();
  if (!m_MakeRenderer) return false;
  m_OwnedRender = m_MakeRenderer();
  if (!m_OwnedRender || !m_OwnedRender->Init()) {
    m_OwnedRender.reset();
    return false;
  }
  m_Render = m_OwnedRender.get();
  m_Render->SetClient(m_UserApp);
  SetMode(m_Mode);  // hands the settings to the renderer
  // Window-system events become window messages, and closing the program
  // takes its windows down through the renderer.
  if (auto *win = dynamic_cast<CRenderWin *>(m_Render); win && win->GetWindowSystem()) {
    MessageQueue().SetEventSource(win->GetWindowSystem());
    m_WindowDesktop = std::make_unique<CX11Desktop>(
        *win->GetWindowSystem(), [win](WindowHandle) { win->DestroyScreen(); },
        [this](const WindowMessage &m) { WinProc(m.window, m.message, m.wparam, m.lparam); });
    SetDesktop(m_WindowDesktop.get());
  }
  return true;
}

bool CAppTypeScreensaver::Init(const std::string &commandLine) {
  TRACE_SCOPE_LOGGED("CAppTypeScreensaver::Init");
  const CommandLine cl = ParseCommandLine(commandLine);
  SetMode(cl.mode);
  m_ParentWindow = cl.parentWindow;
  m_File = cl.file;
  m_MovieFile = cl.movieFile;
  if (m_Mode == MODE_Record) {
    // A relative movie name lands in the user's Screenshots, beside F9's
    // pictures; --seconds shortens the recording instead of the run.
    if (m_MovieFile.empty()) m_MovieFile = "movie.avi";
    if (m_MovieFile[0] != '/') m_MovieFile = JoinPath(JoinPath(m_UserPath, "Screenshots"), m_MovieFile);
    if (m_RunSeconds > 0.0) m_RecordSeconds = static_cast<float>(m_RunSeconds);
    m_RunSeconds = 0.0;
    SetMovieRecorder(this);
  }

  CSerializeXMLLoad config;
  if (!m_ConfigFile.empty()) config.Load(m_ConfigFile);  // a missing file leaves the defaults
  Serialize(config);

  if (!HasWindows(m_Mode)) return true;
  if (!m_Render && !CreateRenderer()) return LogError("Unable to find a render system that could run!");
  if (!m_UserApp->Init()) return false;
  if (!m_Render->CreateScreen(m_Mode, m_ParentWindow, false)) return LogError("Unable to create window(s)");
  MessageQueue().SetCloseTarget(m_Render->GetWindowHandle(0));
  if (m_Mode == MODE_Preview) WaitForPreview();
  return true;
}

void CAppTypeScreensaver::WaitForPreview() {
  // The host's preview window settles for a moment after starting us.
  m_PreviewWaiting = true;
  MessageQueue().Post(WindowMessage{m_Render->GetWindowHandle(0), WM_USER, 0, 0});
  WindowMessage m;
  while (m_PreviewWaiting) {
    if (MessageQueue().Peek(m)) {
      if (m.message == WM_QUIT) {
        MessageQueue().PostQuit(0);
        break;
      }
      Dispatch(m);
      continue;
    }
    if (m_PreviewTimer && GetClock().Milliseconds() - m_PreviewTimerDue < 0x80000000u)
      WinProc(m_Render->GetWindowHandle(0), WM_TIMER, 1, 0);
    else
      GetClock().Sleep(5);
  }
}

int CAppTypeScreensaver::Run() {
  TRACE_SCOPE_LOGGED("CAppTypeScreensaver::Run");
  Log("Screensave mode: %ld", static_cast<long>(m_Mode));
  switch (m_Mode) {
    case MODE_Config: m_UserApp->Configure(); break;
    case MODE_Password:
      // Passwords belong to the desktop's locker on this system.
      Log("Password change is handled by the desktop's screen locker");
      break;
    default:
      if (HasWindows(m_Mode))
        RunSaver();
      else
        LogError("Unknown screensaver mode. Exiting");
      break;
  }
  return 0;
}

int CAppTypeScreensaver::RunSaver() {
  m_MouseMoves = 0;
  if (!m_Render || !m_Render->Initialize3DEnvironment(m_Mode)) return 0;
  if (m_Settings.showsFailures && m_Render->m_Failed) ReportFailure("Failed to init screensaver");
  m_StartMs = GetClock().Milliseconds();
  m_NextPicture = 0.0;
  RunApp();
  return 0;
}

void CAppTypeScreensaver::ShutdownApp() { CAppTypeWin::ShutdownApp(); }

void CAppTypeScreensaver::InterruptSaver() {
  if (m_Mode == MODE_FullScreen || m_Mode == MODE_Test || m_Mode == MODE_Record || m_Mode == MODE_Screenshot)
    ShutdownApp();
}

void CAppTypeScreensaver::ToggleFullscreen() {
  if (!m_Render) return;
  const bool fromTest = m_Mode == MODE_Test;
  if (!fromTest) Log("ToggleFullscreen: Leaving");
  m_Render->Cleanup3DEnvironment();
  m_DoPostQuit = false;
  m_Render->DestroyScreen();
  m_DoPostQuit = true;
  if (fromTest) m_UserApp->ReactivateScene();
  SetMode(fromTest ? MODE_FullScreen : MODE_Test);
  if (!m_Render->CreateScreen(m_Mode, 0, true)) {
    LogError("Unable to create window(s)");
    return;
  }
  if (m_Render->Initialize3DEnvironment(m_Mode)) m_UserApp->RestoreDeviceObjects();
}

intptr_t CAppTypeScreensaver::WinProc(WindowHandle window, uint32_t message, uintptr_t wparam, intptr_t lparam) {
  // In a test window, a recording and the screenshot window input doesn't end the program.
  const bool inputStops = m_Mode != MODE_Test && m_Mode != MODE_Record && m_Mode != MODE_Screenshot;
  switch (message) {
    case WM_MOUSEMOVE:
      if (inputStops) {
        const int x = PointParamX(lparam), y = PointParamY(lparam);
        const int dx = x - m_LastX, dy = y - m_LastY;
        if (abs(dx) > kMouseThreshold || abs(dy) > kMouseThreshold) {
          if (++m_MouseMoves > kMouseThreshold) {
            Log("Mouse movement detected (%ld %ld). Stopping screensaver.", static_cast<long>(dx), static_cast<long>(dy));
            InterruptSaver();
          }
          m_LastX = x;
          m_LastY = y;
        }
      }
      break;
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_MBUTTONDOWN:
      if (inputStops) {
        Log("Mouse click detected. Stopping screensaver.");
        InterruptSaver();
      }
      break;
    case WM_KEYDOWN:
      if (wparam == VK_F9) {
        m_ScreenshotPending = true;  // taken after the next frame is drawn
      } else if (inputStops) {
        Log("Keyboard press detected. Stopping screensaver.");
        InterruptSaver();
      }
      break;
    case WM_ACTIVATEAPP:
      if (wparam == 0 && m_Mode != MODE_Test) {
        Log("WM_ACTIVATEAPP detected. Stopping screensaver.");
        InterruptSaver();
      }
      break;
    case WM_TIMER:
      m_PreviewWaiting = false;
      m_PreviewTimer = false;
      break;
    case WM_USER:
      m_PreviewTimer = true;
      m_PreviewTimerDue = GetClock().Milliseconds() + 500;
      break;
    default: break;
  }
  return CAppTypeWin::WinProc(window, message, wparam, lparam);
}

void CAppTypeScreensaver::BeforeFrame() {
  // Monitors put to sleep by the server stop the drawing; waking resumes it.
  if (m_Mode != MODE_FullScreen) return;
  const uint32_t now = GetClock().Milliseconds();
  if (now - m_LastPowerPoll < 1000) return;
  m_LastPowerPoll = now;
  auto *win = dynamic_cast<CRenderWin *>(m_Render);
  if (!win || !win->GetWindowSystem()) return;
  const PowerState power = win->GetWindowSystem()->GetPowerState();
  if (power != POWER_Unknown) MonitorPower(power);
}

void CAppTypeScreensaver::MonitorPower(PowerState power) {
  const bool asleep = power != POWER_On;
  if (m_Mode != MODE_FullScreen || asleep == m_Paused) return;
  if (asleep)
    Log("SC_MONITORPOWER %ld detected. Pausing screensaver", power == POWER_Off ? 2L : 1L);
  else
    Log("SC_MONITORPOWER -1 detected. Resuming screensaver");
  m_Paused = asleep;
}

double CAppTypeScreensaver::Seconds() const { return (GetClock().Milliseconds() - m_StartMs) / 1000.0; }

void CAppTypeScreensaver::Screenshot(const std::string &path) {
  if (auto *win = dynamic_cast<CRenderWin *>(m_Render)) {
    std::string saved = win->Screenshot(path);
    Log("Screenshot saved as \"%s\"", saved.c_str());
  }
}

void CAppTypeScreensaver::AfterFrame() {
  if (m_ScreenshotPending) {
    m_ScreenshotPending = false;
    // With no scene playing the name is empty: the picture is named by its date alone.
    Screenshot(JoinPath(m_UserPath, "Screenshots") + "/" + m_UserApp->GetScreenshotName());
  }
  if (!m_PictureFolder.empty() && Seconds() >= m_NextPicture) {
    m_NextPicture += m_PictureEvery;
    Screenshot(m_PictureFolder + "/" + m_UserApp->GetScreenshotName());
  }
  if (m_RunSeconds > 0.0 && Seconds() >= m_RunSeconds) {
    m_RunSeconds = 0.0;
    ShutdownApp();
  }
}

void CAppTypeScreensaver::Serialize(CSerialize &s) {
  TRACE_SCOPE_LOGGED("CAppTypeScreensaver::Serialize");
  s.EnterElement(m_UserApp->GetAppName().c_str());
  s.EnterElement("Screensaver");
  m_UserApp->Serialize(s);
  s.EnterElement("Renderer");
  int type = s.Serialize("Type", m_Render ? 1 : 0);
  (void)type;  // one renderer exists on this platform
  if (!s.m_Storing && HasWindows(m_Mode)) CreateRenderer();
  if (m_Render) {
    m_Render->Serialize(s);
    m_Render->m_AllScreensSame = s.Serialize("AllScreensSame", m_Render->m_AllScreensSame);
  }
  s.LeaveElement();
  s.EnterElement("Config");
  m_SendUsageInfo = s.Serialize("SendAnonymousUsageInfo", m_SendUsageInfo);
  m_StatsUrl = s.Serialize("StatsUrl", m_StatsUrl);
  s.LeaveElement();
  s.LeaveElement();
  s.LeaveElement();
}

bool CAppTypeScreensaver::StartMovie(const std::string &file) {
  auto *win = dynamic_cast<CRenderWin *>(m_Render);
  if (!win) return false;
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(file).parent_path(), ignored);
  return win->BeginMovie(file);
}

bool CAppTypeScreensaver::WriteMovieFrame(int framesPerSecond) {
  auto *win = dynamic_cast<CRenderWin *>(m_Render);
  if (win) win->AddMovieFrame(framesPerSecond);
  return win != nullptr;
}

void CAppTypeScreensaver::EndMovie() {
  if (auto *win = dynamic_cast<CRenderWin *>(m_Render)) win->EndMovie();
}

bool CAppTypeScreensaver::SaveScreenshot(const std::string &file) {
  Screenshot(file);
  return true;
}
