// Path macros and loose file names: projects written on other systems and
// moved between installations must still find their files.
#include "core/Paths.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

TEST(Paths, MacrosExpandAndContractKeepingCase) {
  SetAppPaths("/opt/Velmor/", "/home/u/.config/velmor");
  EXPECT_EQ(AppPath(), "/opt/Velmor");
  EXPECT_EQ(Expand("[apppath]projects/a.vmp"), "/opt/Velmor/projects/a.vmp");
  EXPECT_EQ(Expand("[userpath]x;[apppath]y"), "/home/u/.config/velmor/x;/opt/Velmor/y");
  EXPECT_EQ(Expand("[APPPATH]a"), "[APPPATH]a");  // macros match as written
  EXPECT_EQ(Expand("[apppath]scenes\\Old\\b.vms"), "/opt/Velmor/scenes/Old/b.vms");
  EXPECT_EQ(Contract("/opt/Velmor/scenes/B.vms"), "[apppath]scenes/B.vms");
  EXPECT_EQ(Contract("/home/u/.config/velmor/p.vmp"), "[userpath]p.vmp");
  EXPECT_EQ(Contract("/elsewhere/c.vms"), "/elsewhere/c.vms");
  EXPECT_EQ(Contract("/opt/Velmorx/c.vms"), "/opt/Velmorx/c.vms");
  SetAppPaths("/same", "/same");  // no per-user folder
  EXPECT_EQ(Contract("/same/a"), "[apppath]a");
  EXPECT_EQ(JoinPath("a/", "/b"), "a/b");
  EXPECT_EQ(JoinPath("a", "b"), "a/b");
  SetAppPaths(".", ".");
}

TEST(Paths, ResolvePathFindsNamesThatDifferOnlyInCase) {
  TempDir dir;
  dir.Write("Scenes/Fire.VMS", "x");
  EXPECT_EQ(ResolvePath(dir / "Scenes/Fire.VMS"), dir / "Scenes/Fire.VMS");
  EXPECT_EQ(ResolvePath(dir / "scenes/fire.vms"), dir / "Scenes/Fire.VMS");
  EXPECT_EQ(ResolvePath(dir / "scenes/water.vms"), dir / "scenes/water.vms");  // as given when absent
  EXPECT_EQ(ResolvePath(""), "");
}
