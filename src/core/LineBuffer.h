#pragma once
// Splits a byte stream into lines of at most a set length. A longer line
// is not kept: its bytes are skipped up to its end and it comes out as one
// "oversized" line, so that a reader stays in step with its writer.

#include <cstddef>
#include <string>

class CLineBuffer {
 public:
  explicit CLineBuffer(size_t maxLine) : m_MaxLine(maxLine) {}
  void Append(const char *data, size_t size);
  // The next complete line without its end ("\n", "\r\n"); false if none.
  bool Next(std::string &line, bool &oversized);
  // What remains at the end of the stream counts as a last line.
  bool Finish(std::string &line, bool &oversized);

 private:
  size_t m_MaxLine;
  std::string m_Pending;  // bytes after the last line end
  bool m_Skipping = false;  // inside a line already too long
  std::string m_Ready;      // complete lines, each ending with "\n"
};
