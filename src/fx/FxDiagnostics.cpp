#include "fx/FxDiagnostics.h"

int CFxDiagnostics::AddFile(const std::string &name) {
  for (size_t i = 0; i < m_Files.size(); ++i)
    if (m_Files[i] == name) return static_cast<int>(i);
  m_Files.push_back(name);
  return static_cast<int>(m_Files.size() - 1);
}

const std::string &CFxDiagnostics::FileName(int file) const {
  if (file < 0 || static_cast<size_t>(file) >= m_Files.size()) return m_Files[0];
  return m_Files[file];
}

void CFxDiagnostics::Error(FxLocation at, const std::string &message) {
  ++m_ErrorCount;
  Add(at, "", message);
}

void CFxDiagnostics::Warning(FxLocation at, const std::string &message) { Add(at, "warning: ", message); }

void CFxDiagnostics::Add(FxLocation at, const char *kind, const std::string &message) {
  if (m_Messages.size() >= MaxMessages) {
    ++m_Dropped;
    return;
  }
  m_Messages.push_back(FileName(at.file) + "(" + std::to_string(at.line) + "): " + kind + message);
}

std::string CFxDiagnostics::Listing() const {
  std::string text;
  for (const std::string &m : m_Messages) text += m + "\n";
  if (m_Dropped > 0) text += "(" + std::to_string(m_Dropped) + " more messages)\n";
  return text;
}

void CFxDiagnostics::Append(const CFxDiagnostics &other) {
  m_ErrorCount += other.m_ErrorCount;
  m_Dropped += other.m_Dropped;
  for (const std::string &m : other.m_Messages) {
    if (m_Messages.size() < MaxMessages) m_Messages.push_back(m);
    else ++m_Dropped;
  }
}
