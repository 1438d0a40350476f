#pragma once

#include "nodes/mesh/MeshNode.h"

class CPortFloat;
class CPortInt;

// A grid of quads in z = 0 facing -z. A tessellation beyond what 16-bit
// indices address is lowered, the larger side first.
class CPlaneNode : public CShapeNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  bool CreateMesh(CPDMesh &mesh) override;

 private:
  CPortFloat *m_Width = nullptr, *m_Height = nullptr;
  CPortInt *m_TesselateW = nullptr, *m_TesselateH = nullptr;
};
