#pragma once
// Shader: an effect whose program the user types. The node puts the
// declarations the text needs in front of it (see ShaderText.h), feeds it
// its vector, color, time and texture inputs, and lets an expression adjust
// the inputs on the CPU first.

#include <memory>

#include "nodes/effect/ComposedEffect.h"
#include "nodes/effect/EffectStates.h"
#include "nodes/effect/ShaderText.h"
#include "scene/Node.h"

class CExprEvaluator;
class CNodeInfo;
class CPortBool;
class CPortColor;
class CPortEffect;
class CPortInt;
class CPortString;
class CPortTexture;
class CPortVector;

class CShaderNode : public CNode, public CComposedEffect {
 public:
  static CNodeInfo *CreateInfo();
  CShaderNode();
  ~CShaderNode() override;

  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;

  PassHandle Begin() override;

  // The effect text of the last RestoreDevice; empty when there was none.
  const std::string &ComposedText() const { return m_ComposedText; }
  // The inputs as the shader receives them, after the expression.
  const float *In(int index) const { return m_In[index]; }
  const float *Color(int index) const { return m_Color[index]; }
  float Time() const { return m_Time; }
  double Perm() const { return m_Vars.perm; }

  // Named effect parameters, null where the text has none.
  enum EHandle {
    H_time, H_in1, H_in2, H_in3, H_color, H_color1, H_color2, H_tex1size, H_tex2size, H_tex3size,
    H_tex1, H_tex2, H_tex3, H_FastNoise, H_Permutation1d, H_Permutation2d, H_Count
  };

 private:
  void RunExpression(const FrameInfo &frame);
  bool TexturesChanged() const;

  CPortBool *m_DepthTest = nullptr;
  CPortBool *m_DepthWrite = nullptr;
  CPortBool *m_AALine = nullptr;
  CPortInt *m_SrcBlend = nullptr;
  CPortInt *m_DstBlend = nullptr;
  CPortInt *m_CullMode = nullptr;
  CPortVector *m_InPorts3[3] = {};
  CPortColor *m_ColorPorts[2] = {};
  CPortString *m_Shader = nullptr;
  CPortInt *m_RandomSeed = nullptr;
  CPortString *m_Expression = nullptr;
  CPortTexture *m_Textures[3] = {};
  CPortEffect *m_EffectOut = nullptr;

  std::string m_ComposedText;
  ShaderTextures m_Composed;        // samplers declared for the last text
  int m_ComposedDimensions[3] = {};  // dimensions of what was connected then

  float m_In[3][3] = {};
  float m_Color[2][4] = {{1, 1, 1, 1}, {1, 1, 1, 1}};
  float m_Time = 0;

  // The expression's variables; perm and permrand live as long as the node.
  struct Variables {
    double in[3][3] = {};
    double col[2][4] = {};
    double time = 0, deltatime = 0, perm = 0, permrand = 0;
  } m_Vars;
  std::unique_ptr<CExprEvaluator> m_Eval;
  CEffectStates m_States;
};
