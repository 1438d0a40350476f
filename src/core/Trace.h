#pragma once
// A fixed stack of the function scopes open right now, printed by the crash
// report. A silent scope costs a compare, a store and an increment.

namespace Trace {
constexpr int MaxDepth = 64;
extern const char *g_Names[MaxDepth];
extern int g_Depth;

inline void Push(const char *name) {
  if (g_Depth < MaxDepth) g_Names[g_Depth++] = name;
}
inline void Pop() {
  if (g_Depth > 0) --g_Depth;
}
// The first `g_Depth` blanks of the indent buffer, for logged scopes.
const char *Indent();
}  // namespace Trace

class CTraceScope {
 public:
  explicit CTraceScope(const char *name) { Trace::Push(name); }
  ~CTraceScope() { Trace::Pop(); }
  CTraceScope(const CTraceScope &) = delete;
  CTraceScope &operator=(const CTraceScope &) = delete;
};

class CTraceScopeLogged {
 public:
  explicit CTraceScopeLogged(const char *name);
  ~CTraceScopeLogged();
  CTraceScopeLogged(const CTraceScopeLogged &) = delete;
  CTraceScopeLogged &operator=(const CTraceScopeLogged &) = delete;

 private:
  const char *m_Name;
};

#define VELMOR_TRACE_CAT2(a, b) a##b
#define VELMOR_TRACE_CAT(a, b) VELMOR_TRACE_CAT2(a, b)
#define TRACE_SCOPE(name) CTraceScope VELMOR_TRACE_CAT(traceScope_, __LINE__)(name)
#define TRACE_SCOPE_LOGGED(name) CTraceScopeLogged VELMOR_TRACE_CAT(traceScope_, __LINE__)(name)
