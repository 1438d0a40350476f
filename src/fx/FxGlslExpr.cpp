// GLSL text of checked statements and expressions.
#include "fx/FxGlslEmitter.h"
#include "fx/FxIntrinsics.h"

#include <cstdlib>
#include <cstring>

namespace {
// GLSL wants a decimal point in every float and no suffixes.
std::string FloatLiteral(const std::string &text, bool fromInt) {
  std::string s;
  if (fromInt) {
    s = std::to_string(strtol(text.c_str(), nullptr, 0));
  } else {
    s = text;
    while (!s.empty() && strchr("fFhHxX", s.back())) s.pop_back();
  }
  if (s[0] == '.') s = "0" + s;
  if (s.find_first_of(".eE") == std::string::npos) s += ".0";
  if (s.back() == '.') s += "0";
  return s;
}

const char *VectorCompare(const std::string &op) {
  if (op == "<") return "lessThan";
  if (op == "<=") return "lessThanEqual";
  if (op == ">") return "greaterThan";
  if (op == ">=") return "greaterThanEqual";
  if (op == "==") return "equal";
  if (op == "!=") return "notEqual";
  return nullptr;
}

std::string Indent(int n) { return std::string(static_cast<size_t>(n) * 2, ' '); }
}  // namespace

// Arrays of arrays are one flat array in GLSL 1.20.
std::string CFxGlslEmitter::Decl(const FxVar &v, const std::string &name) {
  std::string text = TypeText(v.type.Leaf()) + " " + (name.empty() ? Name(v.name) : name);
  if (v.type.arraySize > 0) text += "[" + std::to_string(v.type.FlatCount()) + "]";
  return text;
}

void CFxGlslEmitter::Stmt(const FxStmt &s, int indent, std::string &out) {
  std::string pad = Indent(indent);
  switch (s.kind) {
    case EFxStmt::Block:
      out += pad + "{\n";
      for (const auto &c : s.children) Stmt(*c, indent + 1, out);
      out += pad + "}\n";
      break;
    case EFxStmt::Decl:
      for (const auto &v : s.vars) out += pad + Decl(*v) + (v->init ? " = " + Expr(*v->init) : "") + ";\n";
      break;
    case EFxStmt::Expr:
      out += pad + Expr(*s.expr) + ";\n";
      break;
    case EFxStmt::If:
      out += pad + "if (" + Expr(*s.expr) + ")\n";
      Stmt(*s.children[0], s.children[0]->kind == EFxStmt::Block ? indent : indent + 1, out);
      if (s.children.size() > 1) {
        out += pad + "else\n";
        Stmt(*s.children[1], s.children[1]->kind == EFxStmt::Block ? indent : indent + 1, out);
      }
      break;
    case EFxStmt::For: {
      std::string init;
      if (s.children[0]) {
        Stmt(*s.children[0], 0, init);
        init.pop_back();  // the newline; the ';' stays
      } else {
        init = ";";
      }
      out += pad + "for (" + init + " " + (s.expr ? Expr(*s.expr) : "") + "; " + (s.step ? Expr(*s.step) : "") + ")\n";
      Stmt(*s.children[1], s.children[1]->kind == EFxStmt::Block ? indent : indent + 1, out);
      break;
    }
    case EFxStmt::While:
      out += pad + "while (" + Expr(*s.expr) + ")\n";
      Stmt(*s.children[0], s.children[0]->kind == EFxStmt::Block ? indent : indent + 1, out);
      break;
    case EFxStmt::Do:
      out += pad + "do\n";
      Stmt(*s.children[0], s.children[0]->kind == EFxStmt::Block ? indent : indent + 1, out);
      out += pad + "while (" + Expr(*s.expr) + ");\n";
      break;
    case EFxStmt::Return:
      out += pad + "return" + (s.expr ? " " + Expr(*s.expr) : "") + ";\n";
      break;
    case EFxStmt::Break:
      out += pad + "break;\n";
      break;
    case EFxStmt::Continue:
      out += pad + "continue;\n";
      break;
    case EFxStmt::Discard:
      if (m_Stage != EStage::Fragment) Error(s.at, "discard is only allowed in a fragment program");
      out += pad + "discard;\n";
      break;
    case EFxStmt::Empty:
      out += pad + ";\n";
      break;
    case EFxStmt::Switch:
      Switch(s, indent, out);
      break;
    case EFxStmt::Case:
      out += pad + "{\n";
      for (const auto &c : s.children) Stmt(*c, indent + 1, out);
      out += pad + "}\n";
      break;
  }
}

