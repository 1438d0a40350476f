// The choice of the next scene: the four modes, both random passes, weights
// and the neighbour rule between layered entries, as a function of the list,
// the request and a seeded random state.
#include "engine/SceneChoice.h"

#include <gtest/gtest.h>

namespace {
using Entries = std::vector<SceneChoiceEntry>;
const Entries kThree = {{}, {}, {}};

SceneChoice Choose(const Entries &scenes, SceneChoiceRequest request, uint32_t seed = 1) {
  RandomState random;
  SeedRandomState(random, seed);
  return ChooseScene(scenes, request, random, -1.0f);
}
}  // namespace

TEST(SceneChoice, OrderedModesWrapAndClamp) {
  const struct {
    int mode, index, current, chosen;
  } cases[] = {
      {CHANGE_Next, 0, 0, 1},     {CHANGE_Next, 0, 2, 0},      {CHANGE_Previous, 0, 0, 2}, {CHANGE_Previous, 0, 2, 1},
      {CHANGE_Index, -5, 1, 0},   {CHANGE_Index, 9999, 1, 2},  {CHANGE_Index, 1, 0, 1},
      // After a random walk that ran off the end the position is the count:
      // "next" wraps to (count + 1) modulo count.
      {CHANGE_Next, 0, 3, 1},
  };
  for (const auto &c : cases) {
    const SceneChoice choice = Choose(kThree, {c.mode, c.index, c.current, false, false});
    EXPECT_EQ(choice.index, c.chosen) << "mode " << c.mode << " index " << c.index << " current " << c.current;
    EXPECT_EQ(choice.offset, 0.0f);
    EXPECT_EQ(choice.totalProbability, -1.0f);  // nothing drawn: the last total stands
  }
  EXPECT_EQ(Choose({}, {CHANGE_Next, 0, 0, false, false}).index, 0);
}

TEST(SceneChoice, RandomPicksFollowTheWeightsAndRepeatForASeed) {
  const Entries weighted = {{0.01f}, {100.0f}, {0.01f}};
  int common = 0;
  for (uint32_t seed = 1; seed <= 200; ++seed) {
    const SceneChoice choice = Choose(weighted, {CHANGE_Random, 0, 0, false, false}, seed);
    common += choice.index == 1;
    EXPECT_FLOAT_EQ(choice.totalProbability, 100.02f);
    EXPECT_LE(choice.offset, 100.02f);
  }
  EXPECT_GT(common, 190);
  const SceneChoice a = Choose(kThree, {CHANGE_Random, 0, 0, false, false}, 42);
  const SceneChoice b = Choose(kThree, {CHANGE_Random, 0, 0, false, false}, 42);
  EXPECT_EQ(a.index, b.index);
  EXPECT_EQ(a.offset, b.offset);
}

TEST(SceneChoice, BetweenLayeredScenesANeighbourFollowsUnlessTheSceneWasTooSlow) {
  // Layered entries only, the first without weight: whatever the draw, the
  // walk passes a layered entry before it stops.
  const Entries list = {{0.0f, true}, {1.0f, true}, {1.0f, true, true}, {0.0f, true}, {1.0f, true}};
  const struct {
    bool activeIsLayered, tooSlow;
    bool onlyNeighbour;
  } cases[] = {{true, false, true}, {true, true, false}, {false, false, false}};
  for (const auto &c : cases)
    for (uint32_t seed = 1; seed <= 50; ++seed) {
      const SceneChoice choice = Choose(list, {CHANGE_Random, 0, 0, c.activeIsLayered, c.tooSlow}, seed);
      if (c.onlyNeighbour) {
        EXPECT_EQ(choice.index, 2) << seed;
        EXPECT_FLOAT_EQ(choice.totalProbability, 1.0f);  // the neighbours' weights alone
      } else {
        EXPECT_FLOAT_EQ(choice.totalProbability, 3.0f);
      }
    }
  // No neighbour with weight: the first pass stands.
  const Entries noNeighbour = {{0.0f, true}, {1.0f, true}, {0.0f, true, true}};
  EXPECT_FLOAT_EQ(Choose(noNeighbour, {CHANGE_Random, 0, 0, true, false}).totalProbability, 1.0f);
}
