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
  int nonBlack = 0;
};

Picture Look(GLWindow &window) {
  Picture p;
  std::vector<uint8_t> pixels = window.Pixels();
  for (int y = 0; y < 96; y += 4)
    for (int x = 0; x < 128; x += 4) {
      auto c = window.Pixel(pixels, x, y);
      p.colours.insert(static_cast<uint32_t>(c[0] << 16 | c[1] << 8 | c[2]));
      p.nonBlack += (c[0] + c[1] + c[2]) > 30;
    }
  return p;
}
}  // namespace

TEST(BundledScenes, EachSceneLoadsCompilesAndDraws) {
  VELMOR_REQUIRE_DISPLAY();
  LogCapture log;
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof(cwd)), nullptr);
  ASSERT_EQ(chdir(AssetsDir().c_str()), 0);  // effect files are found as the program finds them
  SetAppPaths(AssetsDir(), AssetsDir());
  InstallBuiltinNodes();
  GLWindow window(128, 96);
  ASSERT_TRUE(window.Ok()) << GetFirstError();

  std::vector<std::string> files;
  for (const auto &e : std::filesystem::directory_iterator(AssetsDir() + "/scenes"))
    if (e.path().extension() == ".vms") files.push_back(e.path().string());
  std::sort(files.begin(), files.end());
  ASSERT_GE(files.size(), 4u);

  for (const std::string &file : files) {
    SCOPED_TRACE(file);
    const size_t errorsBefore = log.errors.size();
    CVelmor engine;
    engine.m_RegisterEffectNodes = [](CNodeFactory &f) { CNEFx::AddNodesToFactory(f); };
    engine.Init();
    engine.SetRender(&window.render);
    engine.m_AutoGotoNextScene = false;
    ASSERT_TRUE(engine.AddScene(file));
    engine.ActivateAnotherScene(CHANGE_Index, 0, true, false);
    window.client.onRender = [&] { engine.Draw(&window.render); };
    for (int frame = 0; frame < 4; ++frame) {
      engine.Update(0.25f);
      window.render.Render3DEnvironment(false);
    }
    engine.Update(0.25f);
    window.render.SwitchToRenderUnit(0);
    engine.Draw(&window.render);
    const Picture picture = Look(window);
    engine.SetActiveScene(nullptr);
    EXPECT_EQ(log.errors.size(), errorsBefore) << log.errors.back();
    EXPECT_GT(picture.nonBlack, 0);
    // Scenes with shapes or patterns show more than one colour.
    if (file.find("huedrift") == std::string::npos) EXPECT_GT(picture.colours.size(), 3u);
  }
  window.client.onRender = nullptr;
  SetAppPaths(".", ".");
  ASSERT_EQ(chdir(cwd), 0);
}
