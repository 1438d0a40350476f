#pragma once

#include <memory>

#include "nodes/CloneGrid.h"
#include "nodes/mesh/MeshNode.h"

class CExprEvaluator;
class CPortFloat;
class CPortInt;
class CPortMesh;
class CPortString;

// A grid of copies of the mesh on its in-port, each placed, turned and
// scaled by the expression, which runs once per copy with the copy's 1-based
// x, y and z. Copies beyond what 16-bit indices address are left out, in
// grid order; strips are not cloned.
class CCloneMeshExpressionNode : public CMeshNode {
 public:
  static CNodeInfo *CreateInfo();
  CCloneMeshExpressionNode();
  ~CCloneMeshExpressionNode() override;
  bool Init() override;
  bool CreateMesh(CPDMesh &mesh) override;


 private:
  CPortInt *m_NumObjects[3] = {};
  CPortFloat *m_In[5] = {};
  CPortInt *m_RandomSeed = nullptr;
  CPortString *m_Expression = nullptr;
  CPortMesh *m_Mesh = nullptr;

  std::unique_ptr<CExprEvaluator> m_Evaluator;
  CPDMesh m_Source;  // the source's geometry, generated here each time
  CCloneGrid m_Grid;
};
