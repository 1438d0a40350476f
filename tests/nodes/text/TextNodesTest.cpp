// Text nodes: the clock shows the injected clock's time, and every text node
// type lives through frames and draws with its fonts present or missing and
// with its ports at their limits.
#include <gtest/gtest.h>
#include <unistd.h>

#include "core/FakeClock.h"
#include "nodes/text/ClockNode.h"
#include "nodes/text/MatrixTrailsNode.h"
#include "nodes/text/TextWriterNode.h"
#include "render/RecordRender.h"
#include "scene/DrawList.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "support/LogCapture.h"
#include "support/TestNodes.h"

namespace {
// Runs the test from the shipped data folder, where the nodes find their fonts.
struct InAssets {
  char cwd[4096] = {};
  InAssets() {
    EXPECT_NE(getcwd(cwd, sizeof(cwd)), nullptr);
    EXPECT_EQ(chdir(VELMOR_SOURCE_ROOT "/assets"), 0);
  }
  ~InAssets() { EXPECT_EQ(chdir(cwd), 0); }
};

void Step(TestGraph &g, CNode *node, float dt = 1.0f / 30) {
  g.NewStep();
  g.frame.Time += dt;
  g.frame.DeltaTime = dt;
  node->Update(g.frame.Time, &g.frame);
  g.frame.PrevAspect = g.frame.Aspect;
}
}  // namespace

TEST(Clock, ShowsTheInjectedClocksTimeInEachFormat) {
  InAssets assets;
  CScopedFakeClock fake;
  const struct { int hour, minute, second, format; const char *text; } cases[] = {
      {13, 45, 30, 0, "13:45"},       {13, 45, 30, 1, "13:45:30"},    {0, 5, 0, 2, "12:05 AM"},
      {12, 5, 0, 2, "12:05 PM"},      {23, 59, 7, 3, "11:59:07 PM"},  {9, 1, 2, 4, "09:01:02"},
  };
  for (const auto &c : cases) {
    TestGraph g;
    auto *clock = g.Add<CClockNode>(CClockNode::CreateInfo(), "Clock1");
    clock->InPort<CPortInt>("DigitalFormat")->m_Value = c.format;
    fake.clock.local.hour = c.hour, fake.clock.local.minute = c.minute, fake.clock.local.second = c.second;
    Step(g, clock);
    EXPECT_EQ(clock->Text(), c.text);
    // The dot-matrix font has every glyph a clock needs: one quad each.
    EXPECT_EQ(clock->Font().Batch().Count(), static_cast<int>(strlen(c.text)));
  }
}

TEST(TextNodes, LiveThroughFramesAndDrawWithFontsOrWithout) {
  CRecordRender render;
  struct Setting {
    const char *what;
    bool assets;
    int extreme;  // 0 defaults, -1 every number at its minimum, 1 at its maximum
  } settings[] = {{"no fonts", false, 0}, {"minimum", true, -1}, {"maximum", true, 1}};  // defaults: EveryNodeType
  for (const Setting &s : settings) {
    std::unique_ptr<InAssets> assets(s.assets ? new InAssets : nullptr);
    for (CNodeInfo *(*create)() :
         {&CClockNode::CreateInfo, &CTextWriterNode::CreateInfo, &CMatrixTrailsNode::CreateInfo}) {
      LogCapture log;
      TestGraph g;
      CNode *node = g.Add<CNode>(create(), "Node1");
      SCOPED_TRACE(std::string(s.what) + " " + node->m_Info->m_TypeName);
      for (CPort *p : node->m_InPorts) {
        if (auto *i = dynamic_cast<CPortInt *>(p); i && s.extreme) i->m_Value = s.extreme < 0 ? i->m_Min : i->m_Max;
        if (auto *f = dynamic_cast<CPortFloat *>(p); f && s.extreme) f->m_Value = s.extreme < 0 ? f->m_Min : f->m_Max;
      }
      g.frame.Aspect = s.extreme > 0 ? 3.0f : 1.25f;
      for (int frame = 0; frame < 4; ++frame) {
        Step(g, node, s.extreme > 0 ? 100.0f : 0.25f);
        node->RestoreDevice(&render);
        CDrawList list;
        node->AddToDrawList(list, list.Head(), nullptr);
        list.Draw(&render);
      }
      node->InvalidateDevice(&render);
      if (!s.assets && node->m_Info->m_TypeName != "MatrixTrails") {
        EXPECT_NE(log.LastError().find("Unable to load"), std::string::npos) << log.LastError();
      }
    }
  }
}
