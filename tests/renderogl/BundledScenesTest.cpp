// Every scene we ship loads with no error and puts a moving picture on the screen.
#include "audio/SoundAnalyzer.h"
#include "audio/SoundFromFile.h"
#include "core/Log.h"
#include "core/Random.h"
#include "core/Paths.h"
#include "engine/Velmor.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/FxNode.h"
#include "renderogl/GLTestSupport.h"
#include "scene/Scene.h"
#include "support/LogCapture.h"

#include <filesystem>
#include <algorithm>

namespace {
constexpr int kWidth = 128, kHeight = 96;

std::string AssetsDir() { return std::string(VELMOR_SOURCE_ROOT) + "/assets"; }

class ShippedAssets : public testing::Test {
 protected:
  void SetUp() override {
    VELMOR_REQUIRE_DISPLAY();
    m_Cwd = std::make_unique<ScopedCwd>(AssetsDir());
    SetAppPaths(AssetsDir(), AssetsDir());
    InstallBuiltinNodes();
    m_Window = std::make_unique<GLWindow>(kWidth, kHeight);
    ASSERT_TRUE(m_Window->Ok()) << GetFirstError();
  }
  void TearDown() override {
    m_Window.reset();
    SetAppPaths(".", ".");
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

  std::unique_ptr<ScopedCwd> m_Cwd;
  std::unique_ptr<GLWindow> m_Window;
};

long Lit(const std::vector<uint8_t> &pixels) {
  return std::count_if(pixels.begin(), pixels.end(), [](uint8_t b) { return b > 10; });
}
}  // namespace

TEST_F(ShippedAssets, EveryEntryOfEveryProjectLoadsCompilesAndDraws) {
  LogCapture log;
  SeedSharedRandom(1);  // as the program does at start
  // Music scenes are looked at with music playing: our demo track.
  ASSERT_TRUE(PlaySoundFile(g_Sound, AssetsDir() + "/music/demo-track.wav"));
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
    engine.m_HandOverBudgetMs = 0.0;  // each entry's own first frames
    engine.m_UpdateSound = [] { g_Sound.UpdateSound(30.0f); };
    ASSERT_FALSE(engine.m_Scenes.empty()) << project;
    for (int i = 0; i < static_cast<int>(engine.m_Scenes.size()); ++i) {
      engine.ActivateAnotherScene(CHANGE_Index, i, true, false);
      SCOPED_TRACE(project + ": " + engine.ActiveSceneName());
      const std::vector<uint8_t> first = FrameAfter(engine, 4, 0.25f), later = FrameAfter(engine, 4, 0.25f);
      EXPECT_GT(Lit(first), 0);
      EXPECT_GT(Lit(later), 0);
      EXPECT_NE(first, later) << "the picture stands still";
    }
    engine.SetActiveScene(nullptr);
    EXPECT_EQ(log.errors.size(), errorsBefore) << project << ": " << log.errors.back();
  }
}
