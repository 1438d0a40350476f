#pragma once
// A run of arithmetic (+ - * / ^ and the leading minus) over one subtree,
// flattened into a short program that one Evaluate runs: a tree walk pays a
// virtual call per operator, this pays one per block. Children that are no
// arithmetic (functions, assignments, sequences) stay nodes that the
// program calls. The program evaluates everything in the order the tree
// would, reads each variable when the tree would, and fails with the same
// exception at the same point.

#include "expr/Node.h"

#include <cstdint>

namespace ExprEval {

class ArithmeticNode final : public Node {
 public:
  // Operand stack slots; a subtree that needs more stays a tree node.
  static constexpr unsigned kMaxStack = 32;

  struct Op {
    uint8_t code;
    union {
      double value;
      const double *leaf;
      Node *node;  // owned
    };
  };

  // For an operator node whose operands are numbers, variables or blocks:
  // a new block that takes over its operands. Any other node, or one whose
  // program would not fit, is given back unchanged.
  static NodePtr Combine(NodePtr node);

  explicit ArithmeticNode(Expression *expression) : Node(expression) {}
  ~ArithmeticNode() override;
  double Evaluate() override;
  // Made from parsed nodes by Combine, never from tokens.
  void Parse(Parser &, size_t, size_t, size_t) override {}

 private:
  class Builder;

  // Without calls the loop needs no registers saved across them.
  template <bool kCalls>
  double Run() const;

  Op *m_Code = nullptr;  // in the arena
  unsigned m_Size = 0;
  unsigned m_Depth = 0;      // stack slots the program needs
  bool m_Calls = false;      // whether the program evaluates any node
  bool m_LibraryCalls = false;  // whether it evaluates a node or calls pow
};

}  // namespace ExprEval
