#include "expr/Parser.h"

#include "expr/ArithmeticNode.h"
#include "expr/Expression.h"
#include "expr/FunctionList.h"
#include "expr/FunctionNode.h"
#include "expr/OperatorNodes.h"
#include "expr/StatementNodes.h"
#include "expr/ValueList.h"

#include <algorithm>

namespace ExprEval {
namespace {

constexpr size_t kNone = static_cast<size_t>(-1);

bool IsOperator(int type) {
  switch (type) {
    case Token::Assign:
    case Token::Plus:
    case Token::Minus:
    case Token::Multiply:
    case Token::Divide:
    case Token::Exponent: return true;
    default: return false;
  }
}

// Out of line, so that the recursion through ParseRegion holds one node
// pointer per level rather than one per rule.
template <class T>
[[gnu::noinline]] NodePtr MakeNode(Parser &parser, size_t start, size_t end, size_t pivot) {
  Expression *expression = parser.GetExpression();
  NodePtr node(new (expression) T(expression));
  node->Parse(parser, start, end, pivot);
  return node;
}

}  // namespace

class Parser::DepthGuard {
 public:
  DepthGuard(Parser &parser, size_t start, size_t end) : m_Parser(parser) {
    if (++m_Parser.m_Depth > kMaxDepth) {
      --m_Parser.m_Depth;
      m_Parser.Throw<TooComplexException>(start, end);
    }
  }
  ~DepthGuard() { --m_Parser.m_Depth; }
  DepthGuard(const DepthGuard &) = delete;
  DepthGuard &operator=(const DepthGuard &) = delete;

