#include "app/VelmorApp.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "app/AppTypeScreensaver.h"
#include "app/AppTypeWin.h"
#include "app/HostChannel.h"
#include "core/Log.h"
#include "core/Paths.h"
#include "core/Trace.h"
#include "audio/SoundAnalyzer.h"
#include "engine/EngineInterface.h"
#include "engine/Stats.h"
#include "engine/Velmor.h"
#include "nodes/effect/FxNode.h"
#include "platform/CrashReport.h"
#include "render/Render.h"
#include "render/RenderWin.h"
#include "renderogl/RenderOGLBase.h"
#include "render/Matrix.h"
#include "scene/Serialize.h"

namespace {
// What the usage statistics learn of this process's host and screens.
StatsHost DescribeStatsHost() {
  StatsHost h;
  h.application = g_AppType != nullptr;
  if (!g_AppType) return h;
  h.appType = g_AppType->m_AppType;
  h.countsScenes = g_AppType->m_Settings.statisticsAllowed;
  h.preview = g_AppType->m_Settings.preview;
  h.userPath = UserPath();
  const auto *saver = dynamic_cast<const CAppTypeScreensaver *>(g_AppType);
  if (saver) h.sendUsageInfo = saver->m_SendUsageInfo;
  h.endpoint = StatsEndpoint(saver ? saver->m_StatsUrl : std::string());
  if (const auto *win = dynamic_cast<const CRenderWin *>(g_AppType->m_Render)) {
    h.desktopSize = win->m_DesktopText;
    h.numMonitors = win->m_MonitorCount;
    CRect all;
    for (int i = 0; i < win->m_MonitorCount; ++i) {
      const CRect &r = win->m_Monitors[static_cast<size_t>(i)].m_Rect;
      all = i == 0 ? r : CRect{std::min(all.left, r.left), std::min(all.top, r.top), std::max(all.right, r.right),
                               std::max(all.bottom, r.bottom)};
    }
    h.virtualSize = std::to_string(all.Width()) + "x" + std::to_string(all.Height());
  }
  return h;
}
}  // namespace

std::unique_ptr<IVelmorEngine> CVelmorApp::MakeVelmorEngine() {
  auto engine = std::make_unique<CVelmor>();
  // The analysis smooths by the frame rate the host estimates.
  engine->m_UpdateSound = [] { g_Sound.UpdateSound(g_AppType ? g_AppType->m_Fps : 30.0f); };
  engine->m_RegisterEffectNodes = [](CNodeFactory &factory) { CNEFx::AddNodesToFactory(factory); };
  engine->m_ConfigureSound = [](bool capture, int maxSilence) {
    // A sound file from the command line plays whatever the configuration says.
    g_Sound.m_CaptureSound = capture || g_Sound.Capture().Source();
    g_Sound.m_MaxSilenceTime = maxSilence;
  };
  if (g_AppType) engine->m_Settings = g_AppType->m_Settings;
  engine->m_GetMaxFps = [] { return g_AppType ? g_AppType->m_MaxFps : 0.0f; };
  engine->m_SetMaxFps = [](float fps) {
    if (g_AppType) g_AppType->m_MaxFps = fps;
  };
  GetStats().SetHostDescription(DescribeStatsHost);
  engine->m_Stats = &GetStats();
  return engine;
}

CVelmorApp::CVelmorApp(EngineMaker makeEngine) : m_MakeEngine(std::move(makeEngine)) {}

CVelmorApp::~CVelmorApp() { Free(); }

bool CVelmorApp::Init() {
  TRACE_SCOPE_LOGGED("CVelmorApp::Init");
  std::error_code ignored;  // an existing folder is no error
  std::filesystem::create_directories(JoinPath(UserPath(), "projects"), ignored);
  if (!m_Engine && m_MakeEngine) m_Engine = m_MakeEngine();
  if (!m_Engine) return false;
  if (g_AppType) m_Engine->SetRender(g_AppType->m_Render);
  if (auto *win = dynamic_cast<CRenderWin *>(g_AppType ? g_AppType->m_Render : nullptr))
    SetCrashReportDesktop(win->m_DesktopWidth, win->m_DesktopHeight, win->m_DesktopBPP);
  StartRequest request;
  request.projectFile = m_ProjectFile;
  request.isScreensaver = m_IsScreensaver;
  if (g_AppType) {
    request.settings = g_AppType->m_Settings;
    request.file = g_AppType->m_File;
  }
  return m_Engine->Start(request);
}

