// Functions over numbers. Those that call a library function that can fail
// check the math error state around that call and fail with their name.

#include "expr/BuiltinFunctions.h"
#include "expr/Expression.h"
#include "expr/MathError.h"

#include <cmath>

namespace ExprEval {
namespace {
constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
}  // namespace

#define VELMOR_CHECKED_1(NAME, CALL)                 \
  double NAME##_FunctionNode::Evaluate() {           \
    double x = EvaluateArgument(0);                  \
    ClearMathError();                                \
    double result = CALL(x);                         \
    CheckMathError(result, #NAME);                   \
    return result;                                   \
  }

// Sine, cosine and tangent fail only for an infinite argument (and give NaN
// for NaN without failing), so a finite one skips the error state.
#define VELMOR_PERIODIC(NAME, CALL)                  \
  double NAME##_FunctionNode::Evaluate() {           \
    double x = EvaluateArgument(0);                  \
    if (std::isfinite(x)) return CALL(x);            \
    ClearMathError();                                \
    double result = CALL(x);                         \
    CheckMathError(result, #NAME);                   \
    return result;                                   \
  }

VELMOR_PERIODIC(sin, std::sin)
VELMOR_PERIODIC(cos, std::cos)
VELMOR_PERIODIC(tan, std::tan)

#undef VELMOR_PERIODIC

VELMOR_CHECKED_1(sqrt, std::sqrt)
VELMOR_CHECKED_1(sinh, std::sinh)
VELMOR_CHECKED_1(cosh, std::cosh)
VELMOR_CHECKED_1(tanh, std::tanh)
VELMOR_CHECKED_1(asin, std::asin)
VELMOR_CHECKED_1(acos, std::acos)
VELMOR_CHECKED_1(atan, std::atan)
VELMOR_CHECKED_1(log, std::log10)
VELMOR_CHECKED_1(ln, std::log)
VELMOR_CHECKED_1(exp, std::exp)

#undef VELMOR_CHECKED_1

double abs_FunctionNode::Evaluate() { return std::fabs(EvaluateArgument(0)); }

double mod_FunctionNode::Evaluate() {
  double a = EvaluateArgument(0);
  double b = EvaluateArgument(1);
  ClearMathError();
  double result = std::fmod(a, b);
  CheckMathError(result, "mod");
  return result;
}

double ipart_FunctionNode::Evaluate() {
  double whole;
  std::modf(EvaluateArgument(0), &whole);
  return whole;
}

double fpart_FunctionNode::Evaluate() {
  double whole;
  return std::modf(EvaluateArgument(0), &whole);
}

double min_FunctionNode::Evaluate() {
  double result = EvaluateArgument(0);
  for (size_t i = 1; i < GetArgumentCount(); ++i) {
    double value = EvaluateArgument(i);
    if (value < result) result = value;
  }
  return result;
}

double max_FunctionNode::Evaluate() {
  double result = EvaluateArgument(0);
  for (size_t i = 1; i < GetArgumentCount(); ++i) {
    double value = EvaluateArgument(i);
    if (value > result) result = value;
  }
  return result;
}

double atan2_FunctionNode::Evaluate() {
  double y = EvaluateArgument(0);
  double x = EvaluateArgument(1);
  ClearMathError();
  double result = std::atan2(y, x);
  CheckMathError(result, "atan2");
  return result;
}

// logn(x, base): the base first, and a base whose logarithm is 0 fails
// before x is evaluated.
double logn_FunctionNode::Evaluate() {
  double base = EvaluateArgument(1);
  ClearMathError();
  double lnBase = std::log(base);
  CheckMathError(lnBase, "logn");
  if (lnBase == 0.0) ThrowMathException("logn");
  double x = EvaluateArgument(0);
  ClearMathError();
  double lnX = std::log(x);
  CheckMathError(lnX, "logn");
  return lnX / lnBase;
}

double ceil_FunctionNode::Evaluate() { return std::ceil(EvaluateArgument(0)); }
double floor_FunctionNode::Evaluate() { return std::floor(EvaluateArgument(0)); }
double deg_FunctionNode::Evaluate() { return EvaluateArgument(0) * 180.0 / kPi; }
double rad_FunctionNode::Evaluate() { return EvaluateArgument(0) * kPi / 180.0; }

// rect2pol(x, y, &r, &a): the angle from 0 to 2 pi; the references are
// written only when both calls succeeded.
double rect2pol_FunctionNode::Evaluate() {
  double x = EvaluateArgument(0);
  double y = EvaluateArgument(1);
  ClearMathError();
  double r = std::sqrt(y * y + x * x);
  CheckMathError(r, "rect2pol");
  ClearMathError();
  double a = std::atan2(y, x);
  CheckMathError(a, "rect2pol");
  if (a < 0.0) a += kTwoPi;
  *GetReference(0) = r;
  *GetReference(1) = a;
  return r;
}

// pol2rect(r, a, &x, &y).
double pol2rect_FunctionNode::Evaluate() {
  double r = EvaluateArgument(0);
  double a = EvaluateArgument(1);
  ClearMathError();
  double c = std::cos(a);
  CheckMathError(c, "pol2rect");
  ClearMathError();
  double s = std::sin(a);
  CheckMathError(s, "pol2rect");
  double x = r * c;
  *GetReference(0) = x;
  *GetReference(1) = r * s;
  return x;
}

// poly(x, c1, ..., cn): highest power first, each power by pow.
double poly_FunctionNode::Evaluate() {
  double x = EvaluateArgument(0);
  size_t n = GetArgumentCount() - 1;
  double sum = 0.0;
  for (size_t i = 1; i <= n; ++i) {
    double c = EvaluateArgument(i);
    ClearMathError();
    double power = std::pow(x, static_cast<double>(n - i));
    CheckMathError(power, "poly");
    sum += c * power;
  }
  return sum;
}

}  // namespace ExprEval
