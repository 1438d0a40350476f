// Asteroids: the ship's rule, rocks that wrap and break, levels that end,
// and a game that a seed repeats.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/Random.h"
#include "nodes/sim/AsteroidsNode.h"
#include "nodes/sim/SimNodeHarness.h"

namespace {
using Game = CAsteroidsGame;

struct RockAt {
  float x, y, vx = 0, vy = 0;
  int cls = Game::Large, state = Game::Flying;
  float radius = 0.03f;
};

// A field of `w` x `h`, the ship at (sx, sy), the rocks given and the other slots empty.
Game Field(float w, float h, float sx, float sy, std::vector<RockAt> rocks, int fragments = 3, int slots = 8) {
  Game g;
  g.SetSlots(slots, fragments);
  g.m_Fragments = fragments;
  g.SetField(w, h);
  g.m_Ship.x = sx;
  g.m_Ship.y = sy;
  for (size_t i = 0; i < rocks.size(); ++i) {
    const RockAt &k = rocks[i];
    Game::Rock &r = g.m_Rocks[i];
    r.x = k.x, r.y = k.y, r.vx = k.vx, r.vy = k.vy, r.cls = k.cls, r.state = k.state, r.radius = k.radius;
  }
  return g;
}
}  // namespace

TEST(Asteroids, ShipAimsAtThePredictedRockAndFiresWhenLinedUp) {
  constexpr float dt = 0.01f, full = 200 * dt;
  // busy: every bullet already flying; turnLo..turnHi: the change of angle; fires: a bullet leaves the nose.
  const struct {
    const char *situation; float angle, delay; std::vector<RockAt> rocks;
    bool busy; float turnLo, turnHi; bool fires; float delayAfter;
  } table[] = {
      {"dead ahead, near", 0, 0, {{0.5f, 0.3f}}, false, 0, 0, true, 0.25f},
      {"dead ahead, reloading", 0, 0.1f, {{0.5f, 0.3f}}, false, 0, 0, false, 0.1f},
      {"dead ahead, out of range", 0, 0, {{0.5f, -0.2f}}, false, 0, 0, false, 0.25f},
      {"dead ahead, no bullet free", 0, 0, {{0.5f, 0.3f}}, true, 0, 0, false, 0.25f},
      {"behind: full turn", 0, 0, {{0.5f, 0.7f}}, false, -full, -full, false, 0},
      {"to the right: full turn clockwise", 0, 0, {{0.7f, 0.5f}}, false, -full, -full, false, 0},
      {"to the left: full turn the other way", 0, 0, {{0.3f, 0.5f}}, false, full, full, false, 0},
      {"a little right: eases in", 0, 0, {{0.53f, 0.3f}}, false, -0.3f * full, -0.01f * full, false, 0},
      {"moving right: aims ahead of it", 0, 0, {{0.5f, 0.3f, 0.5f, 0}}, false, -full, -0.1f * full, false, 0},
      {"nearest prediction wins", 0, 0, {{0.3f, 0.5f}, {0.5f, 0.45f}}, false, -0.01f, 0.01f, true, 0.25f},
      {"exploding rocks are no target", 0, 0, {{0.3f, 0.5f, 0, 0, Game::Large, Game::Exploding}}, false, 0, 0,
       false, 0},
      {"turned half round, rock below", 180, 0, {{0.5f, 0.7f}}, false, 0, 0, true, 0.25f},
  };
  for (const auto &c : table) {
    Game g = Field(1, 1, 0.5f, 0.5f, c.rocks);
    g.m_Ship.angle = c.angle;
    g.m_Ship.shotDelay = c.delay;
    if (c.busy)
      for (auto &b : g.m_Bullets) b.alive = 1;
    g.TurnAndShoot(dt);
    const float turn = g.m_Ship.angle - c.angle;
    EXPECT_TRUE(turn >= c.turnLo - 1e-4f && turn <= c.turnHi + 1e-4f) << c.situation << ": turned " << turn;
    EXPECT_FLOAT_EQ(g.m_Ship.shotDelay, c.delayAfter) << c.situation;
    const Game::Bullet &b = g.m_Bullets[0];
    EXPECT_EQ(!c.busy && b.alive, c.fires) << c.situation;
    // Speed 1 straight along the nose, from the nose.
    const float a = c.angle * 0.017453292f;
    EXPECT_TRUE(!c.fires || (std::hypot(b.vx + std::sin(a), b.vy + std::cos(a)) < 1e-5f &&
                             std::fabs(std::hypot(b.x - 0.5f, b.y - 0.5f) - g.m_Ship.size) < 1e-5f))
        << c.situation;
  }
}

