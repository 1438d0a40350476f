#include "renderogl/FxManagerOGL.h"

#include "core/Log.h"
#include "renderogl/FxStateOGL.h"
#include "renderogl/TextureOGL.h"

#include <algorithm>
#include <map>

struct CFxManagerOGL::PassOGL {
  struct Slot {
    CFxParameter *parameter;
    CFxParameter *texture;  // a sampler's `Texture = <t>`, or null
    const FxUniformOGL *uniform;
    uint64_t sent = ~uint64_t(0);  // serials of the values GL has
  };
  uint64_t id = 0;
  std::shared_ptr<CFxProgramOGL> program;
  std::vector<Slot> slots;
  bool failed = false;
};

class CFxManagerOGL::DeviceOGL : public CFxDeviceData {
 public:
  std::map<const CFxPass *, std::unique_ptr<PassOGL>> passes;
};

namespace {
GLenum SamplerTarget(EFxBase base) {
  switch (base) {
    case EFxBase::Sampler1D: return GL_TEXTURE_1D;
    case EFxBase::Sampler3D: return GL_TEXTURE_3D;
    case EFxBase::SamplerCube: return GL_TEXTURE_CUBE_MAP;
    case EFxBase::SamplerRect: return GL_TEXTURE_RECTANGLE;
    default: return GL_TEXTURE_2D;
  }
}

// Floats per array element of a uniform type, and how it is sent.
enum class EUpload { Float, Int, Matrix };
struct UniformShape {
  EUpload upload;
  int floats;
  int columns, rows;  // matrices: GLSL columns (Cg rows) and rows
};

bool Shape(GLenum type, UniformShape &s) {
  switch (type) {
    case GL_FLOAT: s = {EUpload::Float, 1, 0, 0}; return true;
    case GL_FLOAT_VEC2: s = {EUpload::Float, 2, 0, 0}; return true;
    case GL_FLOAT_VEC3: s = {EUpload::Float, 3, 0, 0}; return true;
    case GL_FLOAT_VEC4: s = {EUpload::Float, 4, 0, 0}; return true;
    case GL_INT: case GL_BOOL: s = {EUpload::Int, 1, 0, 0}; return true;
    case GL_INT_VEC2: case GL_BOOL_VEC2: s = {EUpload::Int, 2, 0, 0}; return true;
    case GL_INT_VEC3: case GL_BOOL_VEC3: s = {EUpload::Int, 3, 0, 0}; return true;
    case GL_INT_VEC4: case GL_BOOL_VEC4: s = {EUpload::Int, 4, 0, 0}; return true;
    case GL_FLOAT_MAT2: s = {EUpload::Matrix, 4, 2, 2}; return true;
    case GL_FLOAT_MAT3: s = {EUpload::Matrix, 9, 3, 3}; return true;
    case GL_FLOAT_MAT4: s = {EUpload::Matrix, 16, 4, 4}; return true;
    case GL_FLOAT_MAT2x3: s = {EUpload::Matrix, 6, 2, 3}; return true;
    case GL_FLOAT_MAT2x4: s = {EUpload::Matrix, 8, 2, 4}; return true;
    case GL_FLOAT_MAT3x2: s = {EUpload::Matrix, 6, 3, 2}; return true;
    case GL_FLOAT_MAT3x4: s = {EUpload::Matrix, 12, 3, 4}; return true;
    case GL_FLOAT_MAT4x2: s = {EUpload::Matrix, 8, 4, 2}; return true;
    case GL_FLOAT_MAT4x3: s = {EUpload::Matrix, 12, 4, 3}; return true;
    default: return false;
  }
}

// A Cg matrix's rows, read row by row, are the GLSL matrix's columns: the
// values go up as they are, untransposed.
void UploadMatrix(const UniformShape &s, GLint location, GLsizei count, const float *v) {
  switch (s.columns * 10 + s.rows) {
    case 22: glUniformMatrix2fv(location, count, GL_FALSE, v); break;
    case 33: glUniformMatrix3fv(location, count, GL_FALSE, v); break;
    case 44: glUniformMatrix4fv(location, count, GL_FALSE, v); break;
    case 23: glUniformMatrix2x3fv(location, count, GL_FALSE, v); break;
    case 24: glUniformMatrix2x4fv(location, count, GL_FALSE, v); break;
    case 32: glUniformMatrix3x2fv(location, count, GL_FALSE, v); break;
    case 34: glUniformMatrix3x4fv(location, count, GL_FALSE, v); break;
    case 42: glUniformMatrix4x2fv(location, count, GL_FALSE, v); break;
    case 43: glUniformMatrix4x3fv(location, count, GL_FALSE, v); break;
    default: break;
  }
}

void UploadValue(const FxUniformOGL &u, const std::vector<float> &value) {
  UniformShape s{};
  if (!Shape(u.type, s) || value.empty()) return;
  GLsizei count = static_cast<GLsizei>(std::min<size_t>(static_cast<size_t>(u.size), value.size() / static_cast<size_t>(s.floats)));
  if (count <= 0) return;
  if (s.upload == EUpload::Matrix) return UploadMatrix(s, u.location, count, value.data());
  if (s.upload == EUpload::Float) {
    switch (s.floats) {
      case 1: glUniform1fv(u.location, count, value.data()); break;
      case 2: glUniform2fv(u.location, count, value.data()); break;
      case 3: glUniform3fv(u.location, count, value.data()); break;
      default: glUniform4fv(u.location, count, value.data()); break;
    }
    return;
  }
  std::vector<GLint> ints(static_cast<size_t>(count * s.floats));
  for (size_t i = 0; i < ints.size(); ++i) ints[i] = static_cast<GLint>(value[i]);
  switch (s.floats) {
    case 1: glUniform1iv(u.location, count, ints.data()); break;
    case 2: glUniform2iv(u.location, count, ints.data()); break;
    case 3: glUniform3iv(u.location, count, ints.data()); break;
    default: glUniform4iv(u.location, count, ints.data()); break;
  }
}

// The sampler's own texture wins over the one its `Texture` state names.
void BindSampler(const CFxParameter &sampler, const CFxParameter *texture, int unit) {
  GLenum target = SamplerTarget(sampler.type.base);
  GLuint name = sampler.Texture() ? sampler.Texture() : texture ? texture->Texture() : 0;
  glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
  glBindTexture(target, name);
  if (name)
    for (const FxStateValue &state : sampler.samplerStates) ApplyFxSamplerState(target, state);
  glActiveTexture(GL_TEXTURE0);
}
}  // namespace

