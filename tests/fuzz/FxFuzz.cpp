// The effect compiler on any text: preprocess, parse, check, build the
// effect model and translate every technique to GLSL, with no GL context.
// Includes resolve to a small header, or to the text itself.
#include "fx/FxEffect.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string text(reinterpret_cast<const char *>(data), size);
  auto include = [&text](const std::string &name, std::string &out) {
    if (name == "self.cgfx") out = text;
    else if (name == "common.cgh") out = "#define COMMON 1\nfloat4 common(float4 v) { return v * 2; }\n";
    else return false;
    return true;
  };
  CFxDiagnostics diag;
  auto effect = CFxEffect::Create(text, "self.cgfx", diag, include);
  if (!effect) return 0;
  for (const CFxTechnique &t : effect->Techniques()) {
    CFxDiagnostics techniqueDiag;
    effect->TranslateTechnique(t, techniqueDiag);
  }
  return 0;
}
