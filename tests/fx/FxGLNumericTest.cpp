// Values through compiled effects on the driver, read from a float target.
#include "FxGLSupport.h"

#include <cmath>
#include <cstring>

namespace {
using Mat = std::array<float, 16>;  // row-major, row vectors

Mat Mul(const Mat &a, const Mat &b) {
  Mat r{};
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      for (int k = 0; k < 4; ++k) r[i * 4 + j] += a[i * 4 + k] * b[k * 4 + j];
  return r;
}

Mat Transposed(const Mat &m) {
  Mat r{};
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) r[i * 4 + j] = m[j * 4 + i];
  return r;
}

// The engine's product: row vector times matrix.
Float4 RowTimes(const Float4 &v, const Mat &m) {
  Float4 r{};
  for (int j = 0; j < 4; ++j)
    for (int k = 0; k < 4; ++k) r[j] += v[k] * m[k * 4 + j];
  return r;
}

// Rotation, non-uniform scale and translation: a transposition anywhere
// shows in the result.
const Mat kWorld = {0.8f, 0.6f, 0, 0, -1.2f, 1.6f, 0, 0, 0, 0, 1.5f, 0, 3, -2, 5, 1};
const Mat kView = {1, 0, 0, 0, 0, 0.6f, 0.8f, 0, 0, -0.8f, 0.6f, 0, -1, 4, 10, 1};
const Mat kProj = {1.2f, 0, 0, 0, 0, 1.6f, 0, 0, 0, 0, 1.01f, 1, 0, 0, -0.1f, 0};
const Float4 kV = {0.5f, -1.25f, 2, 1};

std::string MatrixEffect(const std::string &semantic, bool columns) {
  return QuadEffect("float4x4 M : " + semantic + ";\nfloat4 v;\nfloat4 PS() : COLOR { return " +
                    (columns ? "mul(M, v)" : "mul(v, M)") + "; }\n");
}
}  // namespace

TEST_F(FxGLTest, EveryMatrixSemanticMultipliesAsTheEngineDoes) {
  m_Render->GetCamera()->m_View = CMatrix();
  memcpy(m_Render->GetCamera()->m_View.m, kView.data(), sizeof kView);
  memcpy(m_Render->m_Projection.m, kProj.data(), sizeof kProj);
  auto feed = [&](CFx &fx) {
    memcpy(fx.m_World, kWorld.data(), sizeof kWorld);
    Set(fx, "v", {kV[0], kV[1], kV[2], kV[3]});
    for (CFxParameter &p : fx.Effect()->Parameters()) fx.SetMatrixParameter(p);
  };
  const Mat wv = Mul(kWorld, kView), vp = Mul(kView, kProj), wvp = Mul(wv, kProj);
  struct Case { const char *semantic; Mat matrix; bool columns; } cases[] = {
      {"WORLDVIEWPROJECTION", wvp, true}, {"WORLD", kWorld, true},   {"VIEW", kView, true},
      {"PROJECTION", kProj, true},        {"WORLDVIEW", wv, true},   {"VIEWPROJECTION", vp, true},
      {"WORLDTRANSPOSE", kWorld, false},  {"VIEWTRANSPOSE", kView, false},
      {"PROJECTIONTRANSPOSE", kProj, false}, {"WORLDVIEWPROJECTIONTRANSPOSE", wvp, false},
      {"WORLDVIEWTRANSPOSE", wv, false},  {"VIEWPROJECTIONTRANSPOSE", vp, false},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.semantic);
    Float4 expected = RowTimes(kV, c.matrix);
    EXPECT_THAT(Run(MatrixEffect(c.semantic, c.columns), feed), Near4(expected, 2e-3f));
  }
  // The inverses, checked by undoing them: r = v * transpose(inverse(W))
  // gives back v when multiplied by transpose(W); r = v * inverse(V) by V.
  Float4 wit = Run(MatrixEffect("WORLDINVERSETRANSPOSE", true), feed);
  EXPECT_THAT(RowTimes(wit, Transposed(kWorld)), Near4(kV, 2e-3f));
  Float4 vi = Run(MatrixEffect("VIEWINVERSE", true), feed);
  EXPECT_THAT(RowTimes(vi, kView), Near4(kV, 2e-3f));
  // An unknown semantic leaves the parameter's own value.
  Float4 own = Run(MatrixEffect("WORLDVIEWPROJECTIONINVERSE", true), [&](CFx &fx) {
    feed(fx);
    float twice[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2};
    fx.GetNamedParameter("M")->SetMatrixfr(twice);
  });
  EXPECT_THAT(own, Near4((Float4{1, -2.5f, 4, 2}), 1e-4f));
}

