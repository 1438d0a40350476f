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
class EvaluationOrder : public ::testing::Test {};
using Both = ::testing::Types<ExprEval::Expression, CountingExpression>;
TYPED_TEST_SUITE(EvaluationOrder, Both);

TYPED_TEST(EvaluationOrder, OperandsLeftToRightExceptDivision) {
  Language<TypeParam> l;
  EXPECT_EQ(l.Eval("a = 1; (a = a * 2) + (a = a + 3)"), 7.0);
  EXPECT_EQ(l.Eval("a = 1; (a = a * 2) - (a = a + 3)"), -3.0);
  EXPECT_EQ(l.Eval("a = 1; (a = a * 2) * (a = a + 3)"), 10.0);
  EXPECT_EQ(l.Eval("a = 1; (a = a + 1) ^ (a = a + 1)"), 8.0);
  // The divisor first.
  EXPECT_EQ(l.Eval("a = 1; (a = a * 2) / (a = a + 3)"), 2.0);
  // A variable operand is read when its turn comes.
  EXPECT_EQ(l.Eval("a = 1; a + (a = 5)"), 6.0);
  EXPECT_EQ(l.Eval("a = 1; (a = 5) + a"), 10.0);
  EXPECT_EQ(l.Eval("a = 2; (a = 0; 1) / a"), 0.5);
  EXPECT_EQ(l.Eval("a = 4; a / (a = 2)"), 1.0);
}

TYPED_TEST(EvaluationOrder, ADivisionByZeroSkipsTheDividend) {
  Language<TypeParam> l;
  l.Var("z") = 0.0;
  EXPECT_EQ(ExprTest::FailureOf(l, "a = 1; (a = 5) / z").message, "Divide by zero");
  EXPECT_EQ(l.Var("a"), 1.0);
  EXPECT_EQ(ExprTest::FailureOf(l, "a = 1; (a = 5) / 0").message, "Divide by zero");
  EXPECT_EQ(l.Var("a"), 1.0);
  EXPECT_EQ(ExprTest::FailureOf(l, "a = 1; (a = 5) / (z * 2)").message, "Divide by zero");
  EXPECT_EQ(l.Var("a"), 1.0);
  EXPECT_EQ(ExprTest::FailureOf(l, "1 / (a - a)").message, "Divide by zero");
  EXPECT_EQ(l.Eval("-0 + 1 / -1"), -1.0);
}

TYPED_TEST(EvaluationOrder, FunctionArguments) {
  Language<TypeParam> l;
  // In order, unless the function says otherwise.
  EXPECT_EQ(l.Eval("a = 0; min(a = a * 10 + 1, a = a * 10 + 2, a = a * 10 + 3); a"), 123.0);
  EXPECT_EQ(l.Eval("a = 0; noise2(a = a * 10 + 1, a = a * 10 + 2); a"), 21.0);
  EXPECT_EQ(l.Eval("a = 0; noise3(a = a * 10 + 1, a = a * 10 + 2, a = a * 10 + 3); a"), 321.0);
  EXPECT_EQ(l.Eval("a = 0; random(a = a * 10 + 1, a = a * 10 + 2); a"), 21.0);
  EXPECT_EQ(l.Eval("a = 0; logn(a = a * 10 + 8, a = a * 10 + 2); a"), 28.0);
  // length evaluates each argument once per factor.
  EXPECT_DOUBLE_EQ(l.Eval("a = 0; length(a = a + 1, 0)"), std::sqrt(2.0));
  EXPECT_EQ(l.Var("a"), 2.0);
}

TYPED_TEST(EvaluationOrder, OnlyTheChosenArmIsEvaluated) {
  Language<TypeParam> l;
  EXPECT_EQ(l.Eval("if(0, 1/0, 2)"), 2.0);
  EXPECT_EQ(l.Eval("if(3, 2, 1/0)"), 2.0);
  EXPECT_EQ(l.Eval("and(0, 1/0)"), 0.0);
  EXPECT_EQ(l.Eval("or(1, 1/0)"), 1.0);
  EXPECT_EQ(l.Eval("select(-1, 10, 1/0, 1/0)"), 10.0);
  EXPECT_EQ(l.Eval("select(0, 1/0, 20, 1/0)"), 20.0);
  EXPECT_EQ(l.Eval("select(1, 1/0, 1/0, 30)"), 30.0);
  EXPECT_EQ(l.Eval("a = 0; random(a = 1); a"), 0.0);  // one argument counts as none
  EXPECT_EQ(l.Eval("a = 0; beat(a = 1); a"), 1.0);    // no music: the fallback
  EXPECT_EQ(l.Eval("a = 0; band(a = 1, 0, 0); a"), 0.0);
}

