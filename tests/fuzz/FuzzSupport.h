#pragma once
// What the document fuzz targets share: a quiet log, and a folder of this
// process laid out as an installation whose scenes are the shipped ones.

#include "core/Log.h"
#include "core/Paths.h"

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#ifndef VELMOR_SOURCE_ROOT
#define VELMOR_SOURCE_ROOT "."
#endif

class CFuzzFolder {
 public:
  // [apppath] is <folder>/app with the shipped scenes; [userpath] <folder>/user.
  CFuzzFolder() : m_Path("/tmp/velmor-fuzz-" + std::to_string(getpid())) {
    SetLogSink([](const char *, bool, void *) {}, nullptr);
    std::error_code error;
    std::filesystem::create_directories(m_Path + "/app", error);
    std::filesystem::create_directories(m_Path + "/user", error);
    std::filesystem::create_directory_symlink(std::string(VELMOR_SOURCE_ROOT) + "/assets/scenes", m_Path + "/app/scenes",
                                              error);
    SetAppPaths(m_Path + "/app", m_Path + "/user");
  }
  ~CFuzzFolder() {
    std::error_code error;
    std::filesystem::remove_all(m_Path, error);
  }

  // Writes the fuzzer's bytes to a file of the folder; returns its path.
  std::string Write(const char *name, const uint8_t *data, size_t size) const {
    std::string path = m_Path + "/" + name;
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    return path;
  }

 private:
  std::string m_Path;
};
