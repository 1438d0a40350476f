// Calls: user functions by overload ranking, then the intrinsics.
#include "fx/FxChecker.h"
#include "fx/FxIntrinsics.h"

#include <climits>

namespace {
CFxType FloatShape(int n) { return n == 1 ? CFxType::Scalar(EFxBase::Float) : CFxType::Vector(EFxBase::Float, n); }

bool SameParams(const FxFunction &a, const FxFunction &b) {
  if (a.params.size() != b.params.size()) return false;
  for (size_t i = 0; i < a.params.size(); ++i)
    if (a.params[i]->type != b.params[i]->type) return false;
  return true;
}

// The cost of passing `arg` to `param`; out and inout need the same type up
// to float precision, since GLSL copies them back without conversion.
int ArgumentCost(const FxExpr &arg, const FxVar &param) {
  int cost = ConversionCost(arg.type, param.type);
  if (param.dir == EFxDir::In || cost < 0) return cost;
  bool samePrecision = arg.type.WithBase(EFxBase::Float) == param.type.WithBase(EFxBase::Float) &&
                       arg.type.IsFloatLike() && param.type.IsFloatLike();
  return cost == 0 || samePrecision ? cost : -1;
}

std::string ArgTypes(const FxExpr &e) {
  std::string s;
  for (const auto &a : e.args) s += (s.empty() ? "" : ", ") + TypeName(a->type);
  return s;
}
}  // namespace

void CFxChecker::Call(FxExpr &e) {
  for (auto &a : e.args) Expr(a);
  if (CallUser(e)) return;
  if (e.method) Fail(e.at, "no method " + e.text + " in " + TypeName(e.args[0]->type));
  int index = FindIntrinsic(e.text.c_str());
  if (index < 0) Fail(e.at, "undefined function '" + e.text + "'");
  Intrinsic(e, index);
}

bool CFxChecker::CallUser(FxExpr &e) {
  FxFunction *best = nullptr;
  int bestCost = INT_MAX;
  bool named = false, ambiguous = false;
  const FxStructDef *object = e.method ? e.args[0]->type.structDef : nullptr;
  if (e.method && (e.args[0]->type.base != EFxBase::Struct || e.args[0]->type.arraySize > 0))
    Fail(e.at, "method " + e.text + " called on " + TypeName(e.args[0]->type));
  for (auto &f : m_Unit.functions) {
    if (f->name != e.text || f->owner != object) continue;
    named = true;
    if (f->params.size() != e.args.size()) continue;
    int cost = 0;
    for (size_t i = 0; i < e.args.size() && cost >= 0; ++i) {
      int c = ArgumentCost(*e.args[i], *f->params[i]);
      cost = c < 0 ? -1 : cost + c;
    }
    if (cost < 0) continue;
    if (best && cost == bestCost && SameParams(*best, *f)) {
      if (f->body) best = f.get();  // the definition after its prototype
    } else if (cost < bestCost) {
      best = f.get();
      bestCost = cost;
      ambiguous = false;
    } else if (cost == bestCost) {
      ambiguous = true;
    }
  }
  if (!best) {
    if (named && FindIntrinsic(e.text.c_str()) < 0)
      Fail(e.at, "no overload of " + e.text + " takes (" + ArgTypes(e) + ")");
    return false;
  }
  if (ambiguous) Fail(e.at, "ambiguous call of " + e.text + " with (" + ArgTypes(e) + ")");
  for (size_t i = 0; i < e.args.size(); ++i) {
    if (best->params[i]->dir == EFxDir::In) Convert(e.args[i], best->params[i]->type);
    else RequireLValue(*e.args[i]);
  }
  if (!CheckFunction(*best)) throw Error{};  // the callee reported why
  e.func = best;
  e.type = best->ret;
  return true;
}

CFxType CFxChecker::CommonFloat(FxExpr &e, size_t first, size_t count) {
  CFxType common = e.args[first]->type;
  for (size_t i = first; i < first + count; ++i) {
    const CFxType &t = e.args[i]->type;
    if (!t.IsNumeric() || t.IsMatrix() || !CommonType(common, t, common))
      Fail(e.at, e.text + " cannot take (" + ArgTypes(e) + ")");
  }
  common = common.WithBase(EFxBase::Float);
  ConvertAll(e, first, common);
  return common;
}

void CFxChecker::ConvertAll(FxExpr &e, size_t first, const CFxType &to) {
  for (size_t i = first; i < e.args.size(); ++i) Convert(e.args[i], to);
}

