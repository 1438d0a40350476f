// velmor-tool info: what Velmor sees of this machine's display and GL.

#include <cstdio>
#include <cstdlib>

#include "core/Log.h"
#include "renderogl/RenderOGL.h"
#include "tool/ToolCommand.h"

namespace {
int RunInfo(int argc, char **) {
  if (argc > 1) {
    fprintf(stderr, "usage: velmor-tool info\n");
    return 2;
  }
  const char *display = getenv("DISPLAY");
  printf("display: %s\n", display ? display : "(none)");
  CRenderOGL render;
  if (!render.Init()) {
    fprintf(stderr, "velmor-tool: %s\n", GetFirstError());
    return 1;
  }
  for (int i = 0; i < render.m_MonitorCount; ++i) {
    CMonitor &m = render.m_Monitors[i];
    render.ListModes(m);
    printf("monitor %d: %s %d,%d %dx%d\n", i, m.m_DeviceName.c_str(), m.m_Rect.left, m.m_Rect.top,
           m.m_Rect.Width(), m.m_Rect.Height());
    for (const CDisplayMode &mode : m.m_Modes)
      printf("  mode %dx%d %d bpp %d Hz\n", mode.width, mode.height, mode.bpp, mode.refreshRate);
  }
  // GL needs a context, and a context needs a window: a hidden test window.
  if (!render.CreateScreen(MODE_Test, 0, false) || !render.Initialize3DEnvironment(MODE_Test) || render.m_Failed) {
    fprintf(stderr, "velmor-tool: no usable OpenGL: %s\n", GetFirstError());
    render.DestroyScreen();
    return 1;
  }
  const GLInfo gl = render.QueryGLInfo();
  printf("gl vendor: %s\ngl renderer: %s\ngl version: %s\n", gl.vendor.c_str(), gl.renderer.c_str(), gl.version.c_str());
  printf("gl 2.0: %s\nframebuffer objects: %s\nbuffer objects: %s\n", gl.version20 ? "yes" : "no",
         gl.framebufferObjects ? "yes" : "no", gl.bufferObjects ? "yes" : "no");
  render.Cleanup3DEnvironment();
  render.DestroyScreen();
  return 0;
}
}  // namespace

VELMOR_TOOL_COMMAND(info, "info", 8, "", "print the X display, monitors with their modes, and the OpenGL in use", RunInfo);
