#pragma once
// Makes the node of one named function. A factory creates its node in the
// expression's arena: `new (expression) MyNode(expression)`.

#include <string>

namespace ExprEval {

class Expression;
class FunctionNode;

class FunctionFactory {
 public:
  virtual ~FunctionFactory() = default;
  virtual std::string GetName() const = 0;
  // A new node with its four argument limits set.
  virtual FunctionNode *DoCreate(Expression *expression) = 0;
};

// Declares NODE, a FunctionNode whose Evaluate is defined elsewhere, and
// FACTORY, which makes it under NAME with the given argument limits.
#define VELMOR_EXPR_FUNCTION(NODE, FACTORY, NAME, MIN_VALUES, MAX_VALUES, MIN_REFS, MAX_REFS, PURE) \
  class NODE final : public ::ExprEval::FunctionNode {                                               \
   public:                                                                                           \
    using FunctionNode::FunctionNode;                                                                \
    double Evaluate() override;                                                                      \
    bool IsPure() const override { return PURE; }                                                    \
  };                                                                                                 \
  class FACTORY final : public ::ExprEval::FunctionFactory {                                         \
   public:                                                                                           \
    std::string GetName() const override { return NAME; }                                           \
    ::ExprEval::FunctionNode *DoCreate(::ExprEval::Expression *expression) override {               \
      ::ExprEval::FunctionNode *node = new (expression) NODE(expression);                            \
      node->SetArgumentCount(MIN_VALUES, MAX_VALUES, MIN_REFS, MAX_REFS);                            \
      return node;                                                                                   \
    }                                                                                                \
  }

}  // namespace ExprEval
