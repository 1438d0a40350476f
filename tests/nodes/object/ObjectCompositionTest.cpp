// Transform, Clone, CloneExpression, DelayedTransform and PingPong: where the
// copies of an object are drawn, as the recorder sees the draw list played.
#include <gtest/gtest.h>

#include <cmath>

#include "nodes/object/CloneExpressionNode.h"
#include "nodes/object/CloneNode.h"
#include "nodes/object/DelayedTransformNode.h"
#include "nodes/object/PingPongNode.h"
#include "nodes/object/TransformNode.h"
#include "support/RecordTargets.h"
#include "support/TestDrawNodes.h"
#include "support/TestNodes.h"

namespace {
// The end of a step, as the graph ends it: no port is new any more.
void EndStep(TestGraph &g) {
  for (auto &n : g.nodes)
    for (CPort *p : n->m_InPorts) p->m_Changed = false;
}

// A drawn object under a chain of composition nodes, played on the recorder.
struct Scene {
  TestGraph g;
  CTestEffect effect{"fx", 1};
  CTestDrawNode *draw = g.Add<CTestDrawNode>(CTestDrawNode::CreateInfo(), "Draw");
  CRecordRender render;

  // The x translation of every item drawn, in draw order.
  std::vector<std::string> Play(CNode *top) {
    draw->effect = &effect;
    g.NewStep();
    top->Pull(g.frame.Time);
    CDrawList list;
    top->AddToDrawList(list, list.Head(), nullptr);
    render.ClearCalls();
    list.Draw(&render);
    EndStep(g);
    return CallsStartingWith(render, {"fx.SetMatrix"});
  }
};
void Set(CNode *n, const char *port, const char *text) { n->FindInPort(port)->SetText(text); }
}  // namespace

TEST(ObjectComposition, CloneRowsAndTransformsScaleTurnThenMove) {
  Scene s;
  auto *clone = s.g.Add<CCloneNode>(CCloneNode::CreateInfo(), "Clone");
  auto *transform = s.g.Add<CTransformNode>(CTransformNode::CreateInfo(), "Transform");
  ASSERT_TRUE(clone->Connect("Object", "Object", s.draw));
  ASSERT_TRUE(transform->Connect("Object2", "Object", clone));
  Set(clone, "NumClones", "3");
  Set(clone, "PosChange", "2 0 0");
  Set(transform, "Pos", "10.5 0 0");
  // Centred: -2, 0, 2, moved by 10.5.
  EXPECT_EQ(s.Play(transform), (std::vector<std::string>{"fx.SetMatrix 8", "fx.SetMatrix 10", "fx.SetMatrix 12"}));
  // Turned a quarter about z before the move: the row stands along y.
  Set(transform, "Rot", "0 0 90");
  Set(clone, "Center", "false");
  Set(clone, "NumClones", "100000");  // held to the port's range
  s.Play(transform);
  ASSERT_EQ(clone->Copies().size(), 10000u);
  for (int i : {0, 1, 9999}) EXPECT_NEAR(clone->Copies()[i].matrix(3, 0), 2.0f * i, 1e-3f);
  for (const std::string &c : s.Play(transform))
    ASSERT_EQ(c, "fx.SetMatrix 10");
}

TEST(ObjectComposition, CloneExpressionGridFollowsTheWindowShape) {
  Scene s;
  auto *clone = s.g.Add<CCloneExpressionNode>(CCloneExpressionNode::CreateInfo(), "CloneExpression");
  ASSERT_TRUE(clone->Connect("Object", "Object", s.draw));
  Set(clone, "Center", "false");
  Set(clone, "Expression", "pos.x = x; pos.y = y; pos.z = z; col.r = 0.25;");
  for (auto [aspect, copies] : {std::pair{1.0f, 27u}, {2.0f, 54u}, {0.5f, 54u}}) {
    s.g.frame.Aspect = aspect;
    const std::vector<std::string> calls = s.Play(clone);
    EXPECT_EQ(clone->Copies().size(), copies);
    EXPECT_EQ(calls.size(), copies);
    EXPECT_EQ(calls[0], "fx.SetMatrix 1") << "indices from 1, not centred";
    EXPECT_EQ(clone->Copies()[0].color[0], 0.25f);
  }
  // Without an object the copies are squares of one batch with the effect.
  s.draw->effect = nullptr;
  clone->Disconnect(s.draw);
  ASSERT_TRUE(clone->RestoreDevice(&s.render));
  s.Play(clone);
  EXPECT_TRUE(CallsStartingWith(s.render, {"fx."}).empty()) << "no effect, nothing drawn";
  clone->InvalidateDevice(&s.render);
}

TEST(ObjectComposition, DelayedTransformChainLagsOneDelayPerLink) {
  Scene s;
  auto *delayed = s.g.Add<CDelayedTransformNode>(CDelayedTransformNode::CreateInfo(), "Delayed");
  ASSERT_TRUE(delayed->Connect("Object", "Object", s.draw));
  Set(delayed, "NumObjects", "3");
  Set(delayed, "ScaleDelta", "0 0 0");
  Set(delayed, "DelayedScaleDelta", "0 0 0");
  s.g.frame.DeltaTime = 0;
  s.Play(delayed);
  Set(delayed, "DelayedPosDelta", "1 0 0");
  Set(delayed, "DelayedRotDelta", "0 0 90");
  s.g.frame.DeltaTime = 0.125f;  // Delay 0.5: a shift every fifth frame
  // x of the three links, and how far link 1 has turned (row 0, column 1).
  const struct { int frame; float x[3], turn; } steps[] = {
      {4, {1, 0, 0}, 0}, {5, {1, 0.25f, 0}, 0.3827f}, {6, {1, 0.5f, 0}, 0.7071f},
      {8, {1, 1, 0}, 1}, {9, {1, 1, 0.25f}, 1},       {12, {1, 1, 1}, 1}};
  int frame = 0;
  for (const auto &step : steps) {
    for (; frame < step.frame; ++frame) s.Play(delayed);
    const auto &r = delayed->Records();
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(r[i].matrix(3, 0), step.x[i], 1e-4f) << "frame " << frame << " link " << i;
    EXPECT_NEAR(r[1].matrix(0, 1), step.turn, 1e-3f) << "frame " << frame;
  }
}

TEST(ObjectComposition, PingPongKeepsTheBallBetweenPaddlesAndRestartsOnReshape) {
  TestGraph g;
  auto *game = g.Add<CPingPongNode>(CPingPongNode::CreateInfo(), "PingPong");
  g.frame.DeltaTime = 1.0f / 30;
  g.frame.PrevAspect = g.frame.Aspect;
  float minX = 0, maxX = 0;
  for (int i = 0; i < 3000; ++i) {
    g.NewStep();
    game->Pull(0);
    EndStep(g);
    minX = std::min(minX, game->Ball().x);
    maxX = std::max(maxX, game->Ball().x);
  }
  EXPECT_TRUE(minX >= -0.5f && minX < -0.4f && maxX > 0.4f && maxX <= 0.5f) << minX << " .. " << maxX;
  EXPECT_FLOAT_EQ(game->Quads().Quads()[0].v[0].x, game->Ball().x - 0.01f);
  EXPECT_FLOAT_EQ(game->Paddle(0).x, -0.5f);

  g.frame.PrevAspect = 1;
  g.frame.Aspect = 2;
  g.NewStep();
  game->Pull(0);
  EXPECT_FLOAT_EQ(game->Paddle(1).x, 1.0f) << "the field widened with the window";
}
