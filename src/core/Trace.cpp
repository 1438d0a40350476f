#include "core/Trace.h"

#include "core/Log.h"

namespace Trace {
const char *g_Names[MaxDepth];
int g_Depth = 0;

const char *Indent() {
  // Longer than the deepest stack; a pointer into it gives `g_Depth` blanks.
  static const char blanks[] =
      "                                                                        ";
  static_assert(sizeof(blanks) > MaxDepth);
  return blanks + (sizeof(blanks) - 1 - g_Depth);
}
}  // namespace Trace

CTraceScopeLogged::CTraceScopeLogged(const char *name) : m_Name(name) {
  Trace::Push(name);
  Log("%s>%s", Trace::Indent(), name);
}

CTraceScopeLogged::~CTraceScopeLogged() {
  Log("%s<%s", Trace::Indent(), m_Name);
  Trace::Pop();
}
