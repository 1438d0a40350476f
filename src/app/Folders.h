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
// `currentDir`. The user's folder: $XDG_CONFIG_HOME/velmor, else
// $HOME/.config/velmor, created when missing; the installation when it
// can't be made.
AppFolders FindAppFolders(const std::string &executable, const std::string &currentDir, const char *xdgConfigHome,
                          const char *home);

// Finds the folders for this process, changes into the installation, sets
// the path macros and starts the log in the user's folder.
AppFolders SetUpAppFolders();
