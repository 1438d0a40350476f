#pragma once
// What TextWriter and Clock share: each is an object that draws its font's
// quads and the effect they are drawn with, composed from the text of its
// Shader port as the Shader node composes its own (see ShaderText.h), with
// the font picture as the sampler texfont.

#include "nodes/effect/ComposedEffect.h"
#include "nodes/effect/EffectStates.h"
#include "nodes/effect/ShaderText.h"
#include "portdata/PDObject.h"
#include "portdata/Font.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortColor;
class CPortInt;
class CPortObject;
class CPortString;
class CPortTexture;
class CPortVector;

class CFontEffectNode : public CNode, public CPDObject, public CComposedEffect {
 public:
  // SrcBlend, DstBlend, CullMode.
  static void AddBlendPorts(CNodeInfo *info);
  // In1, Color1..3, Shader, Texture1, Texture2 and the out-port Object.
  static void AddShaderPorts(CNodeInfo *info);

  bool Init() override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  PassHandle Begin() override;

  CFont &Font() { return m_Font; }
  const std::string &ComposedText() const { return m_ComposedText; }

  enum EHandle {
    H_time, H_in1, H_color, H_color1, H_color2, H_color3, H_texfont, H_tex1size, H_tex2size,
    H_tex1, H_tex2, H_FastNoise, H_Permutation1d, H_Permutation2d, H_Count
  };

 protected:
  // Sets the Object out-port; copies the inputs and the frame's time; marks
  // the device dirty when the text or a texture changed. The caller has
  // run UpdateInPorts.
  void ReadEffectInputs(const FrameInfo &frame);

  CFont m_Font;
  CPortObject *m_ObjectOut = nullptr;

 private:
  bool TexturesChanged() const;

  CPortInt *m_SrcBlend = nullptr;
  CPortInt *m_DstBlend = nullptr;
  CPortInt *m_CullMode = nullptr;
  CPortVector *m_In1 = nullptr;
  CPortColor *m_ColorPorts[3] = {};
  CPortString *m_Shader = nullptr;
  CPortTexture *m_Textures[2] = {};

  std::string m_ComposedText;
  ShaderTextures m_Composed;
  int m_ComposedDimensions[2] = {};

  float m_In1Value[3] = {};
  float m_Color[3][4] = {{1, 1, 1, 1}, {1, 1, 1, 1}, {1, 1, 1, 1}};
  float m_Time = 0;
  CEffectStates m_States;
};
