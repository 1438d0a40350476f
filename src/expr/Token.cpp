#include "expr/Token.h"

#include "expr/Exception.h"

namespace ExprEval {
namespace {

bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }
bool IsLetter(unsigned char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool StartsIdentifier(unsigned char c) { return c == '_' || IsLetter(c); }

int SingleCharType(unsigned char c) {
  switch (c) {
    case '(': return Token::OpenParen;
    case ')': return Token::CloseParen;
    case '=': return Token::Assign;
    case '+': return Token::Plus;
    case '-': return Token::Minus;
    case '*': return Token::Multiply;
    case '/': return Token::Divide;
    case '^': return Token::Exponent;
    case '&': return Token::Reference;
    case ',': return Token::Comma;
    case ';': return Token::Semicolon;
    default: return 0;
  }
}

// All digits of both parts make one whole number in extended precision,
// divided once by the power of ten of the fraction: a decimal text becomes
// the double nearest to it in all but pathological cases.
size_t ReadNumber(const std::string &text, size_t pos, double &value) {
  long double whole = 0.0L;
  long double scale = 1.0L;
  size_t i = pos;
  for (; i < text.size() && IsDigit(text[i]); ++i) whole = whole * 10.0L + (text[i] - '0');
  if (i < text.size() && text[i] == '.') {
    for (++i; i < text.size() && IsDigit(text[i]); ++i) {
      whole = whole * 10.0L + (text[i] - '0');
      scale *= 10.0L;
    }
  }
  value = static_cast<double>(whole / scale);
  return i;
}

size_t ReadIdentifier(const std::string &text, size_t pos) {
  size_t i = pos;
  while (i < text.size()) {
    unsigned char c = text[i];
    if (c == '_' || IsLetter(c) || IsDigit(c)) {
      ++i;
    } else if (c == '.' && i + 1 < text.size() && StartsIdentifier(text[i + 1])) {
      i += 2;  // a dot joins names only when a name follows: pos.x, but not a.5
    } else {
      break;
    }
  }
  return i;
}

}  // namespace

void Tokenize(const std::string &text, std::vector<Token> &tokens) {
  tokens.clear();
  if (text.empty()) throw EmptyExpressionException();
  bool comment = false;
  size_t i = 0;
  while (i < text.size()) {
    unsigned char c = text[i];
    if (c == '\n' || c == '\r') {
      comment = false;
      ++i;
      continue;
    }
    if (comment || c == ' ' || c == '\t') {
      ++i;
      continue;
    }
    if (c == '#') {
      comment = true;
      ++i;
      continue;
    }
    Token token;
    token.start = static_cast<unsigned>(i);
    if (int type = SingleCharType(c)) {
      token.type = type;
      ++i;
    } else if (c == '.' || IsDigit(c)) {
      token.type = Token::Number;
      i = ReadNumber(text, i, token.value);
    } else if (StartsIdentifier(c)) {
      token.type = Token::Identifier;
      size_t end = ReadIdentifier(text, i);
      token.identifier.assign(text, i, end - i);
      i = end;
    } else {
      UnknownTokenException e;
      e.SetSpan(static_cast<long>(i), static_cast<long>(i));
      throw e;
    }
    token.end = static_cast<unsigned>(i - 1);
    tokens.push_back(std::move(token));
  }
}

}  // namespace ExprEval
