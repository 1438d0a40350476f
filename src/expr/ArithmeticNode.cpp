#include "expr/ArithmeticNode.h"

#include "expr/Expression.h"
#include "expr/MathError.h"
#include "expr/OperatorNodes.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ExprEval {
namespace {

// acc is the value computed last; a Load pushes it and computes the next.
// Const and Leaf forms take the right operand from the op, R forms take the
// left operand from it (the other side already in acc), Pop forms take the
// left operand from the stack.
enum Code : uint8_t {
  LoadConst, LoadLeaf, LoadNode,
  AddConst, AddLeaf, RAddConst, RAddLeaf, AddPop,
  SubConst, SubLeaf, RSubConst, RSubLeaf, SubPop,
  MulConst, MulLeaf, RMulConst, RMulLeaf, MulPop,
  PowConst, PowLeaf, RPowConst, RPowLeaf, PowPop,
  DivConst,   // acc / value, value known not to be 0
  DivLeaf,    // acc / *leaf, after CheckLeaf
  RDivConst,  // value / acc, failing first when acc is 0
  RDivLeaf,   // *leaf / acc, failing first when acc is 0
  DivSwap,    // acc / popped divisor, after CheckZero
  CheckZero, CheckLeaf, Negate,
};

inline double Pow(double a, double b) {
  ClearMathError();
  double result = std::pow(a, b);
  CheckMathError(result, "^");
  return result;
}

[[noreturn]] void DivideByZero() { throw DivideByZeroException(); }

// The five forms of `^`, kept out of the loop.
double Power(const ArithmeticNode::Op *op, double acc, double *&sp) {
  switch (op->code) {
    case PowConst: return Pow(acc, op->value);
    case PowLeaf: return Pow(acc, *op->leaf);
    case RPowConst: return Pow(op->value, acc);
    case RPowLeaf: return Pow(*op->leaf, acc);
    default: --sp; return Pow(*sp, acc);
  }
}

}  // namespace

ArithmeticNode::~ArithmeticNode() {
  for (unsigned i = 0; i < m_Size; ++i)
    if (m_Code[i].code == LoadNode) delete m_Code[i].node;
}

double ArithmeticNode::Evaluate() { return m_LibraryCalls ? Run<true>() : Run<false>(); }

template <bool kCalls>
double ArithmeticNode::Run() const {
  double stack[kMaxStack];
  double *sp = stack;
  double acc = 0.0;
  const Op *op = m_Code;
  const Op *end = m_Code + m_Size;
  for (; op != end; ++op) {
    switch (op->code) {
      case LoadConst: *sp++ = acc; acc = op->value; break;
      case LoadLeaf: *sp++ = acc; acc = *op->leaf; break;
      case LoadNode:
        if constexpr (!kCalls) __builtin_unreachable();
        *sp++ = acc;
        acc = op->node->Evaluate();
        break;
      case AddConst: acc = acc + op->value; break;
      case AddLeaf: acc = acc + *op->leaf; break;
      case RAddConst: acc = op->value + acc; break;
      case RAddLeaf: acc = *op->leaf + acc; break;
      case AddPop: acc = *--sp + acc; break;
      case SubConst: acc = acc - op->value; break;
      case SubLeaf: acc = acc - *op->leaf; break;
      case RSubConst: acc = op->value - acc; break;
      case RSubLeaf: acc = *op->leaf - acc; break;
      case SubPop: acc = *--sp - acc; break;
      case MulConst: acc = acc * op->value; break;
      case MulLeaf: acc = acc * *op->leaf; break;
      case RMulConst: acc = op->value * acc; break;
      case RMulLeaf: acc = *op->leaf * acc; break;
      case MulPop: acc = *--sp * acc; break;
      case PowConst:
      case PowLeaf:
      case RPowConst:
      case RPowLeaf:
      case PowPop:
        if constexpr (!kCalls) __builtin_unreachable();
        acc = Power(op, acc, sp);
        break;
      case DivConst: acc = acc / op->value; break;
      case DivLeaf: acc = acc / *op->leaf; break;
      case RDivConst:
        if (acc == 0.0) DivideByZero();
        acc = op->value / acc;
        break;
      case RDivLeaf:
        if (acc == 0.0) DivideByZero();
        acc = *op->leaf / acc;
        break;
      case DivSwap: acc = acc / *--sp; break;
      case CheckZero:
        if (acc == 0.0) DivideByZero();
        break;
      case CheckLeaf:
        if (*op->leaf == 0.0) DivideByZero();
        break;
      case Negate: acc = -acc; break;
      default: __builtin_unreachable();
    }
  }
  return acc;
}

