#include "expr/StatementNodes.h"

#include "expr/Expression.h"
#include "expr/Parser.h"
#include "expr/ValueList.h"

#include <vector>

namespace ExprEval {

MultiNode::~MultiNode() {
  for (size_t i = 0; i < m_Count; ++i) delete m_Statements[i].node;
}

double MultiNode::Evaluate() {
  double result = 0.0;
  for (size_t i = 0; i < m_Count; ++i) result = EvaluateChild(m_Statements[i]);
  return result;
}

void MultiNode::Parse(Parser &parser, size_t start, size_t end, size_t) {
  if (end <= start) parser.Throw<SyntaxException>(start, end);
  std::vector<NodePtr> statements;
  size_t first = start;
  long depth = 0;
  for (size_t i = start; i <= end; ++i) {
    int type = parser.GetToken(i).type;
    if (type == Token::OpenParen) {
      ++depth;
    } else if (type == Token::CloseParen) {
      if (--depth < 0) parser.Throw<UnmatchedParenthesisException>(i, i);
    } else if (type == Token::Semicolon && depth == 0) {
      if (i == first) parser.Throw<SyntaxException>(i, i);
      statements.emplace_back(parser.ParseRegion(first, i - 1));
      first = i + 1;
    }
  }
  if (first <= end) statements.emplace_back(parser.ParseRegion(first, end));

  auto *slots = static_cast<Operand *>(m_Expression->AllocateNodeMemory(sizeof(Operand) * statements.size(), alignof(Operand)));
  for (size_t i = 0; i < statements.size(); ++i) new (&slots[i]) Operand();
  m_Statements = slots;
  for (NodePtr &statement : statements) m_Statements[m_Count++].Set(statement.release());
}

AssignNode::~AssignNode() { delete m_Right.node; }

void AssignNode::Parse(Parser &parser, size_t start, size_t end, size_t pivot) {
  // One name on the left: `3 = 4` has a number there and is no assignment.
  if (pivot != start + 1 || pivot >= end || parser.GetToken(start).type != Token::Identifier)
    parser.Throw<SyntaxException>(start, end);
  ValueList *values = m_Expression->GetValueList();
  if (!values) parser.Throw<NoValueListException>(start, start);
  const std::string &name = parser.GetToken(start).identifier;
  if (values->IsConstant(name)) parser.Throw<ConstantAssignException>(start, start, name);
  m_Address = parser.BindVariable(start);
  m_Right.Set(parser.ParseRegion(pivot + 1, end));
}

}  // namespace ExprEval
