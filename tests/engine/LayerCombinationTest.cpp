// Layered entries built from a project's pools: their order, the pruning by
// the scenes' compatibility lists, their weights against the standalone
// entries, and the foreground pool losing its Clear nodes.
#include <gtest/gtest.h>

#include "core/FakeClock.h"
#include "core/Random.h"
#include "engine/LayerTestSupport.h"
#include "engine/SceneLayered.h"
#include "engine/Velmor.h"
#include "scene/Node.h"
#include "scene/NodeInfo.h"
#include "scene/Port.h"
#include "scene/Scene.h"
#include "support/LogCapture.h"

namespace {
class LayerCombinations : public testing::Test {
 protected:
  LayerCombinations() {
    SeedSharedRandom(7);
    engine.m_RandomizeScene = false;
  }
  std::string Scene(const std::string &name, std::vector<std::string> good = {}, std::vector<std::string> bad = {}) {
    return files.Scene({name, std::move(good), std::move(bad), "<Node Type=\"Screen\" Name=\"Screen1\"/>", ""});
  }
  bool Start(const std::string &project) {
    StartRequest r;
    r.file = project;
    return engine.Start(r);
  }
  // Name and weight of each play list entry, in order.
  std::vector<std::pair<std::string, float>> Entries() const {
    std::vector<std::pair<std::string, float>> e;
    for (const auto &s : engine.m_Scenes) e.emplace_back(s->GetName(), s->m_RandomProbability);
    return e;
  }

  LayerFiles files;
  CScopedFakeClock clock;
  CVelmor engine;
};

using Entry = std::pair<std::string, float>;
}  // namespace

TEST_F(LayerCombinations, EveryCombinationFollowsTheStandaloneEntriesWithTheBackgroundVaryingSlowest) {
  LogCapture log;
  const std::string one = Scene("one");
  const std::string b1 = Scene("b1"), b2 = Scene("b2"), f1 = Scene("f1"), f2 = Scene("f2"), p1 = Scene("p1");
  ASSERT_TRUE(Start(files.Project({one}, {b1, b2}, {f1, f2}, {p1})));
  // Four entries share the weight of two standalone scenes.
  EXPECT_EQ(Entries(), (std::vector<Entry>{
                           {"one", 1.0f}, {"b1-f1-p1", 0.5f}, {"b1-f2-p1", 0.5f}, {"b2-f1-p1", 0.5f}, {"b2-f2-p1", 0.5f}}));
  EXPECT_TRUE(log.Has("Layered scene random probability: 0.500000. Total layered left after compatibility pruning: 4"));
  // One pool scene is one object in every combination it is part of.
  auto layer = [&](int index) { return dynamic_cast<CSceneLayered *>(std::next(engine.m_Scenes.begin(), index)->get()); };
  EXPECT_EQ(layer(1)->m_Background, layer(2)->m_Background);
  EXPECT_EQ(layer(1)->m_Foreground, layer(3)->m_Foreground);
  EXPECT_EQ(layer(1)->m_Postprocessing, engine.m_PostprocessingScenes.front().get());
}

TEST_F(LayerCombinations, BadListsPruneAndGoodListsTripleTheWeight) {
  LogCapture log;
  // b1 refuses f2; f1 likes b1 (names compare without case); b2 both likes
  // and refuses f2, and a bad entry wins.
  const std::string b1 = Scene("b1", {}, {"f2"}), b2 = Scene("b2", {"F2"}, {"f2"});
  const std::string f1 = Scene("f1", {"B1"}), f2 = Scene("f2");
  ASSERT_TRUE(Start(files.Project({}, {b1, b2}, {f1, f2})));
  EXPECT_EQ(Entries(), (std::vector<Entry>{{"b1-f1-", 3.0f}, {"b2-f1-", 1.0f}}));
  EXPECT_TRUE(log.Has("Layered scene random probability: 1.000000. Total layered left after compatibility pruning: 2"));
}

