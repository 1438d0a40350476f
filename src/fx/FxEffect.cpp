#include "fx/FxEffect.h"

#include "fx/FxChecker.h"
#include "fx/FxConstEval.h"
#include "fx/FxGlslEmitter.h"
#include "fx/FxParser.h"

#include <cstring>
#include <strings.h>

namespace {
// Every profile of a stage compiles to our one target, GLSL 1.20; a program
// that needs more than it has fails in the checker with the construct named.
const char *const kVertexProfiles[] = {"glslv", "vp40", "vp30", "vp20", "arbvp1", "gp4vp", "gp5vp", "vs_1_1",
                                       "vs_2_0", "vs_2_x", "vs_3_0", "hlslv", "latest"};
const char *const kFragmentProfiles[] = {"glslf", "fp40", "fp30", "fp20", "arbfp1", "gp4fp", "gp5fp", "ps_2_0",
                                         "ps_2_x", "ps_2_a", "ps_2_b", "ps_3_0", "hlslf", "latest"};
// Stages GLSL 1.20 does not have, by pass state and by profile.
const char *const kGeometryStates[] = {"GeometryProgram", "GeometryShader"};
const char *const kTessellationStates[] = {"TessellationControlProgram", "TessellationEvaluationProgram",
                                           "TessellationControlShader", "TessellationEvaluationShader",
                                           "HullShader", "DomainShader"};
const char *const kGeometryProfiles[] = {"gp4gp", "gp5gp", "glslg", "gs_4_0", "gs_5_0"};
const char *const kTessellationProfiles[] = {"gp5tcp", "gp5tep", "hs_5_0", "ds_5_0"};


// MipFilter is GL's min filter with a mip mode: fold it into MinFilter.
void FoldMipFilter(std::vector<FxStateValue> &states) {
  FxStateValue *min = nullptr, *mip = nullptr;
  for (FxStateValue &s : states) {
    if (s.state == EFxState::MinFilter) min = &s;
    if (s.state == EFxState::MipFilter) mip = &s;
  }
  if (!mip) return;
  FxStateValue folded = *mip;
  folded.state = EFxState::MinFilter;
  double base = min ? min->values[0] : 0x2601;
  bool linear = base == 0x2601 || base == 0x2701 || base == 0x2703;
  double mode = mip->values[0];  // 0 none, 0x2600 nearest, 0x2601 linear
  folded.values[0] = mode == 0 ? (linear ? 0x2601 : 0x2600)
                     : mode == 0x2600 ? (linear ? 0x2701 : 0x2700)
                                      : (linear ? 0x2703 : 0x2702);
  if (min) *min = folded;
  else states.push_back(folded);
  for (size_t i = 0; i < states.size(); ++i)
    if (states[i].state == EFxState::MipFilter) states.erase(states.begin() + static_cast<long>(i));
}

// State names compare without case, profiles with it.
template <size_t N>
bool Among(const std::string &s, const char *const (&list)[N], bool anyCase = false) {
  for (const char *p : list)
    if (anyCase ? !strcasecmp(s.c_str(), p) : s == p) return true;
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
    if (!v->isStatic && !v->isConst && v->type.base != EFxBase::Program) BuildParameter(*v, diag);
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
  FoldMipFilter(p.samplerStates);
  if (!p.textureName.empty()) {
    bool found = false;
    for (const auto &g : m_Unit.globals) found = found || (g->name == p.textureName && g->type.base == EFxBase::Texture);
    if (!found) diag.Error(v.at, "sampler '" + v.name + "' names no texture parameter '" + p.textureName + "'");
  }
  size_t n = v.type.IsNumeric() ? static_cast<size_t>(v.type.Components()) : 0;
  if (v.type.arraySize > 0 && v.type.Leaf().IsNumeric())
    n = static_cast<size_t>(v.type.FlatCount() * v.type.Leaf().Components());
  p.m_Value = p.defaults.size() == n ? p.defaults : std::vector<float>(n, 0.0f);
  m_Parameters.push_back(std::move(p));
  return true;
}

bool CFxEffect::BuildPass(const FxPassDecl &decl, CFxPass &pass, CFxDiagnostics &diag) {
  pass.name = decl.name;
  pass.at = decl.at;
  Annotations(decl.annotations, pass.annotations, diag);
  for (const FxStateAssignment &s : decl.states) {
    // `ClipPlaneEnable[1]` is a state of its own
    const FxStateInfo *info = s.index >= 0 ? FindState(s.name + std::to_string(s.index), false) : nullptr;
    if (!info) info = FindState(s.name, false);
    const FxExpr *program = s.value->kind == EFxExpr::Compile ? s.value.get() : nullptr;
    bool geometry = Among(s.name, kGeometryStates, true) || (program && Among(program->text, kGeometryProfiles));
    bool tessellation =
        Among(s.name, kTessellationStates, true) || (program && Among(program->text, kTessellationProfiles));
    if (geometry || tessellation) {
      // Only this pass fails: a later technique may do without the stage.
      if (pass.unsupported.empty()) {
        pass.unsupported = std::string(geometry ? "geometry" : "tessellation") + " programs (" + s.name +
                           (program ? " = compile " + program->text : std::string()) + ") cannot be translated to GLSL 1.20";
        pass.unsupportedAt = s.at;
      }
      continue;
    }
    if (!info) {
      diag.Error(s.at, "unknown state '" + s.name + "'");
      continue;
    }
    bool vertex = info->state == EFxState::VertexProgram;
    if (vertex || info->state == EFxState::FragmentProgram) {
      const FxExpr &c = ProgramOf(*s.value);
      if (c.kind != EFxExpr::Compile)
        diag.Error(s.at, std::string(info->name) + " needs 'compile profile Entry(...)' or a program variable with a constant index");
      else if (!Among(c.text, kVertexProfiles) && !Among(c.text, kFragmentProfiles))
        diag.Error(s.at, "unknown profile '" + c.text + "'");
      else if (vertex ? !Among(c.text, kVertexProfiles) : !Among(c.text, kFragmentProfiles))
        diag.Error(s.at, "profile '" + c.text + "' does not fit " + info->name);
      else (vertex ? pass.vertexProgram : pass.fragmentProgram) = &c;
      continue;
    }
    FxStateValue value;
    std::string error;
    if (ParseStateValue(*info, *s.value, value, error)) {
      pass.states.push_back(value);
      continue;
    }
    // A value computed from parameters, evaluated each time the pass is set.
    FxExprPtr &expr = const_cast<FxExprPtr &>(s.value);  // typed in place, like every expression
    CFxDiagnostics quiet;
    quiet.AdoptFiles(diag);
    CFxChecker computed(m_Unit, quiet);
    CFxType type = info->count == 1 ? CFxType::Scalar(EFxBase::Float) : CFxType::Vector(EFxBase::Float, info->count);
    if (info->count < 1 || info->count > 4 || !ResolveStateNames(*info, *expr) || !computed.CheckConstant(expr, type)) {
      diag.Error(s.at, error);
      continue;
    }
    value.state = info->state;
    value.count = info->count;
    value.at = s.at;
    value.computed = expr.get();
    pass.states.push_back(value);
  }
  return !diag.HasErrors();
}

// `vs`, `vsArray[1]`: the compile expression of a program variable; the
// value itself when it names none.
const FxExpr &CFxEffect::ProgramOf(const FxExpr &value) const {
  const FxExpr *name = value.kind == EFxExpr::Index ? value.args[0].get() : &value;
  if (name->kind != EFxExpr::Name) return value;
  for (const auto &g : m_Unit.globals) {
    if (g->name != name->text || g->type.base != EFxBase::Program || !g->init) continue;
    if (value.kind != EFxExpr::Index) return *g->init;
    const FxExpr &index = *value.args[1];
    long i = index.kind == EFxExpr::Literal ? strtol(index.text.c_str(), nullptr, 0) : -1;
    const FxExpr &list = *g->init;
    if (list.kind == EFxExpr::InitList && i >= 0 && static_cast<size_t>(i) < list.args.size()) return *list.args[static_cast<size_t>(i)];
  }
  return value;
}

FxStateValue CFxEffect::StateNow(const FxStateValue &state) const {
  if (!state.computed) return state;
  FxStateValue now = state;
  std::vector<float> values;
  auto current = [this](const FxVar &v) -> const std::vector<float> * {
    for (const CFxParameter &p : m_Parameters)
      if (p.name == v.name) return &p.Value();
    return nullptr;
  };
  if (EvalConstant(*state.computed, values, current) && values.size() == static_cast<size_t>(state.count))
    for (size_t i = 0; i < values.size(); ++i) now.values[i] = values[i];
  return now;
}

void CFxEffect::Annotations(const std::vector<FxAnnotation> &in, std::vector<CFxAnnotationValue> &out,
                            CFxDiagnostics &diag) {
  CFxChecker checker(m_Unit, diag);
  for (const FxAnnotation &a : in) {
    CFxAnnotationValue v;
    v.name = a.name;
    v.type = a.type;
    FxExprPtr &value = const_cast<FxExprPtr &>(a.value);  // typed in place, like every expression
    if (!value) {  // `<float UIMin;>`: the type's empty value
      if (a.type.IsNumeric()) v.values.assign(static_cast<size_t>(a.type.Components()), 0.0f);
    } else if (a.type.base == EFxBase::String) {
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
  if (!pass.unsupported.empty()) {
    diag.Error(pass.unsupportedAt, pass.unsupported);
    return false;
  }
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
