#pragma once
// Collects what the log says while a test runs.

#include <string>
#include <vector>

#include "core/Log.h"

class LogCapture {
 public:
  LogCapture() { SetLogSink(&LogCapture::Sink, this); }
  ~LogCapture() { SetLogSink(nullptr, nullptr); }
  LogCapture(const LogCapture &) = delete;
  LogCapture &operator=(const LogCapture &) = delete;

  std::vector<std::string> lines;
  std::vector<std::string> errors;
  std::string LastError() const { return errors.empty() ? std::string() : errors.back(); }
  bool Has(const std::string &text) const {
    for (const auto &l : lines)
      if (l == text) return true;
    return false;
  }

 private:
  static void Sink(const char *text, bool isError, void *user) {
    auto *self = static_cast<LogCapture *>(user);
    self->lines.push_back(text);
    if (isError) self->errors.push_back(text);
  }
};
