#pragma once
// Every clock the program reads goes through IClock, so that tests and
// reproducible renders can replace time itself.

#include <cstdint>

struct WallTime {
  int year = 1970, month = 1, day = 1;
  int hour = 0, minute = 0, second = 0, millisecond = 0;
  int dayOfWeek = 4;  // 0 = Sunday
};

class IClock {
 public:
  virtual ~IClock() = default;
  // A monotonic counter and its ticks per second.
  virtual bool HasHighResolution() const = 0;
  virtual int64_t Counter() = 0;
  virtual int64_t Frequency() = 0;
  // Milliseconds since some start, wrapping at 2^32.
  virtual uint32_t Milliseconds() = 0;
  // Sleep(0) only yields the processor.
  virtual void Sleep(uint32_t ms) = 0;
  virtual WallTime LocalTime() = 0;
  virtual WallTime UtcTime() = 0;
  virtual int64_t UnixSeconds() = 0;
};

class CSystemClock final : public IClock {
 public:
  bool HasHighResolution() const override { return true; }
  int64_t Counter() override;
  int64_t Frequency() override { return 1000000000; }
  uint32_t Milliseconds() override;
  void Sleep(uint32_t ms) override;
  WallTime LocalTime() override;
  WallTime UtcTime() override;
  int64_t UnixSeconds() override;
};

// The process's clock; SetClock(nullptr) goes back to the system clock.
IClock &GetClock();
void SetClock(IClock *clock);
