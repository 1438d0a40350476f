#pragma once
// The parsed form of a text: a tree of nodes, each of which evaluates to a
// double. Nodes live in their Expression's arena: create them with
// `new (expression) SomeNode(expression)`; deleting one runs its destructor
// (which deletes its children) and gives no memory back by itself.

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ExprEval {

class Expression;
class Node;
class Parser;

// A child as its parent sees it. A constant or a variable is read straight
// from its address, which spares a call for the most common children.
// When the expression counts visits, Set puts a node in between that counts
// each evaluation of the child (and the child is never read directly).
struct Operand {
  Node *node = nullptr;  // owned by the parent
  const double *leaf = nullptr;

  void Set(Node *child);
};

class Node {
 public:
  explicit Node(Expression *expression);
  virtual ~Node();

  virtual double Evaluate() = 0;
  // Builds this node from the tokens start to end (inclusive); pivot is the
  // token that made the parser choose this node.
  virtual void Parse(Parser &parser, size_t start, size_t end, size_t pivot) = 0;

  Expression *GetExpression() const { return m_Expression; }
  // Where the value of a constant or a variable lives, null for any other node.
  virtual const double *GetLeafAddress() const { return nullptr; }
  // A number written in the text (or folded from constants).
  virtual bool IsConstant() const { return false; }
  // True when every child is a constant and evaluating has no effect beyond
  // the result, so that the parser may replace the node by its value.
  virtual bool IsFoldable() const { return false; }

  static void *operator new(size_t size, Expression *expression);
  static void operator delete(void *, Expression *) noexcept {}
  static void operator delete(void *) noexcept {}
  static void *operator new(size_t) = delete;
  static void *operator new[](size_t) = delete;

 protected:
  static double EvaluateChild(const Operand &child) { return child.leaf ? *child.leaf : child.node->Evaluate(); }

  Expression *const m_Expression;
};

using NodePtr = std::unique_ptr<Node>;

// A number.
class ValueNode final : public Node {
 public:
  explicit ValueNode(Expression *expression, double value = 0.0) : Node(expression), m_Value(value) {}
  double Evaluate() override { return m_Value; }
  void Parse(Parser &parser, size_t start, size_t end, size_t pivot) override;
  const double *GetLeafAddress() const override { return &m_Value; }
  bool IsConstant() const override { return true; }
  double GetValue() const { return m_Value; }

 private:
  double m_Value;
};

// A variable, bound by address when parsed: evaluation does no look-up.
class VariableNode final : public Node {
 public:
  explicit VariableNode(Expression *expression) : Node(expression) {}
  double Evaluate() override { return *m_Address; }
  void Parse(Parser &parser, size_t start, size_t end, size_t pivot) override;
  const double *GetLeafAddress() const override { return m_Address; }

 private:
  double *m_Address = nullptr;
};

}  // namespace ExprEval