void CFxChecker::Intrinsic(FxExpr &e, int index) {
  const FxIntrinsic &in = GetIntrinsic(index);
  e.intrinsic = index;
  static const int kArity[] = {1, 2, 3, 2, 1, 2, 2, 1, 2, 3, 3, 1, 1, 1, 3, 3, 1, 2, 2};
  size_t arity = static_cast<size_t>(kArity[static_cast<int>(in.rule)]);
  if (e.args.size() != arity)
    Fail(e.at, e.text + " takes " + std::to_string(arity) + " arguments, not " + std::to_string(e.args.size()));
  const CFxType floatScalar = CFxType::Scalar(EFxBase::Float);
  switch (in.rule) {
    case EFxRule::Map1:
    case EFxRule::Map2:
    case EFxRule::Map3:
    case EFxRule::Normalize:
    case EFxRule::Reflect:
    case EFxRule::FaceForward:
      e.type = CommonFloat(e, 0, arity);
      break;
    case EFxRule::Dot:
    case EFxRule::Length:
    case EFxRule::Distance:
      CommonFloat(e, 0, arity);
      e.type = floatScalar;
      break;
    case EFxRule::Cross:
      ConvertAll(e, 0, CFxType::Vector(EFxBase::Float, 3));
      e.type = CFxType::Vector(EFxBase::Float, 3);
      break;
    case EFxRule::Refract:
      e.type = CommonFloat(e, 0, 2);
      Convert(e.args[2], floatScalar);
      break;
    case EFxRule::Transpose:
    case EFxRule::Determinant: {
      const CFxType &m = e.args[0]->type;
      if (!m.IsMatrix() || (in.rule == EFxRule::Determinant && m.rows != m.cols))
        Fail(e.at, e.text + " cannot take " + TypeName(m));
      Convert(e.args[0], m.WithBase(EFxBase::Float));
      e.type = in.rule == EFxRule::Determinant ? floatScalar : CFxType::Matrix(EFxBase::Float, m.cols, m.rows);
      break;
    }
    case EFxRule::AnyAll:
      if (!e.args[0]->type.IsNumeric() || e.args[0]->type.IsMatrix()) Fail(e.at, e.text + " cannot take " + TypeName(e.args[0]->type));
      Convert(e.args[0], e.args[0]->type.WithBase(EFxBase::Bool));
      e.type = CFxType::Scalar(EFxBase::Bool);
      break;
    case EFxRule::Lit:
      ConvertAll(e, 0, floatScalar);
      e.type = CFxType::Vector(EFxBase::Float, 4);
      break;
    case EFxRule::SinCos: {
      CFxType t = CommonFloat(e, 0, 1);
      for (size_t i = 1; i < 3; ++i) {
        RequireLValue(*e.args[i]);
        if (e.args[i]->type.WithBase(EFxBase::Float) != t || !e.args[i]->type.IsFloatLike())
          Fail(e.args[i]->at, "sincos needs outputs of type " + TypeName(t));
      }
      e.type = CFxType::Scalar(EFxBase::Void);
      break;
    }
    case EFxRule::Clip:
      CommonFloat(e, 0, 1);
      e.type = CFxType::Scalar(EFxBase::Void);
      break;
    case EFxRule::Mul:
      Mul(e);
      break;
    case EFxRule::Tex:
      Texture(e, index);
      break;
  }
}

// mul(M, v), mul(v, M), mul(A, B) and mul(s, x): vectors longer than the
// matrix needs are truncated, as Cg does.
void CFxChecker::Mul(FxExpr &e) {
  CFxType a = e.args[0]->type, b = e.args[1]->type;
  if (!a.IsNumeric() || !b.IsNumeric()) Fail(e.at, "mul cannot take (" + ArgTypes(e) + ")");
  a = a.WithBase(EFxBase::Float);
  b = b.WithBase(EFxBase::Float);
  if (a.IsScalar() || b.IsScalar()) {
    e.type = a.IsScalar() ? b : a;
  } else if (a.IsMatrix() && b.IsVector()) {
    if (b.cols < a.cols) Fail(e.at, "mul(" + TypeName(a) + ", " + TypeName(b) + "): the vector is too short");
    b = FloatShape(a.cols);
    e.type = FloatShape(a.rows);
  } else if (a.IsVector() && b.IsMatrix()) {
    if (a.cols < b.rows) Fail(e.at, "mul(" + TypeName(a) + ", " + TypeName(b) + "): the vector is too short");
    a = FloatShape(b.rows);
    e.type = FloatShape(b.cols);
  } else if (a.IsMatrix() && b.IsMatrix()) {
    if (a.cols != b.rows) Fail(e.at, "mul(" + TypeName(a) + ", " + TypeName(b) + "): sizes do not match");
    e.type = CFxType::Matrix(EFxBase::Float, a.rows, b.cols);
  } else {
    Fail(e.at, "mul cannot take (" + ArgTypes(e) + ")");
  }
  Convert(e.args[0], a);
  Convert(e.args[1], b);
}

void CFxChecker::Texture(FxExpr &e, int index) {
  const FxIntrinsic &in = GetIntrinsic(index);
  const CFxType &s = e.args[0]->type;
  if (!s.IsSampler() || s.arraySize > 0 || (s.base != in.sampler && !(in.sampler == EFxBase::Sampler2D && s.base == EFxBase::SamplerRect)))
    Fail(e.at, e.text + " needs a " + TypeName(CFxType::Scalar(in.sampler)) + ", not " + TypeName(s));
  const CFxType &c = e.args[1]->type;
  if (!c.IsNumeric() || c.IsMatrix()) Fail(e.at, e.text + " needs float coordinates, not " + TypeName(c));
  int size = in.coord;
  if (in.sampler == EFxBase::Sampler2D && in.form == EFxTexForm::Proj && c.cols == 3) size = 3;
  Convert(e.args[1], FloatShape(size));
  e.type = CFxType::Vector(EFxBase::Float, 4);
}
