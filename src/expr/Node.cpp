#include "expr/Node.h"

#include "expr/Exception.h"
#include "expr/Expression.h"
#include "expr/Parser.h"
#include "expr/ValueList.h"

namespace ExprEval {
namespace {

// Stands between a parent and its child when every visit must count against
// the abort countdown: the parent's call reaches the child only through here.
class VisitNode final : public Node {
 public:
  VisitNode(Expression *expression, Node *child) : Node(expression), m_Child(child) {}
  ~VisitNode() override { delete m_Child; }
  double Evaluate() override {
    m_Expression->TestAbort();
    return m_Child->Evaluate();
  }
  void Parse(Parser &, size_t, size_t, size_t) override {}

 private:
  Node *m_Child;
};

}  // namespace

void Operand::Set(Node *child) {
  node = child;
  leaf = nullptr;
  if (!child) return;
  Expression *expression = child->GetExpression();
  if (!expression->CountsVisits()) {
    leaf = child->GetLeafAddress();
    return;
  }
  NodePtr owned(child);
  node = new (expression) VisitNode(expression, child);
  owned.release();
}

Node::Node(Expression *expression) : m_Expression(expression) {
  if (!expression) throw NullPointerException("Node::Node");
}

Node::~Node() = default;

void *Node::operator new(size_t size, Expression *expression) {
  if (!expression) throw NullPointerException("Node::Node");
  return expression->AllocateNodeMemory(size, alignof(std::max_align_t));
}

void ValueNode::Parse(Parser &parser, size_t start, size_t end, size_t) {
  // Only a number token has a value; a stray `&` or `,` is no operand.
  if (start != end || parser.GetToken(start).type != Token::Number)
    parser.Throw<SyntaxException>(start, end);
  m_Value = parser.GetToken(start).value;
}

void VariableNode::Parse(Parser &parser, size_t start, size_t end, size_t) {
  if (start != end || parser.GetToken(start).type != Token::Identifier) parser.Throw<SyntaxException>(start, end);
  m_Address = parser.BindVariable(start);
}

}  // namespace ExprEval
