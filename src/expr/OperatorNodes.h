#pragma once
// Arithmetic: the binary operators and the leading minus.

#include "expr/Node.h"

namespace ExprEval {

// Left and right side of an operator at the pivot token.
class BinaryNode : public Node {
 public:
  explicit BinaryNode(Expression *expression) : Node(expression) {}
  ~BinaryNode() override;
  void Parse(Parser &parser, size_t start, size_t end, size_t pivot) override;
  bool IsFoldable() const override { return m_Left.node->IsConstant() && m_Right.node->IsConstant(); }
  // '+', '-', '*', '/' or '^'.
  virtual char GetOperator() const = 0;

  const Operand &GetLeft() const { return m_Left; }
  const Operand &GetRight() const { return m_Right; }
  // Hands both operands to the caller, who then owns them.
  void ReleaseOperands(Operand &left, Operand &right);

 protected:
  Operand m_Left, m_Right;
};

class AddNode final : public BinaryNode {
 public:
  using BinaryNode::BinaryNode;
  char GetOperator() const override { return '+'; }
  double Evaluate() override {
    double left = EvaluateChild(m_Left);
    return left + EvaluateChild(m_Right);
  }
};

class SubtractNode final : public BinaryNode {
 public:
  using BinaryNode::BinaryNode;
  char GetOperator() const override { return '-'; }
  double Evaluate() override {
    double left = EvaluateChild(m_Left);
    return left - EvaluateChild(m_Right);
  }
};

class MultiplyNode final : public BinaryNode {
 public:
  using BinaryNode::BinaryNode;
  char GetOperator() const override { return '*'; }
  double Evaluate() override {
    double left = EvaluateChild(m_Left);
    return left * EvaluateChild(m_Right);
  }
};

// The divisor is evaluated first; a zero divisor fails before the dividend
// is evaluated at all.
class DivideNode final : public BinaryNode {
 public:
  using BinaryNode::BinaryNode;
  char GetOperator() const override { return '/'; }
  double Evaluate() override;
};

class ExponentNode final : public BinaryNode {
 public:
  using BinaryNode::BinaryNode;
  char GetOperator() const override { return '^'; }
  double Evaluate() override;
};

class NegateNode final : public Node {
 public:
  explicit NegateNode(Expression *expression) : Node(expression) {}
  ~NegateNode() override;
  double Evaluate() override { return -EvaluateChild(m_Operand); }
  void Parse(Parser &parser, size_t start, size_t end, size_t pivot) override;
  bool IsFoldable() const override { return m_Operand.node->IsConstant(); }
  const Operand &GetOperand() const { return m_Operand; }
  Operand ReleaseOperand();

 private:
  Operand m_Operand;
};

}  // namespace ExprEval
