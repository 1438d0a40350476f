// Scene files: the document shape, what loading forgives and reports,
// what storing writes, and the compatibility test.
#include "core/FakeClock.h"
#include "core/Paths.h"
#include "nodes/value/SinNode.h"
#include "scene/NodeFactory.h"
#include "scene/Scene.h"
#include "scene/SerializeXML.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"
#include "support/TestDrawNodes.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

namespace {
// A texture producer and user named like the render-to-texture node, for feedback detection.
class CFeedbackSourceNode : public CNode {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(4, "RenderToTexture", [] { return static_cast<CNode *>(new CFeedbackSourceNode); }, "");
    info->AddInPort(new CPortTexture("Texture", ""));
    info->AddOutPort(new CPortTexture("ColorNext", ""));
    return info;
  }
};

std::string SceneDoc(const std::string &sceneAttrs, const std::string &nodes, const std::string &connections,
                     const std::string &compat = "<GoodScenes/><BadScenes/>") {
  return "<Velmor><Transitions/><Scenes><Scene " + sceneAttrs + "><Nodes>" + nodes + "</Nodes><Connections>" +
         connections + "</Connections><SceneCompatibility>" + compat + "</SceneCompatibility></Scene></Scenes></Velmor>";
}

class SceneFile : public testing::Test {
 protected:
  SceneFile() {
    for (CNodeInfo *info : {CSinNode::CreateInfo(), CTestRootNode::CreateInfo(), CFeedbackSourceNode::CreateInfo()})
      factory->AddNodeType(info);
    SetAppPaths(dir.Path() + "/app", dir.Path() + "/user");
    scene.m_Factory = &*factory;
  }
  ~SceneFile() override { SetAppPaths(".", "."); }
  CNodeFactoryRef factory;
  TempDir dir;
  CScopedFakeClock clock;
  CScene scene;
};
}  // namespace

TEST_F(SceneFile, LoadsNodesConnectionsAndListsAndReportsWhatItSkips) {
  LogCapture log;
  dir.Write("app/scenes/a.vms",
            SceneDoc("Name=\"Waves\" Desc=\"d\" Author=\"me\" WarmupTime=\"2.5\" SceneType=\"4\" Version=\"3\" "
                     "Created=\"20100304 17:05\" LastModified=\"2010\"",
                     "<Node Type=\"Screen\" Name=\"Screen1\"/><Node Type=\"Sin\" Name=\"Sin1\" Max=\"20000\"/>"
                     "<Node Type=\"Bogus\" Name=\"B\"/><Node Name=\"NoType\"/><Node Type=\"Sin\" Name=\"Sin1\" Min=\"5\"/>",
                     "<Connection Out=\"Sin1.Value\" In=\"Sin2.Min\"/><Connection Out=\"Nope.Value\" In=\"Sin1.Min\"/>",
                     "<GoodScenes><Scene Name=\"Stars\"/></GoodScenes><BadScenes><Scene Name=\"Fire\"/></BadScenes>") +
                "<Velmor><Scenes><Scene Name=\"Second\"/></Scenes></Velmor>");
  scene.m_File = "[apppath]scenes/a.vms";
  ASSERT_TRUE(scene.LoadExternal());
  EXPECT_EQ(std::tie(scene.m_Name, scene.m_Author, scene.m_SceneType, scene.m_Version), std::make_tuple("Waves", "me", 4u, 3));
  EXPECT_FLOAT_EQ(scene.m_WarmupTime, 2.5f);
  EXPECT_EQ(FormatSceneDate(scene.m_Created), "20100304 17:05");
  EXPECT_EQ(scene.m_LastModified.year, 0);  // too short: not set
  ASSERT_EQ(scene.m_Nodes.size(), 3u);      // Bogus and the type-less node skipped
  EXPECT_NE(scene.m_Screen, nullptr);
  EXPECT_EQ(scene.m_Nodes[1]->FindInPort("Max")->GetText(), "10000");
  // Two nodes named Sin1: connections go to the earlier one.
  EXPECT_EQ(scene.FindNode("Sin1"), scene.m_Nodes[1]);
  EXPECT_EQ(scene.m_GoodScenes, std::vector<std::string>{"Stars"});
  EXPECT_EQ(scene.m_BadScenes, std::vector<std::string>{"Fire"});
  EXPECT_TRUE(log.Has("Unknown node type \"Bogus\"!"));
  EXPECT_TRUE(log.Has("Unknown node: \"\""));
  EXPECT_TRUE(log.Has("Failed to create connection from \"Sin1.Value\" to \"Sin2.Min\""));
  EXPECT_TRUE(log.Has("Failed to create connection from \"Nope.Value\" to \"Sin1.Min\""));
  EXPECT_FALSE(scene.m_HasFeedback);
}

