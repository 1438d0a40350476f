#include "fx/FxPreprocessor.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace {
// Integer expression of an #if line, by precedence climbing.
class CConditionEval {
 public:
  CConditionEval(const std::vector<FxToken> &t, CFxDiagnostics &diag, FxLocation at) : m_T(t), m_Diag(diag), m_At(at) {}

  long Run() {
    long v = Ternary();
    if (m_I < m_T.size()) Fail("unexpected '" + m_T[m_I].text + "' in #if");
    return m_Failed ? 0 : v;
  }

 private:
  static int Precedence(const std::string &op) {
    static const char *const levels[][4] = {{"||"}, {"&&"}, {"|"}, {"^"}, {"&"}, {"==", "!="}, {"<", ">", "<=", ">="},
                                            {"<<", ">>"}, {"+", "-"}, {"*", "/", "%"}};
    for (int l = 0; l < 10; ++l)
      for (const char *o : levels[l])
        if (o && op == o) return l + 1;
    return 0;
  }
  static long Apply(const std::string &op, long a, long b, bool &divZero) {
    if (op == "||") return a || b;
    if (op == "&&") return a && b;
    if (op == "|") return a | b;
    if (op == "^") return a ^ b;
    if (op == "&") return a & b;
    if (op == "==") return a == b;
    if (op == "!=") return a != b;
    if (op == "<") return a < b;
    if (op == ">") return a > b;
    if (op == "<=") return a <= b;
    if (op == ">=") return a >= b;
    if (op == "<<") return (b >= 0 && b < 63) ? static_cast<long>(static_cast<unsigned long>(a) << b) : 0;
    if (op == ">>") return (b >= 0 && b < 63) ? a >> b : 0;
    if (op == "+") return static_cast<long>(static_cast<unsigned long>(a) + static_cast<unsigned long>(b));
    if (op == "-") return static_cast<long>(static_cast<unsigned long>(a) - static_cast<unsigned long>(b));
    if (op == "*") return static_cast<long>(static_cast<unsigned long>(a) * static_cast<unsigned long>(b));
    if (b == 0 || (a == std::numeric_limits<long>::min() && b == -1)) {
      divZero = true;
      return 0;
    }
    return op == "/" ? a / b : a % b;
  }
  // Counts recursion, so that deep nesting is an error, not a stack overflow.
  class CNest {
   public:
    explicit CNest(CConditionEval &e) : m_E(e) {
      if (++m_E.m_Depth > CFxPreprocessor::MaxConditionDepth)
        m_E.Fail("#if nested deeper than " + std::to_string(CFxPreprocessor::MaxConditionDepth));
    }
    ~CNest() { --m_E.m_Depth; }
    bool Over() const { return m_E.m_Failed; }

   private:
    CConditionEval &m_E;
  };

  long Ternary() {
    CNest nest(*this);
    if (nest.Over()) return 0;
    long c = Binary(1);
    if (!Accept("?")) return c;
    long a = Ternary();
    if (!Accept(":")) Fail("expected ':' in #if");
    long b = Ternary();
    return c ? a : b;
  }
  long Binary(int minLevel) {
    long lhs = Unary();
    while (m_I < m_T.size() && m_T[m_I].kind == EFxTok::Punct) {
      int level = Precedence(m_T[m_I].text);
      if (level < minLevel || level == 0) break;
      std::string op = m_T[m_I++].text;
      long rhs = Binary(level + 1);
      bool divZero = false;
      lhs = Apply(op, lhs, rhs, divZero);
      if (divZero) Fail("division by zero in #if");
    }
    return lhs;
  }
  long Unary() {
    CNest nest(*this);
    if (nest.Over()) return 0;
    if (Accept("!")) return !Unary();
    // in unsigned arithmetic: the most negative value negates to itself
    if (Accept("-")) return static_cast<long>(0UL - static_cast<unsigned long>(Unary()));
    if (Accept("+")) return Unary();
    if (Accept("~")) return ~Unary();
    if (Accept("(")) {
      long v = Ternary();
      if (!Accept(")")) Fail("expected ')' in #if");
      return v;
    }
    if (m_I >= m_T.size()) {
      Fail("missing value in #if");
      return 0;
    }
    const FxToken &t = m_T[m_I++];
    if (t.kind == EFxTok::Int) return strtol(t.text.c_str(), nullptr, 0);
    if (t.kind == EFxTok::Identifier) return t.text == "true" ? 1 : 0;  // undefined names are 0
    Fail("unexpected '" + t.text + "' in #if");
    return 0;
  }
  bool Accept(const char *p) {
    if (m_I < m_T.size() && m_T[m_I].Is(p)) {
      ++m_I;
      return true;
    }
    return false;
  }
  void Fail(const std::string &message) {
    if (!m_Failed) m_Diag.Error(m_At, message);
    m_Failed = true;
    m_I = m_T.size();
  }

