#pragma once
// Reading the render target lines of the recorder (CreateTarget, BeginTarget,
// EndTarget, ReleaseTarget) among the calls around them.

#include <initializer_list>
#include <string>
#include <vector>

#include "render/RecordRender.h"

// The recorder's calls that begin with one of `prefixes`, in order.
inline std::vector<std::string> CallsStartingWith(const CRecordRender &render,
                                                  std::initializer_list<const char *> prefixes) {
  std::vector<std::string> calls;
  for (const std::string &c : render.m_Calls)
    for (const char *p : prefixes)
      if (c.rfind(p, 0) == 0) {
        calls.push_back(c);
        break;
      }
  return calls;
}
