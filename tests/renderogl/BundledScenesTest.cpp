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
std::string AssetsDir() { return std::string(VELMOR_SOURCE_ROOT) + "/assets"; }

struct Picture {
  std::set<uint32_t> colours;
  std::vector<uint32_t> samples;
  int nonBlack = 0;
};

Picture Look(GLWindow &window) {
  Picture p;
  std::vector<uint8_t> pixels = window.Pixels();
  for (int y = 0; y < 96; y += 4)
    for (int x = 0; x < 128; x += 4) {
      auto c = window.Pixel(pixels, x, y);
      p.colours.insert(static_cast<uint32_t>(c[0] << 16 | c[1] << 8 | c[2]));
      p.samples.push_back(static_cast<uint32_t>(c[0] << 16 | c[1] << 8 | c[2]));
      p.nonBlack += (c[0] + c[1] + c[2]) > 30;
    }
  return p;
}
}  // namespace

TEST(BundledProjects, EveryEntryOfEveryProjectLoadsCompilesAndDraws) {
  VELMOR_REQUIRE_DISPLAY();
  LogCapture log;
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof(cwd)), nullptr);
  ASSERT_EQ(chdir(AssetsDir().c_str()), 0);  // effect files are found as the program finds them
  SetAppPaths(AssetsDir(), AssetsDir());
  InstallBuiltinNodes();
  GLWindow window(128, 96);
  ASSERT_TRUE(window.Ok()) << GetFirstError();

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
    request.mode = 3;
    const size_t errorsBefore = log.errors.size();
    ASSERT_TRUE(engine.Start(request)) << project;
    engine.SetRender(&window.render);
    engine.m_AutoGotoNextScene = false;
    ASSERT_FALSE(engine.m_Scenes.empty()) << project;
    window.client.onRender = [&] { engine.Draw(&window.render); };
    for (int i = 0; i < static_cast<int>(engine.m_Scenes.size()); ++i) {
      engine.ActivateAnotherScene(CHANGE_Index, i, true, false);
      SCOPED_TRACE(project + ": " + engine.ActiveSceneName());
      auto frameAfter = [&](int frames) {
        for (int frame = 0; frame < frames; ++frame) {
          engine.Update(0.25f);
          window.render.Render3DEnvironment(false);
        }
        engine.Update(0.25f);
        window.render.SwitchToRenderUnit(0);
        engine.Draw(&window.render);
        return Look(window);
      };
      const Picture first = frameAfter(4);
      const Picture later = frameAfter(4);
      EXPECT_GT(first.nonBlack, 0);
      EXPECT_GT(later.nonBlack, 0);
      EXPECT_NE(first.samples, later.samples) << "the picture stands still";
    }
    engine.SetActiveScene(nullptr);
    EXPECT_EQ(log.errors.size(), errorsBefore) << project << ": " << log.errors.back();
  }
  window.client.onRender = nullptr;
  SetAppPaths(".", ".");
  ASSERT_EQ(chdir(cwd), 0);
}
