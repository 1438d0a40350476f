#pragma once

#include <memory>

#include "nodes/texture/GeneratedTexture.h"

class CExprEvaluator;
class CPortFloat;
class CPortString;

// A texture whose every texel is the color a text computes from its
// position (0 to 1 on each axis) and the inputs.
class CExpressionTextureNode : public CGeneratedTextureNode {
 public:
  static CNodeInfo *CreateInfo();
  CExpressionTextureNode();
  ~CExpressionTextureNode() override;
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;

 private:
  TextureSize Size() const;

  CPortInt *m_Width = nullptr, *m_Height = nullptr, *m_Depth = nullptr;
  CPortFloat *m_In[5] = {};
  CPortInt *m_RandomSeed = nullptr;
  CPortString *m_Expression = nullptr;

  std::unique_ptr<CExprEvaluator> m_Evaluator;
  // In the order they are registered.
  struct Variables {
    double x = 0, y = 0, z = 0, width = 0, height = 0, depth = 0;
    double perm = 0, permrand = 0;
    double in[5] = {1, 1, 1, 1, 1};
    double time = 1;
    double col[4] = {};
  } m_Vars;
};
