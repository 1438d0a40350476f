#pragma once
// Shared by the effect tests: the corpus folder and a strict GLSL check.

#include <string>
#include <vector>

std::string FxEffectsDir();
std::vector<std::string> FxCorpusFiles();  // sorted .cgfx paths
std::string ReadText(const std::string &path);
// Runs glslangValidator on one stage; empty when it accepts the text,
// otherwise its report (or why it could not run).
std::string GlslangErrors(const std::string &glsl, bool fragment);
