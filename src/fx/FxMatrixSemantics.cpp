#include "fx/FxMatrixSemantics.h"

#include "fx/FxEffect.h"

#include <cmath>

namespace {
using M = EFxMatrix;
const FxMatrixSemantic kTable[] = {
    {"WORLDVIEWPROJECTION", M::WorldViewProjection, true},
    {"WORLD", M::World, true},
    {"WORLDINVERSETRANSPOSE", M::WorldInverseTranspose, true},
    {"VIEWINVERSE", M::ViewInverse, true},
    {"VIEW", M::View, true},
    {"PROJECTION", M::Projection, true},
    {"WORLDVIEW", M::WorldView, true},
    {"VIEWPROJECTION", M::ViewProjection, true},
    {"WORLDTRANSPOSE", M::World, false},
    {"VIEWTRANSPOSE", M::View, false},
    {"PROJECTIONTRANSPOSE", M::Projection, false},
    {"WORLDVIEWPROJECTIONTRANSPOSE", M::WorldViewProjection, false},
    {"WORLDVIEWTRANSPOSE", M::WorldView, false},
    {"VIEWPROJECTIONTRANSPOSE", M::ViewProjection, false},
};
}  // namespace

const FxMatrixSemantic *FindMatrixSemantic(const std::string &semantic) {
  for (const FxMatrixSemantic &s : kTable)
    if (semantic == s.semantic) return &s;
  return nullptr;
}

void FxMultiply(const float a[16], const float b[16], float out[16]) {
  float r[16];
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) {
      float sum = 0;
      for (int k = 0; k < 4; ++k) sum += a[i * 4 + k] * b[k * 4 + j];
      r[i * 4 + j] = sum;
    }
  for (int i = 0; i < 16; ++i) out[i] = r[i];
}

void FxTranspose(const float m[16], float out[16]) {
  float r[16];
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) r[i * 4 + j] = m[j * 4 + i];
  for (int i = 0; i < 16; ++i) out[i] = r[i];
}

// Inverse of [R 0; t 1] for row vectors: [R^-1 0; -t R^-1 1]. A singular R
// gives the identity rotation rather than infinities.
void FxAffineInverse(const float m[16], float out[16]) {
  auto at = [m](int r, int c) { return m[r * 4 + c]; };
  float c00 = at(1, 1) * at(2, 2) - at(1, 2) * at(2, 1);
  float c01 = at(1, 2) * at(2, 0) - at(1, 0) * at(2, 2);
  float c02 = at(1, 0) * at(2, 1) - at(1, 1) * at(2, 0);
  float det = at(0, 0) * c00 + at(0, 1) * c01 + at(0, 2) * c02;
  float inv[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  if (std::fabs(det) > 1e-20f) {
    float d = 1.0f / det;
    inv[0] = c00 * d;
    inv[1] = (at(0, 2) * at(2, 1) - at(0, 1) * at(2, 2)) * d;
    inv[2] = (at(0, 1) * at(1, 2) - at(0, 2) * at(1, 1)) * d;
    inv[3] = c01 * d;
    inv[4] = (at(0, 0) * at(2, 2) - at(0, 2) * at(2, 0)) * d;
    inv[5] = (at(0, 2) * at(1, 0) - at(0, 0) * at(1, 2)) * d;
    inv[6] = c02 * d;
    inv[7] = (at(0, 1) * at(2, 0) - at(0, 0) * at(2, 1)) * d;
    inv[8] = (at(0, 0) * at(1, 1) - at(0, 1) * at(1, 0)) * d;
  }
  float r[16] = {};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) r[i * 4 + j] = inv[i * 3 + j];
  for (int j = 0; j < 3; ++j) r[12 + j] = -(at(3, 0) * inv[j] + at(3, 1) * inv[3 + j] + at(3, 2) * inv[6 + j]);
  r[15] = 1;
  for (int i = 0; i < 16; ++i) out[i] = r[i];
}

bool SetMatrixParameter(CFxParameter &p, const float world[16], const float view[16], const float proj[16]) {
  if (!(p.type == CFxType::Matrix(EFxBase::Float, 4, 4))) return false;
  const FxMatrixSemantic *s = FindMatrixSemantic(p.semantic);
  if (!s) return false;
  float m[16];
  switch (s->matrix) {
    case M::WorldViewProjection:
      FxMultiply(world, view, m);
      FxMultiply(m, proj, m);
      break;
    case M::World:
      for (int i = 0; i < 16; ++i) m[i] = world[i];
      break;
    case M::WorldInverseTranspose:
      FxAffineInverse(world, m);
      FxTranspose(m, m);
      break;
    case M::ViewInverse:
      FxAffineInverse(view, m);
      break;
    case M::View:
      for (int i = 0; i < 16; ++i) m[i] = view[i];
      break;
    case M::Projection:
      for (int i = 0; i < 16; ++i) m[i] = proj[i];
      break;
    case M::WorldView:
      FxMultiply(world, view, m);
      break;
    case M::ViewProjection:
      FxMultiply(view, proj, m);
      break;
  }
  if (s->columns) p.SetMatrixfc(m);
  else p.SetMatrixfr(m);
  return true;
}
