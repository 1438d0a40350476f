// The XML serializer: value forms, the two ways of reading children, error
// text, and what a node reads and a port prototype prints.
#include "nodes/value/SinNode.h"
#include "scene/PortPointers.h"
#include "scene/SerializeXML.h"
#include "support/TestNodes.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

TEST(SerializeStore, FloatIntAndBoolForms) {
  const struct {
    float v;
    const char *text;
  } floats[] = {{1.5f, "1.5"}, {2.0f, "2"}, {0.25f, "0.25"}, {100.0f, "100"}, {0.0f, "0"},
                {-3.0f, "-3"}, {0.0000004f, "0"}, {-0.0000004f, "0"}, {1.0f / 3.0f, "0.333333"}};
  for (auto f : floats) EXPECT_EQ(CSerializeXMLStore::FormatFloat(f.v), f.text) << f.v;

  TiXmlElement e("Port");
  CSerializeXMLStore s(&e);
  EXPECT_EQ(s.Serialize("B", true), true);
  s.Serialize("I", -12);
  s.Serialize("F", 2.5f);
  s.Serialize("S", "x<y");
  s.Serialize("B", false);  // replaces, keeps its place
  TiXmlPrinter p;
  e.Accept(&p);
  EXPECT_STREQ(p.CStr(), "<Port B=\"false\" I=\"-12\" F=\"2.5\" S=\"x&lt;y\" />\n");
}

TEST(SerializeLoad, ValuesKeepDefaultsWhenMissingOrEmpty) {
  CSerializeXMLLoad l;
  ASSERT_TRUE(l.LoadText("<N A=\"TRUE\" B=\"yes\" C=\"1\" D=\"on\" E=\"\" F=\"2.5x\" I=\"7.9\" J=\"abc\"/>"));
  l.EnterElement("N");
  for (auto [name, fallback, value] : {std::tuple{"A", false, true}, {"B", true, false}, {"C", false, true},
                                       {"D", false, true}, {"E", true, true} /* empty keeps the default */,
                                       {"Missing", true, true}})
    EXPECT_EQ(l.Serialize(name, fallback), value) << name;
  EXPECT_EQ(l.Serialize("F", 0.0f), 2.5f);
  EXPECT_EQ(l.Serialize("I", 0), 7);
  EXPECT_EQ(l.Serialize("J", 5), 0);
  EXPECT_EQ(l.Serialize("E", std::string("def")), "def");
  l.LeaveElement();
}

TEST(SerializeLoad, SequentialReadingConsumesOneChildPerEnter) {
  CSerializeXMLLoad l;
  ASSERT_TRUE(l.LoadText("<R><B v=\"1\"/><A v=\"2\"/><C v=\"3\"/></R>"));
  l.EnterElement("R");
  for (auto [name, v] : {std::pair{"A", 0}, {"B", 0}, {"C", 3}}) {  // A meets B, B meets A: both mismatch
    l.EnterElement(name);
    EXPECT_EQ(l.Serialize("v", 0), v) << name;
    l.LeaveElement();
  }
  l.LeaveElement();
}

TEST(SerializeLoad, IteratingVisitsElementsOnlyAndEnterKeepsTheCursor) {
  CSerializeXMLLoad l;
  ASSERT_TRUE(l.LoadText("<R><!-- note --><Node Name=\"a\" X=\"1\"/>text<Conn From=\"a\"/><Node Name=\"b\" X=\"2\"/></R>"));
  l.EnterElement("R");
  std::vector<std::string> seen;
  int sum = 0;
  for (l.FirstChild(); l.HasChild(); l.NextChild()) {
    seen.push_back(l.GetChildName() + ":" + l.GetChildAttribute("Name"));
    if (l.GetChildName() == "Node") {
      l.EnterElement("Node");
      sum += l.Serialize("X", 0);
      l.LeaveElement();
    }
  }
  l.LeaveElement();
  EXPECT_EQ(seen, (std::vector<std::string>{"Node:a", "Conn:", "Node:b"}));
  EXPECT_EQ(sum, 3);

  CSerializeXMLLoad empty;
  empty.FirstChild();
  EXPECT_FALSE(empty.HasChild());
}

