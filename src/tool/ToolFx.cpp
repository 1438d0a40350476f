// velmor-tool fx: what an effect file declares, and the GLSL of its passes.
#include "core/Log.h"
#include "fx/FxEffect.h"
#include "fx/FxListing.h"
#include "fx/FxManager.h"
#include "fx/FxText.h"
#include "renderogl/RenderOGL.h"
#include "tool/ToolCommand.h"

#include <cstdio>
#include <cstring>

namespace {
// Compiles and links every technique on the GL of the X display; the
// driver's log reaches stderr through the effect error handler.
int Validate(const char *path) {
  CRenderOGL render;
  if (!render.Init() || !render.CreateScreen(MODE_Test, 0, false) || !render.Initialize3DEnvironment(MODE_Test) || render.m_Failed ||
      !render.m_FxManager) {
    fprintf(stderr, "fx: no usable OpenGL for --validate: %s\n", GetFirstError());
    render.DestroyScreen();
    return 3;
  }
  SetLogEcho(true);
  int result = 0;
  if (CFx *fx = render.m_FxManager->LoadEffect(path)) {
    for (const CFxTechnique &t : fx->Effect()->Techniques()) {
      bool ok = render.m_FxManager->ValidateTechnique(*fx, t);
      printf("technique %s: %s\n", t.name.c_str(), ok ? "links" : "does not link");
      if (!ok) result = 1;
    }
    delete fx;
  } else {
    result = 1;
  }
  SetLogEcho(false);
  render.Cleanup3DEnvironment();
  render.DestroyScreen();
  return result;
}

int RunFx(int argc, char **argv) {
  const char *path = nullptr;
  bool glsl = false, validate = false;
  for (int i = 1; i < argc; ++i) {
    if (!strcmp(argv[i], "--glsl")) glsl = true;
    else if (!strcmp(argv[i], "--validate")) validate = true;
    else if (argv[i][0] != '-' && !path) path = argv[i];
    else {
      fprintf(stderr, "fx: unknown argument '%s'\n", argv[i]);
      return 2;
    }
  }
  if (!path) {
    fprintf(stderr, "usage: velmor-tool fx FILE.cgfx [--glsl] [--validate]\n");
    return 2;
  }
  std::string text;
  if (!ReadFxFile(path, text)) {
    fprintf(stderr, "fx: cannot read %s\n", path);
    return 1;
  }
  CFxDiagnostics diag;
  auto effect = CFxEffect::Create(text, path, diag, FxFolderIncludes(FxFolderOf(path)));
  fputs(diag.Listing().c_str(), stderr);
  if (!effect) return 1;
  fputs(DescribeEffect(*effect).c_str(), stdout);
  // Every pass is translated, with or without --glsl: function bodies are
  // only checked there, and a listing must not pass an effect that fails.
  int result = 0;
  for (const CFxTechnique &t : effect->Techniques())
    for (const CFxPass &p : t.passes) {
      CFxDiagnostics passDiag;
      CFxPassProgram program;
      bool ok = effect->TranslatePass(p, program, passDiag);
      fputs(passDiag.Listing().c_str(), stderr);
      if (!ok) {
        result = 1;
        continue;
      }
      if (!glsl) continue;
      if (!program.vertex.empty()) printf("// technique %s, pass %s: vertex\n%s", t.name.c_str(), p.name.c_str(), program.vertex.c_str());
      if (!program.fragment.empty()) printf("// technique %s, pass %s: fragment\n%s", t.name.c_str(), p.name.c_str(), program.fragment.c_str());
    }
  if (validate) {
    int linked = Validate(path);
    if (linked) return linked;
  }
  return result;
}
}  // namespace

VELMOR_TOOL_COMMAND(fx, "fx", 5, "FILE.cgfx [--glsl] [--validate]",
                    "list an effect's techniques, passes and parameters; --glsl prints each pass's GLSL; --validate links each technique on GL", RunFx);
