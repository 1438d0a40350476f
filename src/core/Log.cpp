#include "core/Log.h"

#include "core/Clock.h"
#include "core/LogFile.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct LogState {
  char firstError[LogLimits::FirstErrorSize] = {};
  char path[LogLimits::PathSize + 1] = {};
  int lineCount = 0;
  bool echo = false;
  LogSink sink = nullptr;
  void *sinkUser = nullptr;
};

LogState g_Log;

void WriteLine(bool isError, const char *format, va_list args) VELMOR_PRINTF(2, 0);

void WriteLine(bool isError, const char *format, va_list args) {
  char text[LogLimits::MessageSize];
  vsnprintf(text, sizeof(text), format, args);

  WallTime t = GetClock().LocalTime();
  char line[LogLimits::MessageSize + 64];
  snprintf(line, sizeof(line),
           isError ? "%4d-%02d-%02d %02d:%02d:%02d.%03d: !ERROR! : %s\n"
                   : "%4d-%02d-%02d %02d:%02d:%02d.%03d: %s\n",
           t.year, t.month, t.day, t.hour, t.minute, t.second, t.millisecond, text);

  if (isError && g_Log.firstError[0] == 0) {
    strncpy(g_Log.firstError, text, sizeof(g_Log.firstError) - 1);
    g_Log.firstError[sizeof(g_Log.firstError) - 1] = 0;
  }
  if (g_Log.echo) fputs(line, stderr);
  if (g_Log.sink) g_Log.sink(text, isError, g_Log.sinkUser);

  if (g_Log.lineCount <= LogLimits::MaxLines && g_Log.path[0] != 0) {
    ++g_Log.lineCount;
    if (FILE *f = fopen(g_Log.path, "a")) {
      fputs(line, f);
      fclose(f);
    }
  }
}

}  // namespace

void Log(const char *format, ...) {
  va_list args;
  va_start(args, format);
  WriteLine(false, format, args);
  va_end(args);
}

bool LogError(const char *format, ...) {
  va_list args;
  va_start(args, format);
  WriteLine(true, format, args);
  va_end(args);
  return false;
}

void StartLog(const char *path) {
  g_Log.path[0] = 0;
  if (!path || strlen(path) > LogLimits::PathSize) return;
  strcpy(g_Log.path, path);
  struct stat st;
  if (stat(path, &st) == 0 && st.st_size > LogLimits::MaxStartSize) unlink(path);
}

const char *GetLogPath() { return g_Log.path; }

const char *GetFirstError() { return g_Log.firstError; }

void SetLogEcho(bool echo) { g_Log.echo = echo; }

void SetLogSink(LogSink sink, void *user) {
  g_Log.sink = sink;
  g_Log.sinkUser = user;
}

void ResetLog() {
  g_Log.firstError[0] = 0;
  g_Log.path[0] = 0;
  g_Log.lineCount = 0;
}
