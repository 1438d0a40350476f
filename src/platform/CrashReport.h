#pragma once
// The crash report: on SIGSEGV, SIGBUS, SIGFPE, SIGILL or SIGABRT the open
// trace scopes and the state of the machine are appended to the log file,
// then the signal's default action ends the process. The handler runs on a
// stack of its own (a stack overflow leaves none) and only makes system
// calls into static buffers: whatever faulted may have broken the heap.

#include <csignal>

// Installs the handlers and the alternate stack, and notes what can't be
// learnt safely inside a handler (program, user, processors, local time
// offset). Call it on the main thread early.
void InstallCrashHandler();

// The desktop as the renderer found it, for the report's resolution line.
void SetCrashReportDesktop(long width, long height, long bitsPerPixel);

// Writes the report for this signal; only the first call of the process
// does anything. Returns 0: the signal goes on to its default action.
int WriteCrashReport(int signal, siginfo_t *info, void *context);

// VELMOR_TEST_CRASH=1 makes the call after the first frame fault on
// purpose; =2 faults again inside the report, which must then end without
// a second one. Does nothing otherwise.
void CrashIfTesting();
