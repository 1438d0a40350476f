// Hostile texts: each is refused as too complex or parsed and freed, never a
// stack overflow, whether the tree is kept as written (a counting
// expression) or folded and flattened.
#include "ExprTestSupport.h"

namespace {
std::string Repeat(const std::string &s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

template <class E>
void ExpectBounded() {
  const int n = 20000;
  const struct {
    std::string text;
    bool tooComplex;
  } cases[] = {
      {"a" + Repeat("+a", n), true},
      {"a" + Repeat("*a", n), true},
      {"a" + Repeat("^a", n), true},
      {Repeat("-", n) + "a", true},
      {Repeat("(", n) + "a" + Repeat(")", n), true},
      {Repeat("sin(", n) + "a" + Repeat(")", n), true},
      {Repeat("a=", n) + "a", true},
      {Repeat("a+1;", n), false},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.text.substr(0, 12));
    ExprTest::Language<E> language;
    bool tooComplex = false;
    try {
      language.expression.Parse(c.text);
    } catch (const ExprEval::TooComplexException &) {
      tooComplex = true;
    }
    EXPECT_EQ(tooComplex, c.tooComplex);
    language.expression.Clear();
  }
}
}  // namespace

TEST(ExprLimits, DeepTextsAreRefusedOrFreedWithoutRecursion) {
  ExpectBounded<ExprEval::Expression>();
  ExpectBounded<ExprTest::CountingExpression>();
}
