#include "renderogl/RenderOGLBase.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstdio>

#include "core/Log.h"
#include "core/RunMode.h"
#include "platform/GlxContext.h"
#include "platform/X11WindowSystem.h"
#include "renderogl/TextureManager.h"
#include "scene/Serialize.h"

namespace {
const char *const kNoGL20Text =
    "This program needs a graphics card with drivers that supports at least OpenGL 2.0\n\nYou probably only need "
    "to update your graphics card driver.\nPlease go to you graphics card vendors web site and download the "
    "latest drivers.\n\nYou might also be able to download the drivers using windows update.\nStart windows "
    "update and see if you can download any update relating to 'Display'";

bool g_OGLInfoLogged = false;

void UnionInto(CRect &into, const CRect &r) {
  if (r.Width() <= 0 || r.Height() <= 0) return;
  if (into.Width() <= 0 || into.Height() <= 0) {
    into = r;
    return;
  }
  into = {std::min(into.left, r.left), std::min(into.top, r.top), std::max(into.right, r.right),
          std::max(into.bottom, r.bottom)};
}

const char *GLText(GLenum name) {
  const char *s = reinterpret_cast<const char *>(glGetString(name));
  return s ? s : "";
}
}  // namespace

void CRenderUnitOGL::Free(IGLContext *context) {
  if (m_HasContext && context) context->MakeCurrent(0);
  m_Window = nullptr;
  m_HasContext = false;
}

CRenderOGLBase::CRenderOGLBase(const char *displayName) : CRenderOGLBase(OpenX11WindowSystem(displayName)) {}

CRenderOGLBase::CRenderOGLBase(std::unique_ptr<IWindowSystem> windows)
    : CRenderWin(windows.get()), m_Screenshot(*this), m_OwnWindowSystem(std::move(windows)) {}

CRenderOGLBase::CRenderOGLBase(IWindowSystem *windows) : CRenderWin(windows), m_Screenshot(*this) {}

CRenderOGLBase::~CRenderOGLBase() {
  m_Client = nullptr;
  Cleanup3DEnvironment();
  DestroyScreen();
  m_Context.reset();
}

bool CRenderOGLBase::Reserved2() {
  UpdateMonitorRects();
  return true;
}

bool CRenderOGLBase::Reserved3() {
  UpdateMonitorRects();
  return true;
}

bool CRenderOGLBase::Init() {
  CRenderWin::Init();
  if (m_WindowSystem) return true;
  m_Failed = true;
  return LogError("No X display: no monitor and no window can be used");
}

void CRenderOGLBase::ReportError(const char *text) {
  LogError("%s", text);
  if (!m_Settings.showsFailures) return;
  fprintf(stderr, "Velmor visualizer: %s\n", text);
}

bool CRenderOGLBase::CreateScreen(int mode, WindowHandle parent, bool visible) {
  // Windows must be made on the visual of the context's configuration, so
  // the configuration comes first.
  if (m_WindowSystem && !m_Context) {
    m_Context = CreateGlxContext(*m_WindowSystem);
    unsigned long visual = m_Context ? m_Context->ChooseConfig(m_DesktopBPP) : 0;
    if (m_Context && !visual) LogError("ChoosePixelFormat failed");
    m_WindowSystem->SetWindowVisual(visual);
  }
  return CRenderWin::CreateScreen(mode, parent, visible);
}

bool CRenderOGLBase::SetupPixelFormat(CRenderUnitOGL &unit) {
  if (!m_Context || !m_Context->PixelFormat().id) return LogError("ChoosePixelFormat failed");
  if (!m_Context->AcceptsWindow(unit.m_Window->handle)) return LogError("SetPixelFormat failed");
  GLPixelFormat f = m_Context->PixelFormat();
  Log("Pixelformat: %ld Color: %ld Depth: %ld Stencil: %ld DoubleBuffer: %ld Software: %ld mcd: %ld icd: %ld",
      static_cast<long>(f.id), static_cast<long>(f.colorBits), static_cast<long>(f.depthBits),
      static_cast<long>(f.stencilBits), static_cast<long>(f.doubleBuffer), static_cast<long>(f.software), 0L,
      static_cast<long>(!f.software));
  return true;
}

