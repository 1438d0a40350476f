#pragma once
// Local evaluation of a Float in-port along a curve: the port asks its
// source for the value at a position from 0 to 1 (an unconnected port keeps
// its typed-in value), as Bars and Oscilloscope read their signal.

#include <algorithm>

#include "scene/PortValues.h"

// The port's value at position t.
inline float SampleLocal(CPortFloat &port, float t) {
  port.Update(t);
  return port.m_Value;
}

// A file or a connection can ask for any count: the line buffers stay
// within the ports' range of 0 to 10000.
inline int LocalCurveCount(int requested) { return std::clamp(requested, 0, 10000); }
