// Typing of expressions: operators, constructors, members, calls.
#include "fx/FxChecker.h"
#include "fx/FxIntrinsics.h"

#include <cstdlib>

namespace {
bool IsBitwise(const std::string &op) {
  return op == "&" || op == "|" || op == "^" || op == "<<" || op == ">>" || op == "~" || op == "&=" || op == "|=" ||
         op == "^=" || op == "<<=" || op == ">>=";
}

bool IsComparison(const std::string &op) {
  return op == "<" || op == ">" || op == "<=" || op == ">=" || op == "==" || op == "!=";
}

void Flatten(FxExprPtr &e, std::vector<FxExprPtr> &out) {
  if (e->kind != EFxExpr::InitList) {
    out.push_back(std::move(e));
    return;
  }
  for (auto &a : e->args) Flatten(a, out);
}
}  // namespace

void CFxChecker::Expr(FxExprPtr &p) {
  FxExpr &e = *p;
  switch (e.kind) {
    case EFxExpr::Literal:
      break;
    case EFxExpr::Name:
      e.var = Lookup(e.text);
      if (!e.var && MemberOfThis(p)) return Expr(p);
      if (!e.var) Fail(e.at, "undefined name '" + e.text + "'");
      e.type = e.var->type;
      RequireConcrete(e.type, e.at, e.text);
      break;
    case EFxExpr::Unary:
      Unary(e);
      break;
    case EFxExpr::Postfix:
      Expr(e.args[0]);
      RequireLValue(*e.args[0]);
      if (!e.args[0]->type.IsNumeric()) Fail(e.at, "operator '" + e.text + "' needs a number");
      e.type = e.args[0]->type;
      break;
    case EFxExpr::Binary:
      Binary(e);
      break;
    case EFxExpr::Assign:
      Assign(e);
      break;
    case EFxExpr::Ternary:
      Ternary(e);
      break;
    case EFxExpr::Call:
      Call(e);
      break;
    case EFxExpr::Construct:
      Construct(e);
      break;
    case EFxExpr::Cast:
      Expr(e.args[0]);
      // `(T)0`: Cg fills every member of a struct with the scalar.
      if (e.typeArg.base == EFxBase::Struct && e.typeArg.arraySize == 0 && e.args[0]->type.IsScalar()) {
        e.type = e.typeArg;
        break;
      }
      if (ConversionCost(e.args[0]->type, e.typeArg) < 0)
        Fail(e.at, "cannot cast " + TypeName(e.args[0]->type) + " to " + TypeName(e.typeArg));
      e.type = e.typeArg;
      break;
    case EFxExpr::Member:
      Member(e);
      break;
    case EFxExpr::Index:
      Index(e);
      break;
    case EFxExpr::InitList:
      Fail(e.at, "an initialiser list is only allowed in a declaration");
    case EFxExpr::Compile:
      Fail(e.at, "'compile' is only allowed in a pass");
  }
}

// Inside a method, a member's name reads `cg_this.member`.
bool CFxChecker::MemberOfThis(FxExprPtr &e) {
  if (!m_Function || !m_Function->owner) return false;
  for (const auto &m : m_Function->owner->members)
    if (m->name == e->text) {
      auto self = std::make_unique<FxExpr>();
      self->kind = EFxExpr::Name;
      self->at = e->at;
      self->text = "cg_this";
      e->kind = EFxExpr::Member;
      e->args.push_back(std::move(self));
      return true;
    }
  return false;
}

void CFxChecker::Convert(FxExprPtr &e, const CFxType &to) {
  if (e->type == to) return;
  if (ConversionCost(e->type, to) < 0)
    Fail(e->at, "cannot convert " + TypeName(e->type) + " to " + TypeName(to));
  auto c = std::make_unique<FxExpr>();
  c->kind = EFxExpr::Cast;
  c->at = e->at;
  c->implicit = true;
  c->typeArg = c->type = to;
  c->args.push_back(std::move(e));
  e = std::move(c);
}