TEST_F(LayerCombinations, AddCombinationAsksEachPairOnce) {
  CScene b, f, p;
  b.m_Name = "b";
  f.m_Name = "f";
  p.m_Name = "p";
  p.m_BadScenes = {"b"};
  EXPECT_FALSE(engine.AddCombination(&b, &f, &p));  // background and postprocessing refuse each other
  p.m_BadScenes.clear();
  p.m_GoodScenes = {"f"};
  ASSERT_TRUE(engine.AddCombination(&b, &f, &p));
  EXPECT_FLOAT_EQ(engine.m_Scenes.back()->m_RandomProbability, 3.0f);
  // Without a foreground the postprocessing scene has no one to like.
  ASSERT_TRUE(engine.AddCombination(&b, nullptr, &p));
  EXPECT_FLOAT_EQ(engine.m_Scenes.back()->m_RandomProbability, 1.0f);
  ASSERT_TRUE(engine.AddCombination(&b, nullptr, nullptr));
  EXPECT_EQ(engine.m_Scenes.back()->GetFile(), ";;");
  EXPECT_EQ(engine.m_Scenes.size(), 3u);
}

TEST_F(LayerCombinations, ABackgroundPoolAloneGivesEachBackgroundAnEntryOfItsOwn) {
  const std::string one = Scene("one"), b1 = Scene("b1"), b2 = Scene("b2"), b3 = Scene("b3");
  ASSERT_TRUE(Start(files.Project({one}, {b1, b2, b3})));
  EXPECT_EQ(Entries(), (std::vector<Entry>{{"one", 1.0f}, {"b1--", 1.0f}, {"b2--", 1.0f}, {"b3--", 1.0f}}));
  // The saved form of such an entry ends in two ";" and finds it again.
  const std::string file = engine.m_Scenes.back()->GetFile();
  EXPECT_EQ(file, b3 + ";;");
  int index = -1;
  EXPECT_EQ(engine.FindScene(file, "", &index), engine.m_Scenes.back().get());
  EXPECT_EQ(index, 3);
}

TEST_F(LayerCombinations, WhenEveryCombinationIsPrunedOnlyStandaloneEntriesPlay) {
  LogCapture log;
  const std::string one = Scene("one"), b1 = Scene("b1", {}, {"f1"}), f1 = Scene("f1");
  ASSERT_TRUE(Start(files.Project({one}, {b1}, {f1})));
  EXPECT_EQ(Entries(), (std::vector<Entry>{{"one", 1.0f}}));
  EXPECT_TRUE(log.Has("Layered scene random probability: inf. Total layered left after compatibility pruning: 0"));
  EXPECT_EQ(engine.ActiveSceneName(), "one");
}

TEST_F(LayerCombinations, APoolSceneThatFailsToLoadTakesPartInNone) {
  const std::string b1 = Scene("b1"), f1 = Scene("f1");
  ASSERT_TRUE(Start(files.Project({}, {b1, "[apppath]scenes/gone.vms"}, {f1, "[apppath]scenes/lost.vms"})));
  EXPECT_EQ(Entries(), (std::vector<Entry>{{"b1-f1-", 1.0f}}));
  EXPECT_EQ(engine.m_BackgroundScenes.size(), 1u);
}

TEST_F(LayerCombinations, EditorsAndConfigurationToolsKeepThePoolsAsTheyAre) {
  const std::string one = Scene("one"), b1 = Scene("b1"), f1 = Scene("f1");
  const std::string project = files.Project({one}, {b1}, {f1});
  for (int appType : {APPTYPE_Editor, APPTYPE_ConfigTool}) {
    CVelmor tool;
    StartRequest r;
    r.settings = SettingsFor(MODE_HostChild, appType);
    r.file = project;
    ASSERT_TRUE(tool.Start(r));
    EXPECT_EQ(tool.m_Scenes.size(), 1u) << "app type " << appType;
    EXPECT_EQ(tool.m_BackgroundScenes.size(), 1u);
    EXPECT_EQ(tool.m_ForegroundScenes.size(), 1u);
  }
}

