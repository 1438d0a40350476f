#pragma once

#include <cstdint>

// Seconds between ticks, from the high-resolution counter when there is one,
// else from the millisecond clock.
class CFrameTimer {
 public:
  void Start();
  void Tick();
  float GetDelta() const { return m_Delta; }

  bool m_HighResolution = false;
  int64_t m_LastCounter = 0;
  int64_t m_Frequency = 1;
  float m_Delta = 0.0f;
};
