#pragma once
// A complete language environment for tests: value list with E and PI,
// every standard and program function, and an expression over both.

#include "expr/Exception.h"
#include "expr/Expression.h"
#include "expr/FunctionList.h"
#include "expr/ProgramFunctions.h"
#include "expr/ValueList.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace ExprTest {

// An Expression subclass: every node visit counts, nothing is folded or
// flattened, so it evaluates the tree exactly as parsed.
class CountingExpression : public ExprEval::Expression {
 public:
  bool ShouldAbort() override {
    ++abortChecks;
    return abort;
  }
  int abortChecks = 0;
  bool abort = false;
};

template <class E = ExprEval::Expression>
struct Language {
  ExprEval::ValueList values;
  ExprEval::FunctionList functions;
  E expression;

  Language() {
    values.AddDefaultValues();
    functions.AddDefaultFunctions();
    ExprEval::AddProgramFunctions(functions);
    expression.SetValueList(&values);
    expression.SetFunctionList(&functions);
  }

  double Eval(const std::string &text) {
    expression.Parse(text);
    return expression.Evaluate();
  }
  double &Var(const std::string &name) {
    double *address = values.GetAddress(name);
    if (!address) {
      values.Add(name, 0.0, false);
      address = values.GetAddress(name);
    }
    return *address;
  }
  bool Has(const std::string &name) { return values.GetAddress(name) != nullptr; }
};

// Parses and evaluates text once: the exception it fails with, or type 0
// and the value.
struct Failure {
  int type = 0;
  double value = 0.0;
  std::string message;
  std::string name;
  long start = -1, end = -1;
};

template <class L>
Failure FailureOf(L &language, const std::string &text) {
  Failure failure;
  try {
    failure.value = language.Eval(text);
  } catch (const ExprEval::Exception &e) {
    failure.type = e.GetType();
    failure.message = e.what();
    failure.name = e.GetName();
    failure.start = e.GetStart();
    failure.end = e.GetEnd();
  }
  return failure;
}

inline Failure FailureOf(const std::string &text) {
  Language<> language;
  return FailureOf(language, text);
}

inline std::string MessageOf(const std::string &text) { return FailureOf(text).message; }

inline double Eval(const std::string &text) { return Language<>().Eval(text); }

// Each text evaluates (in a fresh language) to its value.
struct Case {
  const char *text;
  double value;
};
template <class E = ExprEval::Expression>
void ExpectValues(std::initializer_list<Case> cases) {
  for (const Case &c : cases) EXPECT_DOUBLE_EQ(Language<E>().Eval(c.text), c.value) << c.text;
}

// Each text fails with its message.
struct Refusal {
  const char *text;
  const char *message;
};
inline void ExpectMessages(std::initializer_list<Refusal> cases) {
  for (const Refusal &c : cases) EXPECT_EQ(MessageOf(c.text), c.message) << c.text;
}

}  // namespace ExprTest
