#include "renderogl/FxProgramOGL.h"

namespace {
std::string InfoLog(GLuint object, bool program) {
  GLint length = 0;
  if (program) glGetProgramiv(object, GL_INFO_LOG_LENGTH, &length);
  else glGetShaderiv(object, GL_INFO_LOG_LENGTH, &length);
  std::string log(static_cast<size_t>(length > 0 ? length : 1), '\0');
  if (program) glGetProgramInfoLog(object, length, nullptr, log.data());
  else glGetShaderInfoLog(object, length, nullptr, log.data());
  log.resize(log.find('\0') == std::string::npos ? log.size() : log.find('\0'));
  return log;
}

GLuint CompileStage(GLenum type, const std::string &text, std::string &log) {
  GLuint shader = glCreateShader(type);
  const char *source = text.c_str();
  glShaderSource(shader, 1, &source, nullptr);
  glCompileShader(shader);
  GLint ok = GL_FALSE;
  glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
  if (ok) return shader;
  log += (type == GL_VERTEX_SHADER ? "vertex program: " : "fragment program: ") + InfoLog(shader, false);
  glDeleteShader(shader);
  return 0;
}

bool IsSampler(GLenum type) {
  switch (type) {
    case GL_SAMPLER_1D: case GL_SAMPLER_2D: case GL_SAMPLER_3D: case GL_SAMPLER_CUBE: case GL_SAMPLER_2D_RECT:
    case GL_SAMPLER_1D_SHADOW: case GL_SAMPLER_2D_SHADOW: return true;
    default: return false;
  }
}

// Texture units go to the active samplers in the driver's order; the
// program keeps them for its life, so binding needs no glUniform1i later.
void ReadUniforms(CFxProgramOGL &p) {
  GLint count = 0, maxLength = 0;
  glGetProgramiv(p.m_Name, GL_ACTIVE_UNIFORMS, &count);
  glGetProgramiv(p.m_Name, GL_ACTIVE_UNIFORM_MAX_LENGTH, &maxLength);
  std::vector<char> name(static_cast<size_t>(maxLength > 0 ? maxLength : 1) + 1);
  GLint current = 0;
  glGetIntegerv(GL_CURRENT_PROGRAM, &current);
  glUseProgram(p.m_Name);
  int units = 0;
  for (GLint i = 0; i < count; ++i) {
    FxUniformOGL u;
    GLsizei length = 0;
    glGetActiveUniform(p.m_Name, static_cast<GLuint>(i), static_cast<GLsizei>(name.size()), &length, &u.size, &u.type,
                       name.data());
    u.name.assign(name.data(), static_cast<size_t>(length));
    if (u.name.compare(0, 3, "gl_") == 0) continue;
    u.location = glGetUniformLocation(p.m_Name, u.name.c_str());
    if (u.name.size() > 3 && u.name.compare(u.name.size() - 3, 3, "[0]") == 0) u.name.resize(u.name.size() - 3);
    if (IsSampler(u.type)) {
      u.unit = units++;
      glUniform1i(u.location, u.unit);
    }
    p.m_Uniforms.push_back(u);
  }
  glUseProgram(static_cast<GLuint>(current));
}
}  // namespace

CFxProgramOGL::~CFxProgramOGL() {
  if (m_Name) glDeleteProgram(m_Name);
}

const FxUniformOGL *CFxProgramOGL::Find(const std::string &name) const {
  for (const FxUniformOGL &u : m_Uniforms)
    if (u.name == name) return &u;
  return nullptr;
}

std::shared_ptr<CFxProgramOGL> LinkFxProgram(const CFxPassProgram &program, std::string &log) {
  GLuint stages[2] = {0, 0};
  if (!program.vertex.empty()) stages[0] = CompileStage(GL_VERTEX_SHADER, program.vertex, log);
  if (!program.fragment.empty()) stages[1] = CompileStage(GL_FRAGMENT_SHADER, program.fragment, log);
  if (!log.empty()) {
    for (GLuint s : stages)
      if (s) glDeleteShader(s);
    return nullptr;
  }
  auto linked = std::make_shared<CFxProgramOGL>();
  linked->m_Name = glCreateProgram();
  for (GLuint s : stages)
    if (s) glAttachShader(linked->m_Name, s);
  for (const auto &[index, name] : program.attributes)
    glBindAttribLocation(linked->m_Name, static_cast<GLuint>(index), name.c_str());
  glLinkProgram(linked->m_Name);
  // The program keeps what it needs; the shaders go with it.
  for (GLuint s : stages)
    if (s) glDeleteShader(s);
  GLint ok = GL_FALSE;
  glGetProgramiv(linked->m_Name, GL_LINK_STATUS, &ok);
  if (!ok) {
    log = "link: " + InfoLog(linked->m_Name, true);
    return nullptr;
  }
  ReadUniforms(*linked);
  return linked;
}

std::shared_ptr<CFxProgramOGL> CFxProgramCache::Get(const CFxPassProgram &program, std::string &log) {
  std::string key = program.vertex;
  key += '\0';
  key += program.fragment;
  auto found = m_Programs.find(key);
  if (found != m_Programs.end())
    if (auto linked = found->second.lock()) return linked;
  auto linked = LinkFxProgram(program, log);
  if (linked) m_Programs[key] = linked;
  return linked;
}

void CFxProgramCache::Prune() {
  for (auto i = m_Programs.begin(); i != m_Programs.end();)
    i = i->second.expired() ? m_Programs.erase(i) : std::next(i);
}
