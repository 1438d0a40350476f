#pragma once
// A small real GL window for backend tests: the renderer's preview child
// inside a framed parent window.

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
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

// Red, green, blue of pixel (x, y), y from the top, in a w x h picture as
// ReadPixels gives it.
inline std::array<int, 3> PixelOf(const std::vector<uint8_t> &bytes, int w, int h, int x, int y) {
  size_t at = static_cast<size_t>(((w * 3 + 3) & ~3) * (h - 1 - y) + x * 3);
  return {bytes[at + 2], bytes[at + 1], bytes[at]};
}

class GLWindow {
 public:
  GLWindow(int width, int height, const RunSettings &settings = RunSettings()) {
    render.m_Settings = settings;
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
  std::array<int, 3> Pixel(const std::vector<uint8_t> &bytes, int x, int y) const {
    return PixelOf(bytes, render.m_UnitRect.Width(), render.m_UnitRect.Height(), x, y);
  }

  CRenderOGL render;
  CRenderClientFunctions client;

 private:
  WindowHandle m_Parent = 0;
  bool m_Ok = false;
};

// Runs in `dir` while it lives: data files are found relative to it, as the
// program finds them.
struct ScopedCwd {
  explicit ScopedCwd(const std::filesystem::path &dir) { std::filesystem::current_path(dir); }
  ~ScopedCwd() { std::filesystem::current_path(old); }
  std::filesystem::path old = std::filesystem::current_path();
};

// One value of GL state, as glGetIntegerv gives it.
inline GLint GLInteger(GLenum name) {
  GLint v = 0;
  glGetIntegerv(name, &v);
  return v;
}

// A program that reads the position from attribute 0 and the color from
// attribute 3, transformed by GL's matrix state.
GLuint ColorProgram();