CFxManagerOGL::~CFxManagerOGL() = default;

bool CFxManagerOGL::Init(CRender *render) {
  CFxManager::Init(render);
  return true;
}

void CFxManagerOGL::Free() {
  m_Programs.Clear();
  CFxManager::Free();
}

bool CFxManagerOGL::OnDevice() const { return m_Context && glCreateProgram != nullptr; }

size_t CFxManagerOGL::ProgramCount() {
  m_Programs.Prune();
  return m_Programs.Size();
}

uint32_t CFxManagerOGL::TextureName(CTexture *texture) {
  auto *t = dynamic_cast<CTextureOGL *>(texture);
  return t ? t->m_Name : 0;
}

CFxManagerOGL::PassOGL *CFxManagerOGL::Prepare(CFx &fx, const CFxPass &pass) {
  CFxEffect *effect = fx.Effect();
  if (!effect) return nullptr;
  if (!fx.m_Device) fx.m_Device = std::make_unique<DeviceOGL>();
  std::unique_ptr<PassOGL> &prepared = static_cast<DeviceOGL &>(*fx.m_Device).passes[&pass];
  if (prepared) return prepared->failed ? nullptr : prepared.get();
  prepared = std::make_unique<PassOGL>();
  PassOGL *slot = prepared.get();
  slot->id = ++m_PassCount;

  CFxDiagnostics diag;
  CFxPassProgram text;
  std::string log;
  bool translated = effect->TranslatePass(pass, text, diag);
  // A pass without programs only sets states.
  if (translated && text.vertex.empty() && text.fragment.empty()) return slot;
  if (translated) {
    slot->program = m_Programs.Get(text, log);
    if (!slot->program) effect->Error(pass.at, "GL: " + log, diag);
  }
  if (!slot->program) {
    slot->failed = true;
    RaiseError(FX_COMPILER_ERROR, diag.Listing());
    return nullptr;
  }
  for (const auto &[parameter, uniform] : text.uniforms) {
    const FxUniformOGL *u = slot->program->Find(uniform);
    CFxParameter *p = effect->FindParameter(parameter);
    if (!u || !p) continue;  // dropped by the driver: nothing reads it
    CFxParameter *texture = p->textureName.empty() ? nullptr : effect->FindParameter(p->textureName);
    slot->slots.push_back({p, texture, u});
  }
  return slot;
}

bool CFxManagerOGL::ValidateTechnique(CFx &fx, const CFxTechnique &technique) {
  if (!OnDevice()) return CFxManager::ValidateTechnique(fx, technique);
  bool ok = true;
  for (const CFxPass &pass : technique.passes) ok = Prepare(fx, pass) && ok;
  return ok;
}

void CFxManagerOGL::Send(PassOGL &pass, bool all) {
  if (!pass.program) return;
  // Another effect drawing with the same program left its own values there.
  if (pass.program->m_Owner != pass.id) {
    pass.program->m_Owner = pass.id;
    all = true;
  }
  for (PassOGL::Slot &s : pass.slots) {
    uint64_t serial = static_cast<uint64_t>(s.parameter->Serial()) << 32 | (s.texture ? s.texture->Serial() : 0);
    if (!all && serial == s.sent) continue;
    s.sent = serial;
    if (s.uniform->unit >= 0) BindSampler(*s.parameter, s.texture, s.uniform->unit);
    else UploadValue(*s.uniform, s.parameter->Value());
  }
}

bool CFxManagerOGL::SetPassState(CFx &fx, const CFxPass &pass) {
  if (!OnDevice()) return true;
  PassOGL *p = Prepare(fx, pass);
  if (!p) {
    glUseProgram(0);
    return false;
  }
  glUseProgram(p->program ? p->program->m_Name : 0);
  for (const FxStateValue &state : pass.states) ApplyFxPassState(fx.Effect()->StateNow(state));
  // Texture units are shared by every program: bind them all again.
  Send(*p, true);
  return true;
}

void CFxManagerOGL::ResetPassState(CFx &, const CFxPass &pass) {
  if (!OnDevice()) return;
  for (const FxStateValue &state : pass.states) ResetFxPassState(state.state);
  glUseProgram(0);
}

void CFxManagerOGL::CommitChanges(CFx &fx) {
  if (!OnDevice() || !fx.m_Device || !fx.CurrentPass()) return;
  auto &passes = static_cast<DeviceOGL &>(*fx.m_Device).passes;
  auto found = passes.find(fx.CurrentPass());
  if (found != passes.end() && !found->second->failed) Send(*found->second, false);
}
