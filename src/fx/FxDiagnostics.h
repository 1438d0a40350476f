#pragma once
// Messages of one compile, each "file(line): message", in the order found.
// A broken effect can produce a flood of follow-on errors: after a limit the
// rest are counted, not kept.

#include <string>
#include <vector>

struct FxLocation {
  int file = 0;  // index into CFxDiagnostics' file names
  int line = 0;
};

class CFxDiagnostics {
 public:
  static constexpr size_t MaxMessages = 50;

  // Registers a file name for locations; returns its index.
  int AddFile(const std::string &name);
  const std::string &FileName(int file) const;

  void Error(FxLocation at, const std::string &message);
  void Warning(FxLocation at, const std::string &message);

  // Takes over another compile's file names, so that its locations read the
  // same here; and appends its messages.
  void AdoptFiles(const CFxDiagnostics &other) { m_Files = other.m_Files; }
  void Append(const CFxDiagnostics &other);

  bool HasErrors() const { return m_ErrorCount > 0; }
  int ErrorCount() const { return m_ErrorCount; }
  const std::vector<std::string> &Messages() const { return m_Messages; }
  // Every kept message, one per line: the compile's listing.
  std::string Listing() const;

 private:
  void Add(FxLocation at, const char *kind, const std::string &message);

  std::vector<std::string> m_Files{"<text>"};
  std::vector<std::string> m_Messages;
  int m_ErrorCount = 0;
  int m_Dropped = 0;
};
