// Fluid2d: a liquid at a fixed rate that no port value can break, that
// falls and spreads as a liquid does, and that the seed repeats.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>

#include "core/Random.h"
#include "nodes/sim/Fluid2dNode.h"
#include "scene/PortValues.h"
#include "nodes/sim/SimHarness.h"

namespace {
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
using Fluid = SimHarness<CFluid2dNode>;

// Every record the batch would draw is a number.
bool DrawsOnlyNumbers(const CRenderPoints &points) {
  for (int k = 0; k < points.Count(); ++k) {
    if (points.PrimitiveType() == PRIM_Point) {
      const VertexPC &v = points.Points()[k];
      if (!Finite(v.x, v.y, v.z)) return false;
    } else if (points.PrimitiveType() == PRIM_Line) {
      const CRenderPoints::Line &l = points.Lines()[k];
      if (!Finite(l.from.x, l.from.y, l.to.x, l.to.y)) return false;
    } else {
      const CRenderPoints::Sprite &s = points.Sprites()[k];
      if (!Finite(s.x, s.y, s.z, s.sx, s.sy, s.sz)) return false;
    }
  }
  return true;
}

struct Extent {
  float lowY = 1e30f, highY = -1e30f, lowX = 1e30f, highX = -1e30f, meanY = 0.0f;
};
Extent Measure(const CFluid2d &fluid) {
  Extent e;
  for (const CFluid2d::Particle &p : fluid.Particles()) {
    e.lowX = std::min(e.lowX, p.x), e.highX = std::max(e.highX, p.x);
    e.lowY = std::min(e.lowY, p.y), e.highY = std::max(e.highY, p.y);
    e.meanY += p.y / fluid.Particles().size();
  }
  return e;
}
}  // namespace

TEST(Fluid2d, StepsAtMostThirtyTimesASecondAndDropsABacklogPastHalfASecond) {
  const struct {
    float dt;
    int frames, steps;
  } table[] = {{1.0f / 120, 120, 30}, {1.0f / 30, 30, 30}, {0.1f, 30, 30}, {2.0f, 5, 5},
               {kNaN, 10, 0},        {kInf, 10, 0},      {-1.0f, 10, 0}};
  for (const auto &row : table) {
    CFixedStep stepper;
    int steps = 0;
    for (int i = 0; i < row.frames; ++i) {
      steps += stepper.Due(row.dt);
      EXPECT_TRUE(stepper.Accumulator() >= 0.0f && stepper.Accumulator() <= 0.5f) << row.dt;
    }
    EXPECT_EQ(steps, row.steps) << "frames of " << row.dt << " s";
  }
}

