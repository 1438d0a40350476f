#include "fx/FxChecker.h"
#include "fx/FxConstEval.h"

CFxChecker::CFxChecker(FxTranslationUnit &unit, CFxDiagnostics &diag) : m_Unit(unit), m_Diag(diag) {}

void CFxChecker::Fail(FxLocation at, const std::string &message) {
  m_Diag.Error(at, message);
  throw Error{};
}

bool CFxChecker::CheckGlobals() {
  bool ok = true;
  for (auto &v : m_Unit.globals) {
    if (!v->init || v->type.base == EFxBase::Program) continue;  // programs are checked by the passes that use them
    if (v->type.IsSampler() || v->type.base == EFxBase::Texture) {
      m_Diag.Error(v->at, "'" + v->name + "' of type " + TypeName(v->type) + " cannot have an initialiser");
      ok = false;
    } else {
      ok = CheckConstant(v->init, v->type) && ok;
    }
  }
  return ok;
}

bool CFxChecker::CheckConstant(FxExprPtr &e, const CFxType &type) {
  FxFunction *saved = m_Function;
  auto scopes = std::move(m_Scopes);
  m_Function = nullptr;
  m_Scopes.clear();
  bool ok = true;
  try {
    Initialise(e, type);
  } catch (const Error &) {
    ok = false;
  }
  m_Function = saved;
  m_Scopes = std::move(scopes);
  return ok;
}

bool CFxChecker::CheckFunction(FxFunction &f) {
  if (f.check == EFxCheck::Ok) return true;
  if (f.check == EFxCheck::Failed) return false;
  if (f.check == EFxCheck::Checking) {
    m_Diag.Error(f.at, "recursive call of " + f.name + " is not supported");
    return false;
  }
  if (!f.body) {
    m_Diag.Error(f.at, "function " + f.name + " is declared but never defined");
    f.check = EFxCheck::Failed;
    return false;
  }
  f.check = EFxCheck::Checking;
  FxFunction *saved = m_Function;
  auto scopes = std::move(m_Scopes);
  auto breakable = std::move(m_Breakable);
  m_Breakable.clear();
  m_Function = &f;
  m_Scopes.assign(1, {});
  bool ok = true;
  try {
    for (auto &p : f.params) {
      if (p->init) Initialise(p->init, p->type);
      Declare(*p);
    }
    Statement(*f.body);
  } catch (const Error &) {
    ok = false;
  }
  m_Function = saved;
  m_Scopes = std::move(scopes);
  m_Breakable = std::move(breakable);
  f.check = ok ? EFxCheck::Ok : EFxCheck::Failed;
  return ok;
}

FxFunction *CFxChecker::CheckCompile(FxExpr &compile) {
  FxExpr &call = *compile.args[0];
  FxFunction *entry = nullptr;
  for (auto &f : m_Unit.functions) {
    if (f->name != call.text || !f->body || f->owner) continue;
    size_t uniforms = 0;
    for (auto &p : f->params) uniforms += p->isUniform ? 1 : 0;
    if (uniforms == call.args.size()) {
      entry = f.get();
      break;
    }
  }
  if (!entry) {
    m_Diag.Error(call.at, "no entry function " + call.text + " taking " + std::to_string(call.args.size()) +
                              " uniform arguments");
    return nullptr;
  }
  size_t a = 0;
  for (auto &p : entry->params)
    if (p->isUniform && !CheckConstant(call.args[a++], p->type)) return nullptr;
  call.func = entry;
  return CheckFunction(*entry) ? entry : nullptr;
}

void CFxChecker::Declare(FxVar &v) {
  for (const FxVar *other : m_Scopes.back())
    if (other->name == v.name) Fail(v.at, "'" + v.name + "' is declared twice");
  m_Scopes.back().push_back(&v);
}

const FxVar *CFxChecker::Lookup(const std::string &name) const {
  for (auto s = m_Scopes.rbegin(); s != m_Scopes.rend(); ++s)
    for (auto v = s->rbegin(); v != s->rend(); ++v)
      if ((*v)->name == name) return *v;
  for (const auto &g : m_Unit.globals)
    if (g->name == name) return g.get();
  return nullptr;
}

