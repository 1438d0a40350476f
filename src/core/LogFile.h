#pragma once
// Where the log writes, for the crash report: it appends to the same file,
// past the line limit, without going through Log.

// The file lines go to; empty without one.
const char *GetLogPath();
