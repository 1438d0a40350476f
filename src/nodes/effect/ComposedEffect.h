#pragma once
// The effect half of the nodes that compile a text of their own (Shader,
// TextWriter, Clock): the compiled effect, its named parameters, the pass
// loop and the per-item color and matrix. The node composes the text, and
// in Begin binds its inputs, then calls BindTextures.

#include <string>

#include "portdata/PDEffect.h"

class CFx;
class CFxParameter;
class CPortTexture;
class CTexture;
struct FxTechniqueRecord;

class CComposedEffect : public CPDEffect {
 public:
  static constexpr int MAX_HANDLES = 16;
  static constexpr int MAX_TEXTURES = 3;

  ~CComposedEffect() override;

  void BeginPass(PassHandle pass) override;
  PassHandle NextPass(PassHandle pass) override;
  void EndPass(PassHandle pass) override;
  // Gives pooled textures of this Begin back.
  void End() override;
  void SetLight(int, const float *) override {}
  void SetColor(const float *color) override;
  void SetMatrix(int index, const CMatrix &matrix) override;
  // `color` gets the item color, then every matrix parameter its matrix.
  void Commit() override;

  CFx *GetFx() const { return m_Fx; }

 protected:
  // Parses `text` and looks up the parameters named by `names` (null where
  // the text has none); `colorHandle` is the index of "color". False when
  // the text doesn't compile or has no usable technique.
  bool CompileEffect(CRender *render, const std::string &text, const char *const *names, int count, int colorHandle);
  void ReleaseEffect();
  // Fetches the texture of each connected port whose sampler exists, sets
  // each size parameter and sampler, and the three noise samplers.
  void BindTextures(CPortTexture *const *ports, int count, int firstSize, int firstSampler, int firstNoise);

  CFx *m_Fx = nullptr;
  FxTechniqueRecord *m_Technique = nullptr;
  CFxParameter *m_Handles[MAX_HANDLES] = {};

 private:
  int m_ColorHandle = -1;
  float m_ItemColor[4] = {1, 1, 1, 1};
  CTexture *m_BeginTextures[MAX_TEXTURES] = {};
};
