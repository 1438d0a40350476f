#pragma once
// How the effect nodes drive a loaded CFx through a frame: the pass loop,
// the device half of a pass, matrices and samplers. The nodes call only
// these, so what the device does with a pass stays in the effect runtime.

#include "portdata/PDEffect.h"

class CFx;
class CFxParameter;
class CRender;
class CTexture;
struct FxTechniqueRecord;

// The technique's first pass, or null when it has none.
PassHandle FxFirstPass(FxTechniqueRecord *technique);
// The pass after `pass` in its technique, or null.
PassHandle FxNextPass(PassHandle pass);
// Program and pass states on, and back off.
void FxSetPassState(CFx &fx, PassHandle pass);
void FxResetPassState(CFx &fx, PassHandle pass);
// Every float4x4 parameter gets the matrix its semantic names, from the
// effect's world matrix and the render object's camera and projection.
void FxSetMatrixParameters(CFx &fx, CRender &render);
// Binds `texture` (null: none) to a sampler parameter.
void FxSetupSampler(CFx &fx, CFxParameter &sampler, CTexture *texture);
// Sends the values set since the pass began to the device.
void FxCommitChanges(CFx &fx);
// The device slot's noise volume (0) and permutation textures (1, 2) that
// Shader texts sample; null while the renderer has none.
CTexture *FxNoiseTexture(CRender &render, int entry);
