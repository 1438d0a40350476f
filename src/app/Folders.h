#pragma once
// Where the program's installation and the user's files are.

#include <string>

struct AppFolders {
  std::string appPath;     // the installation tree the program runs from
  std::string userPath;    // the user's folder; the installation when there is none
  std::string configFile;  // config.xml in the user's folder
};

// The installation: <prefix>/share/velmor beside the executable's prefix
// when it exists, else the executable's folder when it holds nodes/, else
// `builtData` (the data of the source tree a program not yet installed was
// built from) when it holds nodes/, else `currentDir`. The user's folder:
// $XDG_CONFIG_HOME/velmor, else $HOME/.config/velmor, created when missing;
// the installation when it can't be made.
AppFolders FindAppFolders(const std::string &executable, const std::string &currentDir, const char *xdgConfigHome,
                          const char *home, const std::string &builtData = std::string());

// The installation of this process, found as above, whatever the current
// folder; nothing is created.
std::string ThisInstallation();

// The folders of this process, found as above (the user's folder is
// created); nothing else changes.
AppFolders ThisAppFolders();

// Finds the folders for this process, changes into the installation, sets
// the path macros and starts the log in the user's folder.
AppFolders SetUpAppFolders();
