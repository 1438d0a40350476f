// The language's text: tokens, precedence, statements, and what is refused.
#include "ExprTestSupport.h"
#include "expr/Token.h"

#include <cmath>
#include <vector>

namespace {

using ExprEval::Exception;
using ExprEval::Token;
using ExprTest::ExpectMessages;
using ExprTest::ExpectValues;
using ExprTest::FailureOf;
using ExprTest::MessageOf;

std::vector<Token> Tokens(const std::string &text) {
  std::vector<Token> tokens;
  ExprEval::Tokenize(text, tokens);
  return tokens;
}

TEST(Tokens, KindsValuesAndInclusiveByteSpans) {
  auto tokens = Tokens("ab+ 12.5*(c)^&d,e;=-/");
  std::vector<int> types;
  for (const Token &t : tokens) types.push_back(t.type);
  EXPECT_EQ(types, (std::vector<int>{Token::Identifier, Token::Plus, Token::Number, Token::Multiply, Token::OpenParen,
                                     Token::Identifier, Token::CloseParen, Token::Exponent, Token::Reference,
                                     Token::Identifier, Token::Comma, Token::Identifier, Token::Semicolon,
                                     Token::Assign, Token::Minus, Token::Divide}));
  EXPECT_EQ(tokens[0].identifier, "ab");
  EXPECT_EQ(tokens[0].end, 1u);
  EXPECT_EQ(tokens[2].value, 12.5);
  EXPECT_EQ(tokens[2].start, 4u);
  EXPECT_EQ(tokens[2].end, 7u);
}

TEST(Tokens, NumbersAndNames) {
  for (auto [text, value] : std::vector<std::pair<const char *, double>>{
           {".5", 0.5}, {"1.", 1}, {".", 0}, {"0.1", 0.1}, {"123456.789", 123456.789}, {"3.141592653589793", M_PI}})
    EXPECT_EQ(Tokens(text)[0].value, value) << text;
  EXPECT_EQ(Tokens("1.2.3")[1].value, 0.3);  // two numbers
  EXPECT_EQ(Tokens("1e5")[1].identifier, "e5");  // no exponent form
  EXPECT_EQ(Tokens("-3").size(), 2u);            // no sign in a number
  EXPECT_EQ(Tokens("_v2.a.b_c")[0].identifier, "_v2.a.b_c");
  EXPECT_EQ(Tokens("a.5")[1].value, 0.5);  // a dot joins names only before a name
  EXPECT_EQ(Tokens("a.")[0].identifier, "a");
  EXPECT_EQ(Tokens("1 # 2 + $ junk\n+ 3 # more\r* 4").size(), 5u);
}

TEST(Tokens, UnknownBytesAndEmptyTexts) {
  ExpectMessages({{"$", "Unknown token"}, {"a\xc3\xa9", "Unknown token"}, {"1\v", "Unknown token"},
                  {"", "Empty Expression"}, {"  \t\n ", "Empty Expression"}, {"# only a comment", "Empty Expression"}});
}

TEST(Grammar, PrecedenceAssociativityAndSigns) {
  ExpectValues({{"1 - 2 - 3", -4},     {"8 / 4 / 2", 1},       {"2 ^ 3 ^ 2", 64},      {"1 + 2 * 3", 7},
                {"2 * 3 ^ 2", 18},     {"(1 + 2) * 3", 9},     {"12 / 3 * 2", 8},      {"-2 ^ 2", -4},
                {"2 ^ -1", 0.5},       {"+3", 3},              {"- - 3", 3},           {"2 * -3 ^ 2", -18},
                {"b = 2; 5 * -b", -10}, {"b = 2; 5 - -b", 7},  {"b = 2; a = -b; a", -2}, {"-(1 + 2) * 2", -6},
                {"1 + # one\n2", 3},   {"# heading\r\n\t 7", 7}});
}

TEST(Grammar, StatementsAssignmentsAndVariables) {
  ExpectValues({{"a = b = 3; a + b", 6}, {"(1; 2)", 2}, {"a = 1;", 1}, {"(a = 1; a + 2) * 2", 6},
                {"x = 0; if(x, a = 1; a + 1, b = 5; b * 2)", 10}, {"a.b = 1; a.b", 1}, {"X = 2; x", 0}});
  ExprTest::Language<> language;
  EXPECT_EQ(language.Eval("x"), 0.0);  // an unknown name is a variable that reads 0
  EXPECT_TRUE(language.Has("x"));
  EXPECT_FALSE(language.values.IsConstant("x"));
}

TEST(Grammar, Refusals) {
  for (const char *text : {"()", "(1)(2)", "a b", "1 2", "1e5", "1.2.3", "1 +", "* 2", "+", "-", ";a", "a;;b", ";",
                           "3 = 4", "a + 1 = 2", "= 1", "a =", "2(3)", "sin(1)(2)", "min(,1)", "min(1,)", "min(1,,2)",
                           "rand(&)", "rand(&a b)", "rand(&1)", "rand(1 &a)", "&", ",", "1, 2", "a & b"})
    EXPECT_EQ(MessageOf(text), "Syntax Error") << text;
  for (const char *text : {"(1", "1)", "((1)", "(1))", "sin(1))", "sin((1)", ")(", "a = (1; 2"})
    EXPECT_EQ(MessageOf(text), "Unmatched Parenthesis") << text;
  ExpectMessages({{"PI = 3", "Trying to assign value to constant"}, {"sin()", "Invalid number of arguments"},
                  {"sin(1, 2)", "Invalid number of arguments"}, {"nosuch(1)", "Variable not found at 0 5"},
                  {"1 + fn(2)", "Variable not found at 4 5"}, {"Sin(1)", "Variable not found at 0 2"}});
}

TEST(Grammar, SpansAndNamesOfFailures) {
  struct Expected {
    const char *text;
    int type;
    long start, end;
    const char *name;
  };
  for (const Expected &e : {Expected{"1 + $", Exception::UnknownToken, 4, 4, ""},
                            Expected{"1 + 2)", Exception::UnmatchedParenthesis, 5, 5, ""},
                            Expected{"(1 + 2", Exception::UnmatchedParenthesis, 5, 5, ""},  // at the region's end
                            Expected{"1 + sin(1, 2)", Exception::InvalidArgumentCount, 7, 12, "sin"},
                            Expected{"(1)(2)", Exception::Syntax, 0, 2, ""},
                            Expected{"PI = 3", Exception::ConstantAssign, 0, 1, "PI"},
                            Expected{"nosuch(1)", Exception::NotFound, 0, 5, "nosuch"}}) {
    auto failure = FailureOf(e.text);
    EXPECT_EQ(failure.type, e.type) << e.text;
    EXPECT_EQ(failure.start, e.start) << e.text;
    EXPECT_EQ(failure.end, e.end) << e.text;
    EXPECT_EQ(failure.name, e.name) << e.text;
  }
}

TEST(Grammar, AFailedParseLeavesNoTreeButKeepsAddedVariables) {
  ExprTest::Language<> language;
  language.Eval("1");
  EXPECT_EQ(FailureOf(language, "q = 1 +").type, Exception::Syntax);
  EXPECT_TRUE(language.expression.IsEmpty());
  EXPECT_THROW(language.expression.Evaluate(), ExprEval::EmptyExpressionException);
  EXPECT_TRUE(language.Has("q"));
}

// ExprLimitsTest pins which deep texts are refused; this pins the message and what still works.
TEST(Grammar, DeepButReasonableAndLongFlatTextsWork) {
  EXPECT_EQ(MessageOf(std::string(10000, '(') + "1" + std::string(10000, ')')), "Expression too complex");
  std::string sum = "1", statements, arguments = "max(0";
  for (int i = 1; i < 400; ++i) sum += "+1";
  for (int i = 0; i < 100000; ++i) statements += "a = a + 1;";
  for (int i = 1; i <= 20000; ++i) arguments += "," + std::to_string(i);
  EXPECT_EQ(ExprTest::Eval(std::string(400, '(') + "1" + std::string(400, ')')), 1.0);
  EXPECT_EQ(ExprTest::Eval(sum), 400.0);
  EXPECT_EQ(ExprTest::Eval(statements), 100000.0);
  EXPECT_EQ(ExprTest::Eval(arguments + ")"), 20000.0);
}

}  // namespace