TEST_F(FxGLTest, MulFormsAndIntrinsicsKeepCgMeaning) {
  // A and N as the shader sees them, row by row; expected values by hand.
  const std::string decl = "float3x3 A; float3x3 B; float3x4 N; float3 u; float4 q; float s;\n"
                           "float4 e; float4 f; float4 t;\n";
  auto feed = [&](CFx &fx) {
    Set(fx, {{"A", {1, 2, 3, 4, 5, 6, 7, 8, 10}}, {"B", {0, 1, 0, 2, 0, 1, 1, 1, 3}},
             {"N", {1, 0, 2, 1, 0, 3, 1, -1, 2, 2, 0, 4}}, {"u", {1, -2, 0.5f}}, {"q", {2, 1, -1, 0.5f}}, {"s", {-3}},
             {"e", {-1.5f, 5.5f, -5.5f, 7}}, {"f", {1, -2, 2, 2.5f}}, {"t", {0, 1, 0.25f, -1}}});
  };
  struct Case { const char *body; Float4 expected; } cases[] = {
      {"float4(mul(A, u), 0)", {-1.5f, -3, -4, 0}},
      {"float4(mul(u, A), 0)", {-3.5f, -4, -4, 0}},
      {"float4(mul(mul(A, B), u), 0)", {4.5f, 7.5f, 11, 0}},
      {"float4(mul(N, q), 0)", {0.5f, 1.5f, 8, 0}},
      {"mul(u, N)", {2, -5, 0, 5}},
      {"mul(s, q)", {-6, -3, 3, -1.5f}},
      {"mul(q, s)", {-6, -3, 3, -1.5f}},
      {"float4(A[1], A._m21)", {4, 5, 6, 8}},
      {"float4(A._32, N[2].w, N._m01, 0)", {8, 4, 0, 0}},
      // fmod takes the sign of x like C's, not floor-based mod's.
      {"fmod(e, f)", {-0.5f, 1.5f, -1.5f, 2}},
      {"float4(fmod(-7.25, 2), fmod(7.25, -2), fmod(0, 3), 0)", {-1.25f, 1.25f, 0, 0}},
      {"frac(e)", {0.5f, 0.5f, 0.5f, 0}},
      {"lerp(e, f, t)", {-1.5f, -2, -3.625f, 11.5f}},
      {"lerp(e, f, t.z)", {-0.875f, 3.625f, -3.625f, 5.875f}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.body);
    std::string text = QuadEffect(decl + "float4 PS() : COLOR { return " + c.body + "; }\n");
    EXPECT_THAT(Run(text, feed), Near4(c.expected, 1e-4f));
  }
}

// gColor and gM keep their defaults: uploaded without any setter.
TEST_F(FxGLTest, ParameterTypesAndDefaultsReachTheShader) {
  std::string text = QuadEffect(
      "int gI; bool gB; float gArr[3]; float2 gV2; half gH; int2 gI2; float4 gUnused;\n"
      "float4 gColor = {0.25, 0.5, 2, -1};\nfloat3x3 gM = {1, 2, 3, 4, 5, 6, 7, 8, 9};\n"
      "float4 PS() : COLOR { return float4(gI + gI2.y, gB ? 1 : -1, gArr[0] + gArr[1] * 10 + gArr[2] * 100,"
      " gV2.x * gV2.y + gH) + gColor + float4(gM[2], 0); }\n");
  // gUnused: the driver dropped it, and setting it is harmless.
  Float4 got = Run(text, [](CFx &fx) {
    Set(fx, {{"gI", {7}}, {"gB", {1}}, {"gArr", {1, 2, 3}}, {"gV2", {1.5f, 4}}, {"gH", {0.25f}}, {"gI2", {0, -3}},
             {"gUnused", {1, 2, 3, 4}}});
  });
  EXPECT_THAT(got, Near4((Float4{4 + 7.25f, 1 + 8.5f, 321 + 11, 6.25f - 1}), 1e-4f));
}

TEST_F(FxGLTest, ValuesSetInsideAPassGoUpAtCommit) {
  CFx *fx = Parse(QuadEffect("float4 gColor;\nfloat4 PS() : COLOR { return gColor; }\n"));
  FxTechniqueRecord *t = Technique(fx);
  ASSERT_TRUE(t);
  Set(*fx, "gColor", {1, 2, 3, 4});
  FxPassRecord *p = fx->Begin(t);
  ASSERT_TRUE(fx->BeginPass(p));
  DrawQuad();
  EXPECT_THAT(Read(), Near4((Float4{1, 2, 3, 4}), 0));
  Set(*fx, "gColor", {5, 6, 7, 8});
  DrawQuad();  // not committed yet
  EXPECT_THAT(Read(), Near4((Float4{1, 2, 3, 4}), 0));
  fx->CommitChanges();
  DrawQuad();
  EXPECT_THAT(Read(), Near4((Float4{5, 6, 7, 8}), 0));
  fx->EndPass(p);
  fx->End();
}

TEST_F(FxGLTest, CopiesOfAnEffectShareProgramsButNotValues) {
  std::string text = QuadEffect("float4 gColor;\nfloat4 PS() : COLOR { return gColor; }\n");
  CFx *red = Parse(text);
  CFx *green = Parse(text);
  FxTechniqueRecord *tr = Technique(red), *tg = Technique(green);
  ASSERT_TRUE(tr && tg);
  EXPECT_EQ(m_Manager->ProgramCount(), 1u);
  Set(*red, "gColor", {1, 0, 0, 1});
  Set(*green, "gColor", {0, 1, 0, 1});
  for (int round = 0; round < 2; ++round) {
    Draw(red, tr);
    EXPECT_THAT(Read(), Near4((Float4{1, 0, 0, 1}), 0)) << "round " << round;
    Draw(green, tg);
    EXPECT_THAT(Read(), Near4((Float4{0, 1, 0, 1}), 0)) << "round " << round;
  }
  // The program goes with the last effect that holds it.
  m_Techniques.clear();
  m_Effects.clear();
  EXPECT_EQ(m_Manager->ProgramCount(), 0u);
}
