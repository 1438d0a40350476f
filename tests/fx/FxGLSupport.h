#pragma once
// GL effect tests: a real window's CFxManagerOGL, a small RGBA32F target and
// a full-target quad (position on attribute 0, uv on attribute 8).

#include "renderogl/GLTestSupport.h"
#include "renderogl/FxManagerOGL.h"
#include "FxTestSupport.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using Float4 = std::array<float, 4>;

// The quad's position as it is, uv to TEXCOORD0.
extern const char *const kQuadVS;
// `kQuadVS` and a one-pass technique around the fragment entry `PS`.
std::string QuadEffect(const std::string &declarationsAndPS);

class FxGLTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  // A new effect from the text, with its best technique (both checked).
  CFx *Parse(const std::string &text);
  FxTechniqueRecord *Technique(CFx *fx);
  // Runs every pass of the technique over the target; `perPass` runs after
  // BeginPass, before CommitChanges and the draw.
  template <class F>
  void Draw(CFx *fx, FxTechniqueRecord *t, F perPass) {
    for (FxPassRecord *p = fx->Begin(t); p; p = fx->NextPass(p)) {
      ASSERT_TRUE(fx->BeginPass(p));
      perPass();
      fx->CommitChanges();
      DrawQuad();
      fx->EndPass(p);
    }
    fx->End();
  }
  void Draw(CFx *fx, FxTechniqueRecord *t) { Draw(fx, t, [] {}); }
  void DrawQuad();
  void ClearTarget(const Float4 &color = {0, 0, 0, 0});
  // Pixel (x, y) of the target, rows from the bottom.
  Float4 Read(int x = 0, int y = 0);
  // Draws the effect once and reads pixel (0, 0); `set` sets values first.
  template <class F>
  Float4 Run(const std::string &text, F set) {
    CFx *fx = Parse(text);
    FxTechniqueRecord *t = Technique(fx);
    if (!t) return {-999, -999, -999, -999};
    set(*fx);
    ClearTarget();
    Draw(fx, t);
    return Read();
  }
  using Values = std::vector<std::pair<const char *, std::vector<float>>>;
  static void Set(CFx &fx, const char *name, const std::vector<float> &values);
  static void Set(CFx &fx, const Values &values) {
    for (const auto &[name, v] : values) Set(fx, name, v);
  }

  static constexpr int kSize = 4;
  std::unique_ptr<GLWindow> m_Window;
  CFxManagerOGL *m_Manager = nullptr;
  CRender *m_Render = nullptr;
  GLuint m_Framebuffer = 0, m_Color = 0, m_DepthStencil = 0;
  std::vector<std::unique_ptr<CFx>> m_Effects;
  std::vector<std::unique_ptr<FxTechniqueRecord>> m_Techniques;
};

MATCHER_P2(Near4, expected, tolerance, "") {
  for (int i = 0; i < 4; ++i)
    if (std::fabs(arg[i] - expected[i]) > tolerance) {
      *result_listener << "component " << i << " is " << arg[i] << ", expected " << expected[i];
      return false;
    }
  return true;
}
