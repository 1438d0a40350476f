#pragma once
// Device object creation goes through one check: when the creating
// expression fails, the log names the expression and where it stands, and
// the device restore returns false.

#include "core/Log.h"

// Logs "FAILED : ..." for `expression` at `file`:`line`; always false.
bool DeviceCheckFailed(const char *expression, const char *file, long line);

#define DEVICE_CHECK(expr)                                                    \
  do {                                                                        \
    if (!(expr)) return DeviceCheckFailed("!(" #expr ")", __FILE__, __LINE__); \
  } while (0)
