#pragma once
// One compiled effect without any GL: its techniques and passes with their
// states, its parameters with types, semantics, defaults, annotations and
// current values, and the GLSL of each pass on request. The GL back end
// builds programs from TranslatePass, uploads parameter values whose Serial
// changed, and applies FxStateValues.

#include "fx/FxAst.h"
#include "fx/FxPreprocessor.h"
#include "fx/FxStateTable.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct CFxAnnotationValue {
  std::string name;
  CFxType type;
  std::string text;           // string annotations
  std::vector<float> values;  // bool, int, float and vectors
};

class CFxParameter {
 public:
  std::string name;
  CFxType type;
  std::string semantic;
  std::vector<CFxAnnotationValue> annotations;
  std::vector<float> defaults;  // row by row for matrices; empty when none was given
  std::string stringValue;
  // Samplers: the texture parameter named by `Texture = <t>` (empty: the
  // application binds one) and the other sampler states.
  std::string textureName;
  std::vector<FxStateValue> samplerStates;

  const CFxAnnotationValue *FindAnnotation(const std::string &annotation) const;

  // The value the shaders see, row by row for matrices; it starts as the
  // default (zeros without one). Each change bumps the serial.
  const std::vector<float> &Value() const { return m_Value; }
  uint32_t Serial() const { return m_Serial; }
  void SetValuefr(const float *values, size_t count);
  // A 4x4 matrix given column by column: the shader sees it transposed.
  void SetMatrixfc(const float *m16);
  void SetMatrixfr(const float *m16) { SetValuefr(m16, 16); }
  // A GL texture name for a sampler or texture parameter; 0 for none.
  void SetTexture(uint32_t texture);
  uint32_t Texture() const { return m_Texture; }

 private:
  friend class CFxEffect;
  std::vector<float> m_Value;
  uint32_t m_Serial = 0;
  uint32_t m_Texture = 0;
};

struct CFxPass {
  std::string name;
  std::vector<CFxAnnotationValue> annotations;
  std::vector<FxStateValue> states;  // VertexProgram and FragmentProgram are not among them
  // `compile profile Entry(args)` of each stage, or null.
  const FxExpr *vertexProgram = nullptr;
  const FxExpr *fragmentProgram = nullptr;
  FxLocation at;
  // Why the pass cannot run (a geometry program, say), reported when it is
  // translated; empty when it can.
  std::string unsupported;
  FxLocation unsupportedAt;
};

struct CFxTechnique {
  std::string name;
  std::vector<CFxAnnotationValue> annotations;
  std::vector<CFxPass> passes;
};

// The GLSL of one pass. A stage without a program has empty text.
struct CFxPassProgram {
  std::string vertex, fragment;
  // Keys for a program cache: entry and argument text of each stage.
  std::string vertexKey, fragmentKey;
  // Generic attributes to bind (glBindAttribLocation) before linking.
  std::vector<std::pair<int, std::string>> attributes;
  // Effect parameter name -> uniform name in the GLSL (they differ only
  // where a name is reserved in GLSL).
  std::vector<std::pair<std::string, std::string>> uniforms;
};

class CFxEffect {
 public:
  // Null, with the reasons in `diag`, when the text is not a valid effect.
  static std::unique_ptr<CFxEffect> Create(const std::string &text, const std::string &fileName, CFxDiagnostics &diag,
                                           const FxIncludeCallback &include = {});
  ~CFxEffect();

  const std::vector<CFxTechnique> &Techniques() const { return m_Techniques; }
  std::vector<CFxParameter> &Parameters() { return m_Parameters; }
  const std::vector<CFxParameter> &Parameters() const { return m_Parameters; }
  const CFxTechnique *FindTechnique(const std::string &name) const;
  CFxParameter *FindParameter(const std::string &name);

  // Checks the pass's entry points and writes their GLSL.
  bool TranslatePass(const CFxPass &pass, CFxPassProgram &out, CFxDiagnostics &diag);
  // Whether every pass translates: validation without a GL context.
  bool TranslateTechnique(const CFxTechnique &technique, CFxDiagnostics &diag);
  // A pass state with its value now: states computed from parameters are
  // evaluated with the parameters' current values.
  FxStateValue StateNow(const FxStateValue &state) const;
  // Adds an error at `at` of this effect's text (e.g. the driver's log).
  void Error(FxLocation at, const std::string &message, CFxDiagnostics &diag) const;

 private:
  CFxEffect() = default;
  bool Build(CFxDiagnostics &diag, FxLocation start);
  bool BuildParameter(const FxVar &v, CFxDiagnostics &diag);
  bool BuildPass(const FxPassDecl &decl, CFxPass &pass, CFxDiagnostics &diag);
  const FxExpr &ProgramOf(const FxExpr &value) const;
  void Annotations(const std::vector<FxAnnotation> &in, std::vector<CFxAnnotationValue> &out, CFxDiagnostics &diag);

  bool Translate(const CFxPass &pass, CFxPassProgram &out, CFxDiagnostics &diag);

  FxTranslationUnit m_Unit;
  CFxDiagnostics m_Files;  // the file names locations refer to
  std::vector<CFxTechnique> m_Techniques;
  std::vector<CFxParameter> m_Parameters;
};
