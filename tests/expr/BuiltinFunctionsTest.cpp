// The standard functions: results, argument limits, and when the math
// library's error state makes them fail.

#include "ExprTestSupport.h"

#include <cfloat>
#include <cmath>
#include <vector>

namespace {

using ExprEval::Exception;
using ExprTest::Eval;
using ExprTest::MessageOf;

struct Case {
  const char *text;
  double expected;
};

void ExpectAll(const std::vector<Case> &cases) {
  for (const Case &c : cases) EXPECT_DOUBLE_EQ(Eval(c.text), c.expected) << c.text;
}

TEST(BuiltinFunctions, NumbersAndRounding) {
  ExpectAll({{"abs(-2.5)", 2.5},     {"abs(3)", 3},          {"mod(7, 3)", 1},       {"mod(7, -3)", 1},
             {"mod(-7, 3)", -1},     {"mod(5.5, 2)", 1.5},   {"ipart(-1.5)", -1},    {"ipart(2.7)", 2},
             {"fpart(-1.5)", -0.5},  {"fpart(2.25)", 0.25},  {"ceil(1.2)", 2},       {"ceil(-1.2)", -1},
             {"floor(1.8)", 1},      {"floor(-1.2)", -2},    {"deg(PI)", 180},       {"rad(180)", M_PI},
             {"deg(1)", 180.0 / M_PI}, {"sqrt(16)", 4},      {"exp(1)", M_E},        {"ln(E)", 1},
             {"log(1000)", 3},       {"logn(8, 2)", 3},      {"logn(100, 10)", 2},   {"E", 2.718281828459045},
             {"PI", 3.141592653589793}});
}

TEST(BuiltinFunctions, MinimumAndMaximumOfAnyCount) {
  ExpectAll({{"min(3, 1, 2)", 1}, {"max(3, 1, 2)", 3}, {"min(2, 2)", 2}, {"max(-1, -5, -3, -0.5)", -0.5}});
  // The running value changes only on a strictly smaller (larger) argument,
  // so the first of equal arguments wins: -0 before 0 stays -0.
  EXPECT_TRUE(std::signbit(Eval("min(-0, 0)")));
  EXPECT_FALSE(std::signbit(Eval("min(0, -0)")));
  EXPECT_TRUE(std::signbit(Eval("max(-0, 0)")));
}

TEST(BuiltinFunctions, Trigonometry) {
  ExpectAll({{"sin(PI / 2)", 1},      {"cos(0)", 1},          {"tan(PI / 4)", std::tan(M_PI / 4)},
             {"sinh(1)", std::sinh(1.0)}, {"cosh(1)", std::cosh(1.0)}, {"tanh(0.5)", std::tanh(0.5)},
             {"asin(1)", M_PI / 2},   {"acos(-1)", M_PI},     {"atan(1)", M_PI / 4},
             {"atan2(1, 0)", M_PI / 2}, {"atan2(0, -1)", M_PI}, {"atan2(-1, -1)", -3 * M_PI / 4}});
}

TEST(BuiltinFunctions, PolarAndRectangular) {
  ExprTest::Language<> l;
  EXPECT_DOUBLE_EQ(l.Eval("rect2pol(-1, -1, &r, &a)"), std::sqrt(2.0));
  EXPECT_DOUBLE_EQ(l.Var("a"), 5 * M_PI / 4);  // moved into 0 .. 2 pi
  EXPECT_EQ(l.Eval("rect2pol(2, 0, &r, &a); a"), 0.0);
  EXPECT_DOUBLE_EQ(l.Eval("pol2rect(2, PI, &x, &y)"), -2.0);
  EXPECT_NEAR(l.Var("y"), 0.0, 1e-15);
}

TEST(BuiltinFunctions, ChoicesAndComparisons) {
  ExpectAll({{"if(1, 10, 20)", 10},          {"if(0, 10, 20)", 20},         {"if(-0.5, 10, 20)", 10},
             {"select(-1, 10, 20, 30)", 10}, {"select(0, 10, 20, 30)", 20}, {"select(1, 10, 20, 30)", 30},
             {"select(1, 10, 20)", 20},      {"select(-3, 10, 20)", 10},    {"equal(2, 2)", 1},
             {"equal(2, 3)", 0},             {"above(3, 2)", 1},            {"above(2, 2)", 0},
             {"below(1, 2)", 1},             {"below(2, 2)", 0},            {"and(1, 2)", 1},
             {"and(1, 0)", 0},               {"and(0, 1)", 0},              {"or(0, 0)", 0},
             {"or(0, -2)", 1},               {"not(0)", 1},                 {"not(0.1)", 0}});
}

TEST(BuiltinFunctions, RangesClipClampAndRescale) {
  ExpectAll({{"clip(5, 0, 3)", 3},          {"clip(-1, 0, 3)", 0},         {"clip(2, 0, 3)", 2},
             {"clamp(5, 0, 3)", 2},         {"clamp(-1, 0, 3)", 2},        {"clamp(3, 0, 3)", 0},
             {"clamp(7, 2, 2)", 2},         {"clamp(1.5, 1, 2)", 1.5},     {"clamp(-2.5, -1, 1)", -0.5},
             {"rescale(5, 0, 10, 0, 1)", 0.5}, {"rescale(7, 2, 2, 4, 9)", 4}, {"rescale(15, 0, 10, 0, 1)", 1.5},
             {"rescale(2, 1, 3, 10, 0)", 5}});
}

TEST(BuiltinFunctions, PolynomialsHighestPowerFirst) {
  ExpectAll({{"poly(2, 1, 0, 0)", 4}, {"poly(2, 3, 2, 1)", 17}, {"poly(5, 7)", 7}, {"poly(-1, 1, 1, 1, 1)", 0},
             {"poly(0, 4, 5)", 5}});
}

TEST(BuiltinFunctions, ArgumentLimits) {
  struct Limits {
    const char *name;
    int minValues, maxValues;  // -1: open
  };
  const Limits kLimits[] = {
      {"abs", 1, 1},   {"mod", 2, 2},   {"ipart", 1, 1},    {"fpart", 1, 1},     {"min", 2, -1},  {"max", 2, -1},
      {"sqrt", 1, 1},  {"sin", 1, 1},   {"cos", 1, 1},      {"tan", 1, 1},       {"sinh", 1, 1},  {"cosh", 1, 1},
      {"tanh", 1, 1},  {"asin", 1, 1},  {"acos", 1, 1},     {"atan", 1, 1},      {"atan2", 2, 2}, {"log", 1, 1},
      {"ln", 1, 1},    {"exp", 1, 1},   {"logn", 2, 2},     {"ceil", 1, 1},      {"floor", 1, 1}, {"deg", 1, 1},
      {"rad", 1, 1},   {"if", 3, 3},    {"select", 3, 4},   {"equal", 2, 2},     {"above", 2, 2}, {"below", 2, 2},
      {"clip", 3, 3},  {"clamp", 3, 3}, {"rescale", 5, 5}, {"poly", 2, -1},     {"and", 2, 2},   {"or", 2, 2},
      {"not", 1, 1},
  };
  auto call = [](const char *name, int count) {
    std::string text = std::string(name) + "(";
    for (int i = 0; i < count; ++i) text += i ? ", 1" : "1";
    return text + ")";
  };
  for (const Limits &limits : kLimits) {
    if (limits.minValues > 0) {
      EXPECT_EQ(MessageOf(call(limits.name, limits.minValues - 1)), "Invalid number of arguments") << limits.name;
    }
    // logn(1, 1) fails, but not for its count.
    EXPECT_NE(ExprTest::FailureOf(call(limits.name, limits.minValues)).type, Exception::InvalidArgumentCount)
        << limits.name;
    if (limits.maxValues >= 0)
      EXPECT_EQ(MessageOf(call(limits.name, limits.maxValues + 1)), "Invalid number of arguments") << limits.name;
    else
      EXPECT_EQ(MessageOf(call(limits.name, 40)), "") << limits.name;
    EXPECT_EQ(MessageOf(std::string(limits.name) + "(&r, 1, 1, 1, 1)"), "Invalid number of arguments") << limits.name;
  }
  EXPECT_EQ(ExprTest::FailureOf("min(1)").name, "min");
  EXPECT_EQ(MessageOf("rect2pol(1, 2, &a, &b)"), "");
  EXPECT_EQ(MessageOf("rect2pol(1, 2, &a, &b, &c)"), "Invalid number of arguments");
}

TEST(BuiltinFunctions, MathErrorsFailWithTheFunctionsName) {
  struct Failing {
    const char *text, *name;
  };
  for (const Failing &f : std::vector<Failing>{{"sqrt(-1)", "sqrt"},      {"ln(0)", "ln"},
                                               {"ln(-1)", "ln"},          {"log(0)", "log"},
                                               {"asin(2)", "asin"},       {"acos(-1.5)", "acos"},
                                               {"mod(1, 0)", "mod"},      {"exp(1000)", "exp"},
                                               {"cosh(1000)", "cosh"},    {"sinh(-1000)", "sinh"},
                                               {"logn(8, 1)", "logn"},    {"logn(8, 0)", "logn"},
                                               {"logn(-8, 2)", "logn"},   {"poly(10 ^ 200, 1, 0, 0)", "poly"},
                                               {"0 ^ -1", "^"},           {"(0 - 8) ^ (1 / 3)", "^"},
                                               {"10 ^ 400", "^"}}) {
    auto failure = ExprTest::FailureOf(f.text);
    EXPECT_EQ(failure.type, Exception::Math) << f.text;
    EXPECT_EQ(failure.message, "Math exception") << f.text;
    EXPECT_EQ(failure.name, f.name) << f.text;
  }
}

TEST(BuiltinFunctions, UnderflowAndUncheckedCallsAreNoErrors) {
  EXPECT_EQ(Eval("exp(-1000)"), 0.0);
  EXPECT_EQ(Eval("10 ^ -400"), 0.0);
  EXPECT_EQ(Eval("poly(10 ^ -200, 1, 0, 0)"), 0.0);
  EXPECT_GT(Eval("exp(-708.5)"), 0.0);  // a subnormal result
  EXPECT_EQ(Eval("pow(0, -1)"), INFINITY);
  EXPECT_TRUE(std::isnan(Eval("pow(-1, 0.5)")));
  // The error an unchecked call leaves behind does not fail the next one.
  EXPECT_EQ(Eval("sqrt(if(pow(-1, 0.5), 4, 4))"), 2.0);
  EXPECT_EQ(Eval("x = pow(0, -1); sqrt(4) + exp(0)"), 3.0);
  EXPECT_EQ(Eval("2 ^ if(pow(-1, 0.5), 2, 2)"), 4.0);
  // NaN in, NaN out, without failing; clamp, rescale and the rest never fail.
  EXPECT_TRUE(std::isnan(Eval("sin(pow(-1, 0.5))")));
  EXPECT_TRUE(std::isnan(Eval("clamp(pow(0, -1), 0, 1)")));
  EXPECT_EQ(Eval("rescale(pow(0, -1), 0, 1, 0, 1)"), INFINITY);
  EXPECT_EQ(Eval("abs(pow(0, -1))"), INFINITY);
}

}  // namespace
