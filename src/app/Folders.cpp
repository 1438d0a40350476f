#include "app/Folders.h"

#include <filesystem>
#include <unistd.h>

#include "core/Log.h"
#include "core/Paths.h"

namespace fs = std::filesystem;

namespace {
bool IsDir(const fs::path &p) {
  std::error_code ec;
  return fs::is_directory(p, ec);
}
}  // namespace

AppFolders FindAppFolders(const std::string &executable, const std::string &currentDir, const char *xdgConfigHome,
                          const char *home, const std::string &builtData) {
  AppFolders f;
  const fs::path exeDir = fs::path(executable).parent_path();
  const fs::path installed = exeDir.parent_path() / "share" / "velmor";
  if (!executable.empty() && IsDir(installed))
    f.appPath = installed.string();
  else if (!executable.empty() && IsDir(exeDir / "nodes"))
    f.appPath = exeDir.string();
  else if (!builtData.empty() && IsDir(fs::path(builtData) / "nodes"))
    f.appPath = builtData;
  else
    f.appPath = currentDir;

  fs::path config;
  if (xdgConfigHome && *xdgConfigHome)
    config = fs::path(xdgConfigHome);
  else if (home && *home)
    config = fs::path(home) / ".config";
  f.userPath = f.appPath;
  f.configFile = "config.xml";
  if (!config.empty()) {
    std::error_code ec;
    fs::create_directories(config / "velmor", ec);
    if (IsDir(config / "velmor")) {
      f.userPath = (config / "velmor").string();
      f.configFile = (config / "velmor" / "config.xml").string();
    }
  }
  return f;
}

namespace {
#ifndef VELMOR_BUILT_DATA
#define VELMOR_BUILT_DATA ""
#endif

AppFolders FindOwnFolders(const char *xdgConfigHome, const char *home) {
  std::error_code ec;
  const std::string exe = fs::read_symlink("/proc/self/exe", ec).string();
  const std::string cwd = fs::current_path(ec).string();
  return FindAppFolders(exe, cwd, xdgConfigHome, home, VELMOR_BUILT_DATA);
}
}  // namespace

std::string ThisInstallation() { return FindOwnFolders(nullptr, nullptr).appPath; }

AppFolders ThisAppFolders() { return FindOwnFolders(getenv("XDG_CONFIG_HOME"), getenv("HOME")); }

AppFolders SetUpAppFolders() {
  AppFolders f = ThisAppFolders();
  if (chdir(f.appPath.c_str()) != 0) LogError("Unable to change dir");
  SetAppPaths(f.appPath, f.userPath);
  StartLog(JoinPath(f.userPath, "log.txt").c_str());
  return f;
}
