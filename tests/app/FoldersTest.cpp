// Where the installation and the user's folder are found.
#include "app/Folders.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

TEST(Folders, InstallationIsFoundBesideThePrefixOrTheExecutable) {
  TempDir dir;
  dir.Write("usr/bin/velmor", "");
  dir.Write("usr/share/velmor/nodes/effect/a.cgfx", "");
  dir.Write("portable/velmor", "");
  dir.Write("portable/nodes/readme", "");
  dir.Write("loose/velmor", "");
  AppFolders installed = FindAppFolders(dir / "usr/bin/velmor", "/cwd", nullptr, nullptr);
  EXPECT_EQ(installed.appPath, dir / "usr/share/velmor");
  EXPECT_EQ(FindAppFolders(dir / "portable/velmor", "/cwd", nullptr, nullptr).appPath, dir / "portable");
  EXPECT_EQ(FindAppFolders(dir / "loose/velmor", "/cwd", nullptr, nullptr).appPath, "/cwd");
  // Run from its build tree: the data of the sources it was built from, whatever the current folder.
  EXPECT_EQ(FindAppFolders(dir / "loose/velmor", "/cwd", nullptr, nullptr, dir / "portable").appPath, dir / "portable");
  EXPECT_EQ(FindAppFolders(dir / "loose/velmor", "/cwd", nullptr, nullptr, dir / "loose").appPath, "/cwd");
  // No per-user folder to be had: everything lives in the installation.
  EXPECT_EQ(installed.userPath, installed.appPath);
  EXPECT_EQ(installed.configFile, "config.xml");
}

TEST(Folders, UserFolderFollowsXdgThenHomeAndIsCreated) {
  TempDir dir;
  AppFolders xdg = FindAppFolders("", "/cwd", (dir / "xdg").c_str(), (dir / "home").c_str());
  EXPECT_EQ(xdg.userPath, dir / "xdg/velmor");
  EXPECT_EQ(xdg.configFile, dir / "xdg/velmor/config.xml");
  EXPECT_TRUE(std::filesystem::is_directory(dir / "xdg/velmor"));
  AppFolders home = FindAppFolders("", "/cwd", "", (dir / "home").c_str());
  EXPECT_EQ(home.userPath, dir / "home/.config/velmor");
}
