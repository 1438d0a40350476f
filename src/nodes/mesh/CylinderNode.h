#pragma once

#include "nodes/mesh/MeshNode.h"

class CPortBool;
class CPortFloat;
class CPortInt;

// A tube of quads with separately scaled top and bottom rings, and optional caps.
class CCylinderNode : public CShapeNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  bool CreateMesh(CPDMesh &mesh) override;

 private:
  CPortFloat *m_Radius = nullptr, *m_RadiusScaleTop = nullptr, *m_RadiusScaleBottom = nullptr, *m_Height = nullptr;
  CPortInt *m_NumSegments = nullptr;
  CPortBool *m_Capped = nullptr;
};
