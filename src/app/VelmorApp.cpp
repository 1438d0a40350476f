#include "app/VelmorApp.h"

#include <cstdio>
#include <filesystem>

#include "app/AppTypeWin.h"
#include "core/Log.h"
#include "core/Paths.h"
#include "core/Trace.h"
#include "audio/SoundAnalyzer.h"
#include "engine/EngineInterface.h"
#include "engine/Velmor.h"
#include "nodes/effect/FxNode.h"
#include "render/Render.h"
#include "render/Matrix.h"
#include "scene/Serialize.h"

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
  if (m_Engine) m_Engine->Draw(CurrentRender());
  return true;
}

bool CVelmorApp::Update(float dt) {
  TRACE_SCOPE("CVelmorApp::Update");
  m_FrameTimes.BeginFrame();
  if (m_Engine) m_Engine->Update(dt);
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
