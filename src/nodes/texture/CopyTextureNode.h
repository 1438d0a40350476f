#pragma once

#include "nodes/effect/ShaderText.h"
#include "nodes/texture/TextureFilter.h"
#include "portdata/PDEffect.h"

class CFxParameter;
class CPortBool;
class CPortColor;
class CPortInt;
class CPortString;
class CPortVector;

// Its input drawn through a shader the user types into a texture of a
// fraction of the input's size, when read. As an effect it does nothing.
class CCopyTextureNode : public CTextureFilterNode, public CPDEffect {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  CTexture *GetTexture(CRender *render) override;

  PassHandle Begin() override { return nullptr; }
  void BeginPass(PassHandle) override {}
  PassHandle NextPass(PassHandle) override { return nullptr; }
  void EndPass(PassHandle) override {}
  void End() override {}
  void SetLight(int, const float *) override {}
  void SetColor(const float *) override {}
  void SetMatrix(int, const CMatrix &) override {}
  void Commit() override {}

  // The size of the copy of a source of `width` x `height`.
  void CopySize(int &width, int &height) const;

  enum EHandle {
    H_in1, H_in2, H_in3, H_color1, H_color2, H_time, H_tex1, H_tex2, H_tex3, H_tex1size, H_tex2size, H_tex3size,
    H_FastNoise, H_Permutation1d, H_Permutation2d, H_Count
  };

 private:
  void ForgetHandles() override;
  CTexture *Extra(CRender *render, int index) const;

  CPortInt *m_TextureSize = nullptr;
  CPortBool *m_CreateMipMaps = nullptr;
  CPortVector *m_InVectors[3] = {};
  CPortColor *m_Colors[2] = {};
  CPortString *m_Shader = nullptr;
  CPortTexture *m_Textures[3] = {};  // Texture, Texture2, Texture3

  float m_In[3][3] = {};
  float m_Color[2][4] = {};
  float m_Time = 0;
  int m_Dimensions[3] = {};  // of Texture2 and Texture3 when composed

  CFxParameter *m_Handles[H_Count] = {};
  ShaderTextures m_Composed;
};
