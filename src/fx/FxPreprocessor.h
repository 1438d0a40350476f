#pragma once
// The C-like preprocessor in front of every effect: object and function
// macros, conditionals, and includes through a callback. Its output is the
// token stream the parser reads, each token still carrying its file and line.

#include "fx/FxLexer.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

// Fills `text` with the named file's content; false when there is none, and
// then `text` may hold the reason.
using FxIncludeCallback = std::function<bool(const std::string &name, std::string &text)>;

class CFxPreprocessor {
 public:
  // Limits no real effect comes near, so that a hostile one fails fast.
  static constexpr int MaxIncludeDepth = 16;
  static constexpr int MaxIncludes = 64;  // #include lines followed in one compile
  // Bytes of tokens that macro expansion may produce, intermediate copies
  // included: bounds both time and memory of expansion.
  static constexpr size_t MaxExpansionBytes = size_t{64} << 20;
  static constexpr int MaxExpansionDepth = 200;  // macros and arguments inside each other
  static constexpr int MaxConditionDepth = 256;  // parentheses and unary operators in #if

  CFxPreprocessor(CFxDiagnostics &diag, FxIncludeCallback include = {});

  // A macro defined before the text, as by `#define name value`.
  void Define(const std::string &name, const std::string &value);
  std::vector<FxToken> Run(const std::string &text, const std::string &fileName);

 private:
  struct Macro {
    bool function = false;
    std::vector<std::string> params;
    std::vector<FxToken> body;
  };
  struct Cond {
    bool active;     // lines in this branch are kept
    bool taken;      // some branch of this #if was active
    bool elseSeen;
    bool parentActive;
    FxLocation at;
  };

  void ProcessFile(const std::string &text, int file, int depth);
  void Directive(const std::vector<FxToken> &line, FxLocation at, int depth);
  void DefineDirective(const std::vector<FxToken> &line, FxLocation at);
  void IncludeDirective(const std::vector<FxToken> &line, FxLocation at, int depth);
  void Conditional(const std::string &name, const std::vector<FxToken> &line, FxLocation at);
  bool Active() const { return m_Conds.empty() || m_Conds.back().active; }
  void Flush();
  void Expand(const std::vector<FxToken> &in, std::vector<FxToken> &out, FxLocation at);
  // Charges `tokens` to the expansion budget; false, with one error, when spent.
  bool Spend(const std::vector<FxToken> &tokens, size_t from, size_t to, FxLocation at);
  bool ExpandCall(const std::vector<FxToken> &in, size_t &i, const Macro &m, std::vector<FxToken> &out);
  long EvalCondition(const std::vector<FxToken> &line, size_t from, FxLocation at);

  CFxDiagnostics &m_Diag;
  FxIncludeCallback m_Include;
  std::map<std::string, Macro> m_Macros;
  std::vector<std::string> m_Active;  // macros being expanded: never expanded again inside
  std::vector<std::string> m_IncludePath;  // the file being read and those that include it
  int m_Includes = 0;
  int m_ExpandDepth = 0;
  size_t m_ExpansionBytes = 0;
  bool m_ExpansionSpent = false;
  std::vector<Cond> m_Conds;
  std::vector<FxToken> m_Pending;  // lines waiting for expansion
  std::vector<FxToken> m_Out;
};
