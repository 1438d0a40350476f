#pragma once
// Shared by the effect tests: the corpus folder and a strict GLSL check.

#include <string>
#include <vector>

struct CFxTechnique;

std::string FxEffectsDir();
std::vector<std::string> FxCorpusFiles();  // sorted .cgfx paths
std::string ReadText(const std::string &path);
// Runs glslangValidator on one stage; empty when it accepts the text,
// otherwise its report (or why it could not run).
std::string GlslangErrors(const std::string &glsl, bool fragment);

// A corpus technique annotated `bool ExpectInvalid = true`.
bool ExpectInvalid(const CFxTechnique &t);

// Collects the error lines of the log while it lives; the effect error
// handler starts afresh.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  // Whether some error line contains `text`.
  bool Has(const std::string &text) const;
  std::vector<std::string> errors;
};
