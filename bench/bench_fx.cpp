// Front-end cost of the effect compiler: text to GLSL for every pass of each
// corpus effect, against the preprocessor alone on the same text as the
// baseline (the ratio shows what parsing, checking and emission add).
#include "fx/FxEffect.h"
#include "fx/FxText.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <dirent.h>
#include <string>
#include <vector>

namespace {
std::string EffectsDir() {
  std::string here = __FILE__;
  return here.substr(0, here.rfind('/')) + "/../tests/fx/effects/";
}

void Preprocess(benchmark::State &state, const std::string &text) {
  for (auto _ : state) {
    CFxDiagnostics diag;
    CFxPreprocessor pp(diag, FxFolderIncludes(EffectsDir()));
    benchmark::DoNotOptimize(pp.Run(text, "bench.cgfx"));
  }
}

void TextToGlsl(benchmark::State &state, const std::string &text) {
  for (auto _ : state) {
    CFxDiagnostics diag;
    auto fx = CFxEffect::Create(text, "bench.cgfx", diag, FxFolderIncludes(EffectsDir()));
    if (!fx) {
      state.SkipWithError("effect does not compile");
      return;
    }
    for (const CFxTechnique &t : fx->Techniques())
      for (const CFxPass &p : t.passes) {
        CFxPassProgram program;
        fx->TranslatePass(p, program, diag);
        benchmark::DoNotOptimize(program.fragment.data());
      }
  }
}

int Register() {
  std::vector<std::string> names;
  if (DIR *d = opendir(EffectsDir().c_str())) {
    while (dirent *e = readdir(d)) {
      std::string n = e->d_name;
      if (n.size() > 5 && n.compare(n.size() - 5, 5, ".cgfx") == 0) names.push_back(n);
    }
    closedir(d);
  }
  std::sort(names.begin(), names.end());
  for (const std::string &n : names) {
    std::string text;
    if (!ReadFxFile(EffectsDir() + n, text)) continue;
    benchmark::RegisterBenchmark(("Preprocess/" + n).c_str(), Preprocess, text)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("TextToGlsl/" + n).c_str(), TextToGlsl, text)->Unit(benchmark::kMicrosecond);
  }
  return 0;
}
const int g_Registered = Register();
}  // namespace

BENCHMARK_MAIN();
