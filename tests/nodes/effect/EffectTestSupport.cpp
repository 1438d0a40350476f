#include "nodes/effect/EffectTestSupport.h"

#include <cstdlib>

#include "fx/FxEffect.h"
#include "fx/FxTestSupport.h"

std::string AssetsDir() {
  const char *root = getenv("VELMOR_SOURCE_DIR");
  if (root && *root) return std::string(root) + "/assets/";
  std::string here = __FILE__;
  return here.substr(0, here.rfind("/tests/")) + "/assets/";
}

std::string EffectProblems(CFxEffect &effect) {
  std::string problems;
  if (effect.Techniques().empty()) problems += "no technique\n";
  for (const CFxTechnique &t : effect.Techniques()) {
    for (const CFxPass &p : t.passes) {
      std::string where = "technique " + t.name + " pass " + p.name + ": ";
      CFxDiagnostics diag;
      CFxPassProgram program;
      if (!effect.TranslatePass(p, program, diag)) {
        problems += where + diag.Listing() + "\n";
        continue;
      }
      if (program.vertex.empty() || program.fragment.empty()) problems += where + "a stage has no program\n";
      if (!program.vertex.empty()) {
        if (std::string e = GlslangErrors(program.vertex, false); !e.empty()) problems += where + e + program.vertex;
      }
      if (!program.fragment.empty()) {
        if (std::string e = GlslangErrors(program.fragment, true); !e.empty()) problems += where + e + program.fragment;
      }
    }
  }
  return problems;
}