// A declaration's value: an expression, or `{...}` for arrays, structs,
// vectors and matrices (flattened for the last two).
void CFxChecker::Initialise(FxExprPtr &e, const CFxType &to) {
  if (e->kind != EFxExpr::InitList) {
    Expr(e);
    Convert(e, to);
    return;
  }
  FxExpr &list = *e;
  if (to.arraySize > 0 || to.base == EFxBase::Struct) {
    size_t need = to.arraySize > 0 ? static_cast<size_t>(to.arraySize) : to.structDef->members.size();
    if (list.args.size() != need)
      Fail(list.at, "initialiser has " + std::to_string(list.args.size()) + " values, " + TypeName(to) + " needs " +
                        std::to_string(need));
    for (size_t i = 0; i < need; ++i)
      Initialise(list.args[i], to.arraySize > 0 ? to.Element() : to.structDef->members[i]->type);
  } else if (to.IsNumeric()) {
    std::vector<FxExprPtr> leaves;
    for (auto &a : list.args) Flatten(a, leaves);
    int total = 0;
    for (auto &leaf : leaves) {
      Expr(leaf);
      if (!leaf->type.IsNumeric()) Fail(leaf->at, "cannot use " + TypeName(leaf->type) + " in a " + TypeName(to));
      Convert(leaf, leaf->type.WithBase(to.base));
      total += leaf->type.Components();
    }
    if (leaves.size() == 1 && leaves[0]->type.IsScalar()) {
      e = std::move(leaves[0]);
      Convert(e, to);
      return;
    }
    if (total != to.Components())
      Fail(list.at, "initialiser has " + std::to_string(total) + " values, " + TypeName(to) + " needs " +
                        std::to_string(to.Components()));
    list.args = std::move(leaves);
  } else {
    Fail(list.at, "cannot initialise " + TypeName(to) + " from a list");
  }
  list.kind = EFxExpr::Construct;
  list.typeArg = list.type = to;
}

void CFxChecker::Construct(FxExpr &e) {
  const CFxType &to = e.typeArg;
  if (!to.IsNumeric()) Fail(e.at, "cannot construct " + TypeName(to));
  int total = 0;
  for (auto &a : e.args) {
    Expr(a);
    if (!a->type.IsNumeric()) Fail(a->at, "cannot use " + TypeName(a->type) + " in a " + TypeName(to));
    Convert(a, a->type.WithBase(to.base));
    total += a->type.Components();
  }
  // float(v), float2(v4): a single longer vector is truncated, as Cg does.
  if (e.args.size() == 1 && !to.IsMatrix() && e.args[0]->type.IsVector() && e.args[0]->type.cols > to.cols) {
    Convert(e.args[0], to);
    total = to.Components();
  }
  bool broadcast = e.args.size() == 1 && e.args[0]->type.IsScalar();
  bool subMatrix = e.args.size() == 1 && to.IsMatrix() && e.args[0]->type.IsMatrix() &&
                   ConversionCost(e.args[0]->type, to) >= 0;
  if (!broadcast && !subMatrix && total != to.Components())
    Fail(e.at, TypeName(to) + " needs " + std::to_string(to.Components()) + " values, got " + std::to_string(total));
  e.type = to;
}

void CFxChecker::Unary(FxExpr &e) {
  if (IsBitwise(e.text)) Fail(e.at, "operator '" + e.text + "' is not supported");
  Expr(e.args[0]);
  const CFxType t = e.args[0]->type;
  if (!t.IsNumeric()) Fail(e.at, "operator '" + e.text + "' needs a number, not " + TypeName(t));
  if (e.text == "!") {
    Convert(e.args[0], t.WithBase(EFxBase::Bool));
    e.type = t.WithBase(EFxBase::Bool);
    return;
  }
  if (e.text == "++" || e.text == "--") RequireLValue(*e.args[0]);
  if (t.base == EFxBase::Bool) Convert(e.args[0], t.WithBase(EFxBase::Int));
  e.type = e.args[0]->type;
}

void CFxChecker::Binary(FxExpr &e) {
  Expr(e.args[0]);
  Expr(e.args[1]);
  if (e.text == ",") {
    e.type = e.args[1]->type;
    return;
  }
  if (IsBitwise(e.text)) Fail(e.at, "operator '" + e.text + "' is not supported");
  const CFxType &a = e.args[0]->type, &b = e.args[1]->type;
  CFxType common;
  if (!CommonType(a, b, common))
    Fail(e.at, "operator '" + e.text + "' cannot combine " + TypeName(a) + " and " + TypeName(b));
  if (e.text == "&&" || e.text == "||") common = common.WithBase(EFxBase::Bool);
  else if (!IsComparison(e.text) && common.base == EFxBase::Bool) common = common.WithBase(EFxBase::Int);
  Convert(e.args[0], common);
  Convert(e.args[1], common);
  e.type = IsComparison(e.text) ? common.WithBase(EFxBase::Bool) : common;
}

void CFxChecker::Assign(FxExpr &e) {
  if (IsBitwise(e.text)) Fail(e.at, "operator '" + e.text + "' is not supported");
  Expr(e.args[0]);
  RequireLValue(*e.args[0]);
  Expr(e.args[1]);
  const CFxType target = e.args[0]->type;
  if (e.text != "=") {
    CFxType common;
    if (!target.IsNumeric() || !CommonType(target, e.args[1]->type, common))
      Fail(e.at, "operator '" + e.text + "' cannot combine " + TypeName(target) + " and " + TypeName(e.args[1]->type));
    if (e.args[1]->type.IsScalar() && e.text != "%=") {  // GLSL takes v op= s, but our fmod wants one type
      Convert(e.args[1], CFxType::Scalar(target.base));
      e.type = target;
      return;
    }
  }
  Convert(e.args[1], target);
  e.type = target;
}

