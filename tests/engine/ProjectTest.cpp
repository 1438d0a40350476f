// Project files: what is played at start, the fall-backs, the layer lists,
// and what a stored project holds.
#include <unistd.h>

#include "core/FakeClock.h"
#include "core/Paths.h"
#include "core/Random.h"
#include "engine/LayerTestSupport.h"
#include "engine/SceneLayered.h"
#include "engine/Velmor.h"
#include "scene/Scene.h"
#include "scene/SerializeXML.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

namespace {
std::string SceneText(const std::string &name) { return LayerSceneText({name, {}, {}, "", ""}); }

class Project : public testing::Test {
 protected:
  Project() {
    SetAppPaths(dir / "app", dir / "user");
    for (const char *n : {"one", "two", "three", "bg", "fg", "post"}) dir.Write(std::string("app/scenes/") + n + ".vms", SceneText(n));
    SeedSharedRandom(99);
    char cwd[4096];
    m_OldCwd = getcwd(cwd, sizeof(cwd)) ? cwd : ".";
  }
  ~Project() override {
    SetAppPaths(".", ".");
    if (chdir(m_OldCwd.c_str()) != 0) ADD_FAILURE() << "cannot return to " << m_OldCwd;
  }
  std::string WriteProject(const std::string &name, const std::string &wanted, const std::string &scenes,
                           const std::string &pools = "<BackgroundScenes/><ForegroundScenes/><PostprocessingScenes/>") {
    return dir.Write(name, "<Velmor><Project " + wanted + "/><Transitions><Transition Name=\"T\"><Nodes/></Transition></Transitions><Scenes>" +
                               scenes + "</Scenes>" + pools + "</Velmor>");
  }
  StartRequest Request(const std::string &file, int mode = MODE_FullScreen) {
    StartRequest r;
    r.file = file;
    r.settings = SettingsFor(mode, APPTYPE_Screensaver);
    return r;
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> n;
    for (const auto &s : engine.m_Scenes) n.push_back(s->GetName());
    return n;
  }

  TempDir dir;
  CScopedFakeClock clock;
  CVelmor engine;
  std::string m_OldCwd;
};
}  // namespace

TEST_F(Project, PlaysTheWantedSceneOrElseTheFirstAndDropsUnreadableOnes) {
  LogCapture log;
  const std::string project = WriteProject(
      "app/projects/p.vmp", "ActiveSceneFile=\"[apppath]scenes/two.vms\" ActiveSceneName=\"\"",
      "<Scene File=\"[apppath]scenes/one.vms\" Name=\"x\"/><Scene File=\"[apppath]scenes/two.vms\" ShowTimeMax=\"42\"/>"
      "<Scene File=\"[apppath]scenes/gone.vms\"/>");
  ASSERT_TRUE(engine.Start(Request(project)));
  EXPECT_TRUE(engine.m_IsProject);
  EXPECT_EQ(Names(), (std::vector<std::string>{"one", "two"}));  // names from the scene files
  EXPECT_EQ(engine.ActiveSceneName(), "two");
  EXPECT_EQ(engine.m_SceneIndex, 1);
  EXPECT_FLOAT_EQ(engine.m_SceneRunTime, 42.0f);
  EXPECT_EQ(engine.m_Transitions.size(), 1u);
  EXPECT_TRUE(log.Has("WantedScene: '' from '[apppath]scenes/two.vms'"));
  EXPECT_TRUE(log.Has("Unable to load scene file \"" + (dir / "app/scenes/gone.vms") + "\"."));
  EXPECT_TRUE(log.Has("Scene count. Standalone: 2 Background: 0 Foreground: 0 Postprocessing: 0"));

  // A wanted scene that is gone gives way to the first when the order is not random.
  CVelmor ordered;
  ordered.m_RandomizeScene = false;
  ASSERT_TRUE(ordered.Start(Request(WriteProject("q.vmp", "ActiveSceneFile=\"[apppath]scenes/gone.vms\"",
                                                 "<Scene File=\"[apppath]scenes/one.vms\"/><Scene File=\"[apppath]scenes/two.vms\"/>"))));
  EXPECT_EQ(ordered.ActiveSceneName(), "one");
}

TEST_F(Project, FallsBackToTheDefaultProjectAndFailsWhenThatIsMissingToo) {
  LogCapture log;
  ASSERT_EQ(chdir((dir / "app").c_str()), 0);
  StartRequest r;
  r.projectFile = "[userpath]missing.vmp";
  EXPECT_FALSE(engine.Start(r));
  EXPECT_TRUE(log.Has("Using the \"" + (dir / "user/missing.vmp") + "\" project"));
  EXPECT_TRUE(log.Has("Unable to load \"" + (dir / "user/missing.vmp") + "\" falling back to default project file"));
  EXPECT_EQ(log.LastError(), "Unable to load \"projects/screensaver.vmp\"");

  WriteProject("app/projects/screensaver.vmp", "", "<Scene File=\"[apppath]scenes/three.vms\"/>");
  CVelmor second;
  EXPECT_TRUE(second.Start(r));
  EXPECT_EQ(second.ActiveSceneName(), "three");

  // Without the fall-back the file named is the one reported.
  CVelmor named;
  StartRequest scene = Request(dir.Write("cut.vms", "<Velmor><Scenes><Sce"), MODE_Test);
  scene.fallBack = false;
  EXPECT_FALSE(named.Start(scene));
  EXPECT_EQ(log.LastError(), "Unable to load scene file \"" + (dir / "cut.vms") + "\".");
}

