// Simplex noise against golden values computed by noise_golden.py, which
// follows the algorithm's description with single precision emulated in
// Python, independently of this implementation.
#include "ExprTestSupport.h"
#include "expr/Noise.h"

#include <cmath>

namespace {

struct Golden1 { float x; double value; };
struct Golden2 { float x, y; double value; };
struct Golden3 { float x, y, z; double value; };

const Golden1 kNoise1[] = {
    {0.0, 0}, {0.5, 0.437431663}, {1.0, 0}, {-1.0, 0},
    {0.25, 0.599402666}, {3.7, 0.168960869}, {-2.3, 0.294072002}, {12.125, 0.14116776},
    {100.5, 0.187470704}, {-0.75, 0.29458198},
};
const Golden2 kNoise2[] = {
    {0.0, 0.0, 0}, {0.5, 0.25, -0.584121823}, {0.3, 0.7, -0.141488224},
    {-1.0, 2.0, -0.36781624}, {1.5, -3.25, 0.70555234}, {10.1, 20.2, 0.500129342},
    {-0.6, -0.9, 0.159304172}, {2.0, 2.0, -0.182338357}, {7.3, 0.1, -0.524492085},
    {-4.4, 5.5, -0.313303649}, {-0.3660254, 1.3660254, 0.607402086}, {-0.5, 0.5, 0.285111338},
};
const Golden3 kNoise3[] = {
    {0.0, 0.0, 0.0, 0}, {0.5, 0.25, 0.75, 0.461928099}, {0.3, 0.7, 0.1, 0.159370691}, {-1.0, 2.0, -3.0, 0.652221739},
    {1.5, -3.25, 0.5, -0.626017451}, {10.1, 20.2, 30.3, -0.0672968179}, {-0.6, -0.9, -0.2, 0.00707645714},
    {2.0, 2.0, 2.0, 0}, {0.9, 0.1, 0.5, 0.0999752954}, {0.1, 0.9, 0.5, 0.480256587}, {0.5, 0.1, 0.9, 0.330449253},
    {0.2, 0.5, 0.8, 0.429099768}, {0.8, 0.5, 0.2, -0.230703741}, {0.5, 0.8, 0.2, -0.179685518},
    {0.0, 0.5, -0.5, 0.157400057}, {-0.25, 0.25, 0.0, -0.407253265}, {-1.0, 0.3, 0.7, 0.0623521544},
};

// Both round every step to single precision in the same order; the
// tolerance only absorbs the printed digits.
constexpr double kTolerance = 2e-8;

// Three dimensions in every corner order of the simplex.
TEST(Noise, MatchesGoldenValuesInEachDimension) {
  for (const Golden1 &g : kNoise1) EXPECT_NEAR(SimplexNoise1(g.x), g.value, kTolerance) << g.x;
  for (const Golden2 &g : kNoise2) EXPECT_NEAR(SimplexNoise2(g.x, g.y), g.value, kTolerance) << g.x << "," << g.y;
  for (const Golden3 &g : kNoise3)
    EXPECT_NEAR(SimplexNoise3(g.x, g.y, g.z), g.value, kTolerance) << g.x << "," << g.y << "," << g.z;
}

TEST(Noise, LanguageFunctionsTakeSinglePrecisionArguments) {
  ExprTest::Language<> language;
  EXPECT_EQ(language.Eval("noise2(0.3, 0.7)"), static_cast<double>(SimplexNoise2(0.3f, 0.7f)));
  EXPECT_EQ(language.Eval("noise3(0.5, 0.25, 0.75)"), static_cast<double>(SimplexNoise3(0.5f, 0.25f, 0.75f)));
  EXPECT_EQ(language.Eval("noise1(3.7)"), static_cast<double>(SimplexNoise1(3.7f)));
}

TEST(Noise, StaysBoundedFarFromTheOrigin) {
  for (float v : {-1e9f, -12345.5f, 1e6f, 7.5e8f}) {
    EXPECT_LE(std::fabs(SimplexNoise1(v)), 1.0f) << v;
    EXPECT_LE(std::fabs(SimplexNoise2(v, 0.5f)), 1.0f) << v;
    EXPECT_LE(std::fabs(SimplexNoise3(0.25f, v, 0.5f)), 1.0f) << v;
  }
  // Cells of infinite or NaN coordinates saturate instead of overflowing.
  for (float v : {INFINITY, -INFINITY, NAN}) {
    SimplexNoise1(v);
    SimplexNoise2(v, v);
    SimplexNoise3(v, 0.5f, v);
  }
}

}  // namespace
