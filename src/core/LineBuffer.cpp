#include "core/LineBuffer.h"

namespace {
void TrimReturn(std::string &line) {
  if (!line.empty() && line.back() == '\r') line.pop_back();
}
}  // namespace

void CLineBuffer::Append(const char *data, size_t size) {
  for (size_t i = 0; i < size; ++i) {
    const char c = data[i];
    if (c == '\n') {
      if (m_Skipping) {
        // A marker in the ready stream keeps the order of lines.
        m_Ready += '\0';
        m_Skipping = false;
      } else {
        m_Ready += m_Pending;
      }
      m_Ready += '\n';
      m_Pending.clear();
    } else if (!m_Skipping) {
      m_Pending += c;
      if (m_Pending.size() > m_MaxLine) {
        m_Pending.clear();
        m_Skipping = true;
      }
    }
  }
}

bool CLineBuffer::Next(std::string &line, bool &oversized) {
  const size_t end = m_Ready.find('\n');
  if (end == std::string::npos) return false;
  line = m_Ready.substr(0, end);
  m_Ready.erase(0, end + 1);
  oversized = line.size() == 1 && line[0] == '\0';
  if (oversized) line.clear();
  TrimReturn(line);
  return true;
}

bool CLineBuffer::Finish(std::string &line, bool &oversized) {
  if (Next(line, oversized)) return true;
  if (m_Pending.empty() && !m_Skipping) return false;
  oversized = m_Skipping;
  line = oversized ? std::string() : m_Pending;
  TrimReturn(line);
  m_Pending.clear();
  m_Skipping = false;
  return true;
}
