// The colour nodes: conversions against an independent reference, the grey
// and wrap-around edges of hue, and what happens to components that only a
// connection can push out of range.
#include "nodes/value/HSLAToColorNode.h"
#include "nodes/value/HSVAToColorNode.h"
#include "nodes/value/RGBAToColorNode.h"
#include "support/TestNodes.h"

#include <gtest/gtest.h>

namespace {
struct ColorNode {
  TestGraph g;
  CNode *node;
  explicit ColorNode(CNodeInfo *info) : node(g.Add<CNode>(info, "Color1")) {}
  // Sets the first three components from their file text and converts.
  Color4f Convert(const char *a, const char *b, const char *c, const char *alpha = "1") {
    node->m_InPorts[0]->SetText(a);
    node->m_InPorts[1]->SetText(b);
    node->m_InPorts[2]->SetText(c);
    node->m_InPorts[3]->SetText(alpha);
    node->Update(0.0f, &g.frame);
    return static_cast<CPortColor *>(node->FindOutPort("Color"))->m_Value;
  }
  // Feeds one in-port from a value source giving `value` (which no file
  // could hold) instead.
  CTestValueNode *Feed(const char *port, float value) {
    auto *src = g.Add<CTestValueNode>(CTestValueNode::CreateInfo(), "Source");
    Give(src, value);
    EXPECT_TRUE(node->Connect(port, "Out", src));
    return src;
  }
  static void Give(CTestValueNode *src, float value) { src->m_In->m_Value = value / 2.0f; }  // Out = In * 2 + time
};

void ExpectColor(Color4f c, float r, float g, float b, float a) {
  for (auto [got, want] : {std::pair{c.r, r}, {c.g, g}, {c.b, b}, {c.a, a}}) EXPECT_NEAR(got, want, 1e-5);
}
}  // namespace

// Expected values: Python's colorsys, hue taken as (H / 360) % 1:
//   colorsys.hls_to_rgb(h, l, s), colorsys.hsv_to_rgb(h, s, v)
TEST(HSLAToColor, MatchesTheReferenceConversionAndGreyWithoutSaturation) {
  ColorNode hsl(CHSLAToColor::CreateInfo());
  ExpectColor(hsl.Convert("200", "0.6", "0.3", "0.4"), 0.12f, 0.36f, 0.48f, 0.4f);
  ExpectColor(hsl.Convert("30", "1", "0.75"), 1.0f, 0.75f, 0.5f, 1.0f);
  ExpectColor(hsl.Convert("350", "0.5", "0.5"), 0.75f, 0.25f, 0.333333f, 1.0f);
  // No saturation is grey of the lightness, whatever the hue.
  for (const char *hue : {"0", "123", "360"}) ExpectColor(hsl.Convert(hue, "0", "0.3"), 0.3f, 0.3f, 0.3f, 1.0f);
  hsl.Feed("Lightness", 1.4f);
  ExpectColor(hsl.Convert("40", "0", "0"), 1.0f, 1.0f, 1.0f, 1.0f);
}

TEST(HSVAToColor, MatchesTheReferenceConversionConnectedHuesWrapOnceAndComponentsButAlphaAreLimited) {
  ColorNode hsv(CHSVAToColor::CreateInfo());
  ExpectColor(hsv.Convert("200", "0.6", "0.8", "0.25"), 0.32f, 0.64f, 0.8f, 0.25f);
  ExpectColor(hsv.Convert("359", "1", "1"), 1.0f, 0.0f, 0.016667f, 1.0f);
  ExpectColor(hsv.Convert("0", "0.5", "0.8"), 0.8f, 0.4f, 0.4f, 1.0f);
  ExpectColor(hsv.Convert("360", "0.5", "0.8"), 0.8f, 0.4f, 0.4f, 1.0f);  // the full turn is hue 0
  ExpectColor(hsv.Convert("77", "0", "0.6"), 0.6f, 0.6f, 0.6f, 1.0f);
  auto *hue = hsv.Feed("Hue", -30.0f);  // the sector below 0 is the last one: hue 330
  ExpectColor(hsv.Convert("0", "1", "1"), 1.0f, 0.0f, 0.5f, 1.0f);
  ColorNode::Give(hue, 450.0f);
  ExpectColor(hsv.Convert("0", "1", "1"), 0.0f, 0.0f, 0.0f, 1.0f);
  // Components are limited to one, alpha is not.
  ColorNode::Give(hue, 120.0f);
  hsv.Feed("Value", 1.5f);  // reference (0.75, 1.5, 0.75) before the limit
  hsv.Feed("Alpha", 1.5f);
  ExpectColor(hsv.Convert("0", "0.5", "0"), 0.75f, 1.0f, 0.75f, 1.5f);
}

TEST(RGBAToColor, CopiesComponentsUnlimited) {
  ColorNode rgba(CRGBAToColor::CreateInfo());
  ExpectColor(rgba.Convert("0.1", "0.2", "0.3", "0.4"), 0.1f, 0.2f, 0.3f, 0.4f);
  ExpectColor(rgba.Convert("-1", "2", "0.5", "7"), 0.0f, 1.0f, 0.5f, 1.0f);  // a file value obeys the port range
  rgba.Feed("Green", 2.5f);
  ExpectColor(rgba.Convert("0.1", "0.2", "0.3", "0.4"), 0.1f, 2.5f, 0.3f, 0.4f);
}
