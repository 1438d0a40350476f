#pragma once

#include "nodes/mesh/MeshNode.h"

class CPortFloat;
class CPortInt;

// A flat disc, or with an inner radius a ring that may stop part way round.
class CDiscNode : public CShapeNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  bool CreateMesh(CPDMesh &mesh) override;

 private:
  CPortFloat *m_OuterRadius = nullptr, *m_InnerRadius = nullptr;
  CPortInt *m_NumSegments = nullptr;
  CPortFloat *m_End = nullptr;
};
