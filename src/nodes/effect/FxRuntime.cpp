#include "nodes/effect/FxRuntime.h"

#include "fx/FxManager.h"
#include "fx/FxNoiseTextures.h"
#include "render/Render.h"

namespace {
FxPassRecord *Record(PassHandle handle) { return const_cast<FxPassRecord *>(static_cast<const FxPassRecord *>(handle)); }
}  // namespace

PassHandle FxFirstPass(FxTechniqueRecord *technique) {
  if (!technique || !technique->fx) return nullptr;
  return technique->fx->Begin(technique);
}

PassHandle FxNextPass(PassHandle handle) {
  FxPassRecord *record = Record(handle);
  if (!record || !record->technique || !record->technique->fx) return nullptr;
  return record->technique->fx->NextPass(record);
}

void FxSetPassState(CFx &fx, PassHandle pass) { fx.BeginPass(Record(pass)); }

void FxResetPassState(CFx &fx, PassHandle pass) { fx.EndPass(Record(pass)); }

void FxSetMatrixParameters(CFx &fx, CRender &render) {
  // The semantics read the camera and projection of the renderer drawing now.
  fx.m_Manager->m_Render = &render;
  for (CFxParameter &p : fx.Effect()->Parameters()) fx.SetMatrixParameter(p);
}

void FxSetupSampler(CFx &fx, CFxParameter &sampler, CTexture *texture) { fx.SetupSampler(sampler, texture); }

void FxCommitChanges(CFx &fx) { fx.CommitChanges(); }

CTexture *FxNoiseTexture(CRender &render, int entry) { return CNoiseTextures::Get(render.m_DeviceSlot, entry); }
