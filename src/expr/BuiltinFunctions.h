#pragma once
// The standard functions, in the order FunctionList::AddDefaultFunctions
// lists them. Arguments are evaluated once each, in order, unless a
// function's definition says otherwise.

#include "expr/FunctionFactory.h"
#include "expr/FunctionNode.h"

namespace ExprEval {

constexpr unsigned kOpen = FunctionNode::kNoLimit;

#define VELMOR_BUILTIN(NAME, MIN_VALUES, MAX_VALUES, MIN_REFS, MAX_REFS, PURE)                                 \
  VELMOR_EXPR_FUNCTION(NAME##_FunctionNode, NAME##_FunctionFactory, #NAME, MIN_VALUES, MAX_VALUES, MIN_REFS, \
                       MAX_REFS, PURE)

// Numbers and trigonometry (MathFunctions.cpp).
VELMOR_BUILTIN(abs, 1, 1, 0, 0, true);
VELMOR_BUILTIN(mod, 2, 2, 0, 0, true);
VELMOR_BUILTIN(ipart, 1, 1, 0, 0, true);
VELMOR_BUILTIN(fpart, 1, 1, 0, 0, true);
VELMOR_BUILTIN(min, 2, kOpen, 0, 0, true);
VELMOR_BUILTIN(max, 2, kOpen, 0, 0, true);
VELMOR_BUILTIN(sqrt, 1, 1, 0, 0, true);
VELMOR_BUILTIN(sin, 1, 1, 0, 0, true);
VELMOR_BUILTIN(cos, 1, 1, 0, 0, true);
VELMOR_BUILTIN(tan, 1, 1, 0, 0, true);
VELMOR_BUILTIN(sinh, 1, 1, 0, 0, true);
VELMOR_BUILTIN(cosh, 1, 1, 0, 0, true);
VELMOR_BUILTIN(tanh, 1, 1, 0, 0, true);
VELMOR_BUILTIN(asin, 1, 1, 0, 0, true);
VELMOR_BUILTIN(acos, 1, 1, 0, 0, true);
VELMOR_BUILTIN(atan, 1, 1, 0, 0, true);
VELMOR_BUILTIN(atan2, 2, 2, 0, 0, true);
VELMOR_BUILTIN(log, 1, 1, 0, 0, true);
VELMOR_BUILTIN(ln, 1, 1, 0, 0, true);
VELMOR_BUILTIN(exp, 1, 1, 0, 0, true);
VELMOR_BUILTIN(logn, 2, 2, 0, 0, true);
VELMOR_BUILTIN(ceil, 1, 1, 0, 0, true);
VELMOR_BUILTIN(floor, 1, 1, 0, 0, true);
VELMOR_BUILTIN(deg, 1, 1, 0, 0, true);
VELMOR_BUILTIN(rad, 1, 1, 0, 0, true);
VELMOR_BUILTIN(rect2pol, 2, 2, 2, 2, false);
VELMOR_BUILTIN(pol2rect, 2, 2, 2, 2, false);

// Choices and comparisons (LogicFunctions.cpp).
VELMOR_BUILTIN(if, 3, 3, 0, 0, true);
VELMOR_BUILTIN(select, 3, 4, 0, 0, true);
VELMOR_BUILTIN(equal, 2, 2, 0, 0, true);
VELMOR_BUILTIN(above, 2, 2, 0, 0, true);
VELMOR_BUILTIN(below, 2, 2, 0, 0, true);
VELMOR_BUILTIN(clip, 3, 3, 0, 0, true);
VELMOR_BUILTIN(clamp, 3, 3, 0, 0, true);
VELMOR_BUILTIN(rescale, 5, 5, 0, 0, true);

// MathFunctions.cpp.
VELMOR_BUILTIN(poly, 2, kOpen, 0, 0, true);

// LogicFunctions.cpp. `and`, `or` and `not` are operator names to the
// preprocessor, so these are spelled out.
VELMOR_EXPR_FUNCTION(and_FunctionNode, and_FunctionFactory, "and", 2, 2, 0, 0, true);
VELMOR_EXPR_FUNCTION(or_FunctionNode, or_FunctionFactory, "or", 2, 2, 0, 0, true);
VELMOR_EXPR_FUNCTION(not_FunctionNode, not_FunctionFactory, "not", 1, 1, 0, 0, true);

#undef VELMOR_BUILTIN

}  // namespace ExprEval
