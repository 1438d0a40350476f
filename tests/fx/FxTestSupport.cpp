#include "FxTestSupport.h"
#include "core/Log.h"
#include "fx/FxEffect.h"
#include "fx/FxManager.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

std::string FxEffectsDir() {
  const char *root = getenv("VELMOR_SOURCE_DIR");
  if (root && *root) return std::string(root) + "/tests/fx/effects/";
  std::string here = __FILE__;
  return here.substr(0, here.rfind('/')) + "/effects/";
}

std::vector<std::string> FxCorpusFiles() {
  std::vector<std::string> files;
  std::error_code ec;
  for (const auto &e : std::filesystem::directory_iterator(FxEffectsDir(), ec))
    if (e.path().extension() == ".cgfx") files.push_back(e.path().string());
  std::sort(files.begin(), files.end());
  return files;
}

std::string ReadText(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::string GlslangErrors(const std::string &glsl, bool fragment) {
  char path[] = "/tmp/velmor-glsl-XXXXXX";
  int fd = mkstemp(path);
  if (fd < 0) return "cannot create a temporary file";
  FILE *f = fdopen(fd, "w");
  fputs(glsl.c_str(), f);
  fclose(f);
  std::string command = std::string("glslangValidator -S ") + (fragment ? "frag " : "vert ") + path + " 2>&1";
  std::string output;
  int status = -1;
  if (FILE *p = popen(command.c_str(), "r")) {
    char buf[512];
    while (fgets(buf, sizeof buf, p)) output += buf;
    status = pclose(p);
  }
  unlink(path);
  if (status == 0) return "";
  return output.empty() ? "glslangValidator did not run (package glslang-tools)" : output;
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
      for (const std::string *glsl : {&program.vertex, &program.fragment})
        if (glsl->empty())
          problems += where + "a stage has no program\n";
        else if (std::string e = GlslangErrors(*glsl, glsl == &program.fragment); !e.empty())
          problems += where + e + *glsl;
    }
  }
  return problems;
}

bool ExpectInvalid(const CFxTechnique &t) {
  for (const CFxAnnotationValue &a : t.annotations)
    if (a.name == "ExpectInvalid") return !a.values.empty() && a.values[0] != 0;
  return false;
}

FxLogCapture::FxLogCapture() { ResetFxErrorHandler(); }
FxLogCapture::~FxLogCapture() { ResetFxErrorHandler(); }

bool FxLogCapture::HasError(const std::string &text) const {
  for (const std::string &e : errors)
    if (e.find(text) != std::string::npos) return true;
  return false;
}
