#pragma once
// The fixed rate of the grid simulations: at most 30 steps a second, one
// step per update, and after a stall of more than half a second the backlog
// is dropped instead of caught up.

#include <cmath>

class CFixedStep {
 public:
  static constexpr float Step = 0.033333335f;

  // Adds the frame's time; true when a step is due (or `force`d), which
  // then takes its time from the accumulator. A broken frame time counts
  // as none, so the accumulator stays a number.
  bool Due(float deltaTime, bool force = false) {
    if (std::isfinite(deltaTime) && deltaTime > 0.0f) m_Accumulator += deltaTime;
    if (!force && !(m_Accumulator >= Step)) return false;
    m_Accumulator -= Step;
    if (m_Accumulator > 0.5f) m_Accumulator = 0.0f;
    return true;
  }
  float Accumulator() const { return m_Accumulator; }

 private:
  float m_Accumulator = 0.0f;
};
