#pragma once
// Type checker: resolves names and calls, types every expression and makes
// Cg's implicit conversions explicit as Cast nodes (`implicit` set), so the
// emitter never has to guess. Functions are checked on demand, when an entry
// point reaches them: an unused helper that would not compile costs nothing.

#include "fx/FxAst.h"

#include <vector>

class CFxChecker {
 public:
  CFxChecker(FxTranslationUnit &unit, CFxDiagnostics &diag);

  // Initialisers of file-level variables.
  bool CheckGlobals();
  // The function and everything it calls; the result is remembered.
  bool CheckFunction(FxFunction &f);
  // `compile profile Entry(args)`: finds the entry, checks it, and converts
  // each argument to the entry's uniform parameter it binds, in order.
  FxFunction *CheckCompile(FxExpr &compile);
  // A file-scope expression converted to `type` (annotations, defaults).
  bool CheckConstant(FxExprPtr &e, const CFxType &type);

 private:
  struct Error {};  // unwinds to the function being checked, after a report
  [[noreturn]] void Fail(FxLocation at, const std::string &message);

  // Statements and names
  void Statement(FxStmt &s);
  void Declare(FxVar &v);
  const FxVar *Lookup(const std::string &name) const;

  // Expressions (FxCheckerExpr.cpp)
  void Expr(FxExprPtr &e);
  void Convert(FxExprPtr &e, const CFxType &to);
  void Initialise(FxExprPtr &e, const CFxType &to);
  void Construct(FxExpr &e);
  void Unary(FxExpr &e);
  void Binary(FxExpr &e);
  void Assign(FxExpr &e);
  void Ternary(FxExpr &e);
  void Member(FxExpr &e);
  void Index(FxExpr &e);
  void Call(FxExpr &e);
  bool CallUser(FxExpr &e);
  void Intrinsic(FxExpr &e, int index);
  void Mul(FxExpr &e);
  void Texture(FxExpr &e, int index);
  void RequireLValue(const FxExpr &e);
  void ConvertAll(FxExpr &e, size_t first, const CFxType &to);
  CFxType CommonFloat(FxExpr &e, size_t first, size_t count);

  FxTranslationUnit &m_Unit;
  CFxDiagnostics &m_Diag;
  void Switch(FxStmt &s);
  void RequireConcrete(const CFxType &type, FxLocation at, const std::string &name);
  bool MemberOfThis(FxExprPtr &e);
  std::vector<std::vector<const FxVar *>> m_Scopes;
  std::vector<bool> m_Breakable;  // enclosing loops (false) and switches (true)
  FxFunction *m_Function = nullptr;
};