bool CRenderOGLBase::InitRenderUnit(CRenderWindow *window, CRenderUnitOGL &unit, CRenderUnitOGL *firstUnit) {
  unit.m_Window = window;
  if (!firstUnit) {
    if (!SetupPixelFormat(unit)) {
      unit.Free(nullptr);
      return false;
    }
    if (!m_Context->HasContext() && !m_Context->CreateContext()) {
      unit.Free(nullptr);
      return LogError("wglCreateContext failed");
    }
  } else {
    if (!m_Context || !firstUnit->m_HasContext) {
      unit.Free(nullptr);
      return LogError("(Shared) ChoosePixelFormat failed");
    }
    if (!m_Context->AcceptsWindow(window->handle)) {
      unit.Free(nullptr);
      return LogError("(Shared) SetPixelFormat failed");
    }
  }
  unit.m_HasContext = true;
  return true;
}

bool CRenderOGLBase::InitOpenGL(CRenderUnitOGL *unit) {
  bool hosted = m_Settings.hostPresents;
  if (!hosted) {
    if (!unit || !m_Context || !m_Context->MakeCurrent(unit->m_Window->handle))
      return LogError("wglMakeCurrent failed. LastError: %lx", 0UL);
    if (!g_OGLInfoLogged) {
      g_OGLInfoLogged = true;
      Log("OGLInfo : %s, %s, %s", GLText(GL_VENDOR), GLText(GL_RENDERER), GLText(GL_VERSION));
    }
  }
  if (!m_TextureManager) {
    m_TextureManager = new CTextureManager[MaxRenderUnits];
    m_TextureManager->Init();
  }
  if (!m_GLReady && !m_Failed) {
    GLenum status = glewInit();
    if (status != GLEW_OK) {
      char text[256];
      snprintf(text, sizeof(text), "Failed to init Glew %s", reinterpret_cast<const char *>(glewGetErrorString(status)));
      ReportError(text);
      m_Failed = true;
    } else if (!GLEW_VERSION_2_0) {
      ReportError(kNoGL20Text);
      m_Failed = true;
    } else if (!InitEffects()) {
      ReportError("Failed to init the FxManager");
      m_Failed = true;
    } else {
      m_GLReady = true;
    }
  }
  if (m_Failed) return false;
  ResetDeviceState();
  if (!hosted) m_Context->SetSwapInterval(unit->m_Window->handle, 1);
  return true;
}

void CRenderOGLBase::ResetDeviceState() {
  glFrontFace(GL_CW);
  glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
  glClearDepth(1.0);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
}

bool CRenderOGLBase::ChangeScreenResolution(CMonitor &monitor) {
  Log("Changing display mode: \"%s\" %ldx%ld %ld ", monitor.m_DeviceName.c_str(), static_cast<long>(monitor.Width),
      static_cast<long>(monitor.Height), static_cast<long>(monitor.BPP));
  if (!m_WindowSystem || !m_WindowSystem->SetMode(monitor.m_DeviceName, monitor.Width, monitor.Height)) return false;
  m_ChangedModes.push_back(&monitor);
  return true;
}

