// The standard functions: results, argument limits, and when the math
// library's error state makes them fail.

#include "ExprTestSupport.h"

#include <cmath>
#include <sstream>

namespace {

using ExprEval::Exception;
using ExprTest::Eval;
using ExprTest::ExpectValues;
using ExprTest::MessageOf;

TEST(BuiltinFunctions, NumbersRoundingAndTrigonometry) {
  ExpectValues({{"abs(-2.5)", 2.5},      {"mod(7, 3)", 1},         {"mod(7, -3)", 1},        {"mod(-7, 3)", -1},
                {"mod(5.5, 2)", 1.5},    {"ipart(-1.5)", -1},      {"ipart(2.7)", 2},        {"fpart(-1.5)", -0.5},
                {"fpart(2.25)", 0.25},   {"ceil(-1.2)", -1},       {"floor(-1.2)", -2},      {"deg(PI)", 180},
                {"rad(180)", M_PI},      {"deg(1)", 180.0 / M_PI}, {"sqrt(16)", 4},          {"exp(1)", M_E},
                {"ln(E)", 1},            {"log(1000)", 3},         {"logn(8, 2)", 3},        {"logn(100, 10)", 2},
                {"sin(PI / 2)", 1},      {"cos(0)", 1},            {"tan(PI / 4)", std::tan(M_PI / 4)},
                {"sinh(1)", std::sinh(1.0)}, {"cosh(1)", std::cosh(1.0)}, {"tanh(0.5)", std::tanh(0.5)},
                {"asin(1)", M_PI / 2},   {"acos(-1)", M_PI},       {"atan(1)", M_PI / 4},    {"atan2(1, 0)", M_PI / 2},
                {"atan2(-1, -1)", -3 * M_PI / 4}, {"E", 2.718281828459045}, {"PI", 3.141592653589793},
                {"rect2pol(-1, -1, &r, &a); a", 5 * M_PI / 4}, {"rect2pol(2, 0, &r, &a); a", 0},
                {"pol2rect(2, PI, &x, &y)", -2}});
}

TEST(BuiltinFunctions, MinimumMaximumAndPolynomials) {
  ExpectValues({{"min(3, 1, 2)", 1}, {"max(3, 1, 2)", 3}, {"max(-1, -5, -3, -0.5)", -0.5}, {"poly(2, 1, 0, 0)", 4},
                {"poly(2, 3, 2, 1)", 17}, {"poly(5, 7)", 7}, {"poly(-1, 1, 1, 1, 1)", 0}, {"poly(0, 4, 5)", 5}});
  // Only a strictly better argument replaces the running value: of -0 and
  // 0 the first stays.
  EXPECT_TRUE(std::signbit(Eval("min(-0, 0)")));
  EXPECT_FALSE(std::signbit(Eval("min(0, -0)")));
  EXPECT_TRUE(std::signbit(Eval("max(-0, 0)")));
}

TEST(BuiltinFunctions, ChoicesComparisonsAndRanges) {
  ExpectValues({{"if(-0.5, 10, 20)", 10},  {"if(0, 10, 20)", 20},    {"select(-1, 10, 20, 30)", 10},
                {"select(0, 10, 20, 30)", 20}, {"select(1, 10, 20, 30)", 30}, {"select(1, 10, 20)", 20},
                {"equal(2, 2)", 1},        {"equal(2, 3)", 0},       {"above(3, 2)", 1},      {"above(2, 2)", 0},
                {"below(1, 2)", 1},        {"below(2, 2)", 0},       {"and(1, 2)", 1},        {"and(1, 0)", 0},
                {"or(0, 0)", 0},           {"or(0, -2)", 1},         {"not(0)", 1},           {"not(0.1)", 0},
                {"clip(5, 0, 3)", 3},      {"clip(-1, 0, 3)", 0},    {"clip(2, 0, 3)", 2},    {"clamp(5, 0, 3)", 2},
                {"clamp(-1, 0, 3)", 2},    {"clamp(3, 0, 3)", 0},    {"clamp(7, 2, 2)", 2},   {"clamp(-2.5, -1, 1)", -0.5},
                {"rescale(5, 0, 10, 0, 1)", 0.5}, {"rescale(7, 2, 2, 4, 9)", 4}, {"rescale(15, 0, 10, 0, 1)", 1.5},
                {"rescale(2, 1, 3, 10, 0)", 5}});
}

TEST(BuiltinFunctions, ArgumentLimits) {
  struct Limits {
    const char *names;  // separated by blanks
    int minValues, maxValues;  // -1: open
  };
  const Limits kLimits[] = {
      {"abs ipart fpart sqrt sin cos tan sinh cosh tanh asin acos atan log ln exp ceil floor deg rad not", 1, 1},
      {"mod atan2 logn equal above below and or", 2, 2}, {"if clip clamp", 3, 3}, {"select", 3, 4},
      {"rescale", 5, 5}, {"min max poly", 2, -1}};
  auto countFailure = [](const char *name, int count, const char *more = "") {
    std::string text = std::string(name) + "(" + more;
    for (int i = 0; i < count; ++i) text += (i || *more) ? ", 1" : "1";
    return ExprTest::FailureOf(text + ")").type == Exception::InvalidArgumentCount;
  };
  for (const Limits &limits : kLimits) {
    std::istringstream names(limits.names);
    for (std::string name; names >> name;) {
      const char *n = name.c_str();
      EXPECT_EQ(countFailure(n, limits.minValues - 1), limits.minValues > 0) << n;
      EXPECT_FALSE(countFailure(n, limits.minValues)) << n;
      EXPECT_EQ(countFailure(n, limits.maxValues < 0 ? 40 : limits.maxValues + 1), limits.maxValues >= 0) << n;
      EXPECT_TRUE(countFailure(n, limits.minValues, "&r")) << n;  // no references
    }
  }
  EXPECT_EQ(ExprTest::FailureOf("min(1)").name, "min");
  EXPECT_FALSE(countFailure("rect2pol", 2, "&a, &b"));
  EXPECT_TRUE(countFailure("rect2pol", 2, "&a, &b, &c"));
}

TEST(BuiltinFunctions, MathErrorsFailWithTheFunctionsName) {
  struct Failing {
    const char *text, *name;
  };
  for (const Failing &f : {Failing{"sqrt(-1)", "sqrt"}, {"ln(0)", "ln"}, {"ln(-1)", "ln"}, {"log(0)", "log"},
                           {"asin(2)", "asin"}, {"acos(-1.5)", "acos"}, {"mod(1, 0)", "mod"}, {"exp(1000)", "exp"},
                           {"cosh(1000)", "cosh"}, {"sinh(-1000)", "sinh"}, {"logn(8, 1)", "logn"},
                           {"logn(8, 0)", "logn"}, {"logn(-8, 2)", "logn"}, {"poly(10 ^ 200, 1, 0, 0)", "poly"},
                           {"0 ^ -1", "^"}, {"(0 - 8) ^ (1 / 3)", "^"}, {"10 ^ 400", "^"}}) {
    auto failure = ExprTest::FailureOf(f.text);
    EXPECT_EQ(failure.message, "Math exception") << f.text;
    EXPECT_EQ(failure.name, f.name) << f.text;
  }
}

TEST(BuiltinFunctions, UnderflowAndUncheckedCallsAreNoErrors) {
  ExpectValues({{"exp(-1000)", 0}, {"10 ^ -400", 0}, {"poly(10 ^ -200, 1, 0, 0)", 0}, {"pow(0, -1)", INFINITY},
                // The error an unchecked call leaves behind fails nothing later.
                {"sqrt(if(pow(-1, 0.5), 4, 4))", 2}, {"x = pow(0, -1); sqrt(4) + exp(0)", 3},
                {"2 ^ if(pow(-1, 0.5), 2, 2)", 4}, {"rescale(pow(0, -1), 0, 1, 0, 1)", INFINITY}});
  EXPECT_GT(Eval("exp(-708.5)"), 0.0);  // a subnormal result
  EXPECT_TRUE(std::isnan(Eval("pow(-1, 0.5)")));
  EXPECT_TRUE(std::isnan(Eval("sin(pow(-1, 0.5))")));  // NaN in, NaN out, no failure
  EXPECT_TRUE(std::isnan(Eval("clamp(pow(0, -1), 0, 1)")));
}

}  // namespace
