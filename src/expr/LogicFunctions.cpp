// Choices, comparisons and ranges. A condition is true when it is not 0;
// true is 1 and false 0. The choosing functions evaluate only the argument
// they choose.

#include "expr/BuiltinFunctions.h"
#include "expr/Expression.h"

#include <cmath>

namespace ExprEval {
namespace {
double Truth(bool value) { return value ? 1.0 : 0.0; }
}  // namespace

double if_FunctionNode::Evaluate() {
  double condition = EvaluateArgument(0);
  return condition != 0.0 ? EvaluateArgument(1) : EvaluateArgument(2);
}

// select(c, negative, zero [, positive]): without a fourth argument a
// positive condition takes the zero branch.
double select_FunctionNode::Evaluate() {
  double condition = EvaluateArgument(0);
  if (condition < 0.0) return EvaluateArgument(1);
  if (condition == 0.0) return EvaluateArgument(2);
  return EvaluateArgument(GetArgumentCount() == 4 ? 3 : 2);
}

double equal_FunctionNode::Evaluate() {
  double a = EvaluateArgument(0);
  return Truth(a == EvaluateArgument(1));
}

double above_FunctionNode::Evaluate() {
  double a = EvaluateArgument(0);
  return Truth(a > EvaluateArgument(1));
}

double below_FunctionNode::Evaluate() {
  double a = EvaluateArgument(0);
  return Truth(a < EvaluateArgument(1));
}

double clip_FunctionNode::Evaluate() {
  double value = EvaluateArgument(0);
  double lo = EvaluateArgument(1);
  double hi = EvaluateArgument(2);
  if (value < lo) return lo;
  if (value > hi) return hi;
  return value;
}

// Wraps value into lo..hi rather than limiting it.
double clamp_FunctionNode::Evaluate() {
  double value = EvaluateArgument(0);
  double lo = EvaluateArgument(1);
  double hi = EvaluateArgument(2);
  if (lo == hi) return lo;
  double r = std::fmod(value - lo, hi - lo);
  return r < 0.0 ? r + hi : r + lo;
}

// Maps t from a..b onto c..d, without limiting it.
double rescale_FunctionNode::Evaluate() {
  double t = EvaluateArgument(0);
  double a = EvaluateArgument(1);
  double b = EvaluateArgument(2);
  double c = EvaluateArgument(3);
  double d = EvaluateArgument(4);
  if (b - a == 0.0) return c;
  return (d - c) * (t - a) / (b - a) + c;
}

double and_FunctionNode::Evaluate() {
  if (EvaluateArgument(0) == 0.0) return 0.0;
  return Truth(EvaluateArgument(1) != 0.0);
}

double or_FunctionNode::Evaluate() {
  if (EvaluateArgument(0) != 0.0) return 1.0;
  return Truth(EvaluateArgument(1) != 0.0);
}

double not_FunctionNode::Evaluate() { return Truth(EvaluateArgument(0) == 0.0); }

}  // namespace ExprEval
