#pragma once
// The functions that tie the language to the program: clock, sound,
// random numbers and noise. CExprEvaluator adds them after the standard ones.

#include "core/Random.h"
#include "expr/FunctionFactory.h"
#include "expr/FunctionNode.h"

namespace ExprEval {

class FunctionList;

VELMOR_EXPR_FUNCTION(EPTimeNode, EPTimeFactory, "time", 1, 1, 0, 0, false);
VELMOR_EXPR_FUNCTION(EPDateNode, EPDateFactory, "date", 1, 1, 0, 0, false);
VELMOR_EXPR_FUNCTION(EPLengthNode, EPLengthFactory, "length", 2, 3, 0, 0, true);
VELMOR_EXPR_FUNCTION(EPBeatNode, EPBeatNodeFactory, "beat", 0, 1, 0, 0, false);
VELMOR_EXPR_FUNCTION(EPBandNode, EPBandNodeFactory, "band", 3, 4, 0, 0, false);
VELMOR_EXPR_FUNCTION(EPWaveformNode, EPWaveformFactory, "waveform", 2, 3, 0, 0, false);
VELMOR_EXPR_FUNCTION(EPSpectrumNode, EPSpectrumFactory, "spectrum", 2, 3, 0, 0, false);
VELMOR_EXPR_FUNCTION(EPSmoothStepNode, EPSmoothStepFactory, "smoothstep", 3, 3, 0, 0, true);
VELMOR_EXPR_FUNCTION(EPPowFunctionNode, EPPowFunctionFactory, "pow", 2, 2, 0, 0, true);
VELMOR_EXPR_FUNCTION(EPNoise1FunctionNode, EPNoise1FunctionFactory, "noise1", 1, 1, 0, 0, true);
VELMOR_EXPR_FUNCTION(EPNoise2FunctionNode, EPNoise2FunctionFactory, "noise2", 2, 2, 0, 0, true);
VELMOR_EXPR_FUNCTION(EPNoise3FunctionNode, EPNoise3FunctionFactory, "noise3", 3, 3, 0, 0, true);
VELMOR_EXPR_FUNCTION(rand_FunctionNode, rand_FunctionFactory, "rand", 0, 1, 0, 1, false);
VELMOR_EXPR_FUNCTION(srand_FunctionNode, srand_FunctionFactory, "srand", 0, 1, 0, 1, false);
VELMOR_EXPR_FUNCTION(srandom_FunctionNode, srandom_FunctionFactory, "srandom", 0, 0, 0, 0, false);
VELMOR_EXPR_FUNCTION(random_FunctionNode, random_FunctionFactory, "random", 0, 2, 0, 0, false);

// Adds the sixteen in the order: time, date, length, beat, band, waveform,
// smoothstep, spectrum, srandom, srand, rand, random, pow, noise1, noise2,
// noise3.
void AddProgramFunctions(FunctionList &list);

// The state that rand() and srand() draw from. CExprEvaluator points it at
// its own state before each evaluation; null means the shared generator.
extern RandomState *g_CurrentRandomState;
inline void SetCurrentRandomState(RandomState *state) { g_CurrentRandomState = state; }
inline RandomState &GetCurrentRandomState() { return g_CurrentRandomState ? *g_CurrentRandomState : SharedRandom(); }

}  // namespace ExprEval
