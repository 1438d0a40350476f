#include "expr/Expression.h"

#include "expr/Parser.h"

#include <typeinfo>

namespace ExprEval {

Expression::~Expression() { Clear(); }

void Expression::Clear() {
  delete m_Root;
  m_Root = nullptr;
  m_Arena.Reset();
}

void Expression::Parse(const std::string &text) {
  Clear();
  // The base ShouldAbort never stops anything, so unless a derived class
  // can, counting each visit would only cost time.
  m_CountVisits = typeid(*this) != typeid(Expression);
  Parser parser(this);
  m_Root = parser.Parse(text);
}

void Expression::AbortCountdownReached() {
  m_AbortCount = m_AbortResetCount;
  if (ShouldAbort()) throw AbortException();
}

}  // namespace ExprEval
