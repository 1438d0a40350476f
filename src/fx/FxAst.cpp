#include "fx/FxAst.h"

#include <utility>

FxExpr::~FxExpr() {
  std::vector<FxExprPtr> pending = std::move(args);
  while (!pending.empty()) {
    FxExprPtr e = std::move(pending.back());
    pending.pop_back();
    if (!e) continue;  // a slot the parser left empty
    for (FxExprPtr &a : e->args) pending.push_back(std::move(a));
    e->args.clear();
  }
}

namespace {
// One walk over statements and expressions with an explicit stack.
class CDepthWalk {
 public:
  explicit CDepthWalk(CFxDiagnostics &diag) : m_Diag(diag) {}

  bool Failed() const { return m_Failed; }

  void Annotations(const std::vector<FxAnnotation> &list) {
    for (const FxAnnotation &a : list) Push(a.value.get(), 1);
    Run();
  }
  void States(const std::vector<FxStateAssignment> &list) {
    for (const FxStateAssignment &s : list) Push(s.value.get(), 1);
    Run();
  }
  void Var(const FxVar &v) {
    Annotations(v.annotations);
    States(v.samplerStates);
    Push(v.init.get(), 1);
    Run();
  }
  void Statement(const FxStmt *s) {
    if (s) m_Stack.push_back({nullptr, s, 1});
    Run();
  }

 private:
  struct Item {
    const FxExpr *expr;
    const FxStmt *stmt;
    int depth;
  };
  void Push(const FxExpr *e, int depth) {
    if (e) m_Stack.push_back({e, nullptr, depth});
  }
  void Run() {
    while (!m_Stack.empty() && !m_Failed) {
      Item item = m_Stack.back();
      m_Stack.pop_back();
      if (item.depth > MaxFxTreeDepth) {
        FxLocation at = item.expr ? item.expr->at : item.stmt->at;
        m_Diag.Error(at, "nested deeper than " + std::to_string(MaxFxTreeDepth) + " levels");
        m_Failed = true;
      } else if (item.expr) {
        for (const FxExprPtr &a : item.expr->args) Push(a.get(), item.depth + 1);
      } else {
        const FxStmt &s = *item.stmt;
        for (const auto &c : s.children)
          if (c) m_Stack.push_back({nullptr, c.get(), item.depth + 1});
        Push(s.expr.get(), item.depth + 1);
        Push(s.step.get(), item.depth + 1);
        for (const FxVarPtr &v : s.vars) Push(v->init.get(), item.depth + 1);
      }
    }
    m_Stack.clear();
  }

  CFxDiagnostics &m_Diag;
  std::vector<Item> m_Stack;
  bool m_Failed = false;
};
}  // namespace

bool CheckFxTreeDepth(const FxTranslationUnit &unit, CFxDiagnostics &diag) {
  CDepthWalk walk(diag);
  for (const auto &v : unit.globals) walk.Var(*v);
  for (const auto &f : unit.functions) {
    for (const auto &p : f->params) walk.Var(*p);
    walk.Statement(f->body.get());
  }
  for (const FxTechniqueDecl &t : unit.techniques) {
    walk.Annotations(t.annotations);
    for (const FxPassDecl &p : t.passes) {
      walk.Annotations(p.annotations);
      walk.States(p.states);
    }
  }
  return !walk.Failed();
}
