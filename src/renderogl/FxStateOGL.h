#pragma once
// Effect pass and sampler states as GL calls.

#include <GL/glew.h>

#include "fx/FxStateTable.h"

// Applies one pass state on the current context.
void ApplyFxPassState(const FxStateValue &value);
// Puts a pass state back to GL's default.
void ResetFxPassState(EFxState state);
// Applies one sampler state to the texture bound to `target`.
void ApplyFxSamplerState(GLenum target, const FxStateValue &value);
