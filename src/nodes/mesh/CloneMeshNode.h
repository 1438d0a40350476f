#pragma once

#include "nodes/mesh/MeshNode.h"

class CPortInt;
class CPortMesh;
class CPortVector;

// Copies of the mesh on its in-port, each further one moved, turned and
// scaled by its number times the changes. Clones beyond what 16-bit indices
// address are left out; strips are not cloned.
class CCloneMeshNode : public CMeshNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  bool CreateMesh(CPDMesh &mesh) override;

 private:
  CPortInt *m_NumClones = nullptr;
  CPortVector *m_PosChange = nullptr, *m_RotChange = nullptr, *m_ScaleChange = nullptr;
  CPortMesh *m_Mesh = nullptr;
};