TEST(SerializeLoad, BrokenFilesReportRowAndColumn) {
  CSerializeXMLLoad l;
  EXPECT_FALSE(l.LoadText("<Scene>\n  <Node Type=\"Sin\" Name=\"a\"\n</Scene>"));
  EXPECT_EQ(l.GetError(), "\"Error reading Attributes.\" at 3,1");
  EXPECT_FALSE(l.LoadText("<Scene>\n  <Node/>\n"));  // truncated
  EXPECT_EQ(l.GetError(), "\"Error reading end tag.\" at 3,1");
  EXPECT_FALSE(l.Load("/nonexistent/velmor.vms"));
  EXPECT_FALSE(l.GetError().empty());
  // Nothing was entered: values stay at their defaults.
  l.EnterElement("Scene");
  EXPECT_EQ(l.Serialize("x", 4), 4);
  l.LeaveElement();
}

TEST(NodeSerialize, FileValuesObeyRangesAndUnknownAttributesAreIgnored) {
  TestGraph g;
  auto *sin = g.Add<CSinNode>(CSinNode::CreateInfo(), "Sin1");
  CSerializeXMLLoad l;
  ASSERT_TRUE(l.LoadText("<Node Type=\"Sin\" Min=\"-20000\" Frequency=\"0\" Bogus=\"1\"/>"));
  sin->Serialize(l);
  EXPECT_EQ(sin->m_Name, "Sin1");  // no Name attribute: the generated one stays
  EXPECT_EQ(sin->FindInPort("Min")->GetText(), "-10000");
  EXPECT_EQ(sin->FindInPort("Frequency")->GetText(), "1e-06");
  EXPECT_EQ(sin->FindInPort("Max")->GetText(), "1");
}

TEST(PortCatalogue, PrototypesPrintTheirTypeSpecificAttributes) {
  auto fragment = [](CPort &port, bool input) {
    port.m_IsInput = input;
    TiXmlElement e("Port");
    CSerializeXMLStore s(&e);
    s.m_Mode = SM_Catalogue;
    port.Serialize(s);
    TiXmlPrinter p;
    p.SetStreamPrinting();
    e.Accept(&p);
    return std::string(p.CStr());
  };
  CPortBool b("Invert", "Invert the waveform", false);
  EXPECT_EQ(fragment(b, true), "<Port Type=\"Bool\" Name=\"Invert\" Desc=\"Invert the waveform\" Input=\"true\" Invert=\"false\" />");
  CPortFloat f("Value", "Computed value", 0, 0.01f, 0, 1);
  EXPECT_EQ(fragment(f, false),
            "<Port Type=\"Float\" Name=\"Value\" Desc=\"Computed value\" Input=\"false\" Value=\"0\" Min=\"0\" Max=\"1\" Step=\"0.01\" />");
  CPortInt i("WaveformType", "The type", 0, 0, 5);
  i.AddValue(1, "Square")->AddValue(0, "Sine");
  EXPECT_EQ(fragment(i, true),
            "<Port Type=\"Int\" Name=\"WaveformType\" Desc=\"The type\" Input=\"true\" WaveformType=\"0\" Min=\"0\" Max=\"5\">"
            "<Values><Value Name=\"Sine\" Value=\"0\" /><Value Name=\"Square\" Value=\"1\" /></Values></Port>");
  CPortVector v("Pos", "P", {1, 2, 3}, {0.1f, 0.1f, 0.1f}, {-1, -1, -1}, {9, 9, 9});
  EXPECT_EQ(fragment(v, true),
            "<Port Type=\"Vector\" Name=\"Pos\" Desc=\"P\" Input=\"true\" Value=\"1 2 3\" Step=\"0.1 0.1 0.1\" Min=\"-1 -1 -1\" Max=\"9 9 9\" />");
  std::unique_ptr<CPortRect> r(MakeViewportPort("Viewport", "V"));
  EXPECT_EQ(fragment(*r, true),
            "<Port Type=\"Rect\" Name=\"Viewport\" Desc=\"V\" Input=\"true\" Value=\"0 0 1 1\" Min=\"0 0 0 0\" Max=\"1 1 1 1\" Step=\"0.01 0.01 0.01 0.01\" />");
  CPortTexture t("Texture", "Tex");
  EXPECT_EQ(fragment(t, true), "<Port Type=\"Texture\" Name=\"Texture\" Desc=\"Tex\" Input=\"true\" />");
}
