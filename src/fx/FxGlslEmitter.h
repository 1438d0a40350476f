#pragma once
// Writes GLSL 1.20 for the checked entry points of one pass: the functions,
// structs, uniforms and helpers they reach, and a generated main() per stage
// that reads attributes (cg_ATTRn) or varyings (named by semantic), calls the
// entry and scatters its outputs.
//
// Matrix layout: a Cg matrix M is the GLSL matrix G = transpose(M), so that a
// GLSL column holds a Cg row. Then M[i] is G[i], a float3x4 is a mat3x4,
// constructors keep their argument order, and every mul(a, b) is (b * a).

#include "fx/FxAst.h"
#include "fx/FxEffect.h"

#include <set>
#include <string>
#include <vector>

class CFxGlslEmitter {
 public:
  explicit CFxGlslEmitter(FxTranslationUnit &unit) : m_Unit(unit) {}

  // Either compile expression may be null (no program for that stage).
  bool EmitPass(const FxExpr *vertex, const FxExpr *fragment, CFxPassProgram &out, CFxDiagnostics &diag);

  // GLSL-safe spelling of a Cg identifier.
  static std::string Name(const std::string &name);
  static std::string TypeText(const CFxType &type);
  // A function's GLSL name; methods get their struct's name in theirs.
  static std::string FunctionName(const FxFunction &f);

 private:
  enum class EStage { Vertex, Fragment };
  struct Leaf {  // one scalar/vector piece of an entry's input or output
    std::string path;  // e.g. cg_in0.color
    CFxType type;
    std::string semantic;
    FxLocation at;
  };

  bool EmitStage(EStage stage, const FxExpr &compile, std::string &text, CFxPassProgram &out);
  // Reachability
  void Reset();
  void CollectFunction(const FxFunction &f);
  void CollectStmt(const FxStmt &s);
  void CollectExpr(const FxExpr &e);
  void CollectType(const CFxType &t);
  // Declarations
  std::string Declarations(CFxPassProgram &out, std::string &prologue);
  std::string Function(const FxFunction &f);
  std::string Helpers();
  // Wrapper main (FxGlslEntry.cpp)
  std::string Main(const FxExpr &compile, std::string &globals, CFxPassProgram &out);
  void Leaves(const CFxType &type, const std::string &path, const std::string &semantic, FxLocation at,
              std::vector<Leaf> &out);
  std::string ReadInput(const Leaf &leaf, std::string &globals, CFxPassProgram &out);
  std::string WriteOutput(const Leaf &leaf, bool fragData, std::string &globals);
  void DeclareOnce(const std::string &line, std::string &globals);
  // Statements and expressions (FxGlslExpr.cpp)
  void Stmt(const FxStmt &s, int indent, std::string &out);
  std::string Decl(const FxVar &v, const std::string &name = {});
  std::string Expr(const FxExpr &e);
  std::string Cast(const FxExpr &inner, const CFxType &to);
  // A value of type `to` with every element set to the scalar text `s`.
  std::string Fill(const CFxType &to, const std::string &s);
  void Switch(const FxStmt &s, int indent, std::string &out);
  std::string Binary(const FxExpr &e);
  std::string Assign(const FxExpr &e);
  std::string Member(const FxExpr &e);
  std::string Call(const FxExpr &e);
  std::string Intrinsic(const FxExpr &e);
  std::string Args(const FxExpr &e, size_t first = 0);
  void Error(FxLocation at, const std::string &message);

  FxTranslationUnit &m_Unit;
  CFxDiagnostics *m_Diag = nullptr;
  EStage m_Stage = EStage::Vertex;
  bool m_HasVertex = false, m_HasFragment = false;
  std::vector<const FxFunction *> m_Functions;  // callees before callers
  std::set<const FxFunction *> m_SeenFunctions;
  std::set<const FxVar *> m_Globals;
  std::set<const FxStructDef *> m_Structs;
  std::set<std::string> m_Helpers;
  std::set<std::string> m_Declared;  // attributes and varyings of main()
  bool m_NeedsLod = false;
  std::set<std::string> m_FragmentVaryings;  // read by the fragment stage
  std::set<std::string> m_VertexVaryings;    // written by the vertex stage
  bool m_Failed = false;
  int m_Switches = 0;  // numbers the selector variable of each switch
};
