#include "platform/SoundSource.h"

#include "core/Clock.h"

double SoundTimerMilliseconds() {
  IClock &clock = GetClock();
  if (clock.HasHighResolution()) {
    const int64_t frequency = clock.Frequency();
    if (frequency > 0) return static_cast<double>(clock.Counter()) * 1000.0 / static_cast<double>(frequency);
  }
  return static_cast<double>(clock.Milliseconds());
}
