#pragma once
// Linked GL programs of effect passes, shared by text: the GLSL front end is
// cheap, a compile and link on the driver is not, so passes (of one effect or
// of several copies of it) that translate to the same text share a program.

#include <GL/glew.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "fx/FxEffect.h"

struct FxUniformOGL {
  std::string name;  // without "[0]"
  GLint location = -1;
  GLenum type = 0;
  GLint size = 1;    // array elements
  int unit = -1;     // texture unit of a sampler
};

class CFxProgramOGL {
 public:
  ~CFxProgramOGL();
  // Null when `name` is not active: GLSL drops uniforms no stage reads.
  const FxUniformOGL *Find(const std::string &name) const;

  GLuint m_Name = 0;
  std::vector<FxUniformOGL> m_Uniforms;
  // The prepared pass whose values the program holds now: another effect
  // drawing with the same program has to send all of its own.
  uint64_t m_Owner = 0;
};

class CFxProgramCache {
 public:
  // The linked program for the pass's GLSL, or null with the driver's
  // compile or link log in `log`.
  std::shared_ptr<CFxProgramOGL> Get(const CFxPassProgram &program, std::string &log);
  // Forgets programs no effect holds any more.
  void Prune();
  void Clear() { m_Programs.clear(); }
  size_t Size() const { return m_Programs.size(); }

 private:
  std::map<std::string, std::weak_ptr<CFxProgramOGL>> m_Programs;
};

// Compiles and links one pass on the current context; null with the log.
std::shared_ptr<CFxProgramOGL> LinkFxProgram(const CFxPassProgram &program, std::string &log);
