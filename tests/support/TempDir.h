#pragma once
// A folder for one test's files, removed afterwards.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

class TempDir {
 public:
  TempDir() {
    char tmpl[] = "/tmp/velmor-test-XXXXXX";
    m_Path = mkdtemp(tmpl);
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(m_Path, ec);
  }
  TempDir(const TempDir &) = delete;
  TempDir &operator=(const TempDir &) = delete;

  const std::string &Path() const { return m_Path; }
  std::string operator/(const std::string &name) const { return m_Path + "/" + name; }
  // Writes a file (creating folders) and returns its path.
  std::string Write(const std::string &name, const std::string &text) const {
    std::string p = *this / name;
    std::filesystem::create_directories(std::filesystem::path(p).parent_path());
    std::ofstream(p) << text;
    return p;
  }
  static std::string Read(const std::string &path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

 private:
  std::string m_Path;
};
