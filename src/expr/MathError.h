#pragma once
// The math library reports domain, pole and range errors through errno.
// errno is cleared right before a library call, so that an unchecked call in
// an argument (`pow` never checks) cannot fail the function around it. A
// range error whose result is still finite is an underflow, which the
// language accepts: exp(-1000) is 0.

#include "expr/Exception.h"

#include <cerrno>
#include <cmath>

namespace ExprEval {

inline void ClearMathError() { errno = 0; }

[[noreturn]] void ThrowMathException(const char *name);

inline void CheckMathError(double result, const char *name) {
  int error = errno;
  if (error != 0 && !(error == ERANGE && std::isfinite(result))) ThrowMathException(name);
}

}  // namespace ExprEval