void CFxChecker::Ternary(FxExpr &e) {
  for (auto &a : e.args) Expr(a);
  CFxType common;
  if (!CommonType(e.args[1]->type, e.args[2]->type, common)) {
    if (e.args[1]->type != e.args[2]->type)
      Fail(e.at, "'?:' cannot combine " + TypeName(e.args[1]->type) + " and " + TypeName(e.args[2]->type));
    common = e.args[1]->type;
  }
  const CFxType &c = e.args[0]->type;
  if (c.IsVector()) {
    if (common.IsScalar()) common = CFxType::Vector(common.base, c.cols);
    if (!common.IsVector() || common.cols != c.cols) Fail(e.at, "'?:' with a " + TypeName(c) + " condition needs vectors of that size");
    Convert(e.args[0], CFxType::Vector(EFxBase::Bool, c.cols));
  } else {
    Convert(e.args[0], CFxType::Scalar(EFxBase::Bool));
  }
  Convert(e.args[1], common);
  Convert(e.args[2], common);
  e.type = common;
}

void CFxChecker::Member(FxExpr &e) {
  Expr(e.args[0]);
  const CFxType &t = e.args[0]->type;
  std::vector<int> index;
  if (t.base == EFxBase::Struct && t.arraySize == 0) {
    for (const auto &m : t.structDef->members)
      if (m->name == e.text) {
        e.var = m.get();
        e.type = m->type;
        e.member = EFxMember::Field;
        return;
      }
  } else if (t.IsMatrix() && ParseMatrixSwizzle(e.text, t.rows, t.cols, index)) {
    e.member = EFxMember::MatrixElements;
    e.type = CFxType::Vector(t.base, static_cast<int>(index.size()));
    if (index.size() == 1) e.type = CFxType::Scalar(t.base);
    return;
  } else if ((t.IsScalar() || t.IsVector()) && ParseSwizzle(e.text, t.cols, index)) {
    e.member = EFxMember::Swizzle;
    e.type = index.size() == 1 ? CFxType::Scalar(t.base) : CFxType::Vector(t.base, static_cast<int>(index.size()));
    return;
  }
  Fail(e.at, "no member '" + e.text + "' in " + TypeName(t));
}

void CFxChecker::Index(FxExpr &e) {
  Expr(e.args[0]);
  Expr(e.args[1]);
  if (!e.args[1]->type.IsScalar()) Fail(e.at, "an index must be a number");
  Convert(e.args[1], CFxType::Scalar(EFxBase::Int));
  const CFxType &t = e.args[0]->type;
  if (t.arraySize > 0) e.type = t.Element();
  else if (t.IsMatrix()) e.type = CFxType::Vector(t.base, t.cols);
  else if (t.IsVector()) e.type = CFxType::Scalar(t.base);
  else Fail(e.at, "cannot index " + TypeName(t));
  if (e.type.IsVector() && e.type.cols == 1) e.type = CFxType::Scalar(t.base);
  // A literal index past the end is a mistake GLSL compilers report late or
  // never: say it here, with the line.
  const FxExpr *index = e.args[1].get();
  while (index->kind == EFxExpr::Cast && index->implicit) index = index->args[0].get();
  bool negative = index->kind == EFxExpr::Unary && index->text == "-";
  if (negative) index = index->args[0].get();
  if (index->kind != EFxExpr::Literal || !index->type.IsScalar()) return;
  long i = strtol(index->text.c_str(), nullptr, 0) * (negative ? -1 : 1);
  long size = t.arraySize > 0 ? t.arraySize : t.IsMatrix() ? t.rows : t.cols;
  if (i < 0 || i >= size)
    Fail(e.at, "index " + std::to_string(i) + " is out of range for " + TypeName(t) + " (0 to " + std::to_string(size - 1) + ")");
}

void CFxChecker::RequireLValue(const FxExpr &e) {
  if (e.kind == EFxExpr::Name) {
    if (e.var->isConst) Fail(e.at, "cannot assign to const '" + e.var->name + "'");
    if (e.var->isGlobal && !e.var->isStatic) {
      if (!e.var->type.Leaf().IsNumeric() && e.var->type.Leaf().base != EFxBase::Struct)
        Fail(e.at, "cannot assign to parameter '" + e.var->name + "' of type " + TypeName(e.var->type));
      e.var->writtenByCode = true;  // the shader writes a copy
    }
    return;
  }
  if (e.kind == EFxExpr::Member) {
    std::vector<int> index;
    if (e.member == EFxMember::Swizzle && ParseSwizzle(e.text, 4, index))
      for (size_t i = 0; i < index.size(); ++i)
        for (size_t j = i + 1; j < index.size(); ++j)
          if (index[i] == index[j]) Fail(e.at, "cannot assign to a swizzle that repeats a component");
    return RequireLValue(*e.args[0]);
  }
  if (e.kind == EFxExpr::Index) return RequireLValue(*e.args[0]);
  Fail(e.at, "expression is not assignable");
}
