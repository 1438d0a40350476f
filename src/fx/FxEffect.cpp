#include "fx/FxEffect.h"

#include "fx/FxChecker.h"
#include "fx/FxConstEval.h"
#include "fx/FxGlslEmitter.h"
#include "fx/FxParser.h"

#include <cstring>

namespace {
const char *const kVertexProfiles[] = {"glslv", "vp40", "vp30", "vp20", "arbvp1"};
const char *const kFragmentProfiles[] = {"glslf", "fp40", "fp30", "fp20", "arbfp1"};

template <size_t N>
bool Among(const std::string &s, const char *const (&list)[N]) {
  for (const char *p : list)
    if (s == p) return true;
  return false;
}
}  // namespace

const CFxAnnotationValue *CFxParameter::FindAnnotation(const std::string &annotation) const {
  for (const CFxAnnotationValue &a : annotations)
    if (a.name == annotation) return &a;
  return nullptr;
}

void CFxParameter::SetValuefr(const float *values, size_t count) {
  size_t n = count < m_Value.size() ? count : m_Value.size();
  for (size_t i = 0; i < n; ++i) m_Value[i] = values[i];
  ++m_Serial;
}

void CFxParameter::SetMatrixfc(const float *m) {
  float t[16];
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) t[r * 4 + c] = m[c * 4 + r];
  SetValuefr(t, 16);
}

void CFxParameter::SetTexture(uint32_t texture) {
  m_Texture = texture;
  ++m_Serial;
}

CFxEffect::~CFxEffect() = default;

std::unique_ptr<CFxEffect> CFxEffect::Create(const std::string &text, const std::string &fileName,
                                             CFxDiagnostics &diag, const FxIncludeCallback &include) {
  std::unique_ptr<CFxEffect> fx(new CFxEffect);
  CFxPreprocessor pp(diag, include);
  std::vector<FxToken> tokens = pp.Run(text, fileName);
  if (!diag.HasErrors()) CFxParser(tokens, diag).Parse(fx->m_Unit);
  if (!diag.HasErrors()) CheckFxTreeDepth(fx->m_Unit, diag);
  if (diag.HasErrors() || !fx->Build(diag, FxLocation{diag.AddFile(fileName), 1})) return nullptr;
  fx->m_Files.AdoptFiles(diag);
  return fx;
}

bool CFxEffect::Build(CFxDiagnostics &diag, FxLocation start) {
  CFxChecker checker(m_Unit, diag);
  checker.CheckGlobals();
  for (const auto &v : m_Unit.globals)
    if (!v->isStatic && !v->isConst) BuildParameter(*v, diag);
  for (const FxTechniqueDecl &t : m_Unit.techniques) {
    CFxTechnique tech;
    tech.name = t.name;
    Annotations(t.annotations, tech.annotations, diag);
    for (const FxPassDecl &p : t.passes) {
      tech.passes.emplace_back();
      BuildPass(p, tech.passes.back(), diag);
    }
    m_Techniques.push_back(std::move(tech));
  }
  if (m_Techniques.empty() && !diag.HasErrors()) diag.Error(start, "the effect has no technique");
  return !diag.HasErrors();
}

bool CFxEffect::BuildParameter(const FxVar &v, CFxDiagnostics &diag) {
  CFxParameter p;
  p.name = v.name;
  p.type = v.type;
  p.semantic = v.semantic;
  Annotations(v.annotations, p.annotations, diag);
  if (v.init && v.type.base == EFxBase::String && v.init->kind == EFxExpr::Literal) p.stringValue = v.init->text;
  else if (v.init && v.init->type == v.type && !EvalConstant(*v.init, p.defaults))
    diag.Warning(v.at, "the default of '" + v.name + "' is not a constant and is ignored");
  for (const FxStateAssignment &s : v.samplerStates) {
    const FxStateInfo *info = FindState(s.name, true);
    std::string error;
    FxStateValue value;
    if (!info) {
      diag.Error(s.at, "unknown sampler state '" + s.name + "'");
    } else if (info->state == EFxState::Texture) {
      if (s.value->kind != EFxExpr::Name) diag.Error(s.at, "Texture needs a texture parameter: Texture = <name>");
      else p.textureName = s.value->text;
    } else if (!ParseStateValue(*info, *s.value, value, error)) {
      diag.Error(s.at, error);
    } else {
      p.samplerStates.push_back(value);
    }
  }
  if (!p.textureName.empty()) {
    bool found = false;
    for (const auto &g : m_Unit.globals) found = found || (g->name == p.textureName && g->type.base == EFxBase::Texture);
    if (!found) diag.Error(v.at, "sampler '" + v.name + "' names no texture parameter '" + p.textureName + "'");
  }
  size_t n = v.type.IsNumeric() ? static_cast<size_t>(v.type.Components()) : 0;
  if (v.type.arraySize > 0 && v.type.Element().IsNumeric())
    n = static_cast<size_t>(v.type.arraySize * v.type.Element().Components());
  p.m_Value = p.defaults.size() == n ? p.defaults : std::vector<float>(n, 0.0f);
  m_Parameters.push_back(std::move(p));
  return true;
}

