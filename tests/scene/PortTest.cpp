// Ports: the text forms every scene file and command relies on, the range
// rule, the connection rule and how values convert along connections.
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/LogCapture.h"
#include "support/TestNodes.h"

#include <gtest/gtest.h>

#include <memory>

namespace {
// Sets each text on the port and reads the port's own text back.
void ExpectTexts(CPort &port, std::initializer_list<std::pair<const char *, const char *>> cases) {
  for (auto [in, out] : cases) {
    port.SetText(in);
    EXPECT_EQ(port.GetText(), out) << port.m_Name << " <- \"" << in << "\"";
  }
}
}  // namespace

TEST(PortText, EveryValueTypeReadsAndWritesItsForm) {
  CPortBool b("B", "", false);
  EXPECT_EQ(b.GetText(), "Off");
  // Alternating, so that every text has to change the value.
  ExpectTexts(b, {{"1", "On"}, {"Off", "Off"}, {"true", "On"}, {"yes", "Off"}, {"TRUE", "On"}, {"0", "Off"},
                  {"on", "On"}, {"", "Off"}, {"ON", "On"}, {"2", "Off"}});

  CPortInt i("I", "", 0, -5, 10);
  i.AddValue(1, "Sphere")->AddValue(3, "Cube")->AddValue(1, "Ball");
  // A number keeps its first name: "ball" is no name and reads as 0.
  for (auto [text, value] : {std::pair{"sphere", 1}, {"ball", 0}, {"2", 2}, {"99", 10}, {"junk", 0}, {"-3", -3}}) {
    i.SetText(text);
    EXPECT_EQ(i.m_Value, value) << text;
  }
  EXPECT_EQ(i.GetText(), "-3");

  CPortFloat f("F", "", 0.5f, 0.01f, 0.0f, 10.0f);
  EXPECT_EQ(f.GetText(), "0.5");
  ExpectTexts(f, {{"11", "10"}, {"-1", "0"}, {"1e-7", "1e-07"}});

  CPortVector v("V", "", {1, 2, 3}, {0.1f, 0.1f, 0.1f}, {-5, -5, -5}, {5, 5, 5});
  ExpectTexts(v, {{"1 2", "1 2 3"} /* not all three: untouched */, {"4.5 -9 0.25", "4.5 -5 0.25"}});
  EXPECT_EQ(v.GetText("Y"), "-5");
  EXPECT_EQ(v.GetText("q"), "");
  for (auto [component, text] : {std::pair{"z", "9"}, {"w", "1"}, {"x", "abc"}}) v.SetText(component, text);
  EXPECT_EQ(v.GetText(), "4.5 -5 5");

  CPortColor c("C", "", {0, 0, 0, 1}, {0, 0, 0, 0}, {1, 1, 1, 1});
  ExpectTexts(c, {{"0.5 2 -1 0.25", "0.5 1 0 0.25"}, {"1 1 1", "0.5 1 0 0.25"}});
  CPortString s("S", "", "abc");
  ExpectTexts(s, {{"x = 1; y = 2", "x = 1; y = 2"}});
  CPortTexture t("T", "");
  ExpectTexts(t, {{"ignored", "<Missing>"}});
}

TEST(PortRect, SubPortsNamesRangesAndText) {
  std::unique_ptr<CPortRect> r(MakeViewportPort("Viewport", "Area"));
  EXPECT_EQ(r->m_NumSubPorts, 4);
  EXPECT_EQ(r->FindSubPort("W"), r->GetSubPort(2));
  EXPECT_EQ(r->FindSubPort("q"), nullptr);
  EXPECT_EQ(r->GetSubPort(4), nullptr);
  EXPECT_EQ(r->GetSubPort(0)->m_Name, "Viewport.x");
  EXPECT_EQ(r->GetSubPort(3)->m_Desc, "Area(height)");
  ExpectTexts(*r, {{"0.25 -1 0.5 3", "0.25 0 0.5 1"}, {"1 2 3", "0.25 0 0.5 1"}});
}

