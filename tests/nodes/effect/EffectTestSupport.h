#pragma once
// What the effect node tests share: the installation's data folders and a
// check that an effect translates, every pass, to GLSL the validator takes.

#include <string>

class CFxEffect;

std::string AssetsDir();  // ends with '/'
// Empty when every pass of every technique translates and validates;
// otherwise what failed.
std::string EffectProblems(CFxEffect &effect);