// Works on the operands of one operator node: each is a number, a variable,
// a block whose program is spliced in, or another node that is called.
class ArithmeticNode::Builder {
 public:
  enum Kind { Number, Variable, Block, Other };

  static Kind KindOf(const Operand &operand) {
    if (operand.node->IsConstant()) return Number;
    if (operand.leaf) return Variable;
    if (dynamic_cast<ArithmeticNode *>(operand.node)) return Block;
    return Other;
  }
  static unsigned DepthOf(const Operand &operand) {
    auto *block = dynamic_cast<ArithmeticNode *>(operand.node);
    return block ? block->m_Depth : 1;
  }
  static bool CallsOf(const Operand &operand) {
    auto *block = dynamic_cast<ArithmeticNode *>(operand.node);
    return block ? block->m_Calls : KindOf(operand) == Other;
  }

  // Appends the program that computes operand and takes the operand over.
  void Append(const Operand &operand) {
    switch (KindOf(operand)) {
      case Number: Emit(LoadConst, static_cast<ValueNode *>(operand.node)->GetValue()); delete operand.node; break;
      case Variable: Emit(LoadLeaf, operand.leaf); delete operand.node; break;
      case Block: {
        auto *block = static_cast<ArithmeticNode *>(operand.node);
        m_Code.insert(m_Code.end(), block->m_Code, block->m_Code + block->m_Size);
        block->m_Size = 0;  // its nodes now belong to the new program
        delete block;
        break;
      }
      case Other: {
        Op op{};
        op.code = LoadNode;
        op.node = operand.node;
        m_Code.push_back(op);
        break;
      }
    }
  }
  // Applies code to acc with operand, a number or a variable, which is then
  // no longer needed.
  void Apply(uint8_t constCode, uint8_t leafCode, const Operand &operand) {
    if (KindOf(operand) == Number)
      Emit(constCode, static_cast<ValueNode *>(operand.node)->GetValue());
    else
      Emit(leafCode, operand.leaf);
    delete operand.node;
  }
  void Emit(uint8_t code) {
    Op op{};
    op.code = code;
    m_Code.push_back(op);
  }
  void Emit(uint8_t code, double value) {
    Op op{};
    op.code = code;
    op.value = value;
    m_Code.push_back(op);
  }
  void Emit(uint8_t code, const double *leaf) {
    Op op{};
    op.code = code;
    op.leaf = leaf;
    m_Code.push_back(op);
  }

  NodePtr Finish(Expression *expression, unsigned depth, bool calls) {
    auto *block = new (expression) ArithmeticNode(expression);
    NodePtr result(block);
    void *memory = expression->AllocateNodeMemory(sizeof(Op) * m_Code.size(), alignof(Op));
    block->m_Code = static_cast<Op *>(memory);
    std::copy(m_Code.begin(), m_Code.end(), block->m_Code);
    block->m_Size = static_cast<unsigned>(m_Code.size());
    block->m_Depth = depth;
    block->m_Calls = calls;
    for (const Op &op : m_Code)
      if (op.code == LoadNode || (op.code >= PowConst && op.code <= PowPop)) block->m_LibraryCalls = true;
    return result;
  }

