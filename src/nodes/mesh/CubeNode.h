#pragma once

#include "nodes/mesh/MeshNode.h"

class CPortFloat;
class CPortVector;

// A box of six quads with their own normals and texture corners.
class CCubeNode : public CShapeNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  bool CreateMesh(CPDMesh &mesh) override;

 private:
  CPortVector *m_Size = nullptr;
};
