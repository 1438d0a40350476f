#include "fx/FxListing.h"

#include "fx/FxEffect.h"

#include <cstdio>

namespace {
std::string Numbers(const std::vector<float> &v) {
  std::string s;
  for (size_t i = 0; i < v.size(); ++i) {
    char n[32];
    snprintf(n, sizeof n, "%g", static_cast<double>(v[i]));
    s += (i ? ", " : "") + std::string(n);
  }
  return v.size() == 1 ? s : "(" + s + ")";
}

void Annotations(const std::vector<CFxAnnotationValue> &list, const char *indent, std::string &out) {
  for (const CFxAnnotationValue &a : list) out += std::string(indent) + "annotation " + AnnotationText(a) + "\n";
}

std::string ProgramText(const FxExpr &compile) { return "compile " + compile.text + " " + ExprText(*compile.args[0]); }
}  // namespace

std::string AnnotationText(const CFxAnnotationValue &a) {
  std::string value = a.type.base == EFxBase::String ? "\"" + a.text + "\"" : Numbers(a.values);
  if (a.type.base == EFxBase::Bool) value = a.values.size() == 1 && a.values[0] != 0 ? "true" : "false";
  return TypeName(a.type) + " " + a.name + " = " + value;
}

std::string ExprText(const FxExpr &e) {
  std::string args;
  for (size_t i = 0; i < e.args.size(); ++i) args += (i ? ", " : "") + ExprText(*e.args[i]);
  switch (e.kind) {
    case EFxExpr::Literal: return e.type.base == EFxBase::String ? "\"" + e.text + "\"" : e.text;
    case EFxExpr::Name: return e.text;
    case EFxExpr::Unary: return e.text + args;
    case EFxExpr::Call: return e.text + "(" + args + ")";
    case EFxExpr::Construct: return TypeName(e.typeArg) + "(" + args + ")";
    case EFxExpr::Cast: return e.implicit ? args : "(" + TypeName(e.typeArg) + ")" + args;
    case EFxExpr::InitList: return "{" + args + "}";
    case EFxExpr::Binary: return "(" + ExprText(*e.args[0]) + " " + e.text + " " + ExprText(*e.args[1]) + ")";
    default: return "...";
  }
}

std::string DescribeEffect(const CFxEffect &effect) {
  std::string out;
  for (const CFxTechnique &t : effect.Techniques()) {
    out += "technique " + t.name + "\n";
    Annotations(t.annotations, "  ", out);
    for (const CFxPass &p : t.passes) {
      out += "  pass " + p.name + "\n";
      Annotations(p.annotations, "    ", out);
      if (p.vertexProgram) out += "    VertexProgram = " + ProgramText(*p.vertexProgram) + "\n";
      if (p.fragmentProgram) out += "    FragmentProgram = " + ProgramText(*p.fragmentProgram) + "\n";
      for (const FxStateValue &s : p.states)
        out += std::string("    ") + GetStateInfo(s.state).name + " = " + StateValueText(s) + "\n";
    }
  }
  for (const CFxParameter &p : effect.Parameters()) {
    out += "parameter " + TypeName(p.type) + " " + p.name;
    if (!p.semantic.empty()) out += " : " + p.semantic;
    if (!p.defaults.empty()) out += " = " + Numbers(p.defaults);
    if (!p.stringValue.empty()) out += " = \"" + p.stringValue + "\"";
    out += "\n";
    Annotations(p.annotations, "  ", out);
    if (!p.textureName.empty()) out += "  Texture = <" + p.textureName + ">\n";
    for (const FxStateValue &s : p.samplerStates)
      out += std::string("  ") + GetStateInfo(s.state).name + " = " + StateValueText(s) + "\n";
  }
  return out;
}
