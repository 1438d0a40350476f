// The log's line format and limits: other tools parse these files.
#include "core/FakeClock.h"
#include "core/Log.h"
#include "core/Trace.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {
class LogFile : public testing::Test {
 protected:
  void SetUp() override {
    char tmpl[] = "/tmp/velmor-log-XXXXXX";
    int fd = mkstemp(tmpl);
    close(fd);
    unlink(tmpl);
    m_Path = tmpl;
    ResetLog();
  }
  void TearDown() override {
    ResetLog();
    unlink(m_Path.c_str());
  }
  std::vector<std::string> Lines() {
    std::ifstream in(m_Path);
    std::vector<std::string> lines;
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    return lines;
  }
  std::string m_Path;
  CScopedFakeClock m_Clock;
};
}  // namespace

TEST_F(LogFile, LineFormatsForPlainAndErrorLines) {
  m_Clock.clock.local = WallTime{2024, 3, 7, 9, 5, 2, 45, 4};
  StartLog(m_Path.c_str());
  Log("Max fps set to %ld", 30L);
  EXPECT_FALSE(LogError("Unknown in port (%s -> %s)", "A", "B"));
  auto lines = Lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], "2024-03-07 09:05:02.045: Max fps set to 30");
  EXPECT_EQ(lines[1], "2024-03-07 09:05:02.045: !ERROR! : Unknown in port (A -> B)");
  EXPECT_STREQ(GetFirstError(), "Unknown in port (A -> B)");
  LogError("second");
  EXPECT_STREQ(GetFirstError(), "Unknown in port (A -> B)");
}

TEST_F(LogFile, WritesAtMost1251LinesAndCutsLongMessages) {
  StartLog(m_Path.c_str());
  for (int i = 0; i < 1300; ++i) Log("line %d", i);
  auto lines = Lines();
  ASSERT_EQ(lines.size(), 1251u);
  EXPECT_NE(lines.back().find("line 1250"), std::string::npos);

  ResetLog();
  unlink(m_Path.c_str());
  StartLog(m_Path.c_str());
  std::string big(2000, 'x');
  LogError("%s", big.c_str());
  lines = Lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].size(), std::string("2024-05-17 13:45:30.250: !ERROR! : ").size() + 999);
  EXPECT_EQ(std::string(GetFirstError()).size(), 511u);
}

TEST_F(LogFile, StartKeepsFilesUpTo100000Bytes) {
  {
    std::ofstream out(m_Path);
    out << std::string(100000, 'a');
  }
  StartLog(m_Path.c_str());
  EXPECT_EQ(access(m_Path.c_str(), F_OK), 0);
  {
    std::ofstream out(m_Path, std::ios::app);
    out << 'b';
  }
  StartLog(m_Path.c_str());
  EXPECT_NE(access(m_Path.c_str(), F_OK), 0);

  std::string longPath(201, 'p');
  StartLog(longPath.c_str());
  Log("goes nowhere");  // no file, no crash
}

TEST_F(LogFile, TraceScopesNestLogAndStopAt64) {
  StartLog(m_Path.c_str());
  ASSERT_EQ(Trace::g_Depth, 0);
  {
    TRACE_SCOPE_LOGGED("CVelmor::Init");
    {
      TRACE_SCOPE("CVelmor::Update");
      EXPECT_EQ(Trace::g_Depth, 2);
      EXPECT_STREQ(Trace::g_Names[1], "CVelmor::Update");
    }
  }
  EXPECT_EQ(Trace::g_Depth, 0);
  auto lines = Lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].substr(25), " >CVelmor::Init");
  EXPECT_EQ(lines[1].substr(25), " <CVelmor::Init");

  for (int i = 0; i < 70; ++i) Trace::Push("deep");
  EXPECT_EQ(Trace::g_Depth, 64);
  for (int i = 0; i < 70; ++i) Trace::Pop();
  EXPECT_EQ(Trace::g_Depth, 0);

  try {
    TRACE_SCOPE("Thrower");
    throw 1;
  } catch (int) {
  }
  EXPECT_EQ(Trace::g_Depth, 0);
}
