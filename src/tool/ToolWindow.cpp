#include "tool/ToolWindow.h"

#include <cstdio>

#include "core/Log.h"
#include "platform/X11WindowSystem.h"

bool CToolWindow::Open(int width, int height, const std::string &title) {
  if (render.Init() && render.GetWindowSystem()) {
    WindowSpec windowSpec;
    windowSpec.rect = {0, 0, width, height};
    windowSpec.title = title;
    m_Parent = render.GetWindowSystem()->CreateWindow(windowSpec);
  }
  render.SetClient(this);
  if (!m_Parent || !render.CreateScreen(MODE_Preview, m_Parent, true) || !render.Initialize3DEnvironment(MODE_Preview) || render.m_Failed) {
    fprintf(stderr, "velmor-tool: no OpenGL window to render into: %s\n", GetFirstError());
    return false;
  }
  m_Engine.SetRender(&render);
  m_Engine.SetActiveScene(m_Engine.m_ActiveScene);
  return true;
}

CToolWindow::~CToolWindow() {
  if (!m_Parent) return;
  m_Engine.SetActiveScene(nullptr);
  render.Cleanup3DEnvironment();
  render.DestroyScreen();
  render.GetWindowSystem()->DestroyWindow(m_Parent);
}
