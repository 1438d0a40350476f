#pragma once
// Folds a checked file-scope expression to numbers: parameter defaults,
// annotation values, static constants. Matrices come out row by row.

#include "fx/FxAst.h"

#include <vector>

// False when the expression is not made of constants.
bool EvalConstant(const FxExpr &e, std::vector<float> &out);