 private:
  std::vector<Op> m_Code;
};

NodePtr ArithmeticNode::Combine(NodePtr node) {
  using B = Builder;
  Expression *expression = node->GetExpression();
  if (auto *negate = dynamic_cast<NegateNode *>(node.get())) {
    const Operand &operand = negate->GetOperand();
    unsigned depth = B::DepthOf(operand);
    bool calls = B::CallsOf(operand);
    Operand taken = negate->ReleaseOperand();
    B builder;
    builder.Append(taken);
    builder.Emit(Negate);
    return builder.Finish(expression, depth, calls);
  }

  auto *binary = dynamic_cast<BinaryNode *>(node.get());
  if (!binary) return node;
  const Operand &left = binary->GetLeft();
  const Operand &right = binary->GetRight();
  B::Kind leftKind = B::KindOf(left), rightKind = B::KindOf(right);
  bool leftLeaf = leftKind == B::Number || leftKind == B::Variable;
  bool rightLeaf = rightKind == B::Number || rightKind == B::Variable;
  bool calls = B::CallsOf(left) || B::CallsOf(right);
  char op = binary->GetOperator();
  // A zero divisor that is a number must fail before the dividend is
  // evaluated; the tree node does exactly that.
  if (op == '/' && rightKind == B::Number && static_cast<ValueNode *>(right.node)->GetValue() == 0.0) return node;

  // The fused forms: the leaf side is read by the op itself. A variable on
  // the left may be read after the right side only if the right side cannot
  // change it, that is, evaluates no node.
  enum Shape { RightLeaf, LeftLeaf, Both } shape = Both;
  if (rightLeaf && (op != '/' || rightKind == B::Number || !B::CallsOf(left)))
    shape = RightLeaf;
  else if (leftLeaf && (leftKind == B::Number || !B::CallsOf(right) || op == '/'))
    shape = LeftLeaf;
  unsigned depth = shape == RightLeaf ? B::DepthOf(left)
                   : shape == LeftLeaf ? B::DepthOf(right)
                                       : std::max(B::DepthOf(left), B::DepthOf(right));
  if (depth > kMaxStack) return node;

  static constexpr uint8_t kRightCodes[][2] = {{AddConst, AddLeaf}, {SubConst, SubLeaf}, {MulConst, MulLeaf},
                                               {PowConst, PowLeaf}, {DivConst, DivLeaf}};
  static constexpr uint8_t kLeftCodes[][2] = {{RAddConst, RAddLeaf}, {RSubConst, RSubLeaf}, {RMulConst, RMulLeaf},
                                              {RPowConst, RPowLeaf}, {RDivConst, RDivLeaf}};
  static constexpr uint8_t kPopCodes[] = {AddPop, SubPop, MulPop, PowPop};
  int index = op == '+' ? 0 : op == '-' ? 1 : op == '*' ? 2 : op == '^' ? 3 : 4;

  Operand l, r;
  binary->ReleaseOperands(l, r);
  B builder;
  switch (shape) {
    case RightLeaf:
      // A variable divisor is tested before the dividend is evaluated, as
      // the tree does; the dividend evaluates no node, so it still holds.
      if (op == '/' && rightKind == B::Variable) builder.Emit(CheckLeaf, r.leaf);
      builder.Append(l);
      builder.Apply(kRightCodes[index][0], kRightCodes[index][1], r);
      break;
    case LeftLeaf:
      builder.Append(r);
      builder.Apply(kLeftCodes[index][0], kLeftCodes[index][1], l);
      break;
    case Both:
      if (op == '/') {
        builder.Append(r);
        builder.Emit(CheckZero);
        builder.Append(l);
        builder.Emit(DivSwap);
      } else {
        builder.Append(l);
        builder.Append(r);
        builder.Emit(kPopCodes[index]);
      }
      break;
  }
  return builder.Finish(expression, depth, calls);
}

}  // namespace ExprEval
