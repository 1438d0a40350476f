#include "fx/FxGlslEmitter.h"

#include "fx/FxConstEval.h"
#include "fx/FxIntrinsics.h"

#include <cstring>

std::string FxGlslHelperText(const std::string &name, bool fragment);  // FxGlslHelpers.cpp

namespace {
// GLSL 1.20 keywords, reserved words and the built-ins Cg code is likely to
// reuse as names, plus the varying names our main() declares.
const char *const kReserved[] = {
    "attribute", "const", "uniform", "varying", "centroid", "break", "continue", "do", "for", "while", "if", "else",
    "in", "out", "inout", "float", "int", "void", "bool", "true", "false", "invariant", "discard", "return", "mat2",
    "mat3", "mat4", "mat2x2", "mat2x3", "mat2x4", "mat3x2", "mat3x3", "mat3x4", "mat4x2", "mat4x3", "mat4x4", "vec2",
    "vec3", "vec4", "ivec2", "ivec3", "ivec4", "bvec2", "bvec3", "bvec4", "sampler1D", "sampler2D", "sampler3D",
    "samplerCube", "sampler1DShadow", "sampler2DShadow", "struct", "asm", "class", "union", "enum", "typedef",
    "template", "this", "packed", "goto", "switch", "default", "inline", "noinline", "volatile", "public", "static",
    "extern", "external", "interface", "long", "short", "double", "half", "fixed", "unsigned", "lowp", "mediump",
    "highp", "precision", "input", "output", "hvec2", "hvec3", "hvec4", "dvec2", "dvec3", "dvec4", "fvec2", "fvec3",
    "fvec4", "sampler2DRect", "sampler3DRect", "sampler2DRectShadow", "sizeof", "cast", "namespace", "using",
    "texture", "sample", "main", "mix", "fract", "mod", "dFdx", "dFdy", "inversesqrt", "texture1D", "texture2D",
    "texture3D", "textureCube", "texture1DProj", "texture2DProj", "texture3DProj", "texture1DLod", "texture2DLod",
    "texture3DLod", "textureCubeLod", "lessThan", "greaterThan", "lessThanEqual", "greaterThanEqual", "equal",
    "notEqual", "not", "matrixCompMult", "outerProduct", "ftransform", "noise1", "noise2", "noise3", "noise4",
    "COLOR0", "COLOR1", "FOG", "TEXCOORD0", "TEXCOORD1", "TEXCOORD2", "TEXCOORD3", "TEXCOORD4", "TEXCOORD5",
    "TEXCOORD6", "TEXCOORD7", "filter", "active", "superp", "row_major", "common", "partition", "resource",
    "flat", "smooth", "noperspective", "patch", "sample", "subroutine", "layout", "uint", "atomic_uint"};
}  // namespace

std::string CFxGlslEmitter::Name(const std::string &name) {
  std::string n = name;
  for (size_t p; (p = n.find("__")) != std::string::npos;) n.replace(p, 2, "_u_");
  bool reserved = !n.compare(0, 3, "gl_") || !n.compare(0, 3, "cg_") || !n.compare(0, 3, "vm_");
  for (const char *r : kReserved) reserved = reserved || n == r;
  return reserved ? "vm_" + n : n;
}

std::string CFxGlslEmitter::TypeText(const CFxType &t) {
  std::string s;
  switch (t.base) {
    case EFxBase::Void: return "void";
    case EFxBase::Sampler1D: return "sampler1D";
    case EFxBase::Sampler2D: return "sampler2D";
    case EFxBase::Sampler3D: return "sampler3D";
    case EFxBase::SamplerCube: return "samplerCube";
    case EFxBase::Struct: return Name(t.structDef->name);
    case EFxBase::Bool: s = t.cols > 1 ? "bvec" : "bool"; break;
    case EFxBase::Int: s = t.cols > 1 ? "ivec" : "int"; break;
    default: s = t.cols > 1 || t.matrix ? "vec" : "float"; break;
  }
  if (t.matrix) return t.rows == t.cols ? "mat" + std::to_string(t.rows) : "mat" + std::to_string(t.rows) + "x" + std::to_string(t.cols);
  if (t.cols > 1) s += std::to_string(t.cols);
  return s;
}

void CFxGlslEmitter::Error(FxLocation at, const std::string &message) {
  if (!m_Failed) m_Diag->Error(at, message);
  m_Failed = true;
}

bool CFxGlslEmitter::EmitPass(const FxExpr *vertex, const FxExpr *fragment, CFxPassProgram &out,
                              CFxDiagnostics &diag) {
  m_Diag = &diag;
  m_Failed = false;
  m_HasVertex = vertex != nullptr;
  m_HasFragment = fragment != nullptr;
  m_FragmentVaryings.clear();
  m_VertexVaryings.clear();
  // The fragment stage first: the vertex stage must write every varying it reads.
  if (fragment && !EmitStage(EStage::Fragment, *fragment, out.fragment, out)) return false;
  if (vertex && !EmitStage(EStage::Vertex, *vertex, out.vertex, out)) return false;
  auto key = [this](const FxExpr *c) {
    if (!c) return std::string();
    m_Stage = EStage::Vertex;
    return c->args[0]->text + Args(*c->args[0]);
  };
  out.vertexKey = key(vertex);
  out.fragmentKey = key(fragment);
  return !m_Failed;
}

void CFxGlslEmitter::Reset() {
  m_Functions.clear();
  m_SeenFunctions.clear();
  m_Globals.clear();
  m_Structs.clear();
  m_Helpers.clear();
  m_Declared.clear();
  m_NeedsLod = false;
  m_Switches = 0;
}