  const std::vector<FxToken> &m_T;
  CFxDiagnostics &m_Diag;
  FxLocation m_At;
  size_t m_I = 0;
  int m_Depth = 0;
  bool m_Failed = false;
};

std::vector<std::string> SplitLines(const std::string &text) {
  std::vector<std::string> lines;
  std::string line;
  for (char c : text) {
    if (c == '\n') {
      lines.push_back(std::move(line));
      line.clear();
    } else if (c != '\r') {
      line += c;
    }
  }
  lines.push_back(std::move(line));
  return lines;
}

int ParamIndex(const std::vector<std::string> &params, const FxToken &t) {
  if (t.kind != EFxTok::Identifier) return -1;
  for (size_t i = 0; i < params.size(); ++i)
    if (params[i] == t.text) return static_cast<int>(i);
  return -1;
}
}  // namespace

CFxPreprocessor::CFxPreprocessor(CFxDiagnostics &diag, FxIncludeCallback include)
    : m_Diag(diag), m_Include(std::move(include)) {}

void CFxPreprocessor::Define(const std::string &name, const std::string &value) {
  Macro m;
  LexLine(value, FxLocation{}, m.body, m_Diag);
  m_Macros[name] = std::move(m);
}

std::vector<FxToken> CFxPreprocessor::Run(const std::string &text, const std::string &fileName) {
  m_Out.clear();
  m_Conds.clear();
  m_IncludePath = {fileName};
  m_Includes = 0;
  m_ExpansionBytes = 0;
  m_ExpansionSpent = false;
  ProcessFile(text, m_Diag.AddFile(fileName), 0);
  Flush();
  for (const Cond &c : m_Conds) m_Diag.Error(c.at, "#if without #endif");
  m_Conds.clear();
  return std::move(m_Out);
}

void CFxPreprocessor::ProcessFile(const std::string &text, int file, int depth) {
  std::vector<std::string> lines = SplitLines(StripComments(text));
  size_t condsAtStart = m_Conds.size();
  for (size_t n = 0; n < lines.size(); ++n) {
    FxLocation at{file, static_cast<int>(n + 1)};
    std::string line = lines[n];
    while (!line.empty() && line.back() == '\\' && n + 1 < lines.size()) {
      line.pop_back();
      line += lines[++n];
    }
    size_t first = line.find_first_not_of(" \t");
    if (first != std::string::npos && line[first] == '#') {
      std::vector<FxToken> tokens;
      LexLine(std::string_view(line).substr(first + 1), at, tokens, m_Diag);
      Flush();
      Directive(tokens, at, depth);
    } else if (Active()) {
      LexLine(line, at, m_Pending, m_Diag);
    }
  }
  Flush();
  while (m_Conds.size() > condsAtStart) {
    m_Diag.Error(m_Conds.back().at, "#if without #endif");
    m_Conds.pop_back();
  }
}

void CFxPreprocessor::Directive(const std::vector<FxToken> &line, FxLocation at, int depth) {
  if (line.empty()) return;
  const std::string &name = line[0].text;
  if (name == "if" || name == "ifdef" || name == "ifndef" || name == "elif" || name == "else" || name == "endif") {
    Conditional(name, line, at);
    return;
  }
  if (!Active()) return;
  if (name == "define") {
    DefineDirective(line, at);
  } else if (name == "undef") {
    if (line.size() < 2) m_Diag.Error(at, "#undef without a name");
    else m_Macros.erase(line[1].text);
  } else if (name == "include") {
    IncludeDirective(line, at, depth);
  } else if (name == "error" || name == "warning") {
    std::string text = "#" + name;
    for (size_t i = 1; i < line.size(); ++i) text += " " + line[i].text;
    if (name == "error") m_Diag.Error(at, text);
    else m_Diag.Warning(at, text);
  } else if (name != "pragma" && name != "line") {
    m_Diag.Error(at, "unknown directive #" + name);
  }
}

