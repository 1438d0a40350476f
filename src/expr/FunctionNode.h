#pragma once
// A call `name(arguments)`: value arguments are subtrees, reference
// arguments (`&name`) are variable addresses. Each function is a class
// derived from FunctionNode that implements Evaluate; all share this Parse.

#include "expr/Node.h"

#include <string>
#include <vector>

namespace ExprEval {

class FunctionFactory;

class FunctionNode : public Node {
 public:
  static constexpr unsigned kNoLimit = ~0u;

  explicit FunctionNode(Expression *expression) : Node(expression) {}
  ~FunctionNode() override;

  // start is the open parenthesis, end the matching close.
  void Parse(Parser &parser, size_t start, size_t end, size_t pivot) override;
  bool IsFoldable() const override;
  // True when the result depends on nothing but the arguments and evaluating
  // changes nothing: no time, sound, random numbers or references.
  virtual bool IsPure() const { return false; }

  void SetArgumentCount(unsigned minValues, unsigned maxValues, unsigned minRefs, unsigned maxRefs);
  void SetFactory(FunctionFactory *factory) { m_Factory = factory; }
  FunctionFactory *GetFactory() const { return m_Factory; }
  std::string GetName() const;

  size_t GetArgumentCount() const { return m_ArgCount; }
  size_t GetReferenceCount() const { return m_RefCount; }

 protected:
  // Counts the visit, then evaluates value argument index.
  double EvaluateArgument(size_t index) const { return EvaluateChild(m_Args[index]); }
  double *GetReference(size_t index) const { return m_Refs[index]; }

 private:
  void CheckCounts(Parser &parser, size_t start, size_t end, size_t values, size_t refs) const;
  void Store(std::vector<NodePtr> &values, const std::vector<double *> &refs);

  FunctionFactory *m_Factory = nullptr;
  unsigned m_MinValues = 0, m_MaxValues = 0, m_MinRefs = 0, m_MaxRefs = 0;
  // Both arrays live in the expression's arena, next to the nodes.
  Operand *m_Args = nullptr;
  double **m_Refs = nullptr;
  unsigned m_ArgCount = 0;
  unsigned m_RefCount = 0;
};

}  // namespace ExprEval
