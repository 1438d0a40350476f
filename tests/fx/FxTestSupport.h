#pragma once
// Shared by the effect tests: the corpus folder and a strict GLSL check.

#include <string>
#include <vector>

#include "support/LogCapture.h"

class CFxEffect;
struct CFxTechnique;

std::string FxEffectsDir();
std::vector<std::string> FxCorpusFiles();  // sorted .cgfx paths
std::string ReadText(const std::string &path);
// glslangValidator's report on one stage; empty when it accepts it.
std::string GlslangErrors(const std::string &glsl, bool fragment);

// Empty when every pass of every technique translates and both its stages
// pass the strict check; otherwise what failed.
std::string EffectProblems(CFxEffect &effect);

// A corpus technique annotated `bool ExpectInvalid = true`.
bool ExpectInvalid(const CFxTechnique &t);

// The log while it lives, with the effect error handler started afresh
// (its burst limit would otherwise carry over from test to test).
class FxLogCapture : public LogCapture {
 public:
  FxLogCapture();
  ~FxLogCapture();
  bool HasError(const std::string &text) const;
};
