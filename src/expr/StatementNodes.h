#pragma once
// Statements: a sequence separated by `;`, and an assignment.

#include "expr/Node.h"

namespace ExprEval {

// statement; statement; ... : evaluates all in order, gives the last.
class MultiNode final : public Node {
 public:
  explicit MultiNode(Expression *expression) : Node(expression) {}
  ~MultiNode() override;
  double Evaluate() override;
  void Parse(Parser &parser, size_t start, size_t end, size_t pivot) override;
  size_t GetStatementCount() const { return m_Count; }

 private:
  Operand *m_Statements = nullptr;  // in the arena
  size_t m_Count = 0;
};

// name = expression: stores the value and gives it, so `a = b = 3` works.
class AssignNode final : public Node {
 public:
  explicit AssignNode(Expression *expression) : Node(expression) {}
  ~AssignNode() override;
  double Evaluate() override {
    double value = EvaluateChild(m_Right);
    *m_Address = value;
    return value;
  }
  void Parse(Parser &parser, size_t start, size_t end, size_t pivot) override;

 private:
  double *m_Address = nullptr;
  Operand m_Right;
};

}  // namespace ExprEval
