#pragma once
// Folds a checked file-scope expression to numbers: parameter defaults,
// annotation values, static constants. Matrices come out row by row.

#include "fx/FxAst.h"

#include <vector>

#include <functional>

// False when the expression is not made of constants.
bool EvalConstant(const FxExpr &e, std::vector<float> &out);
// The same, with the effect parameters' current values from `parameter`
// (null: the parameter has none, and the expression is not evaluated).
using FxParameterValues = std::function<const std::vector<float> *(const FxVar &)>;
bool EvalConstant(const FxExpr &e, std::vector<float> &out, const FxParameterValues &parameter);
