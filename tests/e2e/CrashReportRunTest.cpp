// A crash leaves one report in the log that a developer can act on: every
// section in its order, readable code bytes and stack, the modules.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <sys/wait.h>

#include "e2e/VelmorProcess.h"

namespace {
using namespace std::chrono_literals;

// The sanitizers leave these signals to the program's own handlers.
const char *const kOwnHandlers =
    "ASAN_OPTIONS=handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:handle_abort=0";

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

// Runs velmor in a window with VELMOR_TEST_CRASH=mode; the log as written,
// the report's lines having no time stamps.
std::vector<std::string> CrashedRun(VelmorProcess &velmor, const std::string &mode) {
  EXPECT_TRUE(velmor.Start({"/t"}, {"VELMOR_TEST_CRASH=" + mode, kOwnHandlers}));
  EXPECT_TRUE(velmor.WaitForExit(30s)) << "still running: the crash did not happen";
  std::istringstream in(TempDir::Read(velmor.UserFolder() + "/log.txt"));
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Index of the first line at or after `from` that begins with `prefix`; -1 if none.
long Find(const std::vector<std::string> &lines, const std::string &prefix, size_t from = 0) {
  for (size_t i = from; i < lines.size(); ++i)
    if (lines[i].rfind(prefix, 0) == 0) return static_cast<long>(i);
  return -1;
}

size_t Count(const std::vector<std::string> &lines, const std::string &prefix) {
  size_t n = 0;
  for (const std::string &l : lines) n += l.rfind(prefix, 0) == 0;
  return n;
}
}  // namespace

TEST(CrashReportRun, TheFirstFrameCrashesAndTheReportHasEverySectionOnce) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: the program needs an X server";
  VelmorProcess velmor;
  const std::vector<std::string> log = CrashedRun(velmor, "1");
  // The signal went on to its default action once the report was written.
  EXPECT_TRUE(WIFSIGNALED(velmor.ExitStatus()) && WTERMSIG(velmor.ExitStatus()) == SIGSEGV)
      << "status " << velmor.ExitStatus() << "\n" << velmor.Output();

  long at = 0;
  for (const std::string &section : kSections) {
    const long found = Find(log, section, static_cast<size_t>(at));
    ASSERT_GE(found, 0) << "missing or out of order: " << section << "\n" << Joined(log);
    at = found;
  }
  EXPECT_EQ(Count(log, kSections.front()), 1u);
  // The open scopes end with the frame's; code and stack were readable.
  const long callstack = Find(log, "Callstack: Depth ");
  EXPECT_NE(log[static_cast<size_t>(callstack) + 1].find("CAppTypeScreensaver::Run"), std::string::npos)
      << log[static_cast<size_t>(callstack) + 1];
  const long bytes = Find(log, "Bytes at CS:EIP:");
  EXPECT_EQ(log[static_cast<size_t>(bytes) + 1].find("??"), std::string::npos) << log[static_cast<size_t>(bytes) + 1];
  const long stack = Find(log, "Stack dump:");
  EXPECT_NE(log[static_cast<size_t>(stack) + 1].find(": "), std::string::npos) << log[static_cast<size_t>(stack) + 1];
  bool programListed = false, libcListed = false;
  for (const std::string &l : log) {
    programListed |= l.find("/velmor,\tloaded at 0x") != std::string::npos;
    libcListed |= l.find("/libc.so.6,\tloaded at 0x") != std::string::npos;
  }
  EXPECT_TRUE(programListed && libcListed) << Joined(log);
}

TEST(CrashReportRun, AFaultInsideTheReportEndsItWithoutASecondOne) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: the program needs an X server";
  VelmorProcess velmor;
  const std::vector<std::string> log = CrashedRun(velmor, "2");
  EXPECT_TRUE(WIFSIGNALED(velmor.ExitStatus())) << "status " << velmor.ExitStatus();
  // The report got as far as the second fault, and no further.
  EXPECT_EQ(Count(log, kSections.front()), 1u) << Joined(log);
  EXPECT_GE(Find(log, "Callstack: Depth "), 0) << Joined(log);
  EXPECT_LT(Find(log, "Registers:"), 0) << Joined(log);
  EXPECT_LT(Find(log, kSections.back()), 0) << Joined(log);
}