TEST(Asteroids, RocksWrapOnceHalfTheirRadiusHasLeft) {
  // Field 1 x 2, radius 0.02: out beyond 0.01, back in by the field plus 0.02.
  const struct {
    float x, y, vx, vy, wantX, wantY;
  } table[] = {
      {0.995f, 1, 0.02f, 0, 1.005f, 1},          // out by less than half the radius
      {0.995f, 1, 0.04f, 0, -0.005f, 1},         // right edge to the left
      {0.005f, 1, -0.04f, 0, 1.005f, 1},         // left edge to the right
      {0.5f, 1.995f, 0, 0.04f, 0.5f, -0.005f},   // top to bottom, with the field's height
      {0.5f, 0.005f, 0, -0.04f, 0.5f, 2.005f},   // bottom to top
  };
  for (const auto &c : table) {
    Game g = Field(1, 2, 0.5f, 0.5f, {{c.x, c.y, c.vx, c.vy, Game::Large, Game::Flying, 0.02f}});
    g.m_Ship.shotDelay = 100;
    g.Step(0.5f);
    EXPECT_NEAR(g.m_Rocks[0].x, c.wantX, 1e-5f) << c.x << "," << c.y;
    EXPECT_NEAR(g.m_Rocks[0].y, c.wantY, 1e-5f) << c.x << "," << c.y;
  }
}

TEST(Asteroids, BulletsBreakLargeRocksIntoFragmentsAndRemoveSmallOnes) {
  // The bullet flies along x through bulletY, across a rock at (0.5, 0.5).
  const struct {
    const char *situation; int cls, fragments, slots; float bulletY; bool hit; int newRocks;
  } table[] = {
      {"large rock, three fragments", Game::Large, 3, 4, 0.5f, true, 3},
      {"small rock leaves nothing", Game::Small, 3, 4, 0.5f, true, 0},
      {"grazing inside the radius", Game::Large, 2, 4, 0.52f, true, 2},
      {"passing outside the radius", Game::Large, 3, 4, 0.54f, false, 0},
      {"no free slot, no fragment", Game::Large, 1, 1, 0.5f, true, 0},
  };
  for (const auto &c : table) {
    Game g = Field(1, 1, 0.1f, 0.9f, {{0.5f, 0.5f, 0, 0, c.cls, Game::Flying, 0.03f}}, c.fragments, c.slots);
    g.m_Ship.shotDelay = 100;
    g.m_Ship.sinceHit = 5;
    // Both ends of the bullet's path lie outside the rock: only the segment meets it.
    g.m_Bullets[0] = {1, 0.4f, c.bulletY, 0.4f, c.bulletY, 1, 0};
    g.Step(0.2f);
    EXPECT_EQ(g.m_Rocks[0].state, c.hit ? Game::Exploding : Game::Flying) << c.situation;
    EXPECT_EQ(g.m_Bullets[0].alive != 0, !c.hit) << c.situation;
    EXPECT_NEAR(g.m_Ship.sinceHit, c.hit ? 0.0f : 5.2f, 1e-5f) << c.situation;
    // Fragments are small rocks within 0.9 radius on each axis of the rock.
    const int fragments = static_cast<int>(std::count_if(g.m_Rocks.begin() + 1, g.m_Rocks.end(), [](const Game::Rock &r) {
      return r.state != Game::Empty && r.cls == Game::Small && std::hypot(r.x - 0.5f, r.y - 0.5f) <= 0.9f * 0.03f * 1.415f;
    }));
    EXPECT_EQ(fragments, c.newRocks) << c.situation;
    EXPECT_EQ(g.RockCount(), 1 + c.newRocks) << c.situation;
  }
  // A rock that reaches the ship makes it jump elsewhere, and flies on.
  Game g = Field(1, 1, 0.5f, 0.5f, {{0.51f, 0.5f}});
  g.Step(0.01f);
  EXPECT_TRUE(std::hypot(g.m_Ship.x - 0.5f, g.m_Ship.y - 0.5f) > 0 && g.m_Rocks[0].state == Game::Flying);
}

