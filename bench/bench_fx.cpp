// Cost of the effect compiler per corpus effect, in three parts: the
// preprocessor alone (the baseline), text to GLSL for every pass (the whole
// front end), and the driver's compile and link of that GLSL (GlLink, needs
// an X display; run under xvfb-run). The front end should stay a small
// fraction of GlLink: that is why linked programs are cached.
#include "fx/FxEffect.h"
#include "fx/FxText.h"
#include "renderogl/FxProgramOGL.h"
#include "renderogl/RenderOGL.h"

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

// One hidden GL window for the whole run; null without a display.
CRenderOGL *GLRender() {
  static CRenderOGL *render = [] {
    auto *r = new CRenderOGL;
    if (r->Init() && r->CreateScreen(MODE_Test, 0, false) && r->Initialize3DEnvironment(MODE_Test) && !r->m_Failed) return r;
    return static_cast<CRenderOGL *>(nullptr);
  }();
  return render;
}

void GlLink(benchmark::State &state, const std::string &text) {
  if (!GLRender()) {
    state.SkipWithError("no GL: run under xvfb-run");
    return;
  }
  CFxDiagnostics diag;
  auto fx = CFxEffect::Create(text, "bench.cgfx", diag, FxFolderIncludes(EffectsDir()));
  std::vector<CFxPassProgram> programs;
  for (const CFxTechnique &t : fx ? fx->Techniques() : std::vector<CFxTechnique>{})
    for (const CFxPass &p : t.passes) {
      CFxPassProgram program;
      if (fx->TranslatePass(p, program, diag) && !program.fragment.empty()) programs.push_back(program);
    }
  if (programs.empty()) {
    state.SkipWithError("no pass translates");
    return;
  }
  for (auto _ : state) {
    for (const CFxPassProgram &program : programs) {
      std::string log;
      auto linked = LinkFxProgram(program, log);
      benchmark::DoNotOptimize(linked.get());
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
    benchmark::RegisterBenchmark(("GlLink/" + n).c_str(), GlLink, text)->Unit(benchmark::kMicrosecond);
  }
  return 0;
}
const int g_Registered = Register();
}  // namespace

BENCHMARK_MAIN();