TEST_F(LayerCombinations, ForegroundsLoseEveryClearOnTheirRenderChainsAndBackgroundsKeepTheirs) {
  // Screen <- RenderObject <- RenderRect <- Clear, and a second Clear
  // straight on the RenderObject's chain that a removal brings forward.
  const std::string chain =
      "<Node Type=\"Screen\" Name=\"Screen1\"/><Node Type=\"RenderObject\" Name=\"Object1\"/>"
      "<Node Type=\"RenderRect\" Name=\"Rect1\"/><Node Type=\"Clear\" Name=\"Clear1\"/>"
      "<Node Type=\"Clear\" Name=\"Unused\"/>";
  const std::string links =
      "<Connection Out=\"Object1.Render\" In=\"Screen1.Render\"/><Connection Out=\"Rect1.Render\" In=\"Object1.Render\"/>"
      "<Connection Out=\"Clear1.Render\" In=\"Rect1.Render\"/>";
  const std::string fg = files.Scene({"fg", {}, {}, chain, links});
  const std::string bg = files.Scene({"bg", {}, {}, chain, links});
  ASSERT_TRUE(Start(files.Project({}, {bg}, {fg})));
  auto nodeNames = [](const CScene &s) {
    std::vector<std::string> names;
    for (const CNode *n : s.m_Nodes) names.push_back(n->m_Name);
    return names;
  };
  CScene &foreground = *engine.m_ForegroundScenes.front();
  // A Clear that feeds nothing the screen draws stays.
  const std::vector<std::string> stripped{"Screen1", "Object1", "Rect1", "Unused"};
  EXPECT_EQ(nodeNames(foreground), stripped);
  EXPECT_FALSE(foreground.FindNode("Rect1")->FindInPort("Render")->IsConnected());
  EXPECT_EQ(nodeNames(*engine.m_BackgroundScenes.front()).size(), 5u);

  engine.PrepareLayeredScenes();
  EXPECT_EQ(nodeNames(foreground), stripped);
}

TEST(LayeredEntry, ANeighbourSharesExactlyOneOfBackgroundAndForegroundAndAnyoneIsWelcome) {
  auto scene = [](const char *file) {
    auto s = std::make_unique<CScene>();
    s->m_File = file;
    return s;
  };
  auto b1 = scene("b1.vms"), b2 = scene("b2.vms"), f1 = scene("f1.vms"), f1Again = scene("f1.vms"), f2 = scene("f2.vms");
  auto p1 = scene("p1.vms"), p2 = scene("p2.vms");
  CSceneLayered active(b1.get(), f1.get(), p1.get());
  // Files, not objects, are compared; postprocessing plays no part.
  EXPECT_TRUE(CSceneLayered(b2.get(), f1Again.get(), p2.get()).IsNeighbour(&active));
  EXPECT_TRUE(CSceneLayered(b1.get(), f2.get(), p1.get()).IsNeighbour(&active));
  EXPECT_FALSE(CSceneLayered(b2.get(), f2.get(), p1.get()).IsNeighbour(&active));
  EXPECT_FALSE(CSceneLayered(b1.get(), f1Again.get(), p2.get()).IsNeighbour(&active));
  // A missing layer is never the same layer.
  EXPECT_TRUE(CSceneLayered(b1.get(), nullptr, nullptr).IsNeighbour(&active));
  EXPECT_FALSE(CSceneLayered(b2.get(), nullptr, nullptr).IsNeighbour(&active));
  EXPECT_FALSE(active.IsNeighbour(nullptr));

  // A layered other is always welcome, whatever the bad lists name.
  CScene refusing;
  refusing.m_BadScenes = {"b1", "b1--"};
  b1->m_Name = "b1";
  CSceneLayered layered(b1.get(), nullptr, nullptr);
  EXPECT_EQ(refusing.GetCompatibility(b1.get()), 0);
  EXPECT_EQ(refusing.GetCompatibility(&layered), 1);
  EXPECT_EQ(layered.GetCompatibility(&refusing), 1);
}