TEST(PortConnection, TypeRuleWithItsErrorText) {
  LogCapture log;
  CPortColor color("C", "", {}, {}, {1, 1, 1, 1});
  CPortVector vec("V", "", {}, {}, {}, {});
  EXPECT_FALSE(ConnectPorts(&color, &vec));
  EXPECT_EQ(log.LastError(), "Unable to created a connection between nodes of different type 4 -> 8");
  EXPECT_EQ(vec.m_Source, nullptr);
  EXPECT_FALSE(color.m_Connected);

  CPortBool b("B", "", false);
  b.m_IsInput = false;
  CPortFloat f("F", "", 0, 0, 0, 1);
  EXPECT_TRUE(ConnectPorts(&b, &f));
  EXPECT_EQ(f.m_Source, &b);
  EXPECT_TRUE(f.IsConnected() && b.IsConnected());

  CPortMesh out("M", ""), in("M", "");
  out.m_IsInput = false;
  in.m_Changed = false;
  EXPECT_TRUE(ConnectPorts(&out, &in));
  EXPECT_TRUE(in.m_Changed);
  in.m_Changed = false;
  DisconnectPort(&in);
  EXPECT_FALSE(in.IsConnected());
  EXPECT_TRUE(in.m_Changed);
  EXPECT_TRUE(out.m_Connected);  // never cleared by a removal
}

namespace {
// A source node whose single out-port is of the given class.
template <typename P>
class CSourceNode : public CNode {
 public:
  explicit CSourceNode(P *out) {
    out->m_IsInput = false;
    out->SetOwner(this);
    m_OutPorts.push_back(out);
  }
  P *Out() { return static_cast<P *>(m_OutPorts[0]); }
  void Update(float, FrameInfo *) override { ++runs; }
  int runs = 0;
};
}  // namespace

TEST(PortPull, NumericConversionsAlongConnections) {
  CSourceNode<CPortFloat> fsrc(new CPortFloat("F", "", 0, 0, 0, 1));
  CPortInt i("I", "", 0, -100, 100);
  CPortBool b("B", "", false);
  ASSERT_TRUE(ConnectPorts(fsrc.Out(), &i));
  ASSERT_TRUE(ConnectPorts(fsrc.Out(), &b));
  const struct {
    float f;
    int i;
    bool b;
  } cases[] = {{2.9f, 2, true}, {-2.9f, -2, false}, {0.5f, 0, true}, {0.49f, 0, false}, {1e20f, INT32_MAX, true}};
  for (auto c : cases) {
    fsrc.Out()->m_Value = c.f;
    i.Update(0);
    b.Update(0);
    EXPECT_EQ(i.m_Value, c.i) << c.f;
    EXPECT_EQ(b.m_Value, c.b) << c.f;
  }
  // Values over a connection ignore the in-port's range.
  CPortFloat ranged("R", "", 0, 0, 0, 10);
  ASSERT_TRUE(ConnectPorts(fsrc.Out(), &ranged));
  fsrc.Out()->m_Value = 11.0f;
  ranged.Update(0);
  EXPECT_EQ(ranged.m_Value, 11.0f);

  CSourceNode<CPortInt> isrc(new CPortInt("I", "", 7, 0, 10));
  CSourceNode<CPortBool> bsrc(new CPortBool("B", "", true));
  CPortFloat f("F", "", 0, 0, 0, 1);
  auto pulled = [](CPort *source, auto &in) {
    EXPECT_TRUE(ConnectPorts(source, &in));
    in.Update(0);
    return in.m_Value;
  };
  EXPECT_EQ(pulled(isrc.Out(), f), 7.0f);
  EXPECT_EQ(pulled(bsrc.Out(), f), 1.0f);
  isrc.Out()->m_Value = 0;
  EXPECT_FALSE(pulled(isrc.Out(), b));
}

TEST(PortPull, ChangeFlagsAndUnconnectedPorts) {
  CSourceNode<CPortFloat> src(new CPortFloat("F", "", 3, 0, 0, 1));
  CPortFloat f("F", "", 0, 0, 0, 1);
  CPortInt i("I", "", 0, 0, 10);
  ConnectPorts(src.Out(), &f);
  ConnectPorts(src.Out(), &i);
  src.Out()->m_Changed = false;
  f.m_Changed = i.m_Changed = true;
  f.Update(0);
  i.Update(0);
  EXPECT_FALSE(f.m_Changed);  // a Float port takes the source's flag, also false
  EXPECT_TRUE(i.m_Changed);   // others only ever gain it
  EXPECT_EQ(src.runs, 2);
  EXPECT_TRUE(src.m_Updated);

  // Unconnected: value ports keep their value, pointer ports go null.
  DisconnectPort(&f);
  f.m_Value = 42.0f;
  f.Update(0);
  EXPECT_EQ(f.m_Value, 42.0f);
  CPortObject obj("O", "");
  obj.m_Value = reinterpret_cast<CPDObject *>(&f);
  obj.Update(0);
  EXPECT_EQ(obj.m_Value, nullptr);
  EXPECT_EQ(src.runs, 2);
}