 private:
  Parser &m_Parser;
};

Parser::Parser(Expression *expression) : m_Expression(expression) {
  if (!expression) throw NullPointerException("Parser::Parser");
}

Node *Parser::Parse(const std::string &text) {
  Tokenize(text, m_Tokens);
  if (m_Tokens.empty()) throw EmptyExpressionException();
  return ParseRegion(0, m_Tokens.size() - 1);
}

void Parser::SetSpan(Exception &e, size_t first, size_t last) const {
  if (m_Tokens.empty()) return;
  first = std::min(first, m_Tokens.size() - 1);
  last = std::min(std::max(first, last), m_Tokens.size() - 1);
  e.SetSpan(m_Tokens[first].start, m_Tokens[last].end);
}

double *Parser::BindVariable(size_t index) {
  ValueList *values = m_Expression->GetValueList();
  if (!values) Throw<NoValueListException>(index, index);
  const std::string &name = m_Tokens[index].identifier;
  double *address = values->GetAddress(name);
  if (!address) {
    values->Add(name, 0.0, false);
    address = values->GetAddress(name);
    if (!address) Throw<NotFoundException>(index, index, name);
  }
  return address;
}

Node *Parser::ParseRegion(size_t start, size_t end) {
  if (start > end || end >= m_Tokens.size()) Throw<SyntaxException>(start, end);
  DepthGuard guard(*this, start, end);

  // One scan finds the splitting token of every level at depth 0.
  size_t firstOpen = kNone, firstClose = kNone, assign = kNone, sign = kNone;
  size_t add = kNone, multiply = kNone, exponent = kNone;
  bool semicolon = false;
  long depth = 0, deepest = 0;
  size_t assigns = 0, adds = 0, multiplies = 0;
  for (size_t i = start; i <= end; ++i) {
    int type = m_Tokens[i].type;
    if (type == Token::OpenParen) {
      if (depth == 0 && firstOpen == kNone) firstOpen = i;
      deepest = std::max(deepest, ++depth);
      continue;
    }
    if (type == Token::CloseParen) {
      if (--depth < 0) Throw<UnmatchedParenthesisException>(i, i);
      if (depth == 0 && firstClose == kNone) firstClose = i;
      continue;
    }
    if (depth != 0) continue;
    switch (type) {
      case Token::Assign:
        if (assign == kNone) assign = i;
        ++assigns;
        break;
      case Token::Plus:
      case Token::Minus:
        if (i == start || IsOperator(m_Tokens[i - 1].type)) {
          if (sign == kNone) sign = i;
        } else {
          add = i;
          ++adds;
        }
        break;
      case Token::Multiply:
      case Token::Divide:
        multiply = i;
        ++multiplies;
        break;
      case Token::Exponent: exponent = i; break;
      case Token::Semicolon: semicolon = true; break;
      default: break;
    }
  }

  if (depth != 0) Throw<UnmatchedParenthesisException>(end, end);
  // Each level of parentheses, and each operator of a left- or right-leaning
  // chain, costs one more level below this one: a text that cannot fit
  // fails here rather than after a scan per level.
  size_t chain = semicolon ? 0 : assign != kNone ? assigns : add != kNone ? adds : multiplies;
  if (m_Depth + std::max(chain, static_cast<size_t>(deepest)) > kMaxDepth) Throw<TooComplexException>(start, end);

  NodePtr node;
  if (semicolon) {
    node = MakeNode<MultiNode>(*this, start, end, 0);
  } else if (assign != kNone) {
    node = MakeNode<AssignNode>(*this, start, end, assign);
  } else if (add != kNone) {
    if (m_Tokens[add].type == Token::Plus)
      node = MakeNode<AddNode>(*this, start, end, add);
    else
      node = MakeNode<SubtractNode>(*this, start, end, add);
  } else if (multiply != kNone) {
    if (m_Tokens[multiply].type == Token::Multiply)
      node = MakeNode<MultiplyNode>(*this, start, end, multiply);
    else
      node = MakeNode<DivideNode>(*this, start, end, multiply);
  } else if (sign == start) {
    if (m_Tokens[sign].type == Token::Plus) return ParseRegion(start + 1, end);
    node = MakeNode<NegateNode>(*this, start, end, sign);
  } else if (exponent != kNone) {
    node = MakeNode<ExponentNode>(*this, start, end, exponent);
  } else if (sign != kNone) {
    Throw<SyntaxException>(sign, sign);
  } else if (firstOpen == start) {
    if (firstClose == end && firstClose > firstOpen + 1) return ParseRegion(firstOpen + 1, firstClose - 1);
    Throw<SyntaxException>(firstOpen, firstClose);
  } else if (firstOpen == start + 1) {
    return ParseFunctionCall(start, end, firstOpen, firstClose);
  } else if (start == end) {
    if (m_Tokens[start].type == Token::Identifier)
      node = MakeNode<VariableNode>(*this, start, end, 0);
    else
      node = MakeNode<ValueNode>(*this, start, end, 0);
  } else {
    Throw<SyntaxException>(start, end);
  }
  return Simplify(std::move(node));
}

Node *Parser::ParseFunctionCall(size_t start, size_t end, size_t open, size_t close) {
  if (close != end) Throw<SyntaxException>(start, end);
  // A number before a parenthesis names no function: `2(3)` is as wrong
  // as `3 = 4`.
  if (m_Tokens[start].type != Token::Identifier) Throw<SyntaxException>(start, end);
  FunctionList *functions = m_Expression->GetFunctionList();
  if (!functions) Throw<NoFunctionListException>(start, start);
  const std::string &name = m_Tokens[start].identifier;
  NodePtr node(functions->Create(name, m_Expression));
  if (!node) Throw<NotFoundException>(start, start, name);
  node->Parse(*this, open, close, 0);
  return Simplify(std::move(node));
}

Node *Parser::Simplify(NodePtr node) {
  if (m_Expression->CountsVisits()) return node.release();
  if (node->IsFoldable()) {
    try {
      double value = node->Evaluate();
      return new (m_Expression) ValueNode(m_Expression, value);
    } catch (const Exception &) {
      // The failure belongs to evaluation time.
    }
  }
  return ArithmeticNode::Combine(std::move(node)).release();
}

}  // namespace ExprEval
