#include "app/FrameTimer.h"

#include "core/Clock.h"

void CFrameTimer::Start() {
  IClock &clock = GetClock();
  m_HighResolution = clock.HasHighResolution();
  m_Frequency = m_HighResolution ? clock.Frequency() : 1000;
  if (m_Frequency <= 0) m_Frequency = 1;
  Tick();
  m_Delta = 0.0f;
}

void CFrameTimer::Tick() {
  IClock &clock = GetClock();
  int64_t now = m_HighResolution ? clock.Counter() : static_cast<int64_t>(clock.Milliseconds());
  m_Delta = static_cast<float>(static_cast<double>(now - m_LastCounter) / static_cast<double>(m_Frequency));
  m_LastCounter = now;
}
