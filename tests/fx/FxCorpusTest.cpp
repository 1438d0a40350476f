// Every corpus and shipped effect translates to strict GLSL 1.20 and links on
// the GL in use, unless a technique is annotated ExpectInvalid.
#include "FxGLSupport.h"
#include "fx/FxEffect.h"

#include <filesystem>

TEST_F(FxGLTest, EveryCorpusEffectTranslatesToStrictGlsl120AndLinks) {
  FxLogCapture log;
  std::vector<std::string> files = FxCorpusFiles();
  ASSERT_GE(files.size(), 10u) << FxEffectsDir();
  // And effects written the way third-party effect packs are, and the ones we ship.
  for (const std::string &dir : {FxEffectsDir() + "authored", std::string(VELMOR_SOURCE_ROOT) + "/assets/nodes/effect"})
    for (const auto &e : std::filesystem::directory_iterator(dir))
      if (e.path().extension() == ".cgfx") files.push_back(e.path());
  ASSERT_GE(files.size(), 40u);
  int stages = 0, linked = 0;
  for (const std::string &path : files) {
    SCOPED_TRACE(path);
    std::unique_ptr<CFx> fx(m_Manager->LoadEffect(path.c_str()));
    ASSERT_TRUE(fx) << (log.errors.empty() ? "" : log.errors.back());
    CFxEffect &effect = *fx->Effect();
    EXPECT_FALSE(effect.Techniques().empty());
    for (const CFxTechnique &t : effect.Techniques()) {
      for (const CFxPass &p : t.passes) {
        SCOPED_TRACE("technique " + t.name + " pass " + p.name);
        CFxDiagnostics diag;
        CFxPassProgram program;
        bool ok = effect.TranslatePass(p, program, diag);
        EXPECT_EQ(ok, !ExpectInvalid(t)) << diag.Listing();
        EXPECT_EQ(diag.HasErrors(), !ok);
        for (const auto &[text, fragment] : {std::pair{&program.vertex, false}, {&program.fragment, true}})
          if (ok && !text->empty()) {
            EXPECT_EQ(GlslangErrors(*text, fragment), "") << *text;
            ++stages;
          }
      }
      bool ok = m_Manager->ValidateTechnique(*fx, t);
      EXPECT_EQ(ok, !ExpectInvalid(t)) << "technique " << t.name << (log.errors.empty() ? "" : "\n" + log.errors.back());
      linked += ok;
    }
  }
  EXPECT_GE(stages, 80);
  EXPECT_GE(linked, 40);
}
