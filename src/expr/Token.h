#pragma once
// One lexical element of an expression text.

#include <string>
#include <vector>

namespace ExprEval {

struct Token {
  enum Type {
    OpenParen = 1,
    CloseParen = 2,
    Assign = 3,
    Plus = 4,
    Minus = 5,
    Multiply = 6,
    Divide = 7,
    Exponent = 8,
    Reference = 9,
    Comma = 10,
    Semicolon = 11,
    Identifier = 12,
    Number = 13,
  };

  int type = 0;
  std::string identifier;  // empty unless type is Identifier
  double value = 0.0;      // the number of a Number token
  unsigned start = 0;      // byte index of the first character
  unsigned end = 0;        // byte index of the last character (inclusive)
};

// Splits text into tokens. Throws EmptyExpressionException for an empty text
// and UnknownTokenException at the first byte that starts no token.
void Tokenize(const std::string &text, std::vector<Token> &tokens);

}  // namespace ExprEval
