#include "nodes/effect/ComposedEffect.h"

#include <algorithm>

#include "fx/FxManager.h"
#include "nodes/effect/FxRuntime.h"
#include "portdata/PDTexture.h"
#include "render/Matrix.h"
#include "render/Render.h"
#include "render/Resources.h"
#include "scene/PortPointers.h"

CComposedEffect::~CComposedEffect() { ReleaseEffect(); }

bool CComposedEffect::CompileEffect(CRender *render, const std::string &text, const char *const *names, int count,
                                    int colorHandle) {
  ReleaseEffect();
  if (!render->m_FxManager) return false;
  m_Fx = render->m_FxManager->ParseEffect(text.c_str());
  if (!m_Fx) return false;
  m_Technique = m_Fx->GetBestTechnique();
  if (!m_Technique) return false;
  for (int h = 0; h < std::min(count, MAX_HANDLES); ++h) m_Handles[h] = m_Fx->GetNamedParameter(names[h]);
  m_ColorHandle = colorHandle;
  return true;
}

void CComposedEffect::ReleaseEffect() {
  delete m_Technique;
  m_Technique = nullptr;
  delete m_Fx;
  m_Fx = nullptr;
  for (CFxParameter *&h : m_Handles) h = nullptr;
}

void CComposedEffect::BindTextures(CPortTexture *const *ports, int count, int firstSize, int firstSampler,
                                   int firstNoise) {
  count = std::min(count, MAX_TEXTURES);
  for (int i = 0; i < count; ++i) {
    CPortTexture *port = ports[i];
    const bool bound = port && port->IsConnected() && m_Handles[firstSampler + i] && port->m_Value;
    m_BeginTextures[i] = bound ? port->m_Value->GetTexture(m_Render) : nullptr;
  }
  for (int i = 0; i < count; ++i) {
    const CTexture *t = m_BeginTextures[i];
    if (!t || !m_Handles[firstSize + i]) continue;
    const float size[2] = {static_cast<float>(t->m_Width), static_cast<float>(t->m_Height)};
    m_Handles[firstSize + i]->SetValuefr(size, 2);
  }
  for (int i = 0; i < count; ++i)
    if (m_Handles[firstSampler + i]) FxSetupSampler(*m_Fx, *m_Handles[firstSampler + i], m_BeginTextures[i]);
  for (int n = 0; n < 3; ++n)
    if (m_Handles[firstNoise + n]) FxSetupSampler(*m_Fx, *m_Handles[firstNoise + n], FxNoiseTexture(*m_Render, n));
}

void CComposedEffect::BeginPass(PassHandle pass) {
  if (m_Fx) FxSetPassState(*m_Fx, pass);
}

PassHandle CComposedEffect::NextPass(PassHandle pass) { return FxNextPass(pass); }

void CComposedEffect::EndPass(PassHandle pass) {
  if (m_Fx) FxResetPassState(*m_Fx, pass);
}

void CComposedEffect::End() {
  for (CTexture *&t : m_BeginTextures) {
    // Only pooled textures (a Blur's result) go back; others are left alone.
    if (t && m_Render) m_Render->ReleaseTexture(t);
    t = nullptr;
  }
}

void CComposedEffect::SetColor(const float *color) { std::copy_n(color, 4, m_ItemColor); }

void CComposedEffect::SetMatrix(int, const CMatrix &matrix) {
  if (m_Fx) std::copy_n(matrix.m, 16, m_Fx->m_World);
}

void CComposedEffect::Commit() {
  if (!m_Fx || !m_Render) return;
  if (m_ColorHandle >= 0 && m_Handles[m_ColorHandle]) m_Handles[m_ColorHandle]->SetValuefr(m_ItemColor, 4);
  FxSetMatrixParameters(*m_Fx, *m_Render);
  FxCommitChanges(*m_Fx);
}
