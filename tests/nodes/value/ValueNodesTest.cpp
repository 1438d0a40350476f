// What the value node types share: they recompute on every pull with the time
// they are given, so they follow a local evaluation through a chain.
#include "nodes/value/ExpressionNode.h"
#include "nodes/value/HSLAToColorNode.h"
#include "nodes/value/HSVAToColorNode.h"
#include "nodes/value/RGBAToColorNode.h"
#include "nodes/value/RotatorNode.h"
#include "nodes/value/SignalGeneratorNode.h"
#include "nodes/value/SinNode.h"
#include "nodes/value/VectorNode.h"
#include "support/TestNodes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace {
float FirstComponent(CPort *out) {
  switch (out->m_Type) {
    case PT_Float: return static_cast<CPortFloat *>(out)->m_Value;
    case PT_Vector: return static_cast<CPortVector *>(out)->m_Value.x;
    case PT_Color: return static_cast<CPortColor *>(out)->m_Value.r;
    default: return NAN;
  }
}
}  // namespace

TEST(ValueNodes, RecomputeOnEveryPullAtTheLocalTime) {
  // Each type with one in-port fed by a Sin (0 at t = 0, 0.5 at 0.25, 1 at
  // 0.5) and settings under which its first output is that in-port's value.
  using Settings = std::vector<std::pair<const char *, const char *>>;
  const struct { const char *type; CNodeInfo *(*create)(); const char *port; Settings settings; } cases[] = {
      {"SignalGenerator", &CSignalGeneratorNode::CreateInfo, "Offset", {{"Amplitude", "0"}}},
      {"Vector", &CVectorNode::CreateInfo, "x", {}},
      {"RGBAToColor", &CRGBAToColor::CreateInfo, "Red", {}},
      {"HSLAToColor", &CHSLAToColor::CreateInfo, "Lightness", {{"Saturation", "0"}}},
      {"HSVAToColor", &CHSVAToColor::CreateInfo, "Value", {{"Saturation", "0"}}},
      {"Rotator", &CRotatorNode::CreateInfo, "StartRotX", {{"RotSpeedX", "0"}}},
      {"Expression", &CExpressionNode::CreateInfo, "In1", {{"Expression", "out1 = in1"}}},
  };
  for (const auto &c : cases) {
    TestGraph g;
    CNode *sin = g.Add<CNode>(CSinNode::CreateInfo(), "Sin1");
    CNode *node = g.Add<CNode>(c.create(), "Node1");
    for (const auto &[port, text] : c.settings) node->FindInPort(port)->SetText(text);
    ASSERT_TRUE(node->Connect(c.port, "Value", sin));
    node->Pull(0.0f);  // as the frame would: from now on the node counts as updated
    for (float t : {0.25f, 0.5f, 0.0f}) {
      node->Update(t, &g.frame);
      const float expected = 0.5f - 0.5f * std::cos(6.2831855f * t);
      EXPECT_NEAR(FirstComponent(node->m_OutPorts[0]), expected, 1e-5) << c.type << " at t=" << t;
      EXPECT_TRUE(node->m_OutPorts[0]->m_Changed);
    }
  }
}

TEST(VectorNode, CombinesItsThreeComponents) {
  TestGraph g;
  CNode *vec = g.Add<CVectorNode>(CVectorNode::CreateInfo(), "Vector1");
  vec->FindInPort("x")->SetText("1.5");
  vec->FindInPort("y")->SetText("-2e6");  // limited to the port's -1000000
  vec->FindInPort("z")->SetText("250000");
  vec->Update(0.0f, &g.frame);
  EXPECT_EQ(vec->FindOutPort("Vector")->GetText(), "1.5 -1e+06 250000");
}

