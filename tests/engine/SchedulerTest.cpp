// The scheduler around the choice of scene (SceneChoiceTest): a change
// restarts the scene and tells the statistics, how long a scene plays, the
// "too slow" rule, and the preset operations a host drives.
#include "core/FakeClock.h"
#include "core/Random.h"
#include "engine/SceneLayered.h"
#include "engine/Velmor.h"
#include "scene/Scene.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace {
class CountingStats : public IStats {
 public:
  void SceneBegin(const std::string &name, const std::string &) override { begun.push_back(name); }
  void SceneEnd() override { ++ended; }
  std::vector<std::string> begun;
  int ended = 0;
};

class Scheduler : public testing::Test {
 protected:
  Scheduler() {
    SeedSharedRandom(1234);
    engine.m_Stats = &stats;
    engine.m_RandomizeScene = false;
  }
  CScene *AddScene(const char *name, float weight = 1.0f) {
    auto *s = new CScene;
    s->m_Name = name;
    s->m_File = std::string("[apppath]scenes/") + name + ".vms";
    s->m_RandomProbability = weight;
    engine.m_Scenes.emplace_back(s);
    return s;
  }
  std::string Active() const { return engine.m_ActiveScene ? engine.m_ActiveScene->GetName() : "-"; }

  CScopedFakeClock clock;
  CountingStats stats;
  CVelmor engine;
};
}  // namespace

TEST_F(Scheduler, OneSceneIsRestartedAndAnEmptyListKeepsNothing) {
  EXPECT_EQ(engine.ActivateAnotherScene(CHANGE_Next, 0, true, false), nullptr);
  EXPECT_EQ(engine.m_ActiveScene, nullptr);
  CScene *only = AddScene("Only");
  engine.ActivateAnotherScene(CHANGE_Next, 0, true, false);
  only->m_FrameInfo.Restart = false;
  engine.ActivateAnotherScene(CHANGE_Next, 0, true, false);
  EXPECT_EQ(Active(), "Only");
  EXPECT_TRUE(only->m_FrameInfo.Restart);  // deactivated and activated again
  EXPECT_EQ(stats.begun, (std::vector<std::string>{"Only", "Only"}));
  EXPECT_EQ(stats.ended, 2);
}

TEST_F(Scheduler, RunTimeComesFromTheRangeOrTheScenesOwn) {
  LogCapture log;
  AddScene("A");
  CScene *timed = AddScene("Timed");
  timed->m_ShowTimeMax = 75.0f;
  engine.m_SceneMinRunTime = engine.m_SceneMaxRunTime = 20;
  engine.ActivateAnotherScene(CHANGE_Index, 0, true, false);
  EXPECT_FLOAT_EQ(engine.m_SceneRunTime, 20.0f);
  engine.ActivateAnotherScene(CHANGE_Index, 1, true, false);
  EXPECT_FLOAT_EQ(engine.m_SceneRunTime, 75.0f);
  EXPECT_TRUE(log.Has("New scene: 'Timed' from '[apppath]scenes/Timed.vms' (2 / 2). Next scene in 1m 15s. Offset: 0.00 / 0.00"));

  // Scene timing switches when the run time has passed on the wall clock.
  engine.ActivateAnotherScene(CHANGE_Index, 0, true, false);
  for (int i = 0; i < 30; ++i) engine.Update(0.033f);
  clock.clock.Advance(20.5);
  engine.Update(0.033f);
  EXPECT_EQ(Active(), "Timed");
}

TEST_F(Scheduler, TooSlowSwitchesOnlyBeforeTheRunTimeHasPassed) {
  LogCapture log;
  AddScene("A");
  AddScene("B");
  engine.m_SceneMinRunTime = engine.m_SceneMaxRunTime = 30;
  engine.ActivateAnotherScene(CHANGE_Index, 0, true, false);
  clock.clock.Advance(6.0);  // one update that took 6 seconds
  engine.Update(0.25f);
  EXPECT_EQ(Active(), "B");
  EXPECT_TRUE(std::any_of(log.lines.begin(), log.lines.end(),
                          [](const std::string &l) { return l.rfind("Scene too slow. Switching to new scene. ", 0) == 0; }));

  // Not where the host doesn't time scenes.
  engine.m_Settings.timedScenes = false;
  clock.clock.Advance(100.0);
  engine.Update(0.25f);
  EXPECT_EQ(Active(), "B");
}

TEST_F(Scheduler, UpdateRunsSoundThenCommandsThenTheScene) {
  std::vector<std::string> order;
  struct Commands : ICommandRunner {
    std::vector<std::string> *order;
    void Run() override { order->push_back("commands"); }
  } commands;
  commands.order = &order;
  engine.m_Commands = &commands;
  engine.m_UpdateSound = [&] { order.push_back("sound"); };
  engine.Update(0.1f);
  EXPECT_EQ(order, (std::vector<std::string>{"sound", "commands"}));
  engine.m_Settings.feedsSound = false;  // a visualizer host feeds sound itself
  order.clear();
  engine.Update(0.1f);
  EXPECT_EQ(order, std::vector<std::string>{"commands"});
}

TEST_F(Scheduler, PresetsListStandaloneScenesAndFindSceneMatchesExactly) {
  AddScene("A");
  CScene layer;
  layer.m_Name = "L";
  engine.m_Scenes.emplace_back(new CSceneLayered(&layer, nullptr, nullptr));
  AddScene("B");
  engine.m_Scenes.emplace_back(new CSceneLayered(&layer, nullptr, nullptr));
  EXPECT_EQ(engine.GetPresetCount(), 2);
  char name[256];
  engine.GetPresetName(1, name);
  EXPECT_STREQ(name, "B");
  engine.GetPresetName(7, name);  // past the end: the last entry, layered or not
  EXPECT_STREQ(name, "L--");
  int index = 5;
  EXPECT_NE(engine.FindScene("[apppath]scenes/B.vms", "", &index), nullptr);
  EXPECT_EQ(index, 2);
  EXPECT_EQ(engine.FindScene("[apppath]scenes/b.vms", "", &index), nullptr);
  EXPECT_EQ(index, -1);
  EXPECT_EQ(engine.FindScene("[apppath]scenes/B.vms", "A", nullptr), nullptr);

  LogCapture log;
  engine.MenuSelected(0x94D4 + 2);
  EXPECT_TRUE(log.Has("Selected: 2"));
  EXPECT_EQ(Active(), "B");
  EXPECT_TRUE(engine.RemoveScene("[apppath]scenes/B.vms", "B"));
  EXPECT_EQ(engine.m_ActiveScene, nullptr);
  EXPECT_FALSE(engine.RemoveScene("[apppath]scenes/B.vms", "B"));
  EXPECT_EQ(log.LastError(), "Delete failed. Unable to find 'B' from '[apppath]scenes/B.vms'");
}
