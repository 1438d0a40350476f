#pragma once
// The C-like preprocessor in front of every effect: object and function
// macros, conditionals, and includes through a callback. Its output is the
// token stream the parser reads, each token still carrying its file and line.

#include "fx/FxLexer.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

// Fills `text` with the named file's content; false when there is none.
using FxIncludeCallback = std::function<bool(const std::string &name, std::string &text)>;

class CFxPreprocessor {
 public:
  static constexpr int MaxIncludeDepth = 16;

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
  bool ExpandCall(const std::vector<FxToken> &in, size_t &i, const Macro &m, std::vector<FxToken> &out);
  long EvalCondition(const std::vector<FxToken> &line, size_t from, FxLocation at);

  CFxDiagnostics &m_Diag;
  FxIncludeCallback m_Include;
  std::map<std::string, Macro> m_Macros;
  std::vector<std::string> m_Active;  // macros being expanded: never expanded again inside
  std::vector<Cond> m_Conds;
  std::vector<FxToken> m_Pending;  // lines waiting for expansion
  std::vector<FxToken> m_Out;
};
