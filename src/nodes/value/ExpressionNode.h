#pragma once

#include "expr/ExprEvaluator.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortFloat;
class CPortInt;
class CPortString;

// Three numbers computed by a text in the expression language from five
// inputs and the time. The text talks to the node only through variables.
class CExpressionNode : public CNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

 private:
  CPortFloat *m_Inputs[5] = {};
  CPortInt *m_RandomSeed = nullptr;
  CPortString *m_Expression = nullptr;
  CPortFloat *m_Outputs[3] = {};

  CExprEvaluator m_Eval;
  double m_In[5] = {}, m_Time = 0, m_DeltaTime = 0, m_SceneTime = 0;
  double m_Perm = 0, m_PermRand = 0;
  double m_Out[3] = {};
  // Drawn once for the life of the node; every new text starts from it.
  double m_PermRandStart = 0;
};
