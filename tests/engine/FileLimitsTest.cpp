// Scene and project files from strangers: what a file can size is bounded,
// a folder named as a scene is skipped, each with an error in the log, and
// the project still plays.
#include <gtest/gtest.h>

#include "core/FakeClock.h"
#include "core/Random.h"
#include "engine/LayerTestSupport.h"
#include "engine/SceneLayered.h"
#include "engine/Velmor.h"
#include "scene/Scene.h"
#include "support/LogCapture.h"

namespace {
std::vector<std::string> Times(const std::string &file, int n) { return std::vector<std::string>(n, file); }
}  // namespace

TEST(FileLimits, PoolsAndWarmUpAreBoundedWithAnError) {
  LayerFiles files;
  CScopedFakeClock clock;
  SeedSharedRandom(3);
  LogCapture log;
  CVelmor engine;
  std::string warmText = LayerSceneText({"warm", {}, {}, "<Node Type=\"Screen\" Name=\"Screen1\"/>", ""});
  warmText.insert(warmText.find("\">") + 1, " WarmupTime=\"1e9\"");
  files.dir.Write("app/scenes/warm.vms", warmText);
  std::string warm = "[apppath]scenes/warm.vms";
  std::string layer = files.Scene({"layer", {}, {}, "<Node Type=\"Screen\" Name=\"Screen1\"/>", ""});
  StartRequest request;
  request.file = files.Project({warm, "[apppath]scenes"}, Times(layer, 17), Times(layer, 16), Times(layer, 16));
  request.settings = SettingsFor(MODE_FullScreen, APPTYPE_Screensaver);
  ASSERT_TRUE(engine.Start(request));

  size_t layered = 0;
  CSceneBase *standalone = nullptr;
  for (const auto &entry : engine.m_Scenes) {
    if (entry->m_IsLayered) ++layered;
    else standalone = entry.get();
  }
  EXPECT_EQ(layered, CVelmor::MaxLayerCombinations);
  ASSERT_TRUE(standalone);
  standalone->Update(0.03f);  // ends: the warm-up is cut to its limit
  std::string errors;
  for (const std::string &e : log.errors) errors += e + "\n";
  for (const char *expected : {"scenes\" is not a file of at most 16 MB\n",
                               "WarmupTime 1e+09 of scene \"warm\" is outside 0 to 60 seconds\n",
                               "The project's pools make 4352 layer combinations, more than 4096: an even sample of "
                               "4096 is kept\n"})
    EXPECT_NE(errors.find(expected), std::string::npos) << expected << " in\n" << errors;
}
