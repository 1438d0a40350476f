// Particles: emission, life and gravity over fixed steps, and a picture that
// a seed repeats.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "core/Random.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/object/ParticlesNode.h"
#include "scene/NodeFactory.h"
#include "scene/Port.h"

namespace {
constexpr float kStep = 0.033333335f;

struct Particles {
  explicit Particles(std::vector<std::pair<const char *, const char *>> ports) {
    InstallBuiltinNodes();
    factory->Init();
    node.reset(static_cast<CParticlesNode *>(factory->CreateNode("Particles")));
    for (const auto &[name, value] : ports) node->FindInPort(name)->SetText(value);
  }
  void Steps(int n) {
    for (int i = 0; i < n; ++i) {
      frame.DeltaTime = kStep;
      frame.Time += kStep;
      node->m_Updated = false;
      node->Update(frame.Time, &frame);
      for (CPort *p : node->m_InPorts) p->m_Changed = false;
    }
  }
  std::vector<CRenderPoints::Sprite> Sprites() const {
    const CRenderPoints &points = node->Points();
    return {points.Sprites(), points.Sprites() + points.Count()};
  }
  CNodeFactoryRef factory;
  FrameInfo frame;
  std::unique_ptr<CParticlesNode> node;
};

bool Same(const std::vector<CRenderPoints::Sprite> &a, const std::vector<CRenderPoints::Sprite> &b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto &p, const auto &q) {
    return p.x == q.x && p.y == q.y && p.z == q.z && p.color == q.color && p.sx == q.sx;
  });
}
}  // namespace

TEST(Particles, TwoANewStepLiveFifteenStepsAndFallUnderGravity) {
  // 60 a second is two per step of 1/30 s; a life of 0.51 s is 15 steps.
  Particles p({{"ParticlesPerSec", "60"}, {"TimeToLive", "0.51"}, {"TimeToLiveVar", "0"}, {"Speed", "0"},
               {"EmitterRadius", "0"}, {"Gravity", "0 -10 0"}, {"SizeVar", "0"}});
  // Steps in all from the start, live particles, pool size.
  const struct { int steps, live, pool; } table[] = {{1, 2, 60}, {10, 20, 60}, {15, 30, 60}, {16, 30, 60}, {40, 30, 60}};
  int done = 0;
  for (const auto &row : table) {
    p.Steps(row.steps - done);
    done = row.steps;
    EXPECT_EQ(p.node->LiveCount(), row.live) << "after " << row.steps << " steps";
    EXPECT_EQ(static_cast<int>(p.node->Pool().size()), row.pool) << "the pool grows by one second's worth, once";
    EXPECT_EQ(p.node->Points().Count(), row.live);
  }
  // A particle that has run m updates has fallen g dt^2 m(m-1)/2: velocity
  // follows position within a step.
  Particles fall({{"ParticlesPerSec", "30"}, {"TimeToLive", "100"}, {"TimeToLiveVar", "0"}, {"Speed", "0"},
                  {"EmitterRadius", "0"}, {"Gravity", "0 -10 0"}, {"PrimType", "0"}});
  fall.Steps(11);
  const CParticlesNode::Particle &first = fall.node->Pool()[0];
  ASSERT_TRUE(first.alive);
  const int m = static_cast<int>(std::lround(first.age / kStep));
  EXPECT_NEAR(first.position.y, -10.0f * kStep * kStep * m * (m - 1) / 2.0f, 1e-4f);
  EXPECT_NEAR(first.velocity.y, -10.0f * kStep * m, 1e-4f);
  EXPECT_EQ(fall.node->Points().Points()[0].y, first.position.y);
}

TEST(Particles, TheSameSeedGivesTheSamePictureAndAnotherTimeAnother) {
  auto run = [](uint32_t seed, int steps) {
    SeedSharedRandom(seed);
    Particles p({{"ParticlesPerSec", "300"}, {"SpreadMin", "5"}, {"SpreadMax", "40"}, {"EmitterType", "2"}});
    p.Steps(steps);
    return p.Sprites();
  };
  const auto a = run(42, 30);
  ASSERT_GT(a.size(), 100u);
  EXPECT_TRUE(Same(run(42, 30), a));
  EXPECT_FALSE(Same(run(42, 31), a));
  EXPECT_FALSE(Same(run(43, 30), a));
}
