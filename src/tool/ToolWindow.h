#pragma once
// A window of a given size on the current display with the OpenGL renderer
// drawing an engine into it, as into a preview, for commands that draw
// scenes offline.

#include <string>

#include "engine/Velmor.h"
#include "renderogl/RenderOGL.h"

class CToolWindow : private CRenderClient {
 public:
  explicit CToolWindow(CVelmor &engine) : m_Engine(engine) {}
  ~CToolWindow() override;
  // False, with a message on stderr, when no OpenGL window can be had.
  bool Open(int width, int height, const std::string &title);

  CRenderOGL render;

 private:
  bool Render() override { return m_Engine.Draw(&render); }
  bool FrameFinished() override { return m_Engine.FrameFinished(); }
  bool InvalidateDeviceObjects() override {
    m_Engine.InvalidateDevice(&render);
    return true;
  }

  CVelmor &m_Engine;
  WindowHandle m_Parent = 0;
};
