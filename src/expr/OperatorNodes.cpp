#include "expr/OperatorNodes.h"

#include "expr/Expression.h"
#include "expr/MathError.h"
#include "expr/Parser.h"

#include <cmath>

namespace ExprEval {

BinaryNode::~BinaryNode() {
  delete m_Left.node;
  delete m_Right.node;
}

void BinaryNode::Parse(Parser &parser, size_t start, size_t end, size_t pivot) {
  if (pivot <= start || pivot >= end) parser.Throw<SyntaxException>(start, end);
  m_Left.Set(parser.ParseRegion(start, pivot - 1));
  m_Right.Set(parser.ParseRegion(pivot + 1, end));
}

void BinaryNode::ReleaseOperands(Operand &left, Operand &right) {
  left = m_Left;
  right = m_Right;
  m_Left = m_Right = Operand();
}

double DivideNode::Evaluate() {
  double right = EvaluateChild(m_Right);
  if (right == 0.0) throw DivideByZeroException();
  return EvaluateChild(m_Left) / right;
}

double ExponentNode::Evaluate() {
  double left = EvaluateChild(m_Left);
  double right = EvaluateChild(m_Right);
  ClearMathError();
  double result = std::pow(left, right);
  CheckMathError(result, "^");
  return result;
}

NegateNode::~NegateNode() { delete m_Operand.node; }

Operand NegateNode::ReleaseOperand() {
  Operand operand = m_Operand;
  m_Operand = Operand();
  return operand;
}

void NegateNode::Parse(Parser &parser, size_t start, size_t end, size_t pivot) {
  if (pivot != start || pivot >= end) parser.Throw<SyntaxException>(start, end);
  m_Operand.Set(parser.ParseRegion(pivot + 1, end));
}

}  // namespace ExprEval
