// CExprEvaluator as nodes use it: bound variables, compile and evaluate,
// and a failing text that stays off until its text changes.

#include "ExprTestSupport.h"
#include "expr/ExprEvaluator.h"
#include "support/LogCapture.h"

#include <string>
#include <vector>

namespace {

// A node's pattern: register doubles, attach, compile, fill, evaluate, read.
struct Node {
  double in = 0.0, out = 0.0;
  CExprEvaluator evaluator;
  Node() {
    evaluator.AddAddress("in", &in, 1.0);
    evaluator.GetValueList().AddAddress("out", &out, 0.0);
    evaluator.Attach();
  }
};

TEST(ExprEvaluator, TextsTalkThroughBoundAndInventedVariables) {
  Node node;
  EXPECT_EQ(node.in, 1.0);  // the default, written when registered
  ASSERT_TRUE(node.evaluator.Compile("out = in * 2 + PI; 5"));
  EXPECT_TRUE(node.evaluator.m_Compiled);
  node.in = 3.0;
  EXPECT_EQ(node.evaluator.Evaluate(), 5.0);
  EXPECT_EQ(node.out, 6.0 + 3.141592653589793);
  // Invented variables keep their state until the next compile.
  ASSERT_TRUE(node.evaluator.Compile("count = count + 1; out = count"));
  node.evaluator.Evaluate();
  node.evaluator.Evaluate();
  EXPECT_EQ(node.evaluator.Evaluate(), 3.0);
  node.in = 8.0;
  node.out = 4.0;
  ASSERT_TRUE(node.evaluator.Compile("count"));  // every variable back to its default
  EXPECT_EQ(node.in, 1.0);
  EXPECT_EQ(node.out, 0.0);
  EXPECT_EQ(node.evaluator.Evaluate(), 0.0);
}

TEST(ExprEvaluator, AFailedEvaluationLogsOnceAndStopsUntilTheTextChanges) {
  LogCapture log;
  Node node;
  ASSERT_TRUE(node.evaluator.Compile("out = out + 1; 1 / 0"));
  EXPECT_EQ(node.evaluator.Evaluate(), 0.0);
  EXPECT_FALSE(node.evaluator.m_Compiled);
  EXPECT_EQ(node.evaluator.Evaluate(), 0.0);
  EXPECT_EQ(node.evaluator.Evaluate(), 0.0);
  EXPECT_EQ(node.out, 1.0);  // evaluated once only
  ASSERT_EQ(log.lines, std::vector<std::string>{"Divide by zero"});
  EXPECT_TRUE(log.errors.empty());  // an ordinary log line
  ASSERT_TRUE(node.evaluator.Compile("out = 7"));
  EXPECT_EQ(node.evaluator.Evaluate(), 7.0);
}

TEST(ExprEvaluator, ParseFailuresAreLoggedAndLeaveItOffButAnEmptyTextIsSilent) {
  LogCapture log;
  Node node;
  // One logged refusal stands for all: the grammar test pins each message.
  EXPECT_FALSE(node.evaluator.Compile("out = nosuch(1)"));
  EXPECT_FALSE(node.evaluator.m_Compiled);
  EXPECT_EQ(node.evaluator.Evaluate(), 0.0);
  EXPECT_EQ(log.lines, std::vector<std::string>{"Variable not found at 6 11"});
  log.lines.clear();
  ASSERT_TRUE(node.evaluator.Compile("1"));
  EXPECT_FALSE(node.evaluator.Compile(""));
  EXPECT_FALSE(node.evaluator.m_Compiled);
  EXPECT_TRUE(log.lines.empty());
  EXPECT_FALSE(node.evaluator.Compile("   # blank"));
  EXPECT_EQ(log.lines, std::vector<std::string>{"Empty Expression"});
}

TEST(ExprEvaluator, OffersEveryFunctionOnceAttached) {
  LogCapture log;
  CExprEvaluator evaluator;
  double time = 2.0;
  evaluator.AddAddress("time", &time, 2.0);
  EXPECT_TRUE(evaluator.Compile("1 + 2"));
  EXPECT_FALSE(evaluator.Compile("x"));  // not attached: no names yet
  EXPECT_EQ(log.lines, std::vector<std::string>{"Expression error"});
  evaluator.Attach();
  ASSERT_TRUE(evaluator.Compile("noise1(0) + clamp(5, 0, 3) + floor(E) + length(3, 4)"));
  EXPECT_EQ(evaluator.Evaluate(), 9.0);
  ASSERT_TRUE(evaluator.Compile("time * 10 + time(4)"));  // a variable and a function of one name
  EXPECT_EQ(evaluator.Evaluate(), 20.0);
}

}  // namespace
