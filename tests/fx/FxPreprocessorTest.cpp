// The preprocessor's contract: what reaches the parser, and where errors point.
#include "fx/FxPreprocessor.h"

#include <gtest/gtest.h>

#include <map>

namespace {
std::string Join(const std::vector<FxToken> &tokens) {
  std::string s;
  for (const FxToken &t : tokens) s += (s.empty() ? "" : " ") + t.text;
  return s;
}

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
  std::string Text() const { return Join(tokens); }
};
}  // namespace

TEST(FxPreprocessor, ObjectAndFunctionMacrosExpandAndNest) {
  Preprocessed r(
      "#define PI 3.14159\n"
      "#define SQR(x) ((x) * (x))\n"
      "#define TWICE(f, v) f(v) + f(v)\n"
      "#define CAT(a, b) a##b\n"
      "#define STR(a) #a\n"
      "float a = SQR(PI);\n"
      "float b = TWICE(SQR, 2);\n"
      "float CAT(gl, ow) = 1; string s = STR(hi there);\n"
      "#undef PI\n"
      "float c = PI;\n");
  EXPECT_FALSE(r.diag.HasErrors()) << r.diag.Listing();
  EXPECT_EQ(r.Text(),
            "float a = ( ( 3.14159 ) * ( 3.14159 ) ) ; "
            "float b = ( ( 2 ) * ( 2 ) ) + ( ( 2 ) * ( 2 ) ) ; "
            "float glow = 1 ; string s = hi there ; float c = PI ;");
}

TEST(FxPreprocessor, FunctionMacroNeedsParenthesisAndSelfReferenceStops) {
  Preprocessed r(
      "#define F (x)\n"
      "#define G(x) x\n"
      "#define SELF SELF + 1\n"
      "F G SELF G(\n1)\n");
  EXPECT_FALSE(r.diag.HasErrors()) << r.diag.Listing();
  EXPECT_EQ(r.Text(), "( x ) G SELF + 1 1");
}

TEST(FxPreprocessor, ConditionalsChooseOneBranchAtEveryLevel) {
  Preprocessed r(
      "#define A 2\n"
      "#if defined(A) && A > 1\n one\n"
      "#elif 1\n two\n"
      "#else\n three\n"
      "#endif\n"
      "#ifdef B\n four\n #if 1\n five\n #endif\n#else\n six\n#endif\n"
      "#ifndef B\n seven\n#endif\n"
      "#if (1 << 3) % 5 == 3 ? !defined B : 0\n eight\n#endif\n"
      "#if UNDEFINED_NAME\n nine\n#elif A == 2\n ten\n#endif\n");
  EXPECT_FALSE(r.diag.HasErrors()) << r.diag.Listing();
  EXPECT_EQ(r.Text(), "one six seven eight ten");
}

TEST(FxPreprocessor, LinesAndFilesSurviveIncludesAndComments) {
  Preprocessed r("/* two\nlines */ a\n#include \"inc.cgh\"\nb // c\nd \\\ne\nf",
        {{"inc.cgh", "\n\nx\n#include <deep.cgh>\n"}, {"deep.cgh", "y"}});
  EXPECT_FALSE(r.diag.HasErrors()) << r.diag.Listing();
  ASSERT_EQ(r.Text(), "a x y b d e f");
  auto where = [&](size_t i) { return r.diag.FileName(r.tokens[i].at.file) + ":" + std::to_string(r.tokens[i].at.line); };
  EXPECT_EQ(where(0), "fx.cgfx:2");
  EXPECT_EQ(where(1), "inc.cgh:3");
  EXPECT_EQ(where(2), "deep.cgh:1");
  EXPECT_EQ(where(3), "fx.cgfx:4");
  EXPECT_EQ(where(5), "fx.cgfx:5");  // joined by the backslash
  EXPECT_EQ(where(6), "fx.cgfx:7");
}

TEST(FxPreprocessor, BrokenDirectivesReportFileAndLineAndCarryOn) {
  Preprocessed r("a\n#include \"missing.cgh\"\n#bogus\n#endif\n#if 1 +\n#endif\n#define M(x) x\nM(1\n#if 1\nz\n",
        std::map<std::string, std::string>{});
  std::vector<std::string> expected = {
      "fx.cgfx(2): cannot open include file 'missing.cgh'",
      "fx.cgfx(3): unknown directive #bogus",
      "fx.cgfx(4): #endif without #if",
      "fx.cgfx(5): missing value in #if",
      "fx.cgfx(8): unterminated call of macro M",
      "fx.cgfx(9): #if without #endif",
  };
  EXPECT_EQ(r.diag.Messages(), expected);
}

TEST(FxPreprocessor, RecursiveIncludeStopsAtTheDepthLimit) {
  Preprocessed r("#include \"self.cgh\"\n", {{"self.cgh", "s\n#include \"self.cgh\"\n"}});
  EXPECT_EQ(r.tokens.size(), static_cast<size_t>(CFxPreprocessor::MaxIncludeDepth));
  ASSERT_EQ(r.diag.ErrorCount(), 1);
  EXPECT_EQ(r.diag.Messages()[0], "self.cgh(2): #include nested too deeply: self.cgh");
}

TEST(FxLexer, NumbersStringsAndPunctuation) {
  CFxDiagnostics diag;
  std::vector<FxToken> t;
  LexLine("1.5f .5 2e-3 0x1F 3 \"a\\\"b\" >>= a.b x<<=y @", FxLocation{0, 7}, t, diag);
  ASSERT_EQ(t.size(), 13u);
  EXPECT_EQ(t[0].kind, EFxTok::Float);
  EXPECT_EQ(t[1].kind, EFxTok::Float);
  EXPECT_EQ(t[2].kind, EFxTok::Float);
  EXPECT_EQ(t[3].kind, EFxTok::Int);
  EXPECT_EQ(t[4].kind, EFxTok::Int);
  EXPECT_EQ(t[5].kind, EFxTok::String);
  EXPECT_EQ(t[5].text, "a\"b");
  EXPECT_EQ(t[6].text, ">>=");
  EXPECT_EQ(t[11].text, "<<=");
  ASSERT_EQ(diag.ErrorCount(), 1);
  EXPECT_EQ(diag.Messages()[0], "<text>(7): unexpected character '@'");
}
