#pragma once
// A clock that moves only when told to: sleeping advances it, so code that
// waits for time terminates deterministically under test.

#include "core/Clock.h"

#include <vector>

class CFakeClock final : public IClock {
 public:
  bool highResolution = true;
  int64_t counter = 1000;
  int64_t frequency = 1000000;  // microsecond ticks
  int64_t unixSeconds = 1700000000;
  WallTime local{2024, 5, 17, 13, 45, 30, 250, 5};
  WallTime utc{2024, 5, 17, 11, 45, 30, 250, 5};
  // Ticks that each Counter() call adds after reading (a clock that runs
  // while code polls it); 0 keeps time still.
  int64_t autoAdvance = 0;
  std::vector<uint32_t> sleeps;  // every Sleep argument, in order

  void Advance(double seconds) { counter += static_cast<int64_t>(seconds * frequency); }

  bool HasHighResolution() const override { return highResolution; }
  int64_t Counter() override {
    int64_t now = counter;
    counter += autoAdvance;
    return now;
  }
  int64_t Frequency() override { return frequency; }
  uint32_t Milliseconds() override { return static_cast<uint32_t>(counter * 1000 / frequency); }
  void Sleep(uint32_t ms) override {
    sleeps.push_back(ms);
    counter += static_cast<int64_t>(ms) * frequency / 1000;
  }
  WallTime LocalTime() override { return local; }
  WallTime UtcTime() override { return utc; }
  int64_t UnixSeconds() override { return unixSeconds; }
};

// Installs a fake clock for the lifetime of a test scope.
class CScopedFakeClock {
 public:
  CScopedFakeClock() { SetClock(&clock); }
  ~CScopedFakeClock() { SetClock(nullptr); }
  CFakeClock clock;
};
