#pragma once

#include "nodes/mesh/MeshNode.h"

class CPortBool;
class CPortFloat;
class CPortInt;

// A tube around a closed curve, a circle or a (p, q) knot, as one triangle
// strip; clumps swell the tube along the way. Subdivisions beyond what
// 16-bit indices address are lowered, the larger first.
class CTorusNode : public CShapeNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  bool CreateMesh(CPDMesh &mesh) override;

 private:
  CPortInt *m_SubAxis = nullptr, *m_SubHeight = nullptr;
  CPortFloat *m_Radius = nullptr, *m_Thickness = nullptr;
  CPortInt *m_Clumps = nullptr;
  CPortFloat *m_ClumpOffset = nullptr, *m_ClumpScale = nullptr;
  CPortBool *m_IsPQTorus = nullptr;
  CPortFloat *m_P = nullptr, *m_Q = nullptr;
};
