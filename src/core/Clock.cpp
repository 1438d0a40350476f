#include "core/Clock.h"

#include <chrono>
#include <ctime>
#include <thread>

namespace {
CSystemClock g_SystemClock;
IClock *g_Clock = &g_SystemClock;

WallTime FromTm(const tm &t, long nanos) {
  WallTime w;
  w.year = t.tm_year + 1900;
  w.month = t.tm_mon + 1;
  w.day = t.tm_mday;
  w.hour = t.tm_hour;
  w.minute = t.tm_min;
  w.second = t.tm_sec;
  w.millisecond = static_cast<int>(nanos / 1000000);
  w.dayOfWeek = t.tm_wday;
  return w;
}
}  // namespace

int64_t CSystemClock::Counter() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

uint32_t CSystemClock::Milliseconds() { return static_cast<uint32_t>(Counter() / 1000000); }

void CSystemClock::Sleep(uint32_t ms) {
  if (ms == 0)
    std::this_thread::yield();
  else
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

WallTime CSystemClock::LocalTime() {
  timespec ts;
  clock_gettime(CLOCK_REALTIME, &ts);
  tm t;
  localtime_r(&ts.tv_sec, &t);
  return FromTm(t, ts.tv_nsec);
}

WallTime CSystemClock::UtcTime() {
  timespec ts;
  clock_gettime(CLOCK_REALTIME, &ts);
  tm t;
  gmtime_r(&ts.tv_sec, &t);
  return FromTm(t, ts.tv_nsec);
}

int64_t CSystemClock::UnixSeconds() { return static_cast<int64_t>(time(nullptr)); }

IClock &GetClock() { return *g_Clock; }
void SetClock(IClock *clock) { g_Clock = clock ? clock : &g_SystemClock; }
