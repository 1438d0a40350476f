// Hostile effects: every one of these once hung, exhausted memory or crashed
// the compiler. Each must now fail quickly with an error that names the file
// and the limit.
#include "fx/FxEffect.h"
#include "fx/FxText.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {
std::string Repeat(const std::string &s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

std::string Chain(int n, const std::string &link) { return "float4 v;\nfloat4 f() { return v" + Repeat(link, n) + "; }\n"; }

std::string Doubling(int n) {
  std::string text = "#define A0 x\n";
  for (int i = 1; i <= n; ++i)
    text += "#define A" + std::to_string(i) + " A" + std::to_string(i - 1) + " A" + std::to_string(i - 1) + "\n";
  return text + "A" + std::to_string(n) + "\n";
}
}  // namespace

TEST(FxLimits, HostileEffectsFailWithTheFileAndTheLimit) {
  TempDir dir;
  dir.Write("self.cgfx", Repeat("#include \"self.cgfx\"\n", 3));
  dir.Write("big.cgh", std::string(MaxFxFileBytes + 1, ' '));
  std::filesystem::create_symlink("/dev/zero", dir / "zero.cgh");
  const struct { std::string file, text, error; } cases[] = {
      {"self.cgfx", Repeat("#include \"self.cgfx\"\n", 3), "self.cgfx(1): #include of 'self.cgfx' inside itself"},
      {"doubling.cgfx", Doubling(30), "doubling.cgfx(32): macro expansion larger than 64 MB"},
      {"parens.cgfx", "#if " + Repeat("(", 100000) + "1\n#endif\n", "parens.cgfx(1): #if nested deeper than 256"},
      {"nots.cgfx", "#if " + Repeat("!", 100000) + "1\n#endif\n", "nots.cgfx(1): #if nested deeper than 256"},
      {"min.cgfx", "#if -(-9223372036854775807 - 1) < 0\n#error wraps\n#endif\n", "min.cgfx(2): #error wraps"},
      {"abs.cgfx", "#include \"/dev/zero\"\n", "abs.cgfx(1): cannot open include file '/dev/zero': include files come"},
      {"up.cgfx", "#include \"../x.cgh\"\n", "up.cgfx(1): cannot open include file '../x.cgh': include files come"},
      {"dev.cgfx", "#include \"zero.cgh\"\n", "dev.cgfx(1): cannot open include file 'zero.cgh': not a file"},
      {"big.cgfx", "#include \"big.cgh\"\n", "big.cgfx(1): cannot open include file 'big.cgh': larger than 1 MB"},
      {"sum.cgfx", Chain(8000, " + v"), "sum.cgfx(2): nested deeper than 500 levels"},
      {"swizzle.cgfx", Chain(8000, ".xyzw"), "swizzle.cgfx(2): nested deeper than 500 levels"},
      {"huge.cgfx", Chain(300000, "+v"), "huge.cgfx(2): nested deeper than 500 levels"},
      {"deep.cgfx", "float x = " + Repeat("(", 5000) + ";", "deep.cgfx(1): expression nested too deeply"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.file);
    CFxDiagnostics diag;
    EXPECT_FALSE(CFxEffect::Create(c.text, dir / c.file, diag, FxFolderIncludes(dir.Path() + "/")));
    EXPECT_NE(diag.Listing().find(c.error), std::string::npos) << diag.Listing().substr(0, 400);
  }
}

TEST(FxLimits, IncludesComeFromTheEffectsFolderThenNodedata) {
  TempDir dir;
  dir.Write("effect/local.cgh", "float local;\n");
  dir.Write("nodedata/shared.cgh", "float shared;\n");
  auto cwd = std::filesystem::current_path();
  std::filesystem::current_path(dir.Path());
  std::string text;
  FxIncludeCallback include = FxFolderIncludes(dir / "effect/");
  EXPECT_TRUE(include("local.cgh", text));
  EXPECT_EQ(text, "float local;\n");
  EXPECT_TRUE(include("shared.cgh", text));
  EXPECT_EQ(text, "float shared;\n");
  EXPECT_FALSE(include("../nodedata/shared.cgh", text));
  std::filesystem::current_path(cwd);
}
