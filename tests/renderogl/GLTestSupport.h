#pragma once
// A small real GL window for backend tests: a framed parent window and the
// renderer's preview child inside it, on the X display of the test run.

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <vector>

#include "core/RunMode.h"
#include "platform/X11WindowSystem.h"
#include "render/RecordRender.h"
#include "renderogl/RenderOGL.h"

// The test command always sets DISPLAY; only a bare run may lack it.
#define VELMOR_REQUIRE_DISPLAY() \
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: GL tests need an X server"

// Keeps Mesa's driver mapped until exit (see GLDriverPin.h).
void PinGLDriver();

constexpr int kPreviewMode = MODE_Preview, kFullScreenMode = MODE_FullScreen, kTestMode = MODE_Test;

class GLWindow {
 public:
  // Starts a renderer drawing into a width x height window; check Ok().
  GLWindow(int width, int height) {
    render.Init();
    if (IWindowSystem *ws = render.GetWindowSystem()) {
      WindowSpec windowSpec;
      windowSpec.rect = {0, 0, width, height};
      windowSpec.title = "velmor test";
      m_Parent = ws->CreateWindow(windowSpec);
    }
    render.SetClient(&client);
    m_Ok = m_Parent && render.CreateScreen(kPreviewMode, m_Parent, true) &&
           render.Initialize3DEnvironment(kPreviewMode) && !render.m_Failed && render.UnitCount() == 1;
    PinGLDriver();
  }
  ~GLWindow() {
    render.Cleanup3DEnvironment();
    render.DestroyScreen();
    if (m_Parent) render.GetWindowSystem()->DestroyWindow(m_Parent);
  }
  bool Ok() const { return m_Ok; }

  // The current unit's pixels as ReadPixels gives them.
  std::vector<uint8_t> Pixels() {
    int w = render.m_UnitRect.Width(), h = render.m_UnitRect.Height();
    std::vector<uint8_t> bytes(static_cast<size_t>(((w * 3 + 3) & ~3) * h));
    render.ReadPixels(bytes.data());
    return bytes;
  }
  // Red, green, blue of pixel (x, y), y from the top.
  std::array<int, 3> Pixel(const std::vector<uint8_t> &bytes, int x, int y) const {
    int w = render.m_UnitRect.Width(), h = render.m_UnitRect.Height();
    size_t at = static_cast<size_t>(((w * 3 + 3) & ~3) * (h - 1 - y) + x * 3);
    return {bytes[at + 2], bytes[at + 1], bytes[at]};
  }

  CRenderOGL render;
  CRenderClientFunctions client;

 private:
  WindowHandle m_Parent = 0;
  bool m_Ok = false;
};

// A program that reads the position from attribute 0 and the color from
// attribute 3, transformed by GL's matrix state.
GLuint ColorProgram();
