// The corpus under effects/ covers every construct the compiler accepts: each
// file must load, each technique must translate (unless it is annotated
// ExpectInvalid) and every emitted stage must pass glslangValidator's strict
// GLSL 1.20 checks (a missing validator fails every stage, with the package
// to install).
#include "FxTestSupport.h"
#include "fx/FxEffect.h"
#include "fx/FxText.h"

#include <gtest/gtest.h>

namespace {
std::unique_ptr<CFxEffect> Load(const std::string &path, CFxDiagnostics &diag) {
  std::string dir = FxEffectsDir();
  return CFxEffect::Create(ReadText(path), path.substr(dir.size()), diag, FxFolderIncludes(dir));
}
}  // namespace

TEST(FxCorpus, EveryEffectTranslatesToStrictGlsl120) {
  std::vector<std::string> files = FxCorpusFiles();
  ASSERT_GE(files.size(), 10u) << FxEffectsDir();
  int stages = 0;
  for (const std::string &path : files) {
    SCOPED_TRACE(path);
    CFxDiagnostics diag;
    auto effect = Load(path, diag);
    ASSERT_TRUE(effect) << diag.Listing();
    EXPECT_FALSE(effect->Techniques().empty());
    for (const CFxTechnique &t : effect->Techniques()) {
      for (const CFxPass &p : t.passes) {
        SCOPED_TRACE("technique " + t.name + " pass " + p.name);
        CFxDiagnostics passDiag;
        CFxPassProgram program;
        bool ok = effect->TranslatePass(p, program, passDiag);
        if (ExpectInvalid(t)) {
          EXPECT_FALSE(ok);
          EXPECT_TRUE(passDiag.HasErrors());
          continue;
        }
        ASSERT_TRUE(ok) << passDiag.Listing();
        if (!program.vertex.empty()) {
          EXPECT_EQ(GlslangErrors(program.vertex, false), "") << program.vertex;
          ++stages;
        }
        if (!program.fragment.empty()) {
          EXPECT_EQ(GlslangErrors(program.fragment, true), "") << program.fragment;
          ++stages;
        }
      }
    }
  }
  EXPECT_GE(stages, 20);
}
