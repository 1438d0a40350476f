#pragma once

#include <initializer_list>

#include "scene/Port.h"

// Pulls the given in-ports in the given order. Unlike UpdateInPorts it leaves
// the node's own change flag alone: nodes that only pass values on have no
// state that a change would invalidate.
inline void PullPorts(float time, std::initializer_list<CPort *> ports) {
  for (CPort *p : ports) p->Update(time);
}
