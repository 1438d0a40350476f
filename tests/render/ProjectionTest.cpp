// Projection of each render unit: one window, monitors side by side sharing
// one wide view, AllScreensSame, and render targets drawn flipped.
#include "render/RecordRender.h"

#include <gtest/gtest.h>

namespace {
// Golden values from golden_projection.py (double precision, straight from
// the formulas). Rects are (left, top, right, bottom).
// Unit = virtual = (0,0,1024,768); fov 45, near 1, far 100.
const double kSingle[16] = {1.81066019, 0, 0, 0, 0, 2.41421358, 0, 0, 0, 0, 1.02020202, 1, 0, 0, -2.02020202, 1};
const double kSingleOrtho[16] = {2, 0, 0, 0, 0, -2, 0, 0, 0, 0, 0.0202020202, 0, 0, 0, -1.02020202, 1};
// Units (0,0,1920,1080) and (1920,0,3840,1080), virtual (0,0,3840,1080);
// fov 60, near 0.5, far 200.
const double kWideLeft[16] = {0.974278588, 0, 0, 0, 0, 1.73205082, 0, 0, 1, 0, 1.00501253, 1, 1, 0, -1.00250627, 1};
const double kWideRight[16] = {0.974278588, 0, 0, 0, 0, 1.73205082, 0, 0, -1, 0, 1.00501253, 1, -1, 0, -1.00250627, 1};
const double kWideLeftOrtho[16] = {4, 0, 0, 0, 0, -2, 0, 0, 0, 0, 0.0100250627, 0, 1, 0, -1.00501253, 1};
const double kWideRightOrtho[16] = {4, 0, 0, 0, 0, -2, 0, 0, 0, 0, 0.0100250627, 0, -1, 0, -1.00501253, 1};
// The right unit of the same layout with AllScreensSame.
const double kWideRightSame[16] = {0.974278588, 0, 0, 0, 0, 1.73205082, 0, 0, 0, 0, 1.00501253, 1, 0, 0, -1.00250627, 1};
// Unit (1920,0,3200,1024) beside (0,0,1920,1200), virtual (0,0,3200,1200);
// fov 45, near 1, far 100: a vertical offset as well.
const double kUnevenSmall[16] = {2.26332523, 0,    0,          0, 0,   2.82915654,  0,           0,
                                 -1.2,       -0.586666667, 1.02020202, 1, -1.2, 0.586666667, -2.02020202, 1};
// Unit (-1281,0,0,1024) left of (0,0,1920,1080), virtual (-1281,0,1920,1080);
// fov 45, near 1, far 100: centres truncate toward zero.
const double kWestOfPrimary[16] = {2.03540255, 0,          0, 0,          0,           2.54624089,  0, 0,
                                   1.19837551, -0.207407407, 1.02020202, 1, 1.19837551, 0.207407407, -2.02020202, 1};
// Render target unit (0,0,256,256) while flipped, virtual as the wide
// layout; fov 90, near 1, far 10.
const double kFlippedTarget[16] = {1.00000001, 0, 0, 0, 0, -1.00000001, 0, 0, 0, 0, 1.22222222, 1, 0, 0, -2.22222222, 1};
const double kFlippedTargetOrtho[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0.222222222, 0, 0, 0, -1.22222222, 1};

const CRect kLeft{0, 0, 1920, 1080}, kRight{1920, 0, 3840, 1080};

void ExpectMatrix(const CMatrix &actual, const double (&golden)[16]) {
  for (int i = 0; i < 16; ++i) EXPECT_NEAR(actual.m[i], golden[i], 2e-6 * (1.0 + std::abs(golden[i]))) << "element " << i;
}

CCamera Camera(float fov, float nearPlane, float farPlane, int type) {
  CCamera c;
  c.m_Fov = fov;
  c.m_Near = nearPlane;
  c.m_Far = farPlane;
  c.m_ProjectionType = type;
  return c;
}
}  // namespace