TEST_F(Project, SceneFilesAndLayerListsOnTheCommandLineAndInProjects) {
  LogCapture log;
  CVelmor alone;
  ASSERT_TRUE(alone.Start(Request("[apppath]scenes/two.vms", MODE_Test)));
  EXPECT_FALSE(alone.m_IsProject);
  EXPECT_EQ(alone.m_Scenes.size(), 1u);
  EXPECT_EQ(alone.ActiveSceneName(), "two");
  EXPECT_TRUE(alone.m_AutoGotoNextScene);

  ASSERT_TRUE(engine.Start(Request("[apppath]scenes/bg.vms;[apppath]scenes/fg.vms;[apppath]scenes/post.vms", MODE_Test)));
  auto *layered = dynamic_cast<CSceneLayered *>(engine.m_ActiveScene);
  ASSERT_NE(layered, nullptr);
  EXPECT_EQ(layered->GetName(), "bg-fg-post");
  EXPECT_FLOAT_EQ(layered->m_RandomProbability, 0.25f);
  EXPECT_FLOAT_EQ(engine.m_SceneRunTime, 10000.0f);
  EXPECT_EQ(layered->m_Foreground->m_SceneType, static_cast<uint32_t>(SCENE_Foreground));

  // One ";" only: the last field is the whole list and fails; the background plays alone.
  CVelmor single;
  ASSERT_TRUE(single.Start(Request("[apppath]scenes/bg.vms;[apppath]scenes/fg.vms", MODE_Test)));
  layered = dynamic_cast<CSceneLayered *>(single.m_ActiveScene);
  ASSERT_NE(layered, nullptr);
  EXPECT_NE(layered->m_Background, nullptr);
  EXPECT_EQ(layered->m_Foreground, nullptr);
  EXPECT_EQ(layered->m_Postprocessing, nullptr);
  EXPECT_EQ(log.LastError(), "Failed to load '" + (dir / "app/scenes/bg.vms;") + (dir / "app/scenes/fg.vms") + "'. File missing.");

  // In a project the tokens skip empty fields: background and foreground.
  CVelmor project;
  project.m_RandomizeScene = false;
  const std::string p = WriteProject("c.vmp", "", "<Scene File=\"[apppath]scenes/bg.vms;;[apppath]scenes/fg.vms\" ShowTimeMax=\"9\"/>");
  ASSERT_TRUE(project.Start(Request(p)));
  ASSERT_EQ(project.m_Scenes.size(), 1u);
  layered = dynamic_cast<CSceneLayered *>(project.m_Scenes.front().get());
  ASSERT_NE(layered, nullptr);
  EXPECT_EQ(layered->GetName(), "bg-fg-");
  EXPECT_FLOAT_EQ(layered->m_ShowTimeMax, 9.0f);
  EXPECT_EQ(project.m_BackgroundScenes.size(), 1u);
  EXPECT_EQ(project.m_ForegroundScenes.size(), 1u);
}

TEST_F(Project, StoredProjectsHoldTheStandalonePlayListOnly) {
  const std::string project = WriteProject(
      "p.vmp", "ActiveSceneFile=\"[apppath]scenes/one.vms\" ActiveSceneName=\"one\"",
      "<Scene File=\"[apppath]scenes/one.vms\" ShowTimeMax=\"5\"/><Scene File=\"[apppath]scenes/bg.vms;[apppath]scenes/fg.vms\"/>",
      "<BackgroundScenes><Scene File=\"[apppath]scenes/bg.vms\"/></BackgroundScenes><ForegroundScenes/><PostprocessingScenes/>");
  ASSERT_TRUE(engine.Start(Request(project)));
  EXPECT_EQ(engine.m_BackgroundScenes.size(), 2u);
  const std::string out = dir / "out.vmp";
  {
    CSerializeXMLStore store(out);
    engine.Serialize(store);
  }
  const std::string text = TempDir::Read(out);
  EXPECT_NE(text.find("<Project ActiveSceneFile=\"[apppath]scenes/one.vms\" ActiveSceneName=\"one\" />"), std::string::npos) << text;
  EXPECT_NE(text.find("<Transition Name=\"T\""), std::string::npos);
  EXPECT_NE(text.find("<Scene File=\"[apppath]scenes/one.vms\" Name=\"one\" />"), std::string::npos);
  EXPECT_EQ(text.find("ShowTimeMax"), std::string::npos);
  EXPECT_EQ(text.find("bg.vms"), std::string::npos);
  EXPECT_EQ(text.find("BackgroundScenes"), std::string::npos);

  // And reads back to the same play list.
  CVelmor again;
  ASSERT_TRUE(again.Start(Request(out)));
  ASSERT_EQ(again.m_Scenes.size(), 1u);
  EXPECT_EQ(again.ActiveSceneName(), "one");
}

TEST_F(Project, AddSceneReportsMissingAndCorruptFiles) {
  LogCapture log;
  EXPECT_FALSE(engine.AddScene(dir / "nothing.vms"));
  EXPECT_EQ(log.LastError(), "Failed to load '" + (dir / "nothing.vms") + "'. File missing.");
  EXPECT_FALSE(engine.AddScene(dir.Write("odd.vms", "<Velmor><Scenes/></Velmor>")));
  EXPECT_EQ(log.LastError(), "Failed to load '" + (dir / "odd.vms") + "'. Scene corrupt/invalid.");
  EXPECT_TRUE(engine.AddScene(dir / "app/scenes/one.vms"));
  EXPECT_EQ(engine.m_Scenes.back()->GetFile(), dir / "app/scenes/one.vms");
}