bool CFxGlslEmitter::EmitStage(EStage stage, const FxExpr &compile, std::string &text, CFxPassProgram &out) {
  Reset();
  m_Stage = stage;
  const FxExpr &call = *compile.args[0];
  CollectFunction(*call.func);
  for (const auto &a : call.args) CollectExpr(*a);
  std::string globals;
  std::string main = Main(compile, globals, out);
  std::string prologue;
  std::string decls = Declarations(out, prologue);
  std::string functions;
  for (const FxFunction *f : m_Functions) functions += Function(*f);
  std::string helpers = Helpers();  // after the functions: they decide which helpers are needed
  text = "#version 120\n";
  // Vertex programs have the Lod lookups in GLSL 1.20 itself, but strict
  // front ends still ask for the extension; the fragment stage needs it.
  if (m_NeedsLod)
    text += stage == EStage::Fragment ? "#extension GL_ARB_shader_texture_lod : require\n"
                                      : "#extension GL_ARB_shader_texture_lod : enable\n";
  text += decls + globals + helpers + functions;
  size_t body = main.find("{\n");
  text += main.substr(0, body + 2) + prologue + main.substr(body + 2);
  return !m_Failed;
}

void CFxGlslEmitter::CollectFunction(const FxFunction &f) {
  if (!m_SeenFunctions.insert(&f).second) return;
  CollectType(f.ret);
  for (const auto &p : f.params) CollectType(p->type);
  if (f.body) CollectStmt(*f.body);
  m_Functions.push_back(&f);  // after its callees
}

void CFxGlslEmitter::CollectStmt(const FxStmt &s) {
  for (const auto &c : s.children)
    if (c) CollectStmt(*c);
  if (s.expr) CollectExpr(*s.expr);
  if (s.step) CollectExpr(*s.step);
  for (const auto &v : s.vars) {
    CollectType(v->type);
    if (v->init) CollectExpr(*v->init);
  }
}

void CFxGlslEmitter::CollectExpr(const FxExpr &e) {
  for (const auto &a : e.args) CollectExpr(*a);
  CollectType(e.type);
  if (e.kind == EFxExpr::Name && e.var && e.var->isGlobal && m_Globals.insert(e.var).second) {
    CollectType(e.var->type);
    if (e.var->init) CollectExpr(*e.var->init);
  }
  if (e.kind == EFxExpr::Call && e.func) CollectFunction(*e.func);
}

void CFxGlslEmitter::CollectType(const CFxType &t) {
  if (t.base != EFxBase::Struct || !t.structDef || !m_Structs.insert(t.structDef).second) return;
  for (const auto &m : t.structDef->members) CollectType(m->type);
}

// Structs, uniforms and file-level variables in file order. A variable whose
// initialiser is not constant gets its value at the start of main().
std::string CFxGlslEmitter::Declarations(CFxPassProgram &out, std::string &prologue) {
  std::string text;
  for (const auto &s : m_Unit.structs) {
    if (!m_Structs.count(s.get())) continue;
    text += "struct " + Name(s->name) + " {\n";
    for (const auto &m : s->members) text += "  " + Decl(*m) + ";\n";
    text += "};\n";
  }
  for (const auto &v : m_Unit.globals) {
    if (!m_Globals.count(v.get())) continue;
    if (v->type.base == EFxBase::String || v->type.base == EFxBase::Texture || v->type.base == EFxBase::SamplerRect) {
      Error(v->at, "'" + v->name + "' of type " + TypeName(v->type) + " cannot be used in shader code");
      continue;
    }
    if (!v->isStatic && !v->isConst) {
      text += "uniform " + Decl(*v) + ";\n";
      std::pair<std::string, std::string> u{v->name, Name(v->name)};
      bool known = false;
      for (const auto &o : out.uniforms) known = known || o == u;
      if (!known) out.uniforms.push_back(u);
      if (v->writtenByCode) {  // code writes it: a copy, filled at the start of main()
        std::string copy = "cg_copy_" + Name(v->name);
        text += Decl(*v, copy) + ";\n";
        prologue += "  " + copy + " = " + Name(v->name) + ";\n";
      }
      continue;
    }
    std::vector<float> constant;
    if (!v->init) {
      text += Decl(*v) + ";\n";
    } else if (EvalConstant(*v->init, constant)) {
      text += std::string(v->isConst ? "const " : "") + Decl(*v) + " = " + Expr(*v->init) + ";\n";
    } else {
      text += Decl(*v) + ";\n";
      prologue += "  " + Name(v->name) + " = " + Expr(*v->init) + ";\n";
    }
  }
  return text;
}

std::string CFxGlslEmitter::FunctionName(const FxFunction &f) {
  return f.owner ? "cg_m_" + Name(f.owner->name) + "_" + Name(f.name) : Name(f.name);
}

std::string CFxGlslEmitter::Function(const FxFunction &f) {
  std::string text = TypeText(f.ret) + " " + FunctionName(f) + "(";
  for (size_t i = 0; i < f.params.size(); ++i) {
    const FxVar &p = *f.params[i];
    const char *dir = p.dir == EFxDir::Out ? "out " : p.dir == EFxDir::InOut ? "inout " : "";
    text += (i ? ", " : "") + std::string(dir) + Decl(p);
  }
  text += ")\n";
  Stmt(*f.body, 0, text);
  return text;
}

std::string CFxGlslEmitter::Helpers() {
  std::string text;
  for (const std::string &h : m_Helpers) text += FxGlslHelperText(h, m_Stage == EStage::Fragment);
  return text;
}
