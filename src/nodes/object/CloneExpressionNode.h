#pragma once

#include <memory>
#include <vector>

#include "nodes/CloneGrid.h"
#include "nodes/object/ObjectCopies.h"
#include "portdata/PDObject.h"
#include "portdata/RenderQuads.h"
#include "scene/Node.h"

class CExprEvaluator;
class CNodeInfo;
class CPortBool;
class CPortEffect;
class CPortInt;
class CPortObject;
class CPortString;

// A grid of copies of an object placed by a text that runs once per copy,
// or, with no object connected, a grid of squares drawn with the effect in
// one batch. The grid is centred on its bounding box on request and widened
// to the window's shape.
class CCloneExpressionNode : public CNode, public CPDObject {
 public:
  static CNodeInfo *CreateInfo();
  CCloneExpressionNode();
  ~CCloneExpressionNode() override;
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  const std::vector<CObjectCopy> &Copies() const { return m_Copies; }

 private:
  void FillSquares();

  CPortInt *m_NumObjects[3] = {};
  CPortBool *m_AdjustForAspect = nullptr, *m_Center = nullptr;
  CPortFloat *m_In[5] = {};
  CPortInt *m_RandomSeed = nullptr;
  CPortString *m_Expression = nullptr;
  CPortEffect *m_Effect = nullptr;
  CPortObject *m_Object = nullptr;
  CPortObject *m_Out = nullptr;

  std::unique_ptr<CExprEvaluator> m_Evaluator;
  CCloneGrid m_Grid;
  std::vector<CObjectCopy> m_Copies;
  CRenderQuads m_Squares;
};
