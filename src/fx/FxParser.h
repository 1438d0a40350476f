#pragma once
// Recursive-descent parser for a whole effect. A syntax error is reported
// once and the parser skips to the end of the declaration it was in, so one
// broken function still lets the rest be listed.

#include "fx/FxAst.h"
#include "fx/FxLexer.h"

#include <vector>

class CFxParser {
 public:
  static constexpr int MaxNesting = 200;

  CFxParser(const std::vector<FxToken> &tokens, CFxDiagnostics &diag);
  // Parses everything; the unit is usable (if partial) even after errors.
  void Parse(FxTranslationUnit &unit);

 private:
  struct Error {};  // unwinds to the declaration level after a report

  // Declarations
  void TopLevel();
  void StructDecl();
  void TechniqueDecl();
  FxPassDecl PassDecl();
  void Annotations(std::vector<FxAnnotation> &out);
  void StateBlock(std::vector<FxStateAssignment> &out);
  FxExprPtr StateValue();
  FxExprPtr CompileProgram();
  void Qualifiers(FxVar &v);
  CFxType Type();
  void Declarator(FxVar &v, bool allowInit);
  void ArraySizes(CFxType &type);
  void FunctionRest(CFxType ret, const FxToken &name, const FxStructDef *owner = nullptr);
  FxVarPtr Parameter();
  void Synchronize();

  // Statements
  FxStmtPtr Statement();
  FxStmtPtr Block();
  FxStmtPtr LocalDecl();
  bool StartsDecl() const;

  // Expressions
  FxExprPtr Expression();
  FxExprPtr Assignment();
  FxExprPtr Ternary();
  FxExprPtr Binary(int level);
  FxExprPtr Unary();
  FxExprPtr Postfix(FxExprPtr e);
  FxExprPtr Primary();
  FxExprPtr Initializer();
  void Arguments(FxExpr &call);

  // Tokens
  const FxToken &Peek(size_t ahead = 0) const;
  const FxToken &Next();
  bool Accept(const char *punct);
  void Expect(const char *punct);
  void ExpectCloseAngle();
  std::string ExpectIdentifier(const char *what);
  bool IsTypeName(const FxToken &t) const;
  [[noreturn]] void Fail(const std::string &message);
  FxExprPtr Make(EFxExpr kind, FxLocation at, std::string text = {});

  std::vector<FxToken> m_Tokens;
  size_t m_Pos = 0;
  CFxDiagnostics &m_Diag;
  FxTranslationUnit *m_Unit = nullptr;
  int m_Depth = 0;
};
