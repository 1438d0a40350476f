// The preprocessor's contract: what reaches the parser, and where errors point.
#include "fx/FxPreprocessor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {
struct Preprocessed {
  CFxDiagnostics diag;
  std::vector<FxToken> tokens;
  explicit Preprocessed(const std::string &text, std::map<std::string, std::string> files = {}) {
    CFxPreprocessor pp(diag, [files](const std::string &name, std::string &out) {
      auto it = files.find(name);
      if (it == files.end()) return false;
      out = it->second;
      return true;
    });
    tokens = pp.Run(text, "fx.cgfx");
  }
  std::string Text() const {
    std::string s;
    for (const FxToken &t : tokens) s += (s.empty() ? "" : " ") + t.text;
    return s;
  }
};
}  // namespace

TEST(FxPreprocessor, MacrosAndConditionalsExpandToTheParsersTokens) {
  const struct { const char *text, *tokens; } cases[] = {
      {"#define PI 3.14159\n"
       "#define SQR(x) ((x) * (x))\n"
       "#define TWICE(f, v) f(v) + f(v)\n"
       "#define CAT(a, b) a##b\n"
       "#define STR(a) #a\n"
       "float a = SQR(PI);\n"
       "float b = TWICE(SQR, 2);\n"
       "float CAT(gl, ow) = 1; string s = STR(hi there);\n"
       "#undef PI\n"
       "float c = PI;\n",
       "float a = ( ( 3.14159 ) * ( 3.14159 ) ) ; "
       "float b = ( ( 2 ) * ( 2 ) ) + ( ( 2 ) * ( 2 ) ) ; "
       "float glow = 1 ; string s = hi there ; float c = PI ;"},
      // A function macro needs its parenthesis; a self reference stops.
      {"#define F (x)\n#define G(x) x\n#define SELF SELF + 1\nF G SELF G(\n1)\n", "( x ) G SELF + 1 1"},
      {"1.5f .5 2e-3 0x1F 3 \"a\\\"b\" >>= a.b x<<=y", "1.5f .5 2e-3 0x1F 3 a\"b >>= a . b x <<= y"},
      // One branch at every level.
      {"#define A 2\n"
       "#if defined(A) && A > 1\n one\n#elif 1\n two\n#else\n three\n#endif\n"
       "#ifdef B\n four\n #if 1\n five\n #endif\n#else\n six\n#endif\n"
       "#ifndef B\n seven\n#endif\n"
       "#if (1 << 3) % 5 == 3 ? !defined B : 0\n eight\n#endif\n"
       "#if UNDEFINED_NAME\n nine\n#elif A == 2\n ten\n#endif\n",
       "one six seven eight ten"},
  };
  for (const auto &c : cases) {
    Preprocessed r(c.text);
    EXPECT_FALSE(r.diag.HasErrors()) << c.text << r.diag.Listing();
    EXPECT_EQ(r.Text(), c.tokens) << c.text;
  }
}

TEST(FxPreprocessor, LinesAndFilesSurviveIncludesAndComments) {
  Preprocessed r("/* two\nlines */ a\n#include \"inc.cgh\"\nb // c\nd \\\ne\nf",
        {{"inc.cgh", "\n\nx\n#include <deep.cgh>\n"}, {"deep.cgh", "y"}});
  EXPECT_FALSE(r.diag.HasErrors()) << r.diag.Listing();
  ASSERT_EQ(r.Text(), "a x y b d e f");
  std::vector<std::string> where;
  for (const FxToken &t : r.tokens) where.push_back(r.diag.FileName(t.at.file) + ":" + std::to_string(t.at.line));
  // e is joined to d's line by the backslash.
  EXPECT_EQ(where, (std::vector<std::string>{"fx.cgfx:2", "inc.cgh:3", "deep.cgh:1", "fx.cgfx:4", "fx.cgfx:5",
                                             "fx.cgfx:5", "fx.cgfx:7"}));
}

TEST(FxPreprocessor, BrokenDirectivesReportFileAndLineAndCarryOn) {
  Preprocessed r("a\n#include \"missing.cgh\"\n#bogus\n#endif\n#if 1 +\n#endif\n#include \"self.cgh\"\n@\n#define M(x) x\nM(1\n#if 1\nz\n",
                 {{"self.cgh", "s\n#include \"self.cgh\"\n"}});
  std::vector<std::string> expected = {
      "fx.cgfx(2): cannot open include file 'missing.cgh'",
      "fx.cgfx(3): unknown directive #bogus",
      "fx.cgfx(4): #endif without #if",
      "fx.cgfx(5): missing value in #if",
      "self.cgh(2): #include of 'self.cgh' inside itself",
      "fx.cgfx(8): unexpected character '@'",
      "fx.cgfx(10): unterminated call of macro M",
      "fx.cgfx(11): #if without #endif",
  };
  EXPECT_EQ(r.diag.Messages(), expected);
  EXPECT_EQ(std::count_if(r.tokens.begin(), r.tokens.end(), [](const FxToken &t) { return t.text == "s"; }), 1);
}