TEST(Fluid2d, NoPortValueBreaksTheLiquidOrReachesAVertex) {
  const struct {
    const char *what;
    std::function<void(Fluid &)> set;
    int frames = 60;
  } table[] = {
      {"gravity not a number", [](Fluid &f) { f.Port<CPortVector>("Gravity").m_Value = {kNaN, kNaN, 0}; }},
      {"gravity infinite", [](Fluid &f) { f.Port<CPortVector>("Gravity").m_Value = {kInf, -kInf, kNaN}; }},
      {"gravity at the port's ends", [](Fluid &f) { f.Port<CPortVector>("Gravity").m_Value = {1e4f, -1e4f, 0}; }},
      {"lines under wild gravity",
       [](Fluid &f) {
         f.Port<CPortVector>("Gravity").m_Value = {-3e3f, 7e2f, 0};
         f.Port<CPortInt>("PrimType").m_Value = 1;
       }},
      {"points, type out of range", [](Fluid &f) { f.Port<CPortInt>("PrimType").m_Value = -9; }},
      {"size not a number", [](Fluid &f) { f.Port<CPortFloat>("ParticleSize").m_Value = kNaN; }},
      {"size infinite", [](Fluid &f) { f.Port<CPortFloat>("ParticleSize").m_Value = kInf; }},
      {"color not a number", [](Fluid &f) { f.Port<CPortColor>("Color").m_Value = {kNaN, kInf, -kInf, kNaN}; }},
      {"smallest grid, crowded",
       [](Fluid &f) {
         f.Port<CPortInt>("GridCellsX").m_Value = 5;
         f.Port<CPortInt>("GridCellsY").m_Value = -40;
         f.Port<CPortInt>("NumParticles").m_Value = 3000;
       }},
      {"grid of 10^14 cells",
       [](Fluid &f) {
         f.Port<CPortInt>("GridCellsX").m_Value = 10000000;
         f.Port<CPortInt>("GridCellsY").m_Value = 10000000;
         f.Port<CPortInt>("NumParticles").m_Value = 500;
       },
       3},
      {"ten million particles", [](Fluid &f) { f.Port<CPortInt>("NumParticles").m_Value = 10000000; }, 1},
      {"negative particles", [](Fluid &f) { f.Port<CPortInt>("NumParticles").m_Value = -7; }},
      {"aspect not a number", [](Fluid &f) { f.frame.Aspect = kNaN; }},
      {"aspect 0", [](Fluid &f) { f.frame.Aspect = 0.0f; }},
      {"frame times broken", [](Fluid &f) { f.Frames(5, kNaN), f.Frames(5, kInf), f.Frames(5, -1.0f); }},
  };
  for (const auto &row : table) {
    Fluid f("Fluid2d", {{"NumParticles", "800"}});
    row.set(f);
    f.Frames(row.frames);
    // The grid shrinks under the liquid: the walls take it in.
    f.Port<CPortInt>("GridCellsX").m_Value = 6;
    f.Frames(2);
    const CFluid2d &fluid = f.node->Fluid();
    EXPECT_LE(fluid.Width() * fluid.Height(), CFluid2d::MaxNodes) << row.what;
    EXPECT_LE(fluid.Particles().size(), static_cast<size_t>(CFluid2d::MaxParticles)) << row.what;
    const Extent e = Measure(fluid);
    if (!fluid.Particles().empty()) {
      EXPECT_TRUE(e.lowX >= 1.0f && e.highX <= fluid.Width() - 2 && e.lowY >= 1.0f && e.highY <= fluid.Height() - 2)
          << row.what;
    }
    EXPECT_EQ(f.node->Points().Count(), static_cast<int>(fluid.Particles().size())) << row.what;
    EXPECT_TRUE(DrawsOnlyNumbers(f.node->Points())) << row.what;
  }
}

TEST(Fluid2d, FallsUnderGravitySpreadsWithoutItAndRestartsOnlyWhenParticlesAreAdded) {
  Fluid falling("Fluid2d", {{"NumParticles", "400"}, {"GridCellsX", "40"}, {"GridCellsY", "40"}});
  falling.Frames(1);
  const Extent start = Measure(falling.node->Fluid());
  falling.Frames(150);
  const Extent settled = Measure(falling.node->Fluid());
  EXPECT_LT(settled.meanY, start.meanY - 5.0f) << "the liquid falls";
  EXPECT_LT(settled.lowY, 5.0f) << "and lies on the floor";
  EXPECT_GT(settled.highX - settled.lowX, start.highX - start.lowX) << "spreading along it";

  Fluid floating("Fluid2d", {{"NumParticles", "2000"}, {"GridCellsX", "40"}, {"GridCellsY", "40"}, {"Gravity", "0 0 0"}});
  floating.Frames(1);
  const Extent block = Measure(floating.node->Fluid());
  floating.Frames(100);
  const Extent spread = Measure(floating.node->Fluid());
  EXPECT_GT(spread.highY - spread.lowY, block.highY - block.lowY) << "pressure alone spreads the block";
  EXPECT_NEAR(spread.meanY, block.meanY, 3.0f) << "without falling";

  floating.Port<CPortInt>("NumParticles").m_Value = 1000;
  floating.Frames(1);
  EXPECT_EQ(floating.node->Fluid().Particles().size(), 2000u) << "fewer particles change nothing";
  floating.Port<CPortInt>("NumParticles").m_Value = 2500;
  floating.Frames(1);
  const Extent restarted = Measure(floating.node->Fluid());
  EXPECT_EQ(floating.node->Fluid().Particles().size(), 2500u);
  EXPECT_LT(restarted.highY - restarted.lowY, spread.highY - spread.lowY) << "more restart the block";
}

TEST(Fluid2d, TheSameSeedGivesTheSameField) {
  auto run = [](uint32_t seed) {
    Fluid f("Fluid2d", {{"NumParticles", "1500"}, {"GridCellsX", "64"}, {"GridCellsY", "48"}});
    SeedSharedRandom(seed);
    f.Frames(40);
    std::vector<float> field;
    for (const CFluid2d::Particle &p : f.node->Fluid().Particles()) field.insert(field.end(), {p.x, p.y, p.u, p.v});
    return field;
  };
  EXPECT_EQ(run(11), run(11));
  EXPECT_NE(run(11), run(12));
}