void CFxPreprocessor::DefineDirective(const std::vector<FxToken> &line, FxLocation at) {
  if (line.size() < 2 || line[1].kind != EFxTok::Identifier) {
    m_Diag.Error(at, "#define without a name");
    return;
  }
  Macro m;
  size_t i = 2;
  if (i < line.size() && line[i].Is("(") && !line[i].spaced) {
    m.function = true;
    for (++i; i < line.size() && !line[i].Is(")"); ++i) {
      if (line[i].Is(",")) continue;
      if (line[i].kind != EFxTok::Identifier) {
        m_Diag.Error(at, "bad parameter list in #define " + line[1].text);
        return;
      }
      m.params.push_back(line[i].text);
    }
    if (i == line.size()) {
      m_Diag.Error(at, "missing ')' in #define " + line[1].text);
      return;
    }
    ++i;
  }
  m.body.assign(line.begin() + static_cast<long>(i), line.end());
  m_Macros[line[1].text] = std::move(m);
}

void CFxPreprocessor::IncludeDirective(const std::vector<FxToken> &line, FxLocation at, int depth) {
  std::string name;
  if (line.size() >= 2 && line[1].kind == EFxTok::String) {
    name = line[1].text;
  } else if (line.size() >= 3 && line[1].Is("<")) {
    for (size_t i = 2; i < line.size() && !line[i].Is(">"); ++i) name += line[i].text;
  }
  if (name.empty()) {
    m_Diag.Error(at, "#include expects \"file\" or <file>");
    return;
  }
  // Names are relative to the effect's folder; the effect itself may be
  // named by its whole path.
  auto same = [&name](const std::string &file) {
    return file == name || (file.size() > name.size() && file.ends_with(name) &&
                            file[file.size() - name.size() - 1] == '/');
  };
  std::string text;
  if (depth + 1 > MaxIncludeDepth) {
    m_Diag.Error(at, "#include nested too deeply: " + name);
  } else if (std::any_of(m_IncludePath.begin(), m_IncludePath.end(), same)) {
    m_Diag.Error(at, "#include of '" + name + "' inside itself");
  } else if (++m_Includes > MaxIncludes) {
    m_Diag.Error(at, "more than " + std::to_string(MaxIncludes) + " #include files: " + name);
  } else if (!m_Include || !m_Include(name, text)) {
    m_Diag.Error(at, "cannot open include file '" + name + "'" + (text.empty() ? "" : ": " + text));
  } else {
    m_IncludePath.push_back(name);
    ProcessFile(text, m_Diag.AddFile(name), depth + 1);
    m_IncludePath.pop_back();
  }
}

void CFxPreprocessor::Conditional(const std::string &name, const std::vector<FxToken> &line, FxLocation at) {
  if (name == "if" || name == "ifdef" || name == "ifndef") {
    bool parent = Active();
    bool value = false;
    if (parent && name == "if") {
      value = EvalCondition(line, 1, at) != 0;
    } else if (parent) {
      if (line.size() < 2) m_Diag.Error(at, "#" + name + " without a name");
      value = line.size() >= 2 && m_Macros.count(line[1].text) != 0;
      if (name == "ifndef") value = !value;
    }
    m_Conds.push_back(Cond{parent && value, value, false, parent, at});
    return;
  }
  if (m_Conds.empty()) {
    m_Diag.Error(at, "#" + name + " without #if");
    return;
  }
  Cond &c = m_Conds.back();
  if (name == "endif") {
    m_Conds.pop_back();
  } else if (c.elseSeen) {
    m_Diag.Error(at, "#" + name + " after #else");
  } else if (name == "else") {
    c.elseSeen = true;
    c.active = c.parentActive && !c.taken;
    c.taken = true;
  } else {  // elif
    bool value = c.parentActive && !c.taken && EvalCondition(line, 1, at) != 0;
    c.active = value;
    c.taken = c.taken || value;
  }
}

long CFxPreprocessor::EvalCondition(const std::vector<FxToken> &line, size_t from, FxLocation at) {
  std::vector<FxToken> resolved;
  for (size_t i = from; i < line.size(); ++i) {
    if (!line[i].IsWord("defined")) {
      resolved.push_back(line[i]);
      continue;
    }
    bool paren = i + 1 < line.size() && line[i + 1].Is("(");
    size_t n = i + (paren ? 2 : 1);
    if (n >= line.size() || line[n].kind != EFxTok::Identifier) {
      m_Diag.Error(at, "'defined' without a name");
      return 0;
    }
    FxToken v = line[n];
    v.kind = EFxTok::Int;
    v.text = m_Macros.count(line[n].text) ? "1" : "0";
    resolved.push_back(v);
    i = n + (paren ? 1 : 0);
  }
  std::vector<FxToken> expanded;
  Expand(resolved, expanded, at);
  return CConditionEval(expanded, m_Diag, at).Run();
}

void CFxPreprocessor::Flush() {
  if (m_Pending.empty()) return;
  std::vector<FxToken> pending;
  pending.swap(m_Pending);
  Expand(pending, m_Out, pending.front().at);
}

