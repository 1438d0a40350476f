#pragma once

#include "nodes/mesh/MeshNode.h"

class CPortFloat;
class CPortInt;

// A sphere of rings from the +y pole down. Rings and segments beyond what
// 16-bit indices address are lowered, the larger first.
class CSphereNode : public CShapeNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  bool CreateMesh(CPDMesh &mesh) override;

 private:
  CPortFloat *m_Radius = nullptr;
  CPortInt *m_NumRings = nullptr, *m_NumSegments = nullptr;
};