TEST(Projection, EachUnitSeesItsShareOfTheVirtualDesktop) {
  const struct {
    const char *name;
    std::vector<CRect> units;  // empty: one 1024x768 window
    int unit;
    bool allSame;
    float fov, nearPlane, farPlane;
    int type;
    const double (&golden)[16];
    float aspect;  // 0: not checked
  } cases[] = {
      {"single", {}, 0, false, 45, 1, 100, PROJ_Perspective, kSingle, 1024.0f / 768.0f},
      {"single ortho", {}, 0, false, 45, 1, 100, PROJ_Orthographic, kSingleOrtho, 0},
      {"wide left", {kLeft, kRight}, 0, false, 60, 0.5f, 200, PROJ_Perspective, kWideLeft, 3840.0f / 1080.0f},
      {"wide right", {kLeft, kRight}, 1, false, 60, 0.5f, 200, PROJ_Perspective, kWideRight, 0},
      {"wide left ortho", {kLeft, kRight}, 0, false, 60, 0.5f, 200, PROJ_Orthographic, kWideLeftOrtho, 0},
      {"wide right ortho", {kLeft, kRight}, 1, false, 60, 0.5f, 200, PROJ_Orthographic, kWideRightOrtho, 0},
      {"all screens same", {kLeft, kRight}, 1, true, 60, 0.5f, 200, PROJ_Perspective, kWideRightSame, 1920.0f / 1080.0f},
      {"uneven", {{0, 0, 1920, 1200}, {1920, 0, 3200, 1024}}, 1, false, 45, 1, 100, PROJ_Perspective, kUnevenSmall, 0},
      {"west of primary", {{-1281, 0, 0, 1024}, kLeft}, 0, false, 45, 1, 100, PROJ_Perspective, kWestOfPrimary, 0},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    CRecordRender render(1024, 768);
    if (!c.units.empty()) render.SetUnits(c.units);
    render.m_AllScreensSame = c.allSame;
    render.SwitchToRenderUnit(c.unit);
    render.SetCamera(Camera(c.fov, c.nearPlane, c.farPlane, c.type));
    ExpectMatrix(render.m_Projection, c.golden);
    if (c.aspect) { EXPECT_FLOAT_EQ(render.GetAspect(), c.aspect); }
  }
}

TEST(Projection, RenderTargetsAreDrawnFlippedAsTheirOwnView) {
  CRecordRender render;
  render.SetUnits({kLeft, kRight});
  render.m_Flipped = true;
  render.m_UnitRect = {0, 0, 256, 256};
  render.SetCamera(Camera(90, 1, 10, PROJ_Perspective));
  ExpectMatrix(render.m_Projection, kFlippedTarget);
  render.SetCamera(Camera(90, 1, 10, PROJ_Orthographic));
  ExpectMatrix(render.m_Projection, kFlippedTargetOrtho);
}

TEST(Projection, ComesOnlyFromTheCamera) {
  CRecordRender render(1024, 768);
  CCamera camera = Camera(45, 1, 100, PROJ_Perspective);
  LookAt(camera, {0, 0, 0}, {0, 0, -5}, {0, 1, 0});
  render.SetCamera(camera);
  EXPECT_EQ(render.m_Calls, (std::vector<std::string>{"SetCamera", "SetTransform 2", "SetTransform 1"}));
  EXPECT_EQ(*render.GetTransform(TS_View), camera.m_View);
  CMatrix before = render.m_Projection;
  render.SetTransform(TS_Projection, TranslationMatrix(1, 2, 3));
  EXPECT_EQ(render.m_Projection, before);
  render.SetTransform(TS_World, ScalingMatrix(2, 2, 2));
  EXPECT_EQ(render.GetTransform(TS_Projection), &render.m_World);
  EXPECT_EQ(render.GetTransform(TS_World)->m[0], 2.0f);
}
