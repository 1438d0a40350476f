#pragma once
// The program's log: one line per call, opened and closed per line, with a
// hard line limit so that a looping error cannot fill the disk.

#include <cstddef>

#define VELMOR_PRINTF(fmtIndex, firstArg) __attribute__((format(printf, fmtIndex, firstArg)))

void Log(const char *format, ...) VELMOR_PRINTF(1, 2);
// Writes an error line and returns false, so that a failing operation can end
// with `return LogError(...)`.
bool LogError(const char *format, ...) VELMOR_PRINTF(1, 2);

// Starts writing to a file. A path of 201 characters or more leaves the log
// without a file; an existing file over 100000 bytes is deleted first.
void StartLog(const char *path);

// Text of the first error of the run, empty if none (at most 511 characters).
const char *GetFirstError();

// Also echo every line to stderr (used by the command-line tool and demos).
void SetLogEcho(bool echo);

// Observer for tests and for hosts that show the log: called with the final
// line text (without the timestamp) and whether it is an error.
using LogSink = void (*)(const char *text, bool isError, void *user);
void SetLogSink(LogSink sink, void *user);

// Forgets the path, the line count and the first error. For tests.
void ResetLog();

namespace LogLimits {
constexpr int MaxLines = 1250;        // count at which writing stops (1251 lines written)
constexpr size_t MessageSize = 1000;  // message buffer, text cut at 999
constexpr size_t FirstErrorSize = 512;
constexpr size_t PathSize = 200;
constexpr long MaxStartSize = 100000;
}  // namespace LogLimits