bool CFxEffect::BuildPass(const FxPassDecl &decl, CFxPass &pass, CFxDiagnostics &diag) {
  pass.name = decl.name;
  pass.at = decl.at;
  Annotations(decl.annotations, pass.annotations, diag);
  for (const FxStateAssignment &s : decl.states) {
    const FxStateInfo *info = FindState(s.name, false);
    if (!info) {
      diag.Error(s.at, "unknown state '" + s.name + "'");
      continue;
    }
    bool vertex = info->state == EFxState::VertexProgram;
    if (vertex || info->state == EFxState::FragmentProgram) {
      const FxExpr &c = *s.value;
      if (c.kind != EFxExpr::Compile) diag.Error(s.at, std::string(info->name) + " needs 'compile profile Entry(...)'");
      else if (!Among(c.text, kVertexProfiles) && !Among(c.text, kFragmentProfiles))
        diag.Error(s.at, "unknown profile '" + c.text + "'");
      else if (vertex != Among(c.text, kVertexProfiles))
        diag.Error(s.at, "profile '" + c.text + "' does not fit " + info->name);
      else (vertex ? pass.vertexProgram : pass.fragmentProgram) = &c;
      continue;
    }
    FxStateValue value;
    std::string error;
    if (ParseStateValue(*info, *s.value, value, error)) pass.states.push_back(value);
    else diag.Error(s.at, error);
  }
  return !diag.HasErrors();
}

void CFxEffect::Annotations(const std::vector<FxAnnotation> &in, std::vector<CFxAnnotationValue> &out,
                            CFxDiagnostics &diag) {
  CFxChecker checker(m_Unit, diag);
  for (const FxAnnotation &a : in) {
    CFxAnnotationValue v;
    v.name = a.name;
    v.type = a.type;
    FxExprPtr &value = const_cast<FxExprPtr &>(a.value);  // typed in place, like every expression
    if (a.type.base == EFxBase::String) {
      if (value->kind != EFxExpr::Literal || value->type.base != EFxBase::String)
        diag.Error(a.at, "annotation '" + a.name + "' needs a string");
      v.text = value->text;
    } else if (!a.type.IsNumeric()) {
      diag.Error(a.at, "annotation '" + a.name + "' cannot be of type " + TypeName(a.type));
    } else if (checker.CheckConstant(value, a.type) && !EvalConstant(*value, v.values)) {
      diag.Error(a.at, "annotation '" + a.name + "' needs a constant value");
    }
    out.push_back(std::move(v));
  }
}

const CFxTechnique *CFxEffect::FindTechnique(const std::string &name) const {
  for (const CFxTechnique &t : m_Techniques)
    if (t.name == name) return &t;
  return nullptr;
}

CFxParameter *CFxEffect::FindParameter(const std::string &name) {
  for (CFxParameter &p : m_Parameters)
    if (p.name == name) return &p;
  return nullptr;
}

bool CFxEffect::TranslatePass(const CFxPass &pass, CFxPassProgram &out, CFxDiagnostics &diag) {
  CFxDiagnostics local;
  local.AdoptFiles(m_Files);
  bool ok = Translate(pass, out, local);
  diag.Append(local);
  return ok;
}

void CFxEffect::Error(FxLocation at, const std::string &message, CFxDiagnostics &diag) const {
  CFxDiagnostics local;
  local.AdoptFiles(m_Files);
  local.Error(at, message);
  diag.Append(local);
}

bool CFxEffect::Translate(const CFxPass &pass, CFxPassProgram &out, CFxDiagnostics &diag) {
  CFxChecker checker(m_Unit, diag);
  const FxFunction *entries[2] = {nullptr, nullptr};
  const FxExpr *programs[2] = {pass.vertexProgram, pass.fragmentProgram};
  for (int i = 0; i < 2; ++i) {
    if (!programs[i]) continue;
    entries[i] = checker.CheckCompile(const_cast<FxExpr &>(*programs[i]));
    if (!entries[i]) {
      if (!diag.HasErrors()) diag.Error(programs[i]->at, "entry function " + programs[i]->args[0]->text + " does not compile");
      return false;
    }
  }
  CFxGlslEmitter emitter(m_Unit);
  return emitter.EmitPass(programs[0], programs[1], out, diag);
}

bool CFxEffect::TranslateTechnique(const CFxTechnique &technique, CFxDiagnostics &diag) {
  bool ok = true;
  for (const CFxPass &pass : technique.passes) {
    CFxPassProgram program;
    ok = TranslatePass(pass, program, diag) && ok;
  }
  return ok;
}
