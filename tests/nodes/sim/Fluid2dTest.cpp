// Fluid2d: a liquid at a fixed rate that no port value can break, that
// falls and spreads as a liquid does, and that the seed repeats.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "nodes/sim/Fluid2dNode.h"
#include "nodes/sim/SimNodeHarness.h"
#include "scene/PortValues.h"

namespace {
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();
using Fluid = SimNode<CFluid2dNode>;

bool DrawsOnlyNumbers(const CRenderPoints &p) {
  for (int k = 0; k < p.Count(); ++k) {
    if (p.PrimitiveType() == PRIM_Point ? !Finite(p.Points()[k].x, p.Points()[k].y)
        : p.PrimitiveType() == PRIM_Line
            ? !Finite(p.Lines()[k].from.x, p.Lines()[k].from.y, p.Lines()[k].to.x, p.Lines()[k].to.y)
            : !Finite(p.Sprites()[k].x, p.Sprites()[k].y, p.Sprites()[k].sx))
      return false;
  }
  return true;
}

struct Extent {
  float lowX = 1e30f, highX = -1e30f, lowY = 1e30f, highY = -1e30f, meanY = 0.0f;
  explicit Extent(const CFluid2d &fluid) {
    for (const CFluid2d::Particle &p : fluid.Particles()) {
      lowX = std::min(lowX, p.x), highX = std::max(highX, p.x), lowY = std::min(lowY, p.y), highY = std::max(highY, p.y);
      meanY += p.y / fluid.Particles().size();
    }
  }
};
}  // namespace

TEST(Fluid2d, StepsAtMostThirtyTimesASecondAndDropsABacklogPastHalfASecond) {
  const struct {
    float dt;
    int frames, steps;
  } table[] = {{1.0f / 120, 120, 30}, {0.1f, 30, 30}, {2.0f, 5, 5}, {kNaN, 10, 0}, {kInf, 10, 0}, {-1.0f, 10, 0}};
  for (const auto &row : table) {
    CFixedStep stepper;
    int steps = 0;
    for (int i = 0; i < row.frames; ++i) steps += stepper.Due(row.dt);
    EXPECT_EQ(steps, row.steps) << "frames of " << row.dt << " s";
    EXPECT_TRUE(stepper.Accumulator() >= 0.0f && stepper.Accumulator() <= 0.5f) << row.dt;
  }
}

TEST(Fluid2d, NoPortValueBreaksTheLiquidOrReachesAVertex) {
  const struct {
    float gx, gy, size, color, aspect;
    int type, w, h, particles, frames;
    float dt;
  } table[] = {
      {kNaN, kNaN, kNaN, kNaN, kNaN, 2, 100, 100, 800, 60, 0.04f},     // no numbers
      {kInf, -kInf, kInf, kInf, 1, 1, 100, 100, 800, 60, 0.04f},       // infinite, as lines
      {1e4f, -1e4f, 1, -kInf, 0, -9, 100, 100, 800, 60, 0.04f},        // the port's ends, as points
      {0, -1, 0.01f, 1, 1, 2, 5, -40, 3000, 60, 0.04f},                // smallest grid, crowded
      {0, -1, 0.01f, 1, 1, 2, 10000000, 10000000, 500, 3, 0.04f},      // 10^14 cells asked for
      {0, -1, 0.01f, 1, 1, 2, 100, 100, 10000000, 1, 0.04f},           // ten million particles
      {0, -1, 0.01f, 1, 1, 2, 100, 100, -7, 60, 0.04f},                // fewer than none
      {0, -1, 0.01f, 1, 1, 2, 100, 100, 800, 20, kNaN},                // frame times no numbers
  };
  for (const auto &row : table) {
    Fluid f("Fluid2d");
    f.Port<CPortVector>("Gravity").m_Value = {row.gx, row.gy, 0};
    f.Port<CPortFloat>("ParticleSize").m_Value = row.size;
    f.Port<CPortColor>("Color").m_Value = {row.color, row.color, row.color, row.color};
    const std::pair<const char *, int> ints[] = {
        {"PrimType", row.type}, {"GridCellsX", row.w}, {"GridCellsY", row.h}, {"NumParticles", row.particles}};
    for (const auto &[port, value] : ints) f.Port<CPortInt>(port).m_Value = value;
    f.frame.Aspect = row.aspect;
    f.Steps(row.frames, row.dt);
    f.Port<CPortInt>("GridCellsX").m_Value = 6;  // the grid shrinks under the liquid: the walls take it in
    f.Steps(2);
    const CFluid2d &fluid = f.node->Fluid();
    const Extent e(fluid);
    SCOPED_TRACE(testing::Message() << "row " << &row - table);
    EXPECT_LE(fluid.Width() * fluid.Height(), CFluid2d::MaxNodes);
    EXPECT_LE(fluid.Particles().size(), static_cast<size_t>(CFluid2d::MaxParticles));
    EXPECT_TRUE(fluid.Particles().empty() || (e.lowX >= 1.0f && e.highX <= fluid.Width() - 2 && e.lowY >= 1.0f &&
                                              e.highY <= fluid.Height() - 2));
    EXPECT_EQ(f.node->Points().Count(), static_cast<int>(fluid.Particles().size()));
    EXPECT_TRUE(DrawsOnlyNumbers(f.node->Points()));
  }
}

TEST(Fluid2d, FallsUnderGravityAndSpreadsWithoutIt) {
  Fluid falling("Fluid2d", {{"NumParticles", "400"}, {"GridCellsX", "40"}, {"GridCellsY", "40"}});
  const Extent start((falling.Steps(1), falling.node->Fluid()));
  const Extent settled((falling.Steps(150), falling.node->Fluid()));
  EXPECT_LT(settled.meanY, start.meanY - 5.0f) << "the liquid falls";
  EXPECT_LT(settled.lowY, 5.0f) << "and lies on the floor";
  EXPECT_GT(settled.highX - settled.lowX, start.highX - start.lowX) << "spreading along it";

  Fluid floating("Fluid2d", {{"NumParticles", "2000"}, {"GridCellsX", "40"}, {"GridCellsY", "40"}, {"Gravity", "0 0 0"}});
  const Extent block((floating.Steps(1), floating.node->Fluid()));
  const Extent spread((floating.Steps(100), floating.node->Fluid()));
  EXPECT_GT(spread.highY - spread.lowY, block.highY - block.lowY) << "pressure alone spreads the block";
  EXPECT_NEAR(spread.meanY, block.meanY, 3.0f) << "without falling";

}

TEST(Fluid2d, TheSameSeedGivesTheSameField) {
  auto run = [](uint32_t seed) {
    Fluid f("Fluid2d", {{"NumParticles", "1500"}, {"GridCellsX", "64"}, {"GridCellsY", "48"}});
    SeedSharedRandom(seed);
    f.Steps(40);
    std::vector<float> field;
    for (const CFluid2d::Particle &p : f.node->Fluid().Particles()) field.insert(field.end(), {p.x, p.y, p.u, p.v});
    return field;
  };
  EXPECT_EQ(run(11), run(11));
  EXPECT_NE(run(11), run(12));
}
