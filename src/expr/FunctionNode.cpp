#include "expr/FunctionNode.h"

#include "expr/Expression.h"
#include "expr/FunctionFactory.h"
#include "expr/Parser.h"
#include "expr/ValueList.h"

#include <vector>

namespace ExprEval {
namespace {
using ValueArgs = std::vector<NodePtr>;
using RefArgs = std::vector<double *>;

void ParseArgument(Parser &parser, size_t first, size_t last, ValueArgs &values, RefArgs &refs) {
  if (parser.GetToken(first).type != Token::Reference) {
    values.emplace_back(parser.ParseRegion(first, last));
    return;
  }
  if (last != first + 1 || parser.GetToken(last).type != Token::Identifier) parser.Throw<SyntaxException>(first, last);
  ValueList *list = parser.GetExpression()->GetValueList();
  if (!list) parser.Throw<NoValueListException>(first, last);
  const std::string &name = parser.GetToken(last).identifier;
  if (list->IsConstant(name)) parser.Throw<ConstantReferenceException>(last, last, name);
  refs.push_back(parser.BindVariable(last));
}
}  // namespace

FunctionNode::~FunctionNode() {
  for (unsigned i = 0; i < m_ArgCount; ++i) delete m_Args[i].node;
}

void FunctionNode::SetArgumentCount(unsigned minValues, unsigned maxValues, unsigned minRefs, unsigned maxRefs) {
  m_MinValues = minValues;
  m_MaxValues = maxValues;
  m_MinRefs = minRefs;
  m_MaxRefs = maxRefs;
}

std::string FunctionNode::GetName() const { return m_Factory ? m_Factory->GetName() : std::string(); }

bool FunctionNode::IsFoldable() const {
  if (!IsPure() || m_RefCount != 0) return false;
  for (unsigned i = 0; i < m_ArgCount; ++i)
    if (!m_Args[i].node->IsConstant()) return false;
  return true;
}

void FunctionNode::Parse(Parser &parser, size_t start, size_t end, size_t) {
  if (end <= start) parser.Throw<SyntaxException>(start, end);
  ValueArgs values;
  RefArgs refs;
  if (end > start + 1) {
    long depth = 0;
    size_t first = start + 1;
    for (size_t i = start + 1; i <= end; ++i) {
      int type = parser.GetToken(i).type;
      bool final = i == end;
      if (type == Token::OpenParen) {
        ++depth;
      } else if (type == Token::CloseParen && !final) {
        if (--depth < 0) parser.Throw<UnmatchedParenthesisException>(i, i);
      } else if (depth == 0 && (final || type == Token::Comma)) {
        if (i == first) parser.Throw<SyntaxException>(i, i);
        ParseArgument(parser, first, i - 1, values, refs);
        first = i + 1;
      }
    }
    if (depth != 0) parser.Throw<UnmatchedParenthesisException>(end, end);
  }

  CheckCounts(parser, start, end, values.size(), refs.size());
  Store(values, refs);
}

void FunctionNode::CheckCounts(Parser &parser, size_t start, size_t end, size_t values, size_t refs) const {
  auto tooFew = [](size_t count, unsigned limit) { return limit != kNoLimit && count < limit; };
  auto tooMany = [](size_t count, unsigned limit) { return limit != kNoLimit && count > limit; };
  if (tooFew(values, m_MinValues) || tooMany(values, m_MaxValues) || tooFew(refs, m_MinRefs) ||
      tooMany(refs, m_MaxRefs))
    parser.Throw<InvalidArgumentCountException>(start, end, GetName());
}

void FunctionNode::Store(std::vector<NodePtr> &values, const std::vector<double *> &refs) {
  if (!values.empty()) {
    void *memory = m_Expression->AllocateNodeMemory(sizeof(Operand) * values.size(), alignof(Operand));
    m_Args = new (memory) Operand[values.size()];
    for (NodePtr &value : values) m_Args[m_ArgCount++].Set(value.release());
  }
  if (!refs.empty()) {
    void *memory = m_Expression->AllocateNodeMemory(sizeof(double *) * refs.size(), alignof(double *));
    m_Refs = static_cast<double **>(memory);
    for (double *ref : refs) m_Refs[m_RefCount++] = ref;
  }
}

}  // namespace ExprEval