// `switch` as an if chain inside a loop that runs once, so that each case's
// closing `break` leaves it. The checker has ruled out fall-through and
// `continue`, so the order of the cases does not matter.
void CFxGlslEmitter::Switch(const FxStmt &s, int indent, std::string &out) {
  std::string pad = Indent(indent), selector = "cg_switch" + std::to_string(m_Switches++);
  out += pad + "{\n" + pad + "  int " + selector + " = " + Expr(*s.expr) + ";\n" + pad + "  do\n" + pad + "  {\n";
  const FxStmt *fallback = nullptr;
  std::string keyword = "if (";
  for (const auto &group : s.children) {
    if (group->isDefault) {
      fallback = group.get();
      continue;
    }
    std::string condition;
    for (const auto &label : group->labels)
      condition += (condition.empty() ? "" : " || ") + std::string("(") + selector + " == " + Expr(*label) + ")";
    out += pad + "    " + keyword + condition + ")\n";
    Stmt(*group, indent + 2, out);
    keyword = "else if (";
  }
  if (fallback) {
    if (keyword != "if (") out += pad + "    else\n";
    Stmt(*fallback, indent + 2, out);
  }
  out += pad + "  } while (false);\n" + pad + "}\n";
}

std::string CFxGlslEmitter::Expr(const FxExpr &e) {
  switch (e.kind) {
    case EFxExpr::Literal:
      if (e.type.base == EFxBase::String) Error(e.at, "strings cannot be used in shader code");
      if (e.type.base == EFxBase::Float) return FloatLiteral(e.text, false);
      if (e.type.base == EFxBase::Int) return std::to_string(strtol(e.text.c_str(), nullptr, 0));
      return e.text;
    case EFxExpr::Name:
      if (e.var && e.var->writtenByCode && e.var->isGlobal && !e.var->isStatic && !e.var->isConst)
        return "cg_copy_" + Name(e.text);
      return Name(e.text);
    case EFxExpr::Unary:
      if (e.text == "!" && e.type.IsVector()) return "not(" + Expr(*e.args[0]) + ")";
      return "(" + e.text + Expr(*e.args[0]) + ")";
    case EFxExpr::Postfix:
      return "(" + Expr(*e.args[0]) + e.text + ")";
    case EFxExpr::Binary:
      return Binary(e);
    case EFxExpr::Assign:
      return Assign(e);
    case EFxExpr::Ternary: {
      if (!e.args[0]->type.IsVector())
        return "(" + Expr(*e.args[0]) + " ? " + Expr(*e.args[1]) + " : " + Expr(*e.args[2]) + ")";
      // Per component: mix() with a float mask. Both sides are evaluated, as in Cg.
      CFxType f = e.type.WithBase(EFxBase::Float);
      std::string mix = "mix(" + TypeText(f) + "(" + Expr(*e.args[2]) + "), " + TypeText(f) + "(" + Expr(*e.args[1]) +
                        "), " + TypeText(f) + "(" + Expr(*e.args[0]) + "))";
      return e.type.IsFloatLike() ? mix : TypeText(e.type) + "(" + mix + ")";
    }
    case EFxExpr::Call:
      return e.func ? FunctionName(*e.func) + Args(e) : Intrinsic(e);
    case EFxExpr::Construct: {
      if (e.type.arrayInner > 0) {  // rows flattened into one list
        std::string text;
        for (const auto &row : e.args) {
          if (row->kind != EFxExpr::Construct) Error(row->at, "a row of an array of arrays must be written out here");
          for (const auto &a : row->args) text += (text.empty() ? "" : ", ") + Expr(*a);
        }
        return TypeText(e.type.Leaf()) + "[" + std::to_string(e.type.FlatCount()) + "](" + text + ")";
      }
      if (e.type.arraySize > 0)
        return TypeText(e.type.Element()) + "[" + std::to_string(e.type.arraySize) + "]" + Args(e);
      // GLSL would make a diagonal matrix: Cg fills every element.
      if (e.type.IsMatrix() && e.args.size() == 1 && e.args[0]->type.IsScalar()) return Fill(e.type, Expr(*e.args[0]));
      return TypeText(e.type) + Args(e);
    }
    case EFxExpr::Cast:
      return Cast(*e.args[0], e.type);
    case EFxExpr::Member:
      return Member(e);
    case EFxExpr::Index: {
      const FxExpr &base = *e.args[0];
      if (base.kind == EFxExpr::Index && base.args[0]->type.arrayInner > 0)  // a[i][j] of the flat array
        return Expr(*base.args[0]) + "[(" + Expr(*base.args[1]) + ") * " + std::to_string(base.args[0]->type.arrayInner) +
               " + (" + Expr(*e.args[1]) + ")]";
      if (base.type.arrayInner > 0) Error(e.at, "a row of an array of arrays can only be indexed further");
      return Expr(base) + "[" + Expr(*e.args[1]) + "]";
    }
    case EFxExpr::InitList:
    case EFxExpr::Compile:
      break;
  }
  Error(e.at, "cannot translate this expression");
  return "0";
}

