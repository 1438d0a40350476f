// The expression language on any text: parse, evaluate twice, free. Texts of
// odd length keep the tree as written and count every visit, those of even
// length fold and flatten it: a seed's mutations take both paths.
#include "expr/Exception.h"
#include "expr/Expression.h"
#include "expr/FunctionList.h"
#include "expr/ProgramFunctions.h"
#include "expr/ValueList.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {
// Stops every evaluation at its first countdown, so that no text runs long.
class CStoppingExpression : public ExprEval::Expression {
 public:
  bool ShouldAbort() override { return true; }
};

template <class E>
void Run(const std::string &text) {
  ExprEval::ValueList values;
  ExprEval::FunctionList functions;
  values.AddDefaultValues();
  functions.AddDefaultFunctions();
  ExprEval::AddProgramFunctions(functions);
  E expression;
  expression.SetValueList(&values);
  expression.SetFunctionList(&functions);
  try {
    expression.Parse(text);
    expression.Evaluate();
    expression.Evaluate();
  } catch (const ExprEval::Exception &) {
  }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string text(reinterpret_cast<const char *>(data), size);
  if (size % 2) Run<CStoppingExpression>(text);
  else Run<ExprEval::Expression>(text);
  return 0;
}