void CFxChecker::Statement(FxStmt &s) {
  switch (s.kind) {
    case EFxStmt::Block:
      m_Scopes.emplace_back();
      for (auto &c : s.children) Statement(*c);
      m_Scopes.pop_back();
      break;
    case EFxStmt::Decl:
      for (auto &v : s.vars) {
        if (v->type.base == EFxBase::Void || v->type.base == EFxBase::String || v->type.base == EFxBase::Texture)
          Fail(v->at, "a local variable cannot be of type " + TypeName(v->type));
        RequireConcrete(v->type, v->at, v->name);
        if (v->init) Initialise(v->init, v->type);
        else if (v->isConst) Fail(v->at, "const '" + v->name + "' needs a value");
        Declare(*v);
      }
      break;
    case EFxStmt::Expr:
      Expr(s.expr);
      break;
    case EFxStmt::If:
    case EFxStmt::While:
    case EFxStmt::Do:
      Expr(s.expr);
      Convert(s.expr, CFxType::Scalar(EFxBase::Bool));
      if (s.kind != EFxStmt::If) m_Breakable.push_back(false);
      for (auto &c : s.children)
        if (c) Statement(*c);
      if (s.kind != EFxStmt::If) m_Breakable.pop_back();
      break;
    case EFxStmt::Switch:
      Switch(s);
      break;
    case EFxStmt::Case:
      for (auto &c : s.children) Statement(*c);
      break;
    case EFxStmt::For:
      m_Breakable.push_back(false);
      m_Scopes.emplace_back();
      if (s.children[0]) Statement(*s.children[0]);
      if (s.expr) {
        Expr(s.expr);
        Convert(s.expr, CFxType::Scalar(EFxBase::Bool));
      }
      if (s.step) Expr(s.step);
      Statement(*s.children[1]);
      m_Scopes.pop_back();
      m_Breakable.pop_back();
      break;
    case EFxStmt::Return:
      if (!s.expr) {
        if (m_Function->ret.base != EFxBase::Void) Fail(s.at, "return without a value in " + m_Function->name);
        break;
      }
      if (m_Function->ret.base == EFxBase::Void) Fail(s.at, "return with a value in void function " + m_Function->name);
      Initialise(s.expr, m_Function->ret);
      break;
    case EFxStmt::Continue:
      // A switch becomes a one-pass loop in GLSL: continue would end it.
      if (!m_Breakable.empty() && m_Breakable.back()) Fail(s.at, "continue inside a switch is not supported");
      break;
    case EFxStmt::Break:
    case EFxStmt::Discard:
    case EFxStmt::Empty:
      break;
  }
}

// An int selector, constant labels, and no case that runs on into the next
// (GLSL 1.20 has no switch: the emitter writes an if chain).
void CFxChecker::Switch(FxStmt &s) {
  Expr(s.expr);
  if (!s.expr->type.IsScalar()) Fail(s.at, "switch needs a whole number, not " + TypeName(s.expr->type));
  Convert(s.expr, CFxType::Scalar(EFxBase::Int));
  m_Breakable.push_back(true);
  m_Scopes.emplace_back();
  for (size_t i = 0; i < s.children.size(); ++i) {
    FxStmt &group = *s.children[i];
    for (auto &label : group.labels) {
      std::vector<float> value;
      Expr(label);
      Convert(label, CFxType::Scalar(EFxBase::Int));
      if (!EvalConstant(*label, value)) Fail(label->at, "a case label must be a constant");
    }
    Statement(group);
    EFxStmt last = group.children.empty() ? EFxStmt::Empty : group.children.back()->kind;
    bool ends = last == EFxStmt::Break || last == EFxStmt::Return || last == EFxStmt::Discard;
    if (!ends && i + 1 < s.children.size()) Fail(group.at, "a case that runs on into the next is not supported: end it with break");
  }
  m_Scopes.pop_back();
  m_Breakable.pop_back();
}

// A value of an interface type would need the implementation chosen at run
// time; only structs that implement one can be used.
void CFxChecker::RequireConcrete(const CFxType &type, FxLocation at, const std::string &name) {
  if (type.base == EFxBase::Struct && type.structDef && type.structDef->isInterface)
    Fail(at, "'" + name + "' is of interface type " + type.structDef->name +
                 ": interface values cannot be translated to GLSL 1.20, use a struct that implements it");
}
