// How a parsed text evaluates: order of operands and arguments, side
// effects, laziness, reference arguments and the abort countdown.

#include "ExprTestSupport.h"

#include <cmath>

namespace {

using ExprEval::Exception;
using ExprTest::CountingExpression;
using ExprTest::Language;

// Both ways to evaluate: the plain Expression (folded and flattened) and a
// subclass that walks the tree as parsed.
template <class E>
class EvaluationOrder : public ::testing::Test {
 protected:
  void Expect(std::initializer_list<ExprTest::Case> cases) { ExprTest::ExpectValues<E>(cases); }
  Language<E> l;
};
using Both = ::testing::Types<ExprEval::Expression, CountingExpression>;
TYPED_TEST_SUITE(EvaluationOrder, Both);

TYPED_TEST(EvaluationOrder, OperandsLeftToRightExceptDivision) {
  this->Expect({{"a = 1; (a = a * 2) + (a = a + 3)", 7},
                {"a = 1; (a = a * 2) - (a = a + 3)", -3},
                {"a = 1; (a = a * 2) * (a = a + 3)", 10},
                {"a = 1; (a = a + 1) ^ (a = a + 1)", 8},
                {"a = 1; (a = a * 2) / (a = a + 3)", 2},  // the divisor first
                {"a = 1; a + (a = 5)", 6},                // a variable is read when its turn comes
                {"a = 1; (a = 5) + a", 10},
                {"a = 2; (a = 0; 1) / a", 0.5},
                {"a = 4; a / (a = 2)", 1}});
}

TYPED_TEST(EvaluationOrder, ADivisionByZeroSkipsTheDividend) {
  auto &l = this->l;
  l.Var("z") = 0.0;
  for (const char *text : {"a = 1; (a = 5) / z", "a = 1; (a = 5) / 0", "a = 1; (a = 5) / (z * 2)", "a = 1; 1 / (a - a)"}) {
    EXPECT_EQ(ExprTest::FailureOf(l, text).message, "Divide by zero") << text;
    EXPECT_EQ(l.Var("a"), 1.0) << text;
  }
}

TYPED_TEST(EvaluationOrder, FunctionArgumentsInOrderUnlessTheFunctionSaysOtherwise) {
  this->Expect({{"a = 0; min(a = a * 10 + 1, a = a * 10 + 2, a = a * 10 + 3); a", 123},
                {"a = 0; noise2(a = a * 10 + 1, a = a * 10 + 2); a", 21},
                {"a = 0; noise3(a = a * 10 + 1, a = a * 10 + 2, a = a * 10 + 3); a", 321},
                {"a = 0; random(a = a * 10 + 1, a = a * 10 + 2); a", 21},
                {"a = 0; logn(a = a * 10 + 8, a = a * 10 + 2); a", 28},
                {"a = 0; length(a = a + 1, 0)", std::sqrt(2.0)},  // once per factor
                {"a = 0; length(a = a + 1, 0); a", 2}});
}

TYPED_TEST(EvaluationOrder, OnlyTheChosenArmIsEvaluated) {
  this->Expect({{"if(0, 1/0, 2)", 2},
                {"if(3, 2, 1/0)", 2},
                {"and(0, 1/0)", 0},
                {"or(1, 1/0)", 1},
                {"select(-1, 10, 1/0, 1/0)", 10},
                {"select(0, 1/0, 20, 1/0)", 20},
                {"select(1, 1/0, 1/0, 30)", 30},
                {"a = 0; random(a = 1); a", 0},  // one argument counts as none
                {"a = 0; beat(a = 1); a", 1},    // no music: the fallback
                {"a = 0; band(a = 1, 0, 0); a", 0}});
}

TYPED_TEST(EvaluationOrder, ReferenceArguments) {
  auto &l = this->l;
  EXPECT_EQ(l.Eval("rect2pol(0, -1, &r, &a)"), 1.0);  // creates r and a
  EXPECT_EQ(l.Var("r"), 1.0);
  EXPECT_DOUBLE_EQ(l.Var("a"), 3.0 * M_PI / 2.0);
  EXPECT_EQ(l.Eval("rect2pol(&r2, 3, &a2, 4)"), 5.0);  // values and references interleave
  EXPECT_DOUBLE_EQ(l.Var("a2"), std::atan2(4.0, 3.0));
  EXPECT_DOUBLE_EQ(l.Eval("pol2rect(2, PI / 2, &x, &y); y"), 2.0);
  auto constant = ExprTest::FailureOf(l, "rect2pol(&PI, 1, &a, 2)");
  EXPECT_EQ(constant.type, Exception::ConstantReference);
  EXPECT_EQ(constant.message, "Expression error");
  EXPECT_EQ(constant.name, "PI");
  for (const char *text : {"rect2pol(1, 2, &r)", "rect2pol(1, &q, &r, &s)", "sin(&r)"})
    EXPECT_EQ(ExprTest::FailureOf(l, text).type, Exception::InvalidArgumentCount) << text;
}

TYPED_TEST(EvaluationOrder, MathFailuresHappenWhenReached) {
  auto &l = this->l;
  EXPECT_EQ(ExprTest::FailureOf(l, "a = 1; (a = 2) + sqrt(-1) + (a = 3)").message, "Math exception");
  EXPECT_EQ(l.Var("a"), 2.0);
  auto power = ExprTest::FailureOf(l, "a = 1; (a = 2) ^ (0 - 1) * 0 ^ -1 + (a = 3)");
  EXPECT_EQ(power.name, "^");
  EXPECT_EQ(l.Var("a"), 2.0);
}

TEST(AbortCountdown, EveryNodeVisitCountsWhenASubclassCanAbortAndShouldAbortStops) {
  Language<CountingExpression> l;
  l.expression.SetAbortCount(2, 100);
  l.Eval("1 + 2");  // three visits: the root, then each operand
  EXPECT_EQ(l.expression.abortChecks, 1);
  // The countdown carries over from one evaluation to the next.
  l.expression.SetAbortCount(4, 100);
  l.expression.abortChecks = 0;
  l.Eval("1 + 2");
  EXPECT_EQ(l.expression.abortChecks, 0);
  l.expression.Evaluate();
  EXPECT_EQ(l.expression.abortChecks, 1);
  // Arguments not evaluated are not visited.
  l.expression.SetAbortCount(3, 100);
  l.expression.abortChecks = 0;
  l.Eval("if(1, 2, 3)");
  EXPECT_EQ(l.expression.abortChecks, 0);
  l.Eval("if(1, 2, 3)");
  EXPECT_EQ(l.expression.abortChecks, 1);

  // ShouldAbort stops the evaluation.
  l.expression.abortChecks = 0;
  l.expression.abort = true;
  l.expression.SetAbortCount(3, 100);
  auto failure = ExprTest::FailureOf(l, "a = 1; a = 2; a = 3");
  EXPECT_EQ(failure.type, Exception::Abort);
  EXPECT_EQ(failure.message, "Expression aborted");
  EXPECT_EQ(l.Var("a"), 1.0);  // stopped on the visit of the second statement
  EXPECT_EQ(l.expression.abortChecks, 1);
}

// The plain Expression folds constants and flattens arithmetic; the
// counting subclass keeps the parsed tree. Both must agree on every result,
// every failure and every variable they leave behind.
TEST(Optimization, FoldedAndFlattenedTreesAgreeWithTheParsedTree) {
  const char *kTexts[] = {
      "1 + 2 * 3 - 4 / 5 ^ 2", "-(x - 2) * -y / (z + 0.5) ^ 2", "x / y / z", "x / (y - y)", "(x = x + 1) / (y = 0)",
      "(x = 7) / y + x", "y / (x = 0) + 1", "3 / (x = 0; 2) + x", "2 ^ 3 ^ 2 + x ^ -y", "(0 - x) ^ 0.5",
      "x ^ 2000 - y", "0 ^ -1 + x", "x - (x = 10) - x", "x * (x = 3) * x + (y = y * 2) * y",
      "(x = -x) ^ (x = 2) + x", "sin(x * 3.1 + y) * 0.5 + cos(y * 2.3 - x) * 0.25 + x * y * 0.1",
      "if(above(x, 1), x / 0, y / 2)", "rand(&s) * 2 - rand(&s) + s / 1000000", "1 / x + 1 / y + 1 / z",
      "x - -y * --z", "poly(x, 1, -2, 3) / (x - 1)", "2 * 3 + x * (4 - 1) / 2",
      "(1 + 2 + (3 + (4 + (5 + x)))) * (x + (y + (z + 1)))", "a = b = x * 2; a / b - (a = 0) / (b = 1) + a",
      "exp(x * -1000) + 10 ^ -400 * y", "min(x / y, y / x, 3)"};
  const double kInputs[][3] = {{1.5, 2.0, -0.5}, {0.0, 3.0, 1.0}, {-2.0, 0.0, 4.0}, {1.0, 1.0, 0.0}, {1e300, -1e300, 2.0}};
  for (const char *text : kTexts) {
    for (const auto &input : kInputs) {
      Language<> fast;
      Language<CountingExpression> tree;
      for (const char *name : {"x", "y", "z"}) fast.Var(name) = tree.Var(name) = input[name[0] - 'x'];
      fast.Var("s") = tree.Var("s") = 7;
      auto fastOutcome = ExprTest::FailureOf(fast, text);
      auto treeOutcome = ExprTest::FailureOf(tree, text);
      SCOPED_TRACE(std::string(text) + " at x=" + std::to_string(input[0]) + " y=" + std::to_string(input[1]));
      auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
      ASSERT_EQ(fastOutcome.type, treeOutcome.type);
      EXPECT_TRUE(same(fastOutcome.value, treeOutcome.value)) << fastOutcome.value << " " << treeOutcome.value;
      ASSERT_EQ(fast.values.GetCount(), tree.values.GetCount());
      for (size_t i = 0; i < fast.values.GetCount(); ++i)
        EXPECT_TRUE(same(*fast.values.GetItem(i).GetAddress(), *tree.values.GetItem(i).GetAddress()))
            << fast.values.GetItem(i).GetName();
    }
  }
}

}  // namespace
