#pragma once
// The syntax tree of one effect. The parser builds it; the checker fills in
// types, resolved names and implicit conversions in place; the emitter and
// the effect model read it.

#include "fx/FxDiagnostics.h"
#include "fx/FxTypes.h"

#include <memory>
#include <string>
#include <vector>

struct FxVar;
struct FxFunction;

// What a Member expression selects, decided by the checker.
enum class EFxMember : uint8_t { Field, Swizzle, MatrixElements };

enum class EFxExpr : uint8_t {
  Literal,    // text: the literal; type set by the parser
  Name,       // text: the name
  Unary,      // text: the operator; args[0]
  Postfix,    // text: "++" or "--"; args[0]
  Binary,     // text: the operator; args[0], args[1]
  Assign,     // text: "=", "+=", ...; args[0] target, args[1] value
  Ternary,    // args: condition, then, else
  Call,       // text: the function name; args (a method call `o.f(x)`: args o, x; `method`)
  Construct,  // typeArg(args), also for arrays and structs from `{...}`
  Cast,       // (typeArg)args[0]; `implicit` when the checker inserted it
  Member,     // args[0].text: a struct member, a swizzle or `_m01`
  Index,      // args[0][args[1]]
  InitList,   // {args}: typed by the declaration it initialises
  Compile,    // compile text Call: a pass's program
};

struct FxExpr {
  FxExpr() = default;
  FxExpr(const FxExpr &) = delete;
  FxExpr &operator=(const FxExpr &) = delete;
  // Without recursion: a hostile text can chain operators far deeper than
  // the stack reaches.
  ~FxExpr();

  EFxExpr kind = EFxExpr::Literal;
  FxLocation at;
  std::string text;
  CFxType typeArg;
  std::vector<std::unique_ptr<FxExpr>> args;
  // Filled in by the checker.
  CFxType type;
  bool implicit = false;
  const FxVar *var = nullptr;
  const FxFunction *func = nullptr;
  int intrinsic = -1;
  EFxMember member = EFxMember::Field;
  bool method = false;  // Call: `object.name(...)`, the object first among args
};
using FxExprPtr = std::unique_ptr<FxExpr>;

struct FxAnnotation {
  CFxType type;
  std::string name;
  FxExprPtr value;
  FxLocation at;
};

// `Name = value;` in a pass or a sampler_state block. `Texture = <t>` keeps
// the Name expression t.
struct FxStateAssignment {
  std::string name;
  int index = -1;  // Name[index] = value
  FxExprPtr value;
  FxLocation at;
};

enum class EFxDir : uint8_t { In, Out, InOut };

struct FxVar {
  std::string name;
  CFxType type;
  FxLocation at;
  std::string semantic;
  bool isStatic = false, isConst = false, isUniform = false, isExtern = false;
  bool isGlobal = false;  // declared at file level
  EFxDir dir = EFxDir::In;  // function parameters
  std::vector<FxAnnotation> annotations;
  FxExprPtr init;
  bool hasSamplerState = false;
  std::vector<FxStateAssignment> samplerStates;
  std::string glslName;  // set by the emitter
  // A parameter that function code writes: GLSL uniforms are read-only, so
  // the shader works on a copy (set by the checker).
  mutable bool writtenByCode = false;
};
using FxVarPtr = std::unique_ptr<FxVar>;

struct FxStructDef {
  std::string name;
  std::vector<FxVarPtr> members;
  FxLocation at;
  // `interface I { prototypes };`: a type that only names methods. A struct
  // `struct S : I { ... }` defines them; its methods are functions with an
  // owner and a first parameter `cg_this`.
  bool isInterface = false;
  const FxStructDef *implements = nullptr;
};

enum class EFxStmt : uint8_t { Block, Decl, Expr, If, For, While, Do, Return, Break, Continue, Discard, Empty, Switch, Case };

struct FxStmt {
  EFxStmt kind = EFxStmt::Empty;
  FxLocation at;
  // Block: the statements. If: then, else (may be null). For: init (may be
  // null), body. While, Do: body. Switch: its Case groups. Case: the
  // statements after its labels.
  std::vector<std::unique_ptr<FxStmt>> children;
  FxExprPtr expr;  // Expr, Return value, If/While/Do/For condition
  FxExprPtr step;  // For
  std::vector<FxVarPtr> vars;  // Decl
  std::vector<FxExprPtr> labels;  // Case: `case` values
  bool isDefault = false;         // Case: `default:` is among its labels
};
using FxStmtPtr = std::unique_ptr<FxStmt>;

enum class EFxCheck : uint8_t { Unchecked, Checking, Ok, Failed };

struct FxFunction {
  std::string name;
  CFxType ret;
  std::string semantic;  // of the return value
  std::vector<FxVarPtr> params;
  FxStmtPtr body;  // null for a prototype
  FxLocation at;
  EFxCheck check = EFxCheck::Unchecked;
  std::string glslName;  // set by the emitter
  const FxStructDef *owner = nullptr;  // a method of this struct or interface
};

struct FxPassDecl {
  std::string name;
  std::vector<FxAnnotation> annotations;
  std::vector<FxStateAssignment> states;
  FxLocation at;
};

struct FxTechniqueDecl {
  std::string name;
  std::vector<FxAnnotation> annotations;
  std::vector<FxPassDecl> passes;
  FxLocation at;
};

struct FxTranslationUnit {
  std::vector<std::unique_ptr<FxStructDef>> structs;
  std::vector<FxVarPtr> globals;  // in file order
  std::vector<std::unique_ptr<FxFunction>> functions;  // in file order
  std::vector<FxTechniqueDecl> techniques;

  const FxStructDef *FindStruct(const std::string &name) const;
};

// Deepest nesting of statements and expressions together that the checker
// and the emitter, which recurse, are given.
constexpr int MaxFxTreeDepth = 500;
// Reports the first place where the unit nests deeper than MaxFxTreeDepth;
// false then. Walks without recursion.
bool CheckFxTreeDepth(const FxTranslationUnit &unit, CFxDiagnostics &diag);
