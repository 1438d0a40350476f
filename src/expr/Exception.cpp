#include "expr/Exception.h"

#include <cstdio>

namespace ExprEval {

std::string Exception::GetMessage() const {
  char text[96];
  switch (m_Type) {
    case NotFound:
      snprintf(text, sizeof(text), "Variable not found at %ld %ld", m_Start, m_End);
      return text;
    case AlreadyExists:
      snprintf(text, sizeof(text), "Variable already exists at %ld %ld", m_Start, m_End);
      return text;
    case NullPointer: return "Null pointer";
    case Math: return "Math exception";
    case DivideByZero: return "Divide by zero";
    case Abort: return "Expression aborted";
    case EmptyExpression: return "Empty Expression";
    case UnknownToken: return "Unknown token";
    case InvalidArgumentCount: return "Invalid number of arguments";
    case ConstantAssign: return "Trying to assign value to constant";
    case Syntax: return "Syntax Error";
    case UnmatchedParenthesis: return "Unmatched Parenthesis";
    case TooComplex: return "Expression too complex";
    default: return "Expression error";
  }
}

const char *Exception::what() const noexcept {
  try {
    m_What = GetMessage();
  } catch (...) {
    return "Expression error";
  }
  return m_What.c_str();
}

}  // namespace ExprEval

#include "expr/MathError.h"

namespace ExprEval {
void ThrowMathException(const char *name) { throw MathException(name); }
}  // namespace ExprEval
