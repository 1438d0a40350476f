// Every scene we ship plays: it loads with no error, its effects compile on
// the GL in use, and it puts a picture on the screen.
#include "core/Log.h"
#include "core/Paths.h"
#include "engine/Velmor.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/FxNode.h"
#include "renderogl/GLTestSupport.h"
#include "scene/Scene.h"
#include "support/LogCapture.h"

#include <filesystem>
#include <set>
#include <unistd.h>

namespace {
constexpr int kWidth = 128, kHeight = 96;

std::string AssetsDir() { return std::string(VELMOR_SOURCE_ROOT) + "/assets"; }

// Run from the shipped data folder, so that effect files are found as the
// program finds them.
class ShippedAssets : public testing::Test {
 protected:
  void SetUp() override {
    VELMOR_REQUIRE_DISPLAY();
    ASSERT_NE(getcwd(m_Cwd, sizeof(m_Cwd)), nullptr);
    ASSERT_EQ(chdir(AssetsDir().c_str()), 0);
    SetAppPaths(AssetsDir(), AssetsDir());
    InstallBuiltinNodes();
    m_Window = std::make_unique<GLWindow>(kWidth, kHeight);
    ASSERT_TRUE(m_Window->Ok()) << GetFirstError();
  }
  void TearDown() override {
    m_Window.reset();
    SetAppPaths(".", ".");
    if (m_Cwd[0]) EXPECT_EQ(chdir(m_Cwd), 0);
  }

  // Plays `frames` frames of `dt` seconds and draws one more, whose pixels
  // it returns.
  std::vector<uint8_t> FrameAfter(CVelmor &engine, int frames, float dt) {
    CRender &render = m_Window->render;
    m_Window->client.onRender = [&] { engine.Draw(&render); };
    for (int frame = 0; frame < frames; ++frame) {
      engine.Update(dt);
      render.Render3DEnvironment(false);
    }
    engine.Update(dt);
    render.SwitchToRenderUnit(0);
    engine.Draw(&render);
    m_Window->client.onRender = nullptr;
    return m_Window->Pixels();
  }

  char m_Cwd[4096] = {};
  std::unique_ptr<GLWindow> m_Window;
};

struct Picture {
  std::vector<uint32_t> samples;
  int nonBlack = 0;
};

Picture Look(GLWindow &window, const std::vector<uint8_t> &pixels) {
  Picture p;
  for (int y = 0; y < kHeight; y += 4)
    for (int x = 0; x < kWidth; x += 4) {
      auto c = window.Pixel(pixels, x, y);
      p.samples.push_back(static_cast<uint32_t>(c[0] << 16 | c[1] << 8 | c[2]));
      p.nonBlack += (c[0] + c[1] + c[2]) > 30;
    }
  return p;
}
}  // namespace

TEST_F(ShippedAssets, EveryEntryOfEveryProjectLoadsCompilesAndDraws) {
  LogCapture log;
  SeedSharedRandom(1);  // as the program does at start
  std::vector<std::string> projects;
  for (const auto &e : std::filesystem::directory_iterator(AssetsDir() + "/projects"))
    if (e.path().extension() == ".vmp") projects.push_back(e.path().string());
  std::sort(projects.begin(), projects.end());
  ASSERT_GE(projects.size(), 2u);

  for (const std::string &project : projects) {
    CVelmor engine;
    engine.m_RegisterEffectNodes = [](CNodeFactory &f) { CNEFx::AddNodesToFactory(f); };
    StartRequest request;
    request.file = project;
    request.settings = SettingsFor(MODE_Test, APPTYPE_Default);
    const size_t errorsBefore = log.errors.size();
    ASSERT_TRUE(engine.Start(request)) << project;
    engine.SetRender(&m_Window->render);
    engine.m_AutoGotoNextScene = false;
    ASSERT_FALSE(engine.m_Scenes.empty()) << project;
    for (int i = 0; i < static_cast<int>(engine.m_Scenes.size()); ++i) {
      engine.ActivateAnotherScene(CHANGE_Index, i, true, false);
      SCOPED_TRACE(project + ": " + engine.ActiveSceneName());
      const Picture first = Look(*m_Window, FrameAfter(engine, 4, 0.25f));
      const Picture later = Look(*m_Window, FrameAfter(engine, 4, 0.25f));
      EXPECT_GT(first.nonBlack, 0);
      EXPECT_GT(later.nonBlack, 0);
      EXPECT_NE(first.samples, later.samples) << "the picture stands still";
    }
    engine.SetActiveScene(nullptr);
    EXPECT_EQ(log.errors.size(), errorsBefore) << project << ": " << log.errors.back();
  }
}