bool CRenderOGLBase::Initialize3DEnvironment(int mode) {
  m_Mode = mode;
  if (m_Settings.hostPresents) {
    InitOpenGL(nullptr);
    SwitchToRenderUnit(0);
    return true;
  }
  m_UnitCount = 0;
  for (CRenderWindow &window : m_Windows) {
    CMonitor *monitor = window.monitor;
    if (monitor && monitor->LeaveBlack) {
      m_WindowSystem->ShowWindow(window.handle);
      continue;
    }
    if (monitor && monitor->Width && monitor->Height && monitor->BPP && !ChangeScreenResolution(*monitor))
      LogError("Failed to change resolution");
    if (m_UnitCount >= MaxRenderUnits) break;
    CRenderUnitOGL *first = m_UnitCount ? &m_Units[0] : nullptr;
    if (InitRenderUnit(&window, m_Units[static_cast<size_t>(m_UnitCount)], first)) ++m_UnitCount;
  }
  for (int i = 0; i < m_UnitCount; ++i)
    if (!InitOpenGL(&m_Units[static_cast<size_t>(i)])) return false;
  UpdateMonitorRects();
  CRect virtualRect;
  bool anyFullScreen = false;
  for (int i = 0; i < m_UnitCount; ++i) {
    const CRenderWindow *w = m_Units[static_cast<size_t>(i)].m_Window;
    if (!w->fullScreen || !w->monitor || w->monitor->LeaveBlack) continue;
    UnionInto(virtualRect, w->monitor->m_Rect);
    anyFullScreen = true;
  }
  if (anyFullScreen) m_VirtualRect = virtualRect;
  Log("Virtual screen size %ld,%ld %ldx%ld", static_cast<long>(m_VirtualRect.left),
      static_cast<long>(m_VirtualRect.top), static_cast<long>(m_VirtualRect.Width()),
      static_cast<long>(m_VirtualRect.Height()));
  if (!m_Failed && SwitchToRenderUnit(0)) CreateDeviceTextures();
  for (int i = 0; i < m_UnitCount; ++i) {
    WindowHandle handle = m_Units[static_cast<size_t>(i)].m_Window->handle;
    m_WindowSystem->ShowWindow(handle);
    m_Context->MakeCurrent(handle);
    m_Context->SwapBuffers(handle);
  }
  if (m_UnitCount) SwitchToRenderUnit(0);
  return true;
}

bool CRenderOGLBase::SwitchToRenderUnit(int index) {
  CRender::SwitchToRenderUnit(index);
  if (m_Settings.hostPresents) return true;
  if (index < 0 || index >= m_UnitCount || !m_Units[static_cast<size_t>(index)].m_HasContext) return false;
  const CRenderWindow *window = m_Units[static_cast<size_t>(index)].m_Window;
  if (!window->fullScreen || !window->monitor) {
    PlatformRect client;
    if (m_WindowSystem->GetClientRect(window->handle, client))
      m_UnitRect = m_VirtualRect = CRect{client.left, client.top, client.right, client.bottom};
  } else {
    m_UnitRect = window->monitor->m_Rect;
  }
  if (!m_Context->MakeCurrent(window->handle) && !m_SwitchFailureLogged) {
    m_SwitchFailureLogged = true;
    LogError("Unable to switch to ogl render unit: %lx. First and only error of this type printed",
             static_cast<unsigned long>(window->handle));
  }
  // Windows differ in size; the viewport of the last one must not carry over.
  glViewport(0, 0, m_UnitRect.Width(), m_UnitRect.Height());
  m_Viewport = CPixelRect{0, 0, m_UnitRect.Width(), m_UnitRect.Height()};
  return true;
}

bool CRenderOGLBase::Render3DEnvironment(bool blackOnly) {
  if (m_UnitCount == 0) {
    if (m_Client) m_Client->FrameFinished();
    return true;
  }
  UpdateFps();
  DrawUnits(m_UnitCount, blackOnly);
  // Presenting is a pass of its own so that all monitors flip together.
  for (int i = 0; i < m_UnitCount; ++i) {
    WindowHandle handle = m_Units[static_cast<size_t>(i)].m_Window->handle;
    m_Context->SwapBuffers(handle);
  }
  if (m_Client) m_Client->FrameFinished();
  return true;
}

int CRenderOGLBase::CreateWin(WindowHandle parent, WindowHandle *outWindow) {
  if (m_UnitCount >= MaxRenderUnits || !CreateScreen(MODE_Preview, parent, true)) return -1;
  CRenderWindow &window = m_Windows.back();
  if (outWindow) *outWindow = window.handle;
  CRenderUnitOGL &unit = m_Units[static_cast<size_t>(m_UnitCount)];
  if (!InitRenderUnit(&window, unit, m_UnitCount ? &m_Units[0] : nullptr)) return -1;
  if (!InitOpenGL(&unit)) return -1;
  return m_UnitCount++;
}

CRenderTarget *CRenderOGLBase::CreateRenderTarget(int width, int height, int depthFormat) {
  if (!m_TextureManager) return nullptr;
  return CTextureManager::CreateRenderTarget(m_TextureManager, *this, width, height, depthFormat);
}

