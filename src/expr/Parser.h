#pragma once
// Turns a text into a tree for one Expression. Made for one parse and
// destroyed after it; nodes read the tokens from it by index.

#include "expr/Exception.h"
#include "expr/Node.h"
#include "expr/Token.h"

#include <string>
#include <vector>

namespace ExprEval {

class Expression;

class Parser {
 public:
  // Deepest nesting of regions that a text may have. Parsing, evaluating
  // and deleting a tree all recurse once per level, so this bounds their
  // stack use; deeper texts fail with TooComplexException.
  static constexpr unsigned kMaxDepth = 1000;

  explicit Parser(Expression *expression);

  // The root of the tree for text; the caller owns it.
  Node *Parse(const std::string &text);
  // A new node for the tokens start to end (inclusive), children built.
  Node *ParseRegion(size_t start, size_t end);

  Expression *GetExpression() const { return m_Expression; }
  const Token &GetToken(size_t index) const { return m_Tokens[index]; }
  size_t GetTokenCount() const { return m_Tokens.size(); }

  // The address of the variable named by the identifier token at index;
  // an unknown name is added with value 0.
  double *BindVariable(size_t index);

  // Throws E carrying name, spanning the characters of tokens first to last.
  // Kept out of line: inlined, its locals would swell the frame of every
  // recursive parse function.
  template <class E>
  [[noreturn, gnu::noinline, gnu::cold]] void Throw(size_t first, size_t last, const std::string &name) const {
    E e(name);
    SetSpan(e, first, last);
    throw e;
  }
  template <class E>
  [[noreturn, gnu::noinline, gnu::cold]] void Throw(size_t first, size_t last) const {
    E e;
    SetSpan(e, first, last);
    throw e;
  }
  void SetSpan(Exception &e, size_t first, size_t last) const;

 private:
  class DepthGuard;

  Node *ParseFunctionCall(size_t start, size_t end, size_t open, size_t close);
  // Unless visits are counted: a node whose operands are numbers becomes
  // its value, and arithmetic becomes blocks.
  Node *Simplify(NodePtr node);

  Expression *m_Expression;
  std::vector<Token> m_Tokens;
  unsigned m_Depth = 0;
};

}  // namespace ExprEval
