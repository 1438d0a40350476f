// The language's text: tokens, precedence and associativity, statements,
// and what is refused.

#include "ExprTestSupport.h"
#include "expr/Token.h"

#include <cmath>
#include <vector>

namespace {

using ExprEval::Exception;
using ExprEval::Token;
using ExprTest::Eval;
using ExprTest::MessageOf;

std::vector<Token> Tokens(const std::string &text) {
  std::vector<Token> tokens;
  ExprEval::Tokenize(text, tokens);
  return tokens;
}

TEST(Tokens, KindsAndInclusiveByteSpans) {
  auto tokens = Tokens("ab+ 12.5*(c)^&d,e;=-/");
  std::vector<int> types;
  for (const Token &t : tokens) types.push_back(t.type);
  EXPECT_EQ(types, (std::vector<int>{Token::Identifier, Token::Plus, Token::Number, Token::Multiply, Token::OpenParen,
                                     Token::Identifier, Token::CloseParen, Token::Exponent, Token::Reference,
                                     Token::Identifier, Token::Comma, Token::Identifier, Token::Semicolon,
                                     Token::Assign, Token::Minus, Token::Divide}));
  EXPECT_EQ(tokens[0].identifier, "ab");
  EXPECT_EQ(tokens[0].start, 0u);
  EXPECT_EQ(tokens[0].end, 1u);
  EXPECT_EQ(tokens[2].value, 12.5);
  EXPECT_EQ(tokens[2].start, 4u);
  EXPECT_EQ(tokens[2].end, 7u);
  EXPECT_TRUE(tokens[1].identifier.empty());
}

TEST(Tokens, NumbersHaveNoExponentAndNoSign) {
  EXPECT_EQ(Tokens(".5")[0].value, 0.5);
  EXPECT_EQ(Tokens("1.")[0].value, 1.0);
  EXPECT_EQ(Tokens(".")[0].value, 0.0);
  EXPECT_EQ(Tokens("0.1")[0].value, 0.1);
  EXPECT_EQ(Tokens("123456.789")[0].value, 123456.789);
  EXPECT_EQ(Tokens("3.141592653589793")[0].value, 3.141592653589793);
  auto twoNumbers = Tokens("1.2.3");
  ASSERT_EQ(twoNumbers.size(), 2u);
  EXPECT_EQ(twoNumbers[0].value, 1.2);
  EXPECT_EQ(twoNumbers[1].value, 0.3);
  auto exponent = Tokens("1e5");
  ASSERT_EQ(exponent.size(), 2u);
  EXPECT_EQ(exponent[1].identifier, "e5");
  EXPECT_EQ(Tokens("-3").size(), 2u);
}

TEST(Tokens, IdentifiersTakeADotOnlyBeforeANameCharacter) {
  EXPECT_EQ(Tokens("a.b_c")[0].identifier, "a.b_c");
  EXPECT_EQ(Tokens("pos.x")[0].identifier, "pos.x");
  EXPECT_EQ(Tokens("_v2.a.b")[0].identifier, "_v2.a.b");
  auto split = Tokens("a.5");
  ASSERT_EQ(split.size(), 2u);
  EXPECT_EQ(split[0].identifier, "a");
  EXPECT_EQ(split[1].value, 0.5);
  EXPECT_EQ(Tokens("a.")[0].identifier, "a");
}

TEST(Tokens, CommentsRunToTheLineEnd) {
  EXPECT_EQ(Tokens("1 # 2 + $ junk\n+ 3 # more\r* 4").size(), 5u);
  EXPECT_EQ(Eval("1 + # one\n2"), 3.0);
  EXPECT_EQ(Eval("# heading\r\n\t 7"), 7.0);
}

TEST(Tokens, UnknownBytesAndEmptyTexts) {
  auto failure = ExprTest::FailureOf("1 + $");
  EXPECT_EQ(failure.type, Exception::UnknownToken);
  EXPECT_EQ(failure.message, "Unknown token");
  EXPECT_EQ(failure.start, 4);
  EXPECT_EQ(failure.end, 4);
  EXPECT_EQ(MessageOf("a\xc3\xa9"), "Unknown token");
  EXPECT_EQ(MessageOf("1\v"), "Unknown token");
  EXPECT_EQ(MessageOf(""), "Empty Expression");
  EXPECT_EQ(MessageOf("  \t\n "), "Empty Expression");
  EXPECT_EQ(MessageOf("# only a comment"), "Empty Expression");
}

TEST(Grammar, PrecedenceAndAssociativity) {
  EXPECT_EQ(Eval("1 - 2 - 3"), -4.0);
  EXPECT_EQ(Eval("8 / 4 / 2"), 1.0);
  EXPECT_EQ(Eval("2 ^ 3 ^ 2"), 64.0);  // left-associative
  EXPECT_EQ(Eval("1 + 2 * 3"), 7.0);
  EXPECT_EQ(Eval("2 * 3 ^ 2"), 18.0);
  EXPECT_EQ(Eval("(1 + 2) * 3"), 9.0);
  EXPECT_EQ(Eval("10 - 4 + 3"), 9.0);
  EXPECT_EQ(Eval("12 / 3 * 2"), 8.0);
}

TEST(Grammar, SignsBindLooserThanPowerAndMayFollowOperators) {
  EXPECT_EQ(Eval("-2 ^ 2"), -4.0);
  EXPECT_EQ(Eval("2 ^ -1"), 0.5);
  EXPECT_EQ(Eval("+3"), 3.0);
  EXPECT_EQ(Eval("- - 3"), 3.0);
  EXPECT_EQ(Eval("2 * -3 ^ 2"), -18.0);
  EXPECT_EQ(Eval("b = 2; 5 * -b"), -10.0);
  EXPECT_EQ(Eval("b = 2; 5 - -b"), 7.0);
  EXPECT_EQ(Eval("b = 2; a = -b; a"), -2.0);
  EXPECT_EQ(Eval("-(1 + 2) * 2"), -6.0);
}

TEST(Grammar, StatementsAndAssignments) {
  EXPECT_EQ(Eval("a = b = 3; a + b"), 6.0);
  EXPECT_EQ(Eval("(1; 2)"), 2.0);
  EXPECT_EQ(Eval("a = 1;"), 1.0);
  EXPECT_EQ(Eval("(a = 1; a + 2) * 2"), 6.0);
  EXPECT_EQ(Eval("x = 0; if(x, a = 1; a + 1, b = 5; b * 2)"), 10.0);
  EXPECT_EQ(Eval("a.b = 1; a.b"), 1.0);
}

TEST(Grammar, UnknownNamesAreVariablesThatReadZero) {
  ExprTest::Language<> language;
  EXPECT_FALSE(language.Has("x"));
  EXPECT_EQ(language.Eval("x"), 0.0);
  EXPECT_TRUE(language.Has("x"));
  EXPECT_FALSE(language.values.IsConstant("x"));
  EXPECT_EQ(language.Eval("X = 2; x"), 0.0);  // names are case-sensitive
}

TEST(Grammar, SyntaxErrors) {
  for (const char *text : {"()", "(1)(2)", "a b", "1 2", "1e5", "1.2.3", "1 +", "* 2", "+", "-", ";a", "a;;b", ";",
                           "3 = 4", "a + 1 = 2", "= 1", "a =", "2(3)", "sin(1)(2)", "min(,1)", "min(1,)", "min(1,,2)",
                           "rand(&)", "rand(&a b)", "rand(&1)", "rand(1 &a)", "&", ",", "1, 2", "a & b"}) {
    auto failure = ExprTest::FailureOf(text);
    EXPECT_EQ(failure.type, Exception::Syntax) << text;
    EXPECT_EQ(failure.message, "Syntax Error") << text;
  }
}

TEST(Grammar, UnmatchedParentheses) {
  for (const char *text : {"(1", "1)", "((1)", "(1))", "sin(1))", "sin((1)", ")(", "a = (1; 2"}) {
    EXPECT_EQ(MessageOf(text), "Unmatched Parenthesis") << text;
  }
  auto closing = ExprTest::FailureOf("1 + 2)");
  EXPECT_EQ(closing.start, 5);
  EXPECT_EQ(closing.end, 5);
  auto unclosed = ExprTest::FailureOf("(1 + 2");  // reported at the region's end
  EXPECT_EQ(unclosed.start, 5);
  EXPECT_EQ(unclosed.end, 5);
}

TEST(Grammar, SpansOfOtherFailures) {
  auto call = ExprTest::FailureOf("1 + sin(1, 2)");
  EXPECT_EQ(call.type, Exception::InvalidArgumentCount);
  EXPECT_EQ(call.name, "sin");
  EXPECT_EQ(call.start, 7);  // the open parenthesis
  EXPECT_EQ(call.end, 12);   // the close parenthesis
  auto paren = ExprTest::FailureOf("(1)(2)");
  EXPECT_EQ(paren.start, 0);
  EXPECT_EQ(paren.end, 2);
  auto constant = ExprTest::FailureOf("PI = 3");
  EXPECT_EQ(constant.name, "PI");
  EXPECT_EQ(constant.start, 0);
  EXPECT_EQ(constant.end, 1);
}

TEST(Grammar, UnknownFunctionNamesItsSpan) {
  auto failure = ExprTest::FailureOf("nosuch(1)");
  EXPECT_EQ(failure.type, Exception::NotFound);
  EXPECT_EQ(failure.name, "nosuch");
  EXPECT_EQ(failure.message, "Variable not found at 0 5");
  EXPECT_EQ(MessageOf("1 + fn(2)"), "Variable not found at 4 5");
  EXPECT_EQ(MessageOf("Sin(1)"), "Variable not found at 0 2");
}

TEST(Grammar, AFailedParseLeavesNoTreeButKeepsAddedVariables) {
  ExprTest::Language<> language;
  language.Eval("1");
  EXPECT_EQ(ExprTest::FailureOf(language, "q = 1 + (").type, Exception::UnmatchedParenthesis);
  EXPECT_TRUE(language.expression.IsEmpty());
  EXPECT_THROW(language.expression.Evaluate(), ExprEval::EmptyExpressionException);
  EXPECT_EQ(ExprTest::FailureOf(language, "q = 1 + r )").type, Exception::UnmatchedParenthesis);
  EXPECT_EQ(ExprTest::FailureOf(language, "q = 1 +").type, Exception::Syntax);
  EXPECT_TRUE(language.Has("q"));
  EXPECT_EQ(language.Eval("q"), 0.0);
}

TEST(Grammar, AbsurdlyDeepTextsFailCleanly) {
  std::string parens = std::string(10000, '(') + "1" + std::string(10000, ')');
  EXPECT_EQ(MessageOf(parens), "Expression too complex");
  std::string sum = "1";
  for (int i = 1; i < 100000; ++i) sum += "+1";
  EXPECT_EQ(MessageOf(sum), "Expression too complex");
  EXPECT_EQ(MessageOf(std::string(10000, '-') + "1"), "Expression too complex");
  std::string calls;
  for (int i = 0; i < 5000; ++i) calls += "abs(";
  calls += "1" + std::string(5000, ')');
  EXPECT_EQ(MessageOf(calls), "Expression too complex");
  auto failure = ExprTest::FailureOf(parens);
  EXPECT_EQ(failure.type, Exception::TooComplex);
}

TEST(Grammar, DeepButReasonableTextsWork) {
  std::string parens = std::string(400, '(') + "1" + std::string(400, ')');
  EXPECT_EQ(Eval(parens), 1.0);
  std::string sum = "1";
  for (int i = 1; i < 400; ++i) sum += "+1";
  EXPECT_EQ(Eval(sum), 400.0);
  std::string statements;
  for (int i = 0; i < 100000; ++i) statements += "a = a + 1;";
  EXPECT_EQ(Eval(statements), 100000.0);  // a flat sequence is no nesting
  std::string arguments = "max(0";
  for (int i = 1; i <= 20000; ++i) arguments += "," + std::to_string(i);
  EXPECT_EQ(Eval(arguments + ")"), 20000.0);
}

}  // namespace
