// Matrix helpers, the camera's look-at, packed colors and vertex layouts:
// the math that nodes and effects rely on with no device present.
#include "render/Camera.h"
#include "render/Color.h"
#include "render/VertexFormat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace {
void ExpectNear(const CMatrix &a, const CMatrix &b, float tolerance = 1e-5f) {
  for (int i = 0; i < 16; ++i) EXPECT_NEAR(a.m[i], b.m[i], tolerance) << "element " << i;
}

void ExpectNear(const CVector3 &a, const CVector3 &b) {
  EXPECT_LT(Length(a - b), 1e-5f) << a.x << " " << a.y << " " << a.z;
}
}  // namespace

TEST(Matrix, ProductsApplyTheLeftMatrixFirst) {
  CMatrix moveThenScale = TranslationMatrix(1, 0, 0) * ScalingMatrix(2, 3, 4);
  ExpectNear(TransformPoint({0, 1, 1}, moveThenScale), {2, 3, 4});
  ExpectNear(TransformNormal({0, 1, 1}, moveThenScale), {0, 3, 4});
  CMatrix t = TranslationMatrix(5, 6, 7);
  EXPECT_EQ(Transpose(t).m[3], 5.0f);
  EXPECT_EQ(Transpose(Transpose(t)), t);
}

TEST(Matrix, RotationTurnsAboutXThenYThenZ) {
  // Rows evaluated independently in double precision for (0.3, -0.7, 1.1).
  const CMatrix golden{{0.34692945f, 0.681632987f, 0.644217687f, 0, -0.937758243f, 0.263669453f, 0.226026321f, 0,
                        -0.0157935291f, -0.682535633f, 0.73068165f, 0, 0, 0, 0, 1}};
  ExpectNear(RotationMatrix(0.3f, -0.7f, 1.1f), golden);
  ExpectNear(RotationMatrix(0.3f, 0, 0) * RotationMatrix(0, -0.7f, 0) * RotationMatrix(0, 0, 1.1f), golden);
  const float quarter = 1.5707964f;
  ExpectNear(TransformPoint({1, 0, 0}, RotationMatrix(0, 0, quarter)), {0, 1, 0});
  ExpectNear(TransformPoint({0, 1, 0}, RotationMatrix(quarter, 0, 0)), {0, 0, 1});
  ExpectNear(TransformPoint({0, 0, 1}, RotationMatrix(0, quarter, 0)), {1, 0, 0});
}

TEST(Matrix, AffineInverseUndoesRigidMatricesOnly) {
  CMatrix rigid = RotationMatrix(0.4f, 1.2f, -0.5f) * TranslationMatrix(3, -2, 7);
  ExpectNear(AffineInverse(rigid) * rigid, CMatrix::Identity());
  ExpectNear(rigid * AffineInverse(rigid), CMatrix::Identity());
  // The last column is forced to 0, 0, 0, 1 and scale is not divided out.
  CMatrix odd = ScalingMatrix(2, 2, 2);
  odd.m[3] = 0.5f;
  odd.m[11] = 0.25f;
  CMatrix inv = AffineInverse(odd);
  EXPECT_EQ(std::make_tuple(inv.m[3], inv.m[11], inv.m[15], inv.m[0]), std::make_tuple(0.0f, 0.0f, 1.0f, 2.0f));
}

TEST(Camera, LookAtBuildsALeftHandedView) {
  CCamera camera;
  EXPECT_EQ(camera.m_View, CMatrix::Identity());  // default: origin, looking along +Z

  LookAt(camera, {3, 4, 10}, {3, 4, 6}, {0, 1, 0});
  ExpectNear(TransformPoint({3, 4, 6}, camera.m_View), {0, 0, 0});
  ExpectNear(TransformPoint({3, 4, 10}, camera.m_View), {0, 0, 4});
  EXPECT_EQ(camera.m_Eye, (CVector3{3, 4, 6}));

  // Looking along +X with +Y up, the right hand side is -Z.
  LookAt(camera, {1, 0, 0}, {0, 0, 0}, {0, 1, 0});
  ExpectNear(camera.m_Right, {0, 0, -1});
  ExpectNear(TransformPoint({0, 0, -1}, camera.m_View), {1, 0, 0});

  // A slanted up vector is made orthogonal to the view direction.
  LookAt(camera, {0, 0, 5}, {0, 0, 0}, {0, 1, 1});
  ExpectNear(camera.m_Up, {0, 1, 0});
  ExpectNear(AffineInverse(camera.m_View) * camera.m_View, CMatrix::Identity());
}

TEST(Color, PackingClampsAndTruncatesIntoRGBAByteOrder) {
  // Red in the lowest byte; 127.5, 63.75 and 254.745 truncate.
  EXPECT_EQ(PackColor(1.0f, 0.5f, 0.25f, 0.999f), 0xFE3F7FFFu);
  EXPECT_EQ(PackColor(1.5f, -0.2f, 0.0f, 1.0f), 0xFF0000FFu);
  const float c[4] = {NAN, INFINITY, -INFINITY, 0.1f};
  EXPECT_EQ(PackColor(c), 0x1900FF00u);  // NaN 0, inf 255, -inf 0, 25.5 truncates
}

TEST(VertexFormat, LayoutsFitTheirStridesWithoutOverlap) {
  const int strides[] = {0, 36, 16, 24, 64};
  for (int format = VBF_PNTC; format <= VBF_PNTBTC; ++format) {
    const VertexLayout *layout = GetVertexLayout(format);
    ASSERT_NE(layout, nullptr);
    EXPECT_EQ(VertexStride(format), strides[format]);
    int end = 0;
    for (int i = 0; i < layout->count; ++i) {
      const VertexAttribute &a = layout->attributes[i];
      EXPECT_GE(a.offset, end) << "format " << format << " attribute " << i;
      end = a.offset + (a.type == VAT_Float ? 4 * a.components : 4);
      EXPECT_NE(std::find(std::begin(g_VertexAttributeIndices), std::end(g_VertexAttributeIndices), a.index),
                std::end(g_VertexAttributeIndices));
    }
    EXPECT_LE(end, layout->stride);
  }
  EXPECT_EQ(GetVertexLayout(0), nullptr);
  EXPECT_EQ(VertexStride(5), 0);
}
