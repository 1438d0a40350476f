// A crash leaves one report in the log that a developer can act on: every
// section in its order, readable code bytes and stack, the modules; a fault
// inside the report ends it without a second one.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <sys/wait.h>

#include "e2e/VelmorProcess.h"

namespace {
using namespace std::chrono_literals;

// The report's lines, in order, by how each begins.
const std::vector<std::string> kSections = {
    "-------------------------- EXCEPTION at ",
    "velmor caused an Access Violation in module velmor at ",
    "Exception handler called in main thread.",
    "Desktop resolution : ",
    "Last windows error : ",
    "Callstack: Depth ",
    "Read from location 00000010 caused an access violation.",
    "Registers:",
    "RAX=",
    "Bytes at CS:EIP:",
    "Stack dump:",
    "Module list: names, addresses, sizes, time stamps and file times:",
    "----------------------------- EXCEPTION END -----------------------------",
};

// Index of the first line at or after `from` that begins with `prefix`; -1 if none.
long Find(const std::vector<std::string> &lines, const std::string &prefix, size_t from = 0) {
  for (size_t i = from; i < lines.size(); ++i)
    if (lines[i].rfind(prefix, 0) == 0) return static_cast<long>(i);
  return -1;
}
}  // namespace

TEST(CrashReportRun, ACrashLeavesOneReportWithEverySectionInOrder) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: the program needs an X server";
  // VELMOR_TEST_CRASH=2 faults again inside the report, after the call stack.
  const struct { const char *mode; size_t sections; } cases[] = {{"1", kSections.size()}, {"2", 6}};
  for (const auto &c : cases) {
    VelmorProcess velmor;
    // The program's handlers replace the sanitizers' own, which allow that by default.
    ASSERT_TRUE(velmor.Start({"/t"}, {std::string("VELMOR_TEST_CRASH=") + c.mode}));
    ASSERT_TRUE(velmor.WaitForExit(30s)) << "still running: the crash did not happen";
    // The signal went on to its default action once the report was written; its lines have no time stamps.
    EXPECT_TRUE(WIFSIGNALED(velmor.ExitStatus()) && WTERMSIG(velmor.ExitStatus()) == SIGSEGV)
        << "status " << velmor.ExitStatus() << "\n" << velmor.Output();
    std::istringstream in(TempDir::Read(velmor.UserFolder() + "/log.txt"));
    std::vector<std::string> log;
    for (std::string line; std::getline(in, line);) log.push_back(line);

    for (size_t i = 0, at = 0; i < kSections.size(); ++i) {
      const long found = Find(log, kSections[i], at);
      EXPECT_EQ(found >= 0, i < c.sections) << c.mode << ": " << kSections[i] << "\n" << Joined(log);
      if (found >= 0) at = static_cast<size_t>(found);
    }
    EXPECT_EQ(Find(log, kSections[0], static_cast<size_t>(Find(log, kSections[0]) + 1)), -1) << "a second report";
    if (c.sections < kSections.size()) continue;
    // The open scopes end with the frame's; code and stack were readable; the program is a module.
    const auto after = [&](const std::string &section) { return log[static_cast<size_t>(Find(log, section)) + 1]; };
    EXPECT_NE(after("Callstack: Depth ").find("CAppTypeScreensaver::Run"), std::string::npos);
    EXPECT_EQ(after("Bytes at CS:EIP:").find("??"), std::string::npos) << after("Bytes at CS:EIP:");
    EXPECT_NE(after("Stack dump:").find(": "), std::string::npos) << after("Stack dump:");
    EXPECT_NE(Joined(log).find("/velmor,\tloaded at 0x"), std::string::npos) << Joined(log);
  }
}
