#pragma once
// What a node embeds to run an expression: its own variables, all functions,
// the parsed text and a private random state. Failures are logged and turn
// the evaluator off until the next Compile.
//
// The pattern of use:
//   Init:   AddAddress(name, &m_Member, default) for each variable; Attach().
//   Update: Compile(text) when the text port changed; if m_Compiled, fill
//           the inputs, zero the outputs, Evaluate(), read the outputs.

#include "core/Random.h"
#include "expr/Expression.h"
#include "expr/FunctionList.h"
#include "expr/ValueList.h"

#include <string>

class CExprEvaluator {
 public:
  CExprEvaluator();
  CExprEvaluator(const CExprEvaluator &) = delete;
  CExprEvaluator &operator=(const CExprEvaluator &) = delete;

  // Points the expression at the lists; after registering the variables.
  void Attach();
  // False for an empty text (silently) and for a text that fails to parse
  // (logged). Every registered variable returns to its default first.
  bool Compile(const std::string &text);
  // The value of the compiled text; 0 when not compiled or when the
  // evaluation fails (logged, and the evaluator stays off from then on).
  double Evaluate();

  ExprEval::ValueList &GetValueList() { return m_ValueList; }
  ExprEval::FunctionList &GetFunctionList() { return m_FunctionList; }
  ExprEval::Expression &GetExpression() { return m_Expression; }
  // Binds a variable of the text to a double of the caller.
  void AddAddress(const std::string &name, double *address, double value) {
    m_ValueList.AddAddress(name, address, value);
  }

  // rand() and srand() draw from this state; a node with a seed port seeds
  // it before each evaluation to repeat the same sequence.
  void SeedRandom(uint32_t seed) { SeedRandomState(m_RandomState, seed); }
  RandomState &GetRandomState() { return m_RandomState; }

  // True while the text parsed and no evaluation has failed.
  bool m_Compiled = false;

 private:
  ExprEval::ValueList m_ValueList;
  ExprEval::FunctionList m_FunctionList;
  ExprEval::Expression m_Expression;
  RandomState m_RandomState;
};