std::string CFxGlslEmitter::Cast(const FxExpr &inner, const CFxType &to) {
  const CFxType &from = inner.type;
  if (TypeText(from) == TypeText(to) && from.arraySize == to.arraySize) return Expr(inner);
  if (inner.kind == EFxExpr::Literal && to.IsScalar() && to.IsFloatLike() && from.base != EFxBase::Bool)
    return FloatLiteral(inner.text, from.base == EFxBase::Int);
  std::string s = Expr(inner);
  if (from.IsScalar()) return Fill(to, s);  // matrices and structs: every element, not GLSL's diagonal
  if (from.IsMatrix()) return TypeText(to) + "(" + s + ")";
  // vector to a shorter vector or a scalar
  if (to.cols < from.cols) s += "." + std::string("xyzw").substr(0, to.cols);
  if (from.base == to.base || (from.IsFloatLike() && to.IsFloatLike())) return s;
  return TypeText(to) + "(" + s + ")";
}

std::string CFxGlslEmitter::Fill(const CFxType &to, const std::string &s) {
  std::string text;
  if (to.arraySize > 0) {
    for (int i = 0; i < to.FlatCount(); ++i) text += (i ? ", " : "") + Fill(to.Leaf(), s);
    return TypeText(to.Leaf()) + "[" + std::to_string(to.FlatCount()) + "](" + text + ")";
  }
  if (to.base == EFxBase::Struct) {
    for (const auto &m : to.structDef->members) {
      if (!m->type.Leaf().IsNumeric() && m->type.Leaf().base != EFxBase::Struct)
        Error(m->at, "cannot fill member '" + m->name + "' of type " + TypeName(m->type) + " from a number");
      text += (text.empty() ? "" : ", ") + Fill(m->type, s);
    }
    return TypeText(to) + "(" + text + ")";
  }
  int count = to.IsMatrix() ? to.Components() : 1;
  for (int i = 0; i < count; ++i) text += (i ? ", " : "") + s;
  return TypeText(to) + "(" + text + ")";
}