void CRenderOGLBase::ReleaseTexture(CTexture *texture) {
  if (m_TextureManager) CTextureManager::ReleaseTexture(m_TextureManager, *this, texture);
}

void CRenderOGLBase::Cleanup3DEnvironment() {
  bool current = SwitchToRenderUnit(0) && (m_Settings.hostPresents || m_UnitCount > 0);
  if (current && m_Client) m_Client->InvalidateDeviceObjects();
  if (current || m_Settings.hostPresents) {
    for (CTexture *texture : m_OwnedTextures) {
      texture->Release();
      delete texture;
    }
    m_OwnedTextures.clear();
    if (m_GLReady) FreeEffects();
    if (m_TextureManager) CTextureManager::Free(m_TextureManager);
  }
  m_GLReady = false;
  delete[] m_TextureManager;
  m_TextureManager = nullptr;
  if (!m_ChangedModes.empty() && m_WindowSystem) m_WindowSystem->RestoreModes();
  m_ChangedModes.clear();
  for (int i = 0; i < m_UnitCount; ++i) m_Units[static_cast<size_t>(i)].Free(m_Context.get());
  m_UnitCount = 0;
  if (m_Context) m_Context->DestroyContext();
}

void CRenderOGLBase::Serialize(CSerialize &s) {
  s.EnterElement("RenderOGL");
  if (s.m_Storing) {
    for (int i = 0; i < m_MonitorCount; ++i) {
      CMonitor &m = m_Monitors[i];
      s.EnterElement("Screen");
      s.Serialize("Id", m.m_DeviceName);
      s.Serialize("LeaveBlack", m.LeaveBlack);
      s.Serialize("Width", m.Width);
      s.Serialize("Height", m.Height);
      s.Serialize("BPP", m.BPP);
      s.LeaveElement();
    }
  } else {
    for (s.FirstChild(); s.HasChild(); s.NextChild()) {
      if (s.GetChildName() != "Screen") continue;
      CMonitor *m = FindMonitor(s.GetChildAttribute("Id"));
      if (!m) continue;
      s.EnterElement("Screen");
      m->LeaveBlack = s.Serialize("LeaveBlack", m->LeaveBlack);
      m->Width = s.Serialize("Width", m->Width);
      m->Height = s.Serialize("Height", m->Height);
      m->BPP = s.Serialize("BPP", m->BPP);
      s.LeaveElement();
    }
  }
  s.LeaveElement();
}

void CRenderOGLBase::ReadPixels(void *buffer) {
  glReadPixels(0, 0, m_UnitRect.Width(), m_UnitRect.Height(), GL_BGR, GL_UNSIGNED_BYTE, buffer);
}

std::string CRenderOGLBase::Screenshot(const std::string &path) { return m_Screenshot.Capture(path); }

void CRenderOGLBase::SetSwapInterval(int interval) {
  for (int i = 0; i < m_UnitCount; ++i)
    if (const CRenderWindow *window = m_Units[static_cast<size_t>(i)].m_Window)
      m_Context->SetSwapInterval(window->handle, interval);
}

int CRenderOGLBase::UnitOfWindow(int windowIndex) const {
  if (windowIndex < 0 || windowIndex >= static_cast<int>(m_Windows.size())) return -1;
  const CRenderWindow *window = &m_Windows[static_cast<size_t>(windowIndex)];
  for (int i = 0; i < m_UnitCount; ++i)
    if (m_Units[static_cast<size_t>(i)].m_Window == window) return i;
  return -1;
}

GLInfo CRenderOGLBase::QueryGLInfo() const {
  GLInfo info;
  info.vendor = GLText(GL_VENDOR);
  info.renderer = GLText(GL_RENDERER);
  info.version = GLText(GL_VERSION);
  if (!m_GLReady) return info;
  info.framebufferObjects = GLEW_EXT_framebuffer_object || GLEW_ARB_framebuffer_object;
  info.bufferObjects = GLEW_VERSION_1_5 || GLEW_ARB_vertex_buffer_object;
  info.version20 = GLEW_VERSION_2_0;
  return info;
}