void CVelmorApp::Free() { m_Engine.reset(); }

void CVelmorApp::Configure() {
  // No dialog boxes here: the message goes where a user of a terminal or
  // the log will see it.
  fprintf(stderr, "Information: Use the stand alone config application to configure the screensaver\n");
  Log("Use the stand alone config application to configure the screensaver");
}

static CRender *CurrentRender() { return g_AppType ? g_AppType->m_Render : nullptr; }

bool CVelmorApp::Render() {
  TRACE_SCOPE("CVelmorApp::Render");
  // The statistics name the driver, which answers only while a context is current.
  if (GetStats().m_OpenGLInfo.empty())
    if (const auto *ogl = dynamic_cast<const CRenderOGLBase *>(CurrentRender())) {
      const GLInfo gl = ogl->QueryGLInfo();
      if (!gl.vendor.empty()) GetStats().m_OpenGLInfo = gl.vendor + ", " + gl.renderer + ", " + gl.version;
    }
  if (m_Engine) m_Engine->Draw(CurrentRender());
  return true;
}

bool CVelmorApp::Update(float dt) {
  TRACE_SCOPE("CVelmorApp::Update");
  m_FrameTimes.BeginFrame();
  if (m_HostChannel) m_HostChannel->BeforeUpdate();
  if (m_Engine) m_Engine->Update(dt);
  if (m_HostChannel) m_HostChannel->AfterUpdate();
  return true;
}

bool CVelmorApp::RestoreDeviceObjects() {
  CRender *render = CurrentRender();
  if (!render) return true;
  render->SetTransform(1, CMatrix::Identity());
  return !m_Engine || m_Engine->RestoreDevice(render);
}

bool CVelmorApp::InvalidateDeviceObjects() {
  if (CRender *render = CurrentRender(); render && m_Engine) m_Engine->InvalidateDevice(render);
  return true;
}

bool CVelmorApp::FrameFinished() {
  if (m_Engine) m_Engine->FrameFinished();
  CrashIfTesting();
  m_FrameTimes.EndFrame(m_Engine ? m_Engine->ActiveScene() : nullptr);
  return true;
}

void CVelmorApp::GetPresetName(int index, char *out) {
  if (m_Engine)
    m_Engine->GetPresetName(index, out);
  else
    out[0] = 0;
}
int CVelmorApp::GetPresetCount() { return m_Engine ? m_Engine->GetPresetCount() : 0; }
void CVelmorApp::SelectPreset(int index) {
  if (m_Engine) m_Engine->SelectPreset(index);
}
int CVelmorApp::GetCurrentPreset() { return m_Engine ? m_Engine->GetCurrentPreset() : 0; }
void CVelmorApp::NextPreset() {
  if (m_Engine) m_Engine->NextPreset();
}
void CVelmorApp::PreviousPreset() {
  if (m_Engine) m_Engine->PreviousPreset();
}
void CVelmorApp::SetAutoChange(bool enabled, bool changeNow) {
  if (m_Engine) m_Engine->SetAutoChange(enabled, changeNow);
}
void CVelmorApp::ShowMenu(int x, int y, WindowHandle window) {
  if (m_Engine) m_Engine->ShowMenu(x, y, window);
}
void CVelmorApp::MenuSelected(int id) {
  if (m_Engine) m_Engine->MenuSelected(id);
}
void CVelmorApp::ReactivateScene() {
  if (m_Engine) m_Engine->ReactivateScene();
}
void CVelmorApp::OpenConfiguration() {
  if (m_Engine) m_Engine->OpenConfiguration();
}

std::string CVelmorApp::GetScreenshotName() {
  if (!m_Engine) return std::string();
  std::string name = m_Engine->ActiveSceneName();
  return name.empty() ? name : name + ".png";
}

void CVelmorApp::Serialize(CSerialize &s) {
  m_ProjectFile = PathValue(s.Serialize("Project", m_ProjectFile));
  if (!m_Engine && m_MakeEngine) m_Engine = m_MakeEngine();
  if (m_Engine) m_Engine->SerializeSettings(s, m_IsScreensaver);
  Log("Project file requested \"%s\" from config", m_ProjectFile.c_str());
}
