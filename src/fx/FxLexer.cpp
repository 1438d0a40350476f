#include "fx/FxLexer.h"

#include <cctype>
#include <cstdio>
#include <cstring>

namespace {
// Longest first, so that the first match is the longest.
const char *const kPuncts[] = {"<<=", ">>=", "...", "++", "--", "==", "!=", "<=", ">=", "&&", "||", "+=",
                               "-=",  "*=",  "/=",  "%=", "&=", "|=", "^=", "<<", ">>", "::", "##", "#",
                               "(",   ")",   "[",   "]",  "{",  "}",  ";",  ",",  ".",  ":",  "?",  "<",
                               ">",   "=",   "+",   "-",  "*",  "/",  "%",  "!",  "~",  "&",  "|",  "^"};

bool IsIdentStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool IsIdentChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }
bool IsDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

// Scans a number from `i`; returns its end and whether it is a float.
size_t ScanNumber(std::string_view s, size_t i, bool &isFloat) {
  isFloat = false;
  if (s[i] == '0' && i + 1 < s.size() && (s[i + 1] == 'x' || s[i + 1] == 'X')) {
    i += 2;
    while (i < s.size() && std::isxdigit(static_cast<unsigned char>(s[i]))) ++i;
  } else {
    while (i < s.size() && IsDigit(s[i])) ++i;
    if (i < s.size() && s[i] == '.') {
      isFloat = true;
      ++i;
      while (i < s.size() && IsDigit(s[i])) ++i;
    }
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
      size_t j = i + 1;
      if (j < s.size() && (s[j] == '+' || s[j] == '-')) ++j;
      if (j < s.size() && IsDigit(s[j])) {
        isFloat = true;
        i = j;
        while (i < s.size() && IsDigit(s[i])) ++i;
      }
    }
  }
  // Precision and sign suffixes: 1.0f, 0.5h, 2x, 3u, 4l
  while (i < s.size() && strchr("fFhHxXuUlL", s[i]) && !(i + 1 < s.size() && IsIdentChar(s[i + 1]))) {
    if (strchr("fFhHxX", s[i])) isFloat = true;
    ++i;
  }
  return i;
}

size_t ScanString(std::string_view s, size_t i, std::string &value, bool &closed) {
  closed = false;
  for (++i; i < s.size(); ++i) {
    char c = s[i];
    if (c == '"') {
      closed = true;
      return i + 1;
    }
    if (c == '\\' && i + 1 < s.size()) {
      char e = s[++i];
      value += e == 'n' ? '\n' : e == 't' ? '\t' : e;
    } else {
      value += c;
    }
  }
  return i;
}
}  // namespace

void LexLine(std::string_view s, FxLocation at, std::vector<FxToken> &out, CFxDiagnostics &diag) {
  size_t i = 0;
  bool spaced = false;
  while (i < s.size()) {
    char c = s[i];
    if (std::isspace(static_cast<unsigned char>(c))) {
      ++i;
      spaced = true;
      continue;
    }
    FxToken t;
    t.at = at;
    t.spaced = spaced;
    spaced = false;
    if (IsIdentStart(c)) {
      size_t b = i;
      while (i < s.size() && IsIdentChar(s[i])) ++i;
      t.kind = EFxTok::Identifier;
      t.text = s.substr(b, i - b);
    } else if (IsDigit(c) || (c == '.' && i + 1 < s.size() && IsDigit(s[i + 1]))) {
      bool isFloat = false;
      size_t e = ScanNumber(s, i, isFloat);
      t.kind = isFloat ? EFxTok::Float : EFxTok::Int;
      t.text = s.substr(i, e - i);
      i = e;
    } else if (c == '"') {
      bool closed = false;
      i = ScanString(s, i, t.text, closed);
      t.kind = EFxTok::String;
      if (!closed) diag.Error(at, "unterminated string");
    } else {
      for (const char *p : kPuncts) {
        size_t n = strlen(p);
        if (s.compare(i, n, p) == 0) {
          t.kind = EFxTok::Punct;
          t.text = p;
          i += n;
          break;
        }
      }
      if (t.kind == EFxTok::End) {
        char message[48];
        unsigned char u = static_cast<unsigned char>(c);
        if (std::isprint(u)) snprintf(message, sizeof message, "unexpected character '%c'", c);
        else snprintf(message, sizeof message, "unexpected character 0x%02x", u);
        diag.Error(at, message);
        ++i;
        continue;
      }
    }
    out.push_back(std::move(t));
  }
}

std::string StripComments(std::string_view s) {
  std::string out;
  out.reserve(s.size());
  size_t i = 0;
  while (i < s.size()) {
    char c = s[i];
    if (c == '"') {
      size_t e = i + 1;
      while (e < s.size() && s[e] != '"' && s[e] != '\n') e += (s[e] == '\\' && e + 1 < s.size()) ? 2 : 1;
      if (e < s.size() && s[e] == '"') ++e;
      out.append(s.substr(i, e - i));
      i = e;
    } else if (c == '/' && i + 1 < s.size() && s[i + 1] == '/') {
      while (i < s.size() && s[i] != '\n') ++i;
    } else if (c == '/' && i + 1 < s.size() && s[i + 1] == '*') {
      out += ' ';
      for (i += 2; i < s.size() && !(s[i] == '*' && i + 1 < s.size() && s[i + 1] == '/'); ++i)
        if (s[i] == '\n') out += '\n';
      i = i < s.size() ? i + 2 : i;
    } else {
      out += c;
      ++i;
    }
  }
  return out;
}
