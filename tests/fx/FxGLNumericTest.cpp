// Values through compiled effects on the driver, read back from a float
// target: the matrices each semantic feeds, every mul form, the intrinsics
// whose Cg meaning differs from GLSL's, and how values reach GL.
#include "FxGLSupport.h"

#include <gmock/gmock.h>

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
  struct Case {
    const char *semantic;
    Mat matrix;
    bool columns;
  } cases[] = {
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

TEST_F(FxGLTest, MulFormsFollowCgRowsAndColumns) {
  // A and N as the shader sees them, row by row.
  const float a[9] = {1, 2, 3, 4, 5, 6, 7, 8, 10};
  const float b[9] = {0, 1, 0, 2, 0, 1, 1, 1, 3};
  const float n[12] = {1, 0, 2, 1, 0, 3, 1, -1, 2, 2, 0, 4};  // float3x4
  const float u[3] = {1, -2, 0.5f};
  const float q[4] = {2, 1, -1, 0.5f};
  auto at3 = [](const float *m, int r, int c) { return m[r * 3 + c]; };
  float au[3] = {}, ua[3] = {}, abu[3] = {}, nq[3] = {}, un[4] = {};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      au[i] += at3(a, i, j) * u[j];
      ua[j] += u[i] * at3(a, i, j);
      for (int k = 0; k < 3; ++k) abu[i] += at3(a, i, k) * at3(b, k, j) * u[j];
    }
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 4; ++j) {
      nq[i] += n[i * 4 + j] * q[j];
      un[j] += u[i] * n[i * 4 + j];
    }
  const std::string decl = "float3x3 A; float3x3 B; float3x4 N; float3 u; float4 q; float s;\n";
  auto feed = [&](CFx &fx) {
    fx.GetNamedParameter("A")->SetValuefr(a, 9);
    fx.GetNamedParameter("B")->SetValuefr(b, 9);
    fx.GetNamedParameter("N")->SetValuefr(n, 12);
    fx.GetNamedParameter("u")->SetValuefr(u, 3);
    fx.GetNamedParameter("q")->SetValuefr(q, 4);
    Set(fx, "s", {-3});
  };
  struct Case {
    const char *body;
    Float4 expected;
  } cases[] = {
      {"float4(mul(A, u), 0)", {au[0], au[1], au[2], 0}},
      {"float4(mul(u, A), 0)", {ua[0], ua[1], ua[2], 0}},
      {"float4(mul(mul(A, B), u), 0)", {abu[0], abu[1], abu[2], 0}},
      {"float4(mul(N, q), 0)", {nq[0], nq[1], nq[2], 0}},
      {"mul(u, N)", {un[0], un[1], un[2], un[3]}},
      {"mul(s, q)", {-3 * q[0], -3 * q[1], -3 * q[2], -3 * q[3]}},
      {"mul(q, s)", {-3 * q[0], -3 * q[1], -3 * q[2], -3 * q[3]}},
      {"float4(A[1], A._m21)", {a[3], a[4], a[5], a[7]}},
      {"float4(A._32, N[2].w, N._m01, 0)", {a[7], n[11], n[1], 0}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.body);
    std::string text = QuadEffect(decl + "float4 PS() : COLOR { return " + c.body + "; }\n");
    EXPECT_THAT(Run(text, feed), Near4(c.expected, 1e-4f));
  }
}

TEST_F(FxGLTest, FmodFracAndLerpKeepCgMeaning) {
  const float a[4] = {-1.5f, 5.5f, -5.5f, 7}, b[4] = {1, -2, 2, 2.5f}, t[4] = {0, 1, 0.25f, -1};
  auto feed = [&](CFx &fx) {
    fx.GetNamedParameter("a")->SetValuefr(a, 4);
    fx.GetNamedParameter("b")->SetValuefr(b, 4);
    fx.GetNamedParameter("t")->SetValuefr(t, 4);
  };
  auto run = [&](const char *body) {
    return Run(QuadEffect(std::string("float4 a; float4 b; float4 t;\nfloat4 PS() : COLOR { return ") + body + "; }\n"),
               feed);
  };
  Float4 fmodExpected{}, fracExpected{}, lerpExpected{}, scalarLerp{};
  for (int i = 0; i < 4; ++i) {
    fmodExpected[i] = std::fmod(a[i], b[i]);  // C's fmod truncates like Cg's
    fracExpected[i] = a[i] - std::floor(a[i]);
    lerpExpected[i] = a[i] + t[i] * (b[i] - a[i]);
    scalarLerp[i] = a[i] + 0.25f * (b[i] - a[i]);
  }
  ASSERT_FLOAT_EQ(fmodExpected[0], -0.5f);  // the sign of x, not floor-based mod's 0.5
  EXPECT_THAT(run("fmod(a, b)"), Near4(fmodExpected, 1e-5f));
  EXPECT_THAT(run("float4(fmod(a.x, b.x), fmod(-7.25, 2), fmod(7.25, -2), fmod(0, 3))"),
              Near4((Float4{-0.5f, -1.25f, 1.25f, 0}), 1e-5f));
  EXPECT_THAT(run("frac(a)"), Near4(fracExpected, 1e-5f));
  EXPECT_THAT(run("lerp(a, b, t)"), Near4(lerpExpected, 1e-5f));
  EXPECT_THAT(run("lerp(a, b, t.z)"), Near4(scalarLerp, 1e-5f));
}

TEST_F(FxGLTest, ParameterTypesReachTheShader) {
  std::string text = QuadEffect(
      "int gI; bool gB; float gArr[3]; float2 gV2; half gH; int2 gI2; float4 gUnused;\n"
      "float4 PS() : COLOR { return float4(gI + gI2.y, gB ? 1 : -1, gArr[0] + gArr[1] * 10 + gArr[2] * 100,"
      " gV2.x * gV2.y + gH); }\n");
  Float4 got = Run(text, [](CFx &fx) {
    Set(fx, "gI", {7});
    Set(fx, "gB", {1});
    Set(fx, "gArr", {1, 2, 3});
    Set(fx, "gV2", {1.5f, 4});
    Set(fx, "gH", {0.25f});
    Set(fx, "gI2", {0, -3});
    Set(fx, "gUnused", {1, 2, 3, 4});  // the driver dropped it: setting it is harmless
  });
  EXPECT_THAT(got, Near4((Float4{4, 1, 321, 6.25f}), 1e-4f));
}

TEST_F(FxGLTest, DefaultsAreUploadedWithoutAnySetter) {
  std::string text = QuadEffect(
      "float4 gColor = {0.25, 0.5, 2, -1};\nfloat3x3 gM = {1, 2, 3, 4, 5, 6, 7, 8, 9};\n"
      "float4 PS() : COLOR { return gColor + float4(gM[2], 0); }\n");
  EXPECT_THAT(Run(text, [](CFx &) {}), Near4((Float4{7.25f, 8.5f, 11, -1}), 1e-5f));
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
