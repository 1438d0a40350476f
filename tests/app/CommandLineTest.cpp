// The start switches a desktop gives us, classic and Linux, and what each
// asks the program to do.
#include "app/AppTypeWin.h"
#include "app/CommandLine.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

TEST(CommandLine, SwitchesGiveModesAndParentWindows) {
  const struct {
    const char *line;
    int mode;
    WindowHandle parent;
  } cases[] = {{"", MODE_Config, 0},           {"/c", MODE_Config, 0},        {"/c:4242", MODE_Config, 4242},
               {"/p:12345", MODE_Preview, 12345}, {"/p 12345", MODE_Preview, 12345}, {"-P12345", MODE_Preview, 12345},
               {"/s", MODE_FullScreen, 0},     {"/1", MODE_FullScreen, 0},    {"-x", MODE_FullScreen, 0},
               {"/a 99", MODE_Password, 99},   {"/e", MODE_Screenshot, 0},    {"/T", MODE_Test, 0},
               {"junk /s", MODE_FullScreen, 0}};
  for (const auto &c : cases) {
    CommandLine cl = ParseCommandLine(c.line);
    EXPECT_EQ(cl.mode, c.mode) << c.line;
    EXPECT_EQ(cl.parentWindow, c.parent) << c.line;
  }
}

TEST(CommandLine, FilesAreQuotedOrEndAtABlankAndAreLogged) {
  LogCapture log;
  EXPECT_EQ(ParseCommandLine("/t").file, "");
  CommandLine t = ParseCommandLine("/t \"my scenes/a b.vms\" extra");
  EXPECT_EQ(t.mode, MODE_Test);
  EXPECT_EQ(t.file, "my scenes/a b.vms");
  EXPECT_TRUE(log.Has("File specified: \"my scenes/a b.vms\""));
  CommandLine f = ParseCommandLine("/f [apppath]projects/p.vmp rest");
  EXPECT_EQ(f.mode, MODE_FullScreen);
  EXPECT_EQ(f.file, "[apppath]projects/p.vmp");
  CommandLine r = ParseCommandLine("/r out.avi a.vms;b.vms");
  EXPECT_EQ(r.mode, MODE_Record);
  EXPECT_EQ(r.movieFile, "out.avi");
  EXPECT_EQ(r.file, "a.vms;b.vms");
  EXPECT_TRUE(log.Has("Record mode active: \"a.vms;b.vms\" -> \"out.avi\""));
}

TEST(CommandLine, LinuxSaverConventionsBecomeClassicSwitches) {
  using V = std::vector<std::string>;
  EXPECT_EQ(TranslateLinuxSwitches(V{"-root"}, "0x2a"), V{"/p42"});
  EXPECT_EQ(TranslateLinuxSwitches(V{"--root"}, "77"), V{"/p77"});
  EXPECT_EQ(TranslateLinuxSwitches(V{"-root"}, nullptr), V{"/s"});
  EXPECT_EQ(TranslateLinuxSwitches(V{"-root"}, "bogus"), V{"/s"});
  EXPECT_EQ(TranslateLinuxSwitches(V{"-window-id", "0x10"}, nullptr), V{"/p16"});
  EXPECT_EQ(TranslateLinuxSwitches(V{"--window-id", "123"}, nullptr), V{"/p123"});
  EXPECT_EQ(TranslateLinuxSwitches(V{"-window"}, nullptr), V{"/t"});
  EXPECT_EQ(TranslateLinuxSwitches(V{"/t", "a.vms"}, nullptr), (V{"/t", "a.vms"}));
  // Translated, the classic parser reads them.
  CommandLine cl = ParseCommandLine(JoinArguments(TranslateLinuxSwitches(V{"-root"}, "0x2a")));
  EXPECT_EQ(cl.mode, MODE_Preview);
  EXPECT_EQ(cl.parentWindow, 42u);
  EXPECT_EQ(JoinArguments(V{"/t", "a b.vms"}), "/t \"a b.vms\"");
}
