#include "nodes/effect/FxRuntime.h"

#include "fx/FxManager.h"
#include "fx/FxMatrixSemantics.h"
#include "render/Render.h"

PassHandle FxFirstPass(FxTechniqueRecord *technique) {
  if (!technique || !technique->technique || technique->technique->passes.empty()) return nullptr;
  technique->pass.technique = technique;
  technique->pass.pass = &technique->technique->passes.front();
  return &technique->pass;
}

PassHandle FxNextPass(PassHandle handle) {
  auto *record = const_cast<FxPassRecord *>(static_cast<const FxPassRecord *>(handle));
  if (!record || !record->technique || !record->pass) return nullptr;
  const std::vector<CFxPass> &passes = record->technique->technique->passes;
  size_t next = static_cast<size_t>(record->pass - passes.data()) + 1;
  if (next >= passes.size()) return nullptr;
  record->pass = &passes[next];
  return record;
}

// Without the GL effect runtime a pass has no device half.
void FxSetPassState(CFx &, PassHandle) {}
void FxResetPassState(CFx &, PassHandle) {}

void FxSetMatrixParameters(CFx &fx, CRender &render) {
  const float *view = render.GetCamera()->m_View.m;
  for (CFxParameter &p : fx.Effect()->Parameters()) SetMatrixParameter(p, fx.m_World, view, render.m_Projection.m);
}

void FxSetupSampler(CFx &, CFxParameter &sampler, CTexture *) { sampler.SetTexture(0); }

void FxCommitChanges(CFx &) {}

CTexture *FxNoiseTexture(CRender &, int) { return nullptr; }
