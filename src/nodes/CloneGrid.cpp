#include "nodes/CloneGrid.h"

#include "scene/PortValues.h"

namespace {
const char *const kNames[CCloneGrid::VariableCount] = {
    "x",     "y",     "z",     "numobjectsx", "numobjectsy", "numobjectsz", "aspect",  "in1",   "in2",
    "in3",   "in4",   "in5",   "time",        "pos.x",       "pos.y",       "pos.z",   "rot.x", "rot.y",
    "rot.z", "scale.x", "scale.y", "scale.z", "col.r",       "col.g",       "col.b",   "col.a"};
constexpr float kDegToRad = 0.01745329238474369f;
}  // namespace

void CCloneGrid::Register(CExprEvaluator &evaluator, bool withFrame) {
  for (int v = 0; v < VariableCount; ++v)
    if (withFrame || (v != Aspect && v != Time)) evaluator.AddAddress(kNames[v], &m_Vars[v], 0.0);
}

void CCloneGrid::SetInputs(CPortFloat *const in[5]) {
  for (int i = 0; i < 5; ++i) m_Vars[In1 + i] = in[i] ? in[i]->m_Value : 0.0;
}

void CCloneGrid::SetCounts(int nx, int ny, int nz) {
  m_Vars[NumObjectsX] = nx;
  m_Vars[NumObjectsY] = ny;
  m_Vars[NumObjectsZ] = nz;
}

int CCloneGrid::Cells() const {
  const long long n = static_cast<long long>(Count(NumObjectsX)) * Count(NumObjectsY) * Count(NumObjectsZ);
  return static_cast<int>(std::min<long long>(n, 1 << 30));
}

void CCloneGrid::StartCell(int x, int y, int z, bool resetRotation) {
  m_Vars[X] = m_Vars[PosX] = x;
  m_Vars[Y] = m_Vars[PosY] = y;
  m_Vars[Z] = m_Vars[PosZ] = z;
  for (int k : {ScaleX, ScaleY, ScaleZ, ColR, ColG, ColB, ColA}) m_Vars[k] = 1.0;
  if (resetRotation)
    for (int k : {RotX, RotY, RotZ}) m_Vars[k] = 0.0;
}

CClonePlacement CCloneGrid::Placement() const {
  auto f = [&](Variable v) { return static_cast<float>(m_Vars[v]); };
  CClonePlacement p;
  p.pos = {f(PosX), f(PosY), f(PosZ)};
  p.rot = {f(RotX) * kDegToRad, f(RotY) * kDegToRad, f(RotZ) * kDegToRad};
  p.scale = {f(ScaleX), f(ScaleY), f(ScaleZ)};
  for (int k = 0; k < 4; ++k) {
    const float c = f(static_cast<Variable>(ColR + k));
    p.color[k] = c > 0.0f ? std::min(c, 1.0f) : 0.0f;  // NaN too
  }
  return p;
}

CMatrix PlacementMatrix(const CVector3 &pos, const CVector3 &rot, const CVector3 &scale) {
  CMatrix m = RotationMatrix(rot.x, rot.y, rot.z);
  const float s[3] = {scale.x, scale.y, scale.z};
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) m(r, c) *= s[r];
  m(3, 0) = pos.x;
  m(3, 1) = pos.y;
  m(3, 2) = pos.z;
  return m;
}