TEST_F(SceneFile, MissingBrokenOrShapelessFilesFailToLoadAndFeedbackIsFound) {
  LogCapture log;
  EXPECT_TRUE(scene.LoadExternal());  // no file: complete already
  scene.m_File = dir / "none.vms";
  EXPECT_FALSE(scene.LoadExternal());
  EXPECT_EQ(log.LastError(), "Unable to load scene file \"" + (dir / "none.vms") + "\".");
  scene.m_File = dir.Write("broken.vms", "<Velmor><Scenes><Scene");
  EXPECT_FALSE(scene.LoadExternal());
  const size_t errors = log.errors.size();
  scene.m_File = dir.Write("shapeless.vms", "<Velmor><Stuff/></Velmor>");
  EXPECT_FALSE(scene.LoadExternal());
  EXPECT_EQ(log.errors.size(), errors);  // no message for a missing element
  // Found whatever the case of its name; a texture fed back through ColorNext is feedback.
  dir.Write("Mixed/Case.VMS",
            SceneDoc("Name=\"M\"", "<Node Type=\"RenderToTexture\" Name=\"R\"/><Node Type=\"RenderToTexture\" Name=\"U\"/>",
                     "<Connection Out=\"R.ColorNext\" In=\"U.Texture\"/>"));
  scene.m_File = dir / "mixed/case.vms";
  EXPECT_TRUE(scene.LoadExternal());
  EXPECT_EQ(scene.m_Name, "M");
  EXPECT_TRUE(scene.m_HasFeedback);
}

TEST_F(SceneFile, StoreWritesEveryPortDatesAndConnectionsAndReadsBack) {
  clock.clock.utc = WallTime{2031, 7, 9, 8, 4, 5, 0, 3};
  scene.m_Name = "S";
  scene.AddNode("Sin");
  scene.AddNode("Sin");
  ASSERT_TRUE(scene.CreateConnection("Sin1.Value", "Sin2.Max"));
  scene.m_GoodScenes = {"A"};
  TiXmlElement root("Scenes");
  {
    CSerializeXMLStore store(&root);
    scene.Serialize(store);
  }
  TiXmlPrinter printer;
  printer.SetStreamPrinting();
  root.Accept(&printer);
  const std::string text = printer.CStr();
  EXPECT_NE(text.find("<Scene Name=\"S\" Desc=\"\" Author=\"\" WarmupTime=\"0\" SceneType=\"0\" Version=\"0\" "
                      "Created=\"20310709 08:04\" LastModified=\"20310709 08:04\">"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("<Node Type=\"Sin\" Name=\"Sin1\" Min=\"0\" Max=\"1\" Offset=\"0\" Frequency=\"1\" />"),
            std::string::npos);
  EXPECT_NE(text.find("<Connections><Connection Out=\"Sin1.Value\" In=\"Sin2.Max\" /></Connections>"), std::string::npos);
  EXPECT_NE(text.find("<GoodScenes><Scene Name=\"A\" /></GoodScenes><BadScenes />"), std::string::npos);
  EXPECT_EQ(text.find("File="), std::string::npos);

  TiXmlDocument doc;
  doc.Parse(("<Velmor><Transitions/>" + text + "</Velmor>").c_str());
  CScene copy;
  copy.m_Factory = &*factory;
  CSerializeXMLLoad load(doc, doc.RootElement()->FirstChildElement("Scenes")->FirstChildElement("Scene"));
  copy.Serialize(load);
  ASSERT_EQ(copy.m_Nodes.size(), 2u);
  EXPECT_EQ(copy.m_Nodes[1]->FindInPort("Max")->m_Source, copy.m_Nodes[0]->FindOutPort("Value"));
  EXPECT_EQ(copy.m_GoodScenes, scene.m_GoodScenes);
}

TEST_F(SceneFile, ProjectReferencesCarryFileNameAndRunTimeOnly) {
  TiXmlDocument doc;
  doc.Parse("<Scenes><Scene File=\"\" Name=\"Empty\" ShowTimeMax=\"12.5\"><Nodes><Node Type=\"Sin\"/></Nodes></Scene></Scenes>");
  CSerializeXMLLoad load(doc, doc.RootElement()->FirstChildElement("Scene"));
  load.m_Mode = SM_ProjectRef;
  scene.Serialize(load);
  EXPECT_EQ(scene.m_Name, "Empty");
  EXPECT_FLOAT_EQ(scene.m_ShowTimeMax, 12.5f);
  EXPECT_TRUE(scene.m_Nodes.empty());
  EXPECT_TRUE(scene.LoadExternal());
}

TEST(SceneCompatibility, BadBeatsGoodAndNamesIgnoreCase) {
  CScene a, b, c;
  a.m_Name = "Alpha";
  b.m_Name = "Beta";
  c.m_Name = "Gamma";
  EXPECT_EQ(a.GetCompatibility(&b), 1);
  EXPECT_EQ(a.GetCompatibility(nullptr), 1);
  a.m_GoodScenes = {"BETA"};
  EXPECT_EQ(a.GetCompatibility(&b), 2);
  EXPECT_EQ(b.GetCompatibility(&a), 2);
  b.m_BadScenes = {"alpha"};
  EXPECT_EQ(a.GetCompatibility(&b), 0);
  EXPECT_EQ(b.GetCompatibility(&a), 0);
  EXPECT_EQ(c.GetCompatibility(&a), 1);
}
