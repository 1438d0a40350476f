// Window, capture, configuration and display commands: what a host asks of
// the renderer and the program's settings.
#include <cstdlib>
#include <filesystem>

#include "core/Paths.h"
#include "engine/Velmor.h"
#include "engine/commands/Commands.h"
#include "render/RenderWin.h"

namespace {
std::string Number(long long value) { return std::to_string(value); }

CRenderWin *Windows(CVelmor &v) { return dynamic_cast<CRenderWin *>(v.m_Render); }

CommandResult WinCreate(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  CRenderWin *render = Windows(*v);
  const auto parent = static_cast<WindowHandle>(strtoull(r.Get("ParentHWND").c_str(), nullptr, 10));
  WindowHandle window = 0;
  const int id = render ? render->CreateWin(parent, &window) : -1;
  if (id == -1) return CommandFailed("Unable to create window");
  if (!render->Initialize3DEnvironment(MODE_HostChild)) return CommandFailed("Unable to Initialize 3D");
  return Answer(e, XmlElement("WinCreated").Set("Id", Number(id)).Set("hwnd", Number(static_cast<long long>(window))));
}

CommandResult WinCapture(CScriptEngine &e, XmlElement &, CVelmor *v) {
  CRenderWin *render = Windows(*v);
  const std::string folder = JoinPath(UserPath(), "Screenshots");
  std::error_code ignored;  // an existing folder is no error
  std::filesystem::create_directories(folder, ignored);
  const std::string written = render ? render->Screenshot(JoinPath(folder, v->ActiveSceneName() + ".png")) : "";
  if (written.empty()) return CommandFailed("Failed to save screen capture");
  return Answer(e, XmlElement("WinCaptured").Set("FileName", written));
}

CommandResult ConfigGet(CScriptEngine &e, XmlElement &, CVelmor *v) {
  const float maxFps = v->m_GetMaxFps ? v->m_GetMaxFps() : 0.0f;
  return Answer(e, XmlElement("Config")
                       .Set("AppPath", AppPath())
                       .Set("UserPath", UserPath())
                       .Set("CaptureSound", v->m_CaptureSound ? "1" : "0")
                       .Set("LockFPS", maxFps != 0.0f ? "1" : "0"));
}

CommandResult ConfigSet(CScriptEngine &, XmlElement &r, CVelmor *v) {
  if (r.Has("CaptureSound")) {
    v->m_CaptureSound = atoi(r.Get("CaptureSound").c_str()) != 0;
    if (v->m_ConfigureSound) v->m_ConfigureSound(v->m_CaptureSound, v->m_MaxSilenceTime);
  }
  if (r.Has("LockFPS")) {
    // Non-zero: no cap and no wait for the display; zero: 30 frames a
    // second in step with the display.
    const bool unlocked = atoi(r.Get("LockFPS").c_str()) != 0;
    if (v->m_SetMaxFps) v->m_SetMaxFps(unlocked ? 0.0f : 30.0f);
    if (CRenderWin *render = Windows(*v)) render->SetSwapInterval(unlocked ? 0 : 1);
  }
  return {};
}

XmlElement ModeElement(const char *tag, const CDisplayMode &m) {
  return XmlElement(tag)
      .Set("Index", Number(m.index))
      .Set("Width", Number(m.width))
      .Set("Height", Number(m.height))
      .Set("Bpp", Number(m.bpp))
      .Set("Hz", Number(m.refreshRate));
}

CommandResult RenderInfoGet(CScriptEngine &e, XmlElement &, CVelmor *v) {
  XmlElement info("RenderInfo");
  CRenderWin *render = Windows(*v);
  for (int i = 0; render && i < render->m_MonitorCount; ++i) {
    CMonitor &monitor = render->m_Monitors[static_cast<size_t>(i)];
    render->ListModes(monitor);
    CDisplayMode selected{monitor.Width, monitor.Height, monitor.BPP, monitor.m_RefreshRate, monitor.m_SelectedMode};
    if (monitor.m_SelectedMode >= 0 && monitor.m_SelectedMode < static_cast<int>(monitor.m_Modes.size()))
      selected = monitor.m_Modes[static_cast<size_t>(monitor.m_SelectedMode)];
    XmlElement modes("Modes");
    for (const CDisplayMode &mode : monitor.m_Modes) modes.Add(ModeElement("Mode", mode));
    info.Add(XmlElement("Monitor")
                 .Set("Name", monitor.m_DeviceName)
                 .Set("Id", Number(monitor.m_Index))
                 .Add(ModeElement("SelectedMode", selected))
                 .Add(std::move(modes)));
  }
  return Answer(e, info);
}

const CommandEntry kCommands[] = {
    {"WinCreate", WinCreate}, {"WinCapture", WinCapture},       {"ConfigGet", ConfigGet},
    {"ConfigSet", ConfigSet}, {"RenderInfoGet", RenderInfoGet},
};
}  // namespace

std::span<const CommandEntry> HostCommands() { return kCommands; }