TEST(Asteroids, LevelRestartsWhenRocksAreGoneTimeIsUpOrTheViewChanges) {
  // rocksLeft -1 leaves the level as it is; levelTime: after the frames, when no restart came.
  const struct {
    const char *situation; int rocksLeft; float aspect; int frames; bool restarts; float levelTime;
  } table[] = {
      {"rocks flying", -1, 1, 10, false, 0.5f},
      {"all rocks shot", 0, 1, 1, true, 0},
      {"two rocks left: the clock runs three times as fast", 2, 1, 10, false, 1.5f},
      {"window resized", -1, 1.5f, 1, true, 0},
      {"time up", -1, 1, 41, true, 0},
  };
  for (const auto &c : table) {
    SimNode<CAsteroidsNode> a("Asteroids", {{"NumAsteroids", "6"}, {"LevelTime", "2"}});
    a.Steps(1, 0.05f);
    ASSERT_EQ(a.node->Game().RockCount(), 6);
    auto &rocks = a.node->Game().m_Rocks;
    if (c.rocksLeft >= 0)
      for (size_t i = c.rocksLeft; i < rocks.size(); ++i) rocks[i].state = Game::Empty;
    for (auto &r : rocks) r.vx = r.vy = 0;  // nothing leaves by being hit
    for (auto &b : a.node->Game().m_Bullets) b.alive = 0;
    a.node->Game().m_Ship.shotDelay = 100;
    a.frame.Aspect = c.aspect;
    a.Steps(c.frames, 0.05f);
    // A new level has six fresh (moving) large rocks and its clock back at 0.
    EXPECT_EQ(rocks[0].vx != 0, c.restarts) << c.situation;
    EXPECT_TRUE(c.restarts ? a.node->Game().RockCount() == 6 && a.node->LevelTime() < 0.05f * c.frames
                           : std::fabs(a.node->LevelTime() - c.levelTime) < 1e-4f)
        << c.situation;
  }
}

TEST(Asteroids, ASeedRepeatsTheGameWhichShootsRocksAndStaysFinite) {
  auto play = [](uint32_t seed, const SimNode<CAsteroidsNode>::Ports &ports, int frames = 900) {
    SimNode<CAsteroidsNode> a("Asteroids", ports, seed);
    a.frame.Aspect = a.frame.PrevAspect = 1.5f;
    int mostRocks = 0;
    std::vector<float> picture;
    for (int frame = 0; frame < frames; ++frame) {
      a.Steps(1);
      mostRocks = std::max(mostRocks, a.node->Game().RockCount());
    }
    const CRenderLines &lines = a.node->Lines();
    for (int i = 0; i < lines.Count(); ++i)
      for (const VertexPC &v : {lines.Lines()[i].from, lines.Lines()[i].to}) picture.insert(picture.end(), {v.x, v.y, v.z});
    return std::pair{picture, mostRocks};
  };
  const auto [first, most] = play(7, {});
  EXPECT_EQ(play(7, {}).first, first);
  EXPECT_NE(play(8, {}).first, first);
  // Fragments appeared: the ship hits what it aims at.
  EXPECT_GT(most, 10);
  for (float v : first) EXPECT_TRUE(std::isfinite(v));
  // Sizes a file may ask for are bounded, and a field of extreme shape still plays.
  for (const SimNode<CAsteroidsNode>::Ports &ports :
       {SimNode<CAsteroidsNode>::Ports{{"NumAsteroids", "100000"}, {"NumFragments", "100000"}},
        {{"Width", "0.0001"}, {"Height", "100000"}, {"LevelTime", "0.1"}}}) {
    const auto [lines, rocks] = play(3, ports, 60);
    EXPECT_LE(rocks, Game::MaxRockSlots);
    for (float v : lines) ASSERT_TRUE(std::isfinite(v));
  }
}
