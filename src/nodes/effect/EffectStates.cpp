#include "nodes/effect/EffectStates.h"

#include "render/Render.h"
#include "render/RenderTypes.h"
#include "scene/PortValues.h"

namespace {
const char *const kShaderBlendNames[BLEND_Count] = {
    "Zero",         "One",          "Source Color",         "Destination Color",        "Inverse Source Color",
    "Inverse Destination Color",    "Source Alpha",         "Destination Alpha",        "Inverse Source Alpha",
    "Inverse Destination Alpha",    "Source Alpha Saturate"};
const char *const kRendererCullNames[] = {"None", "Clockwise", "Counter clockwise"};
const char *const kShaderCullNames[] = {"None", "Cull forward facing polygons", "Cull backward facing polygons"};
}  // namespace

void AddBlendValues(CPortInt *port, EEffectStateNames names) {
  const char *const *list = names == EEffectStateNames::Shader ? kShaderBlendNames : g_BlendNames;
  for (int i = 0; i < BLEND_Count; ++i) port->AddValue(i, list[i]);
}

void AddCullValues(CPortInt *port, EEffectStateNames names) {
  const char *const *list = names == EEffectStateNames::Shader ? kShaderCullNames : kRendererCullNames;
  for (int i = 0; i < 3; ++i) port->AddValue(i, list[i]);
}

void CEffectStates::Read(std::initializer_list<EffectFlagPort> ports) {
  m_Enable = m_Disable = 0;
  for (const EffectFlagPort &p : ports) {
    if (!p.port) continue;
    (p.port->m_Value ? m_Enable : m_Disable) |= p.flag;
  }
}

void CEffectStates::Apply(CRender &render, const CPortInt *srcBlend, const CPortInt *dstBlend,
                          const CPortInt *cullMode) const {
  render.EnableStates(m_Enable);
  render.DisableStates(m_Disable);
  if (cullMode) render.SetCullMode(cullMode->m_Value);
  if (srcBlend && dstBlend) render.SetBlendModes(srcBlend->m_Value, dstBlend->m_Value);
}
