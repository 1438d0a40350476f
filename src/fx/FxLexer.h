#pragma once
// Tokens of Cg effect text. The preprocessor feeds the lexer one logical line
// at a time (comments already gone), so a token never spans lines.

#include "fx/FxDiagnostics.h"

#include <string>
#include <string_view>
#include <vector>

enum class EFxTok { End, Identifier, Int, Float, String, Punct };

struct FxToken {
  EFxTok kind = EFxTok::End;
  std::string text;  // string literals without quotes, escapes resolved
  FxLocation at;
  bool spaced = false;  // blank before it (tells `F(x)` from `F (x)` in #define)

  bool Is(const char *punct) const { return kind == EFxTok::Punct && text == punct; }
  bool IsWord(const char *word) const { return kind == EFxTok::Identifier && text == word; }
};

// Appends the tokens of one line; reports bad characters and unterminated
// strings and carries on after them.
void LexLine(std::string_view line, FxLocation at, std::vector<FxToken> &out, CFxDiagnostics &diag);

// Replaces comments by blanks, keeping every newline so that line numbers
// stay true; string literals are left intact.
std::string StripComments(std::string_view text);