TYPED_TEST(EvaluationOrder, ReferenceArguments) {
  Language<TypeParam> l;
  EXPECT_EQ(l.Eval("rect2pol(0, -1, &r, &a)"), 1.0);
  EXPECT_EQ(l.Var("r"), 1.0);
  EXPECT_DOUBLE_EQ(l.Var("a"), 3.0 * 3.141592653589793 / 2.0);
  EXPECT_EQ(l.Eval("rect2pol(&r2, 3, &a2, 4)"), 5.0);  // values and references interleave
  EXPECT_EQ(l.Var("r2"), 5.0);
  EXPECT_DOUBLE_EQ(l.Var("a2"), std::atan2(4.0, 3.0));
  EXPECT_DOUBLE_EQ(l.Eval("pol2rect(2, PI / 2, &x, &y); y"), 2.0);
  EXPECT_NEAR(l.Var("x"), 0.0, 1e-15);
  auto constant = ExprTest::FailureOf(l, "rect2pol(&PI, 1, &a, 2)");
  EXPECT_EQ(constant.type, Exception::ConstantReference);
  EXPECT_EQ(constant.message, "Expression error");
  EXPECT_EQ(constant.name, "PI");
  EXPECT_EQ(ExprTest::FailureOf(l, "rect2pol(1, 2, &r)").type, Exception::InvalidArgumentCount);
  EXPECT_EQ(ExprTest::FailureOf(l, "rect2pol(1, &q, &r, &s)").type, Exception::InvalidArgumentCount);
  EXPECT_EQ(ExprTest::FailureOf(l, "sin(&r)").type, Exception::InvalidArgumentCount);
}

TYPED_TEST(EvaluationOrder, MathFailuresHappenWhenReached) {
  Language<TypeParam> l;
  EXPECT_EQ(ExprTest::FailureOf(l, "a = 1; (a = 2) + sqrt(-1) + (a = 3)").message, "Math exception");
  EXPECT_EQ(l.Var("a"), 2.0);
  EXPECT_EQ(ExprTest::FailureOf(l, "a = 1; (a = 2) ^ (0 - 1) * 0 ^ -1 + (a = 3)").message, "Math exception");
  EXPECT_EQ(l.Var("a"), 2.0);
  l.Var("zero") = 0.0;
  auto power = ExprTest::FailureOf(l, "zero ^ -1");
  EXPECT_EQ(power.type, Exception::Math);
  EXPECT_EQ(power.name, "^");
}

TEST(AbortCountdown, EveryNodeVisitCountsWhenASubclassCanAbort) {
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
}

TEST(AbortCountdown, ShouldAbortStopsTheEvaluation) {
  Language<CountingExpression> l;
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
      "1 + 2 * 3 - 4 / 5 ^ 2",
      "-(x - 2) * -y / (z + 0.5) ^ 2",
      "x / y / z",
      "x / (y - y)",
      "(x = x + 1) / (y = 0)",
      "(x = 7) / y + x",
      "y / (x = 0) + 1",
      "3 / (x = 0; 2) + x",
      "2 ^ 3 ^ 2 + x ^ -y",
      "(0 - x) ^ 0.5",
      "x ^ 2000 - y",
      "0 ^ -1 + x",
      "x - (x = 10) - x",
      "x * (x = 3) * x + (y = y * 2) * y",
      "(x = -x) ^ (x = 2) + x",
      "sin(x * 3.1 + y) * 0.5 + cos(y * 2.3 - x) * 0.25 + x * y * 0.1",
      "if(x - 1, 1, 2)",
      "if(above(x, 1), x / 0, y / 2)",
      "rand(&s) * 2 - rand(&s) + s / 1000000",
      "1 / x + 1 / y + 1 / z",
      "x - -y * --z",
      "poly(x, 1, -2, 3) / (x - 1)",
      "2 * 3 + x * (4 - 1) / 2",
      "(1 + 2 + (3 + (4 + (5 + x)))) * (x + (y + (z + 1)))",
      "a = b = x * 2; a / b - (a = 0) / (b = 1) + a",
      "exp(x * -1000) + 10 ^ -400 * y",
      "min(x / y, y / x, 3)",
  };
  const double kInputs[][3] = {{1.5, 2.0, -0.5}, {0.0, 3.0, 1.0}, {-2.0, 0.0, 4.0}, {1.0, 1.0, 0.0}, {1e300, -1e300, 2.0}};
  for (const char *text : kTexts) {
    for (const auto &input : kInputs) {
      Language<> fast;
      Language<CountingExpression> tree;
      fast.Var("x") = tree.Var("x") = input[0];
      fast.Var("y") = tree.Var("y") = input[1];
      fast.Var("z") = tree.Var("z") = input[2];
      fast.Var("s") = tree.Var("s") = 7;
      auto fastOutcome = ExprTest::FailureOf(fast, text);
      auto treeOutcome = ExprTest::FailureOf(tree, text);
      SCOPED_TRACE(std::string(text) + " at x=" + std::to_string(input[0]) + " y=" + std::to_string(input[1]));
      ASSERT_EQ(fastOutcome.type, treeOutcome.type);
      if (std::isnan(treeOutcome.value))
        EXPECT_TRUE(std::isnan(fastOutcome.value));
      else
        EXPECT_EQ(fastOutcome.value, treeOutcome.value);
      ASSERT_EQ(fast.values.GetCount(), tree.values.GetCount());
      for (size_t i = 0; i < fast.values.GetCount(); ++i) {
        double a = *fast.values.GetItem(i).GetAddress(), b = *tree.values.GetItem(i).GetAddress();
        if (!(std::isnan(a) && std::isnan(b))) {
          EXPECT_EQ(a, b) << fast.values.GetItem(i).GetName();
        }
      }
    }
  }
}

}  // namespace