std::string CFxGlslEmitter::Binary(const FxExpr &e) {
  const FxExpr &a = *e.args[0], &b = *e.args[1];
  const std::string &op = e.text;
  if (op == "%") {
    m_Helpers.insert(a.type.IsFloatLike() ? "cg_fmod" : "cg_imod");
    return std::string(a.type.IsFloatLike() ? "cg_fmod(" : "cg_imod(") + Expr(a) + ", " + Expr(b) + ")";
  }
  if (a.type.IsMatrix() && b.type.IsMatrix() && op == "*") return "matrixCompMult(" + Expr(a) + ", " + Expr(b) + ")";
  if (a.type.IsVector() && VectorCompare(op)) return std::string(VectorCompare(op)) + "(" + Expr(a) + ", " + Expr(b) + ")";
  if (a.type.IsVector() && (op == "&&" || op == "||")) {
    std::string f = TypeText(a.type.WithBase(EFxBase::Float));
    std::string fa = f + "(" + Expr(a) + ")", fb = f + "(" + Expr(b) + ")";
    return TypeText(e.type) + (op == "&&" ? "(" + fa + " * " + fb + ")" : "(max(" + fa + ", " + fb + "))");
  }
  return "(" + Expr(a) + " " + op + " " + Expr(b) + ")";
}

std::string CFxGlslEmitter::Assign(const FxExpr &e) {
  const FxExpr &a = *e.args[0], &b = *e.args[1];
  std::string target = Expr(a);
  if (e.text == "%=") {
    m_Helpers.insert(a.type.IsFloatLike() ? "cg_fmod" : "cg_imod");
    return "(" + target + " = " + (a.type.IsFloatLike() ? "cg_fmod(" : "cg_imod(") + target + ", " + Expr(b) + "))";
  }
  if (e.text == "*=" && a.type.IsMatrix() && b.type.IsMatrix())
    return "(" + target + " = matrixCompMult(" + target + ", " + Expr(b) + "))";
  return "(" + target + " " + e.text + " " + Expr(b) + ")";
}

std::string CFxGlslEmitter::Member(const FxExpr &e) {
  const FxExpr &base = *e.args[0];
  std::string s = Expr(base);
  switch (e.member) {
    case EFxMember::Field:
      return s + "." + Name(e.text);
    case EFxMember::Swizzle:
      if (base.type.IsScalar()) return e.type.IsScalar() ? s : TypeText(e.type) + "(" + s + ")";
      return s + "." + e.text;
    case EFxMember::MatrixElements: {
      std::vector<int> index;
      ParseMatrixSwizzle(e.text, base.type.rows, base.type.cols, index);
      std::string text;
      for (size_t i = 0; i < index.size(); ++i)
        text += (i ? ", " : "") + s + "[" + std::to_string(index[i] / 4) + "][" + std::to_string(index[i] % 4) + "]";
      return index.size() == 1 ? text : TypeText(e.type) + "(" + text + ")";
    }
  }
  return s;
}

std::string CFxGlslEmitter::Args(const FxExpr &e, size_t first) {
  std::string text = "(";
  for (size_t i = first; i < e.args.size(); ++i) text += (i > first ? ", " : "") + Expr(*e.args[i]);
  return text + ")";
}

std::string CFxGlslEmitter::Intrinsic(const FxExpr &e) {
  const FxIntrinsic &in = GetIntrinsic(e.intrinsic);
  switch (in.rule) {
    case EFxRule::Mul:
      // G = transpose(M): mul(M, v) = v * G, mul(v, M) = G * v, mul(A, B) = B * A.
      return "(" + Expr(*e.args[1]) + " * " + Expr(*e.args[0]) + ")";
    case EFxRule::AnyAll:
      return e.args[0]->type.IsScalar() ? "(" + Expr(*e.args[0]) + ")" : in.glsl + Args(e);
    case EFxRule::Clip:
      if (m_Stage != EStage::Fragment) Error(e.at, "clip is only allowed in a fragment program");
      break;
    case EFxRule::Tex:
      if (in.form == EFxTexForm::Lod || in.form == EFxTexForm::Bias ||
          (in.form == EFxTexForm::Proj && in.sampler == EFxBase::SamplerCube)) {
        m_NeedsLod = m_NeedsLod || in.form == EFxTexForm::Lod ||
                     (in.form == EFxTexForm::Bias && m_Stage == EStage::Vertex);
        std::string helper = std::string("cg_") + in.name;
        m_Helpers.insert(helper);
        return helper + Args(e);
      }
      return in.glsl + Args(e);
    default:
      break;
  }
  if (IsHelper(in)) m_Helpers.insert(in.glsl);
  return in.glsl + Args(e);
}
