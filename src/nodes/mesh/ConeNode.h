#pragma once

#include "nodes/mesh/MeshNode.h"

class CPortFloat;
class CPortInt;

// A cone without a base; rim normals are horizontal whatever the slope.
class CConeNode : public CShapeNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  bool CreateMesh(CPDMesh &mesh) override;

 private:
  CPortFloat *m_Radius = nullptr, *m_Height = nullptr;
  CPortInt *m_NumSegments = nullptr;
};
