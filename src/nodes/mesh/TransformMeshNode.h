#pragma once

#include "nodes/mesh/MeshNode.h"

class CPortMesh;
class CPortVector;

// Up to five meshes joined into one under a single transformation.
// Sources that would take the result beyond what 16-bit indices address are
// left out; strips are not carried over.
class CTransformMeshNode : public CMeshNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  bool CreateMesh(CPDMesh &mesh) override;

 private:
  CPortVector *m_Pos = nullptr, *m_Rot = nullptr, *m_Scale = nullptr;
  CPortMesh *m_Meshes[5] = {};
};
