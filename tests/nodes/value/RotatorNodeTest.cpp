// Rotator: angles gained from the frame's DeltaTime at rotations per minute,
// wrapped at 360, on top of the start angle, and advanced on every pull.
#include "nodes/value/RotatorNode.h"
#include "support/TestNodes.h"

#include <gtest/gtest.h>

namespace {
struct Rotator {
  TestGraph g;
  CNode *node = g.Add<CRotatorNode>(CRotatorNode::CreateInfo(), "Rotator1");
  float Out(const char *axis) { return static_cast<CPortFloat *>(node->FindOutPort(axis))->m_Value; }
  void Step(float dt) {
    g.frame.DeltaTime = dt;
    g.NewStep();
    node->Pull(0.0f);
  }
};
}  // namespace

TEST(Rotator, TurnsAtRotationsPerMinuteFromTheStartAngleWrapsAndAdvancesOnEveryPull) {
  Rotator rot;
  rot.node->FindInPort("RotSpeedX")->SetText("60");  // 360 degrees a second
  rot.node->FindInPort("StartRotX")->SetText("30");
  rot.node->FindInPort("RotSpeedY")->SetText("-30");  // backwards: angles go negative
  rot.node->FindInPort("StartRotZ")->SetText("400");  // Z keeps its default 0.5 rpm: 3 degrees a second
  // Per step of 1/8 s: X gains 45, Y -22.5, Z 0.375.
  const float x[] = {75, 120, 165, 210, 255, 300, 345, 30, 75};
  for (int i = 0; i < 9; ++i) {
    rot.Step(0.125f);
    EXPECT_FLOAT_EQ(rot.Out("RotX"), x[i]) << "step " << i + 1;
    EXPECT_FLOAT_EQ(rot.Out("RotY"), -22.5f * (i + 1));
    EXPECT_FLOAT_EQ(rot.Out("RotZ"), 40.0f + 0.375f * (i + 1));
  }
  // Two more in-ports reading it in the same frame each advance it again.
  rot.node->Update(0.0f, &rot.g.frame);
  rot.node->Update(0.5f, &rot.g.frame);
  EXPECT_FLOAT_EQ(rot.Out("RotX"), 165.0f);
  EXPECT_FLOAT_EQ(rot.Out("RotY"), -22.5f * 11);
}