bool CFxPreprocessor::Spend(const std::vector<FxToken> &tokens, size_t from, size_t to, FxLocation at) {
  for (size_t i = from; i < to && !m_ExpansionSpent; ++i) m_ExpansionBytes += sizeof(FxToken) + tokens[i].text.size();
  if (!m_ExpansionSpent && m_ExpansionBytes > MaxExpansionBytes) {
    m_Diag.Error(at, "macro expansion larger than " + std::to_string(MaxExpansionBytes >> 20) + " MB");
    m_ExpansionSpent = true;
  }
  return !m_ExpansionSpent;
}

void CFxPreprocessor::Expand(const std::vector<FxToken> &in, std::vector<FxToken> &out, FxLocation at) {
  if (m_ExpandDepth >= MaxExpansionDepth) {
    m_Diag.Error(at, "macro expansion too deep");
    return;
  }
  ++m_ExpandDepth;
  for (size_t i = 0; i < in.size() && !m_ExpansionSpent; ++i) {
    const FxToken &t = in[i];
    auto it = t.kind == EFxTok::Identifier ? m_Macros.find(t.text) : m_Macros.end();
    bool blocked = it == m_Macros.end();
    for (const std::string &a : m_Active) blocked = blocked || a == t.text;
    if (blocked) {
      if (Spend(in, i, i + 1, at)) out.push_back(t);
      continue;
    }
    const Macro m = it->second;  // a copy: expansion may not redefine, but stays safe if it does
    if (m.function) {
      if (i + 1 >= in.size() || !in[i + 1].Is("(")) {
        out.push_back(t);
        continue;
      }
      ExpandCall(in, i, m, out);
      continue;
    }
    if (!Spend(m.body, 0, m.body.size(), at)) break;
    std::vector<FxToken> body = m.body;
    for (FxToken &b : body) b.at = t.at;
    m_Active.push_back(t.text);
    Expand(body, out, t.at);
    m_Active.pop_back();
  }
  --m_ExpandDepth;
}

bool CFxPreprocessor::ExpandCall(const std::vector<FxToken> &in, size_t &i, const Macro &m, std::vector<FxToken> &out) {
  const FxToken &name = in[i];
  std::vector<std::vector<FxToken>> args(1);
  int level = 0;
  size_t j = i + 2;
  for (; j < in.size(); ++j) {
    if (in[j].Is("(")) ++level;
    if (in[j].Is(")") && level-- == 0) break;
    if (in[j].Is(",") && level == 0) args.emplace_back();
    else args.back().push_back(in[j]);
  }
  if (!Spend(in, i + 2, j, name.at)) {
    i = in.size();
    return false;
  }
  if (j >= in.size()) {
    m_Diag.Error(name.at, "unterminated call of macro " + name.text);
    i = in.size();
    return false;
  }
  i = j;
  if (m.params.empty() && args.size() == 1 && args[0].empty()) args.clear();
  if (args.size() != m.params.size()) {
    m_Diag.Error(name.at, "macro " + name.text + " expects " + std::to_string(m.params.size()) + " arguments");
    return false;
  }
  std::vector<FxToken> body;
  for (size_t b = 0; b < m.body.size(); ++b) {
    const FxToken &t = m.body[b];
    int p = ParamIndex(m.params, t);
    if (t.Is("#") && b + 1 < m.body.size() && ParamIndex(m.params, m.body[b + 1]) >= 0) {
      FxToken s{EFxTok::String, "", name.at};
      for (const FxToken &a : args[ParamIndex(m.params, m.body[++b])]) s.text += (s.text.empty() ? "" : " ") + a.text;
      body.push_back(s);
    } else if (t.Is("##") && !body.empty() && b + 1 < m.body.size()) {
      const FxToken &next = m.body[++b];
      int q = ParamIndex(m.params, next);
      std::vector<FxToken> rhs = q >= 0 ? args[q] : std::vector<FxToken>{next};
      if (!rhs.empty()) {
        body.back().text += rhs[0].text;
        body.insert(body.end(), rhs.begin() + 1, rhs.end());
      }
    } else if (p >= 0) {
      bool pasted = b + 1 < m.body.size() && m.body[b + 1].Is("##");
      if (pasted) body.insert(body.end(), args[p].begin(), args[p].end());
      else Expand(args[p], body, name.at);
    } else {
      body.push_back(t);
    }
  }
  if (!Spend(body, 0, body.size(), name.at)) return false;
  for (FxToken &t : body) t.at = name.at;
  m_Active.push_back(name.text);
  Expand(body, out, name.at);
  m_Active.pop_back();
  return true;
}
