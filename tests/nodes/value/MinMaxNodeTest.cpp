// MinMax: the wander between targets with its delay and interpolation time,
// checked against an independent simulation for a seeded generator, and the
// once-a-frame guard.
#include "core/Random.h"
#include "nodes/value/MinMaxNode.h"
#include "support/TestNodes.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

namespace {
struct MinMax {
  TestGraph g;
  CNode *node = g.Add<CMinMaxNode>(CMinMaxNode::CreateInfo(), "MinMax1");
  void Set(std::initializer_list<std::pair<const char *, const char *>> values) {
    for (const auto &[port, text] : values) node->FindInPort(port)->SetText(text);
  }
  float Value() { return static_cast<CPortFloat *>(node->FindOutPort("Value"))->m_Value; }
  float Step(float dt) {
    g.frame.DeltaTime = dt;
    g.NewStep();
    node->Pull(0.0f);
    return Value();
  }
};
}  // namespace

// The expected values come from a Python model of the node, with the shared
// generator's words drawn by the same xorshift128 and seeding rule:
//   rand() = w * 2.3283064e-10
//   pick(lo, hi, mode, cursor): cursor = fmod(cursor - lo, hi - lo) + lo, then
//     0: cursor; 1: rand() * (hi - lo) + lo; 2: 2 * rand() * (hi - lo) - (hi - lo) / 2 + lo;
//     3: (lo if |cursor - hi| <= 0.01 else cursor, hi); ...
//   per step: the wait/glide state machine, the glide 3f^2 - 2f^3 (linear
//   in the loop modes), RandShortestDist folded back into the range, and the
//   result limited to Min..Max.
TEST(MinMax, DefaultsJumpToAFirstTargetThenGlideWithoutWaiting) {
  SeedSharedRandom(1);
  MinMax mm;
  // Draws for seed 1: 0.520240, 0.052096, 0.896811, 0.918948. Step 1 takes
  // the first as its target at once; step 2 spends one draw on the (empty)
  // delay range, then glides to 0.896811 over 3 + 17 * 0.918948 s, easing in.
  const float dts[] = {0.5f, 0.5f, 1.0f, 2.0f, 4.0f, 30.0f, 0.25f};
  const float expected[] = {0.520240f, 0.521039f, 0.527176f, 0.555146f, 0.654284f, 0.896666f, 0.896250f};
  for (int i = 0; i < 7; ++i) EXPECT_NEAR(mm.Step(dts[i]), expected[i], 2e-5) << "step " << i + 1;
}

TEST(MinMax, LoopUpRampsLinearlyAndWaitsTheDelayAtTheTop) {
  SeedSharedRandom(1);
  MinMax mm;
  mm.Set({{"Max", "10"}, {"Mode", "LoopUp"}});
  mm.Set({{"DelayMin", "2"}, {"DelayMax", "2"}, {"ITimeMin", "4"}, {"ITimeMax", "4"}});
  // Up to 10 at once, wait 2 s, start again from 0 and take 4 s to reach 10.
  const float expected[] = {10, 10, 10, 0, 2.5f, 5, 7.5f, 10, 10, 0, 2.5f, 5};
  for (int i = 0; i < 12; ++i) EXPECT_FLOAT_EQ(mm.Step(1.0f), expected[i]) << "step " << i + 1;
}

TEST(MinMax, RandShortestDistFoldsTheGlideBackIntoTheRange) {
  SeedSharedRandom(5);
  MinMax mm;
  mm.Set({{"Mode", "RandShortestDist"}, {"ITimeMin", "2"}, {"ITimeMax", "2"}});
  const float expected[] = {0.051260f, 0.082973f, 0.152742f, 0.222511f, 0.992722f,
                            0.804258f, 0.389637f, 0.975016f, 0.513200f, 0.487073f};
  for (int i = 0; i < 10; ++i) EXPECT_NEAR(mm.Step(0.5f), expected[i], 2e-5) << "step " << i + 1;
}

TEST(MinMax, RunsOncePerFrameWhoeverPullsIt) {
  SeedSharedRandom(1);
  MinMax mm;
  mm.Step(0.5f);
  const float first = mm.Step(0.5f);
  const RandomState before = SharedRandom();
  // Pulled again in the same frame, at another local time: nothing moves.
  mm.node->Update(0.7f, &mm.g.frame);
  mm.node->Update(0.1f, &mm.g.frame);
  EXPECT_EQ(mm.Value(), first);
  EXPECT_EQ(SharedRandom().w, before.w);
  EXPECT_NE(mm.Step(0.5f), first);
  mm.Set({{"Mode", "PingPong"}});  // named 5, but the port stops at 4
  EXPECT_EQ(static_cast<CPortInt *>(mm.node->FindInPort("Mode"))->m_Value, 4);
}
