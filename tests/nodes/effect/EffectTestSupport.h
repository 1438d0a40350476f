#pragma once
// What the effect node tests share: the installation's data folders, and the
// effect compiler tests' strict check of an effect (EffectProblems).

#include <string>

#include "fx/FxTestSupport.h"

std::string AssetsDir();  // ends with '/'
