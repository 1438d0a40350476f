// `velmor-tool expr`: arguments, output lines, error line and exit codes.

#include "expr/ExprCommand.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct Result {
  int code;
  std::string out, err;
};

std::string ReadAll(FILE *f) {
  std::string text;
  rewind(f);
  char buffer[256];
  size_t n;
  while ((n = fread(buffer, 1, sizeof(buffer), f)) > 0) text.append(buffer, n);
  fclose(f);
  return text;
}

Result RunCommand(std::vector<std::string> args) {
  args.insert(args.begin(), "expr");
  std::vector<char *> argv;
  for (std::string &a : args) argv.push_back(a.data());
  FILE *out = tmpfile();
  FILE *err = tmpfile();
  int code = RunExprCommand(static_cast<int>(argv.size()), argv.data(), out, err);
  return {code, ReadAll(out), ReadAll(err)};
}

TEST(ExprCommand, PrintsTheResultAndRequestedVariables) {
  auto r = RunCommand({"--var", "x=2", "--var", "y=0.5", "--print", "z", "--print", "x", "z = x * 10; x / y + 0.1"});
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.out, "4.0999999999999996\nz=20\nx=2\n");
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(RunCommand({"rect2pol(0, -1, &r, &a)", "--print", "a"}).out, "1\na=4.7123889803846897\n");
  EXPECT_EQ(RunCommand({"--print", "never", "1"}).out, "1\nnever=0\n");
  EXPECT_EQ(RunCommand({"--", "-1"}).out, "-1\n");
  EXPECT_EQ(RunCommand({"- 1"}).out, "-1\n");
}

TEST(ExprCommand, FailuresPrintTheLoggedMessage) {
  auto divide = RunCommand({"1 / 0"});
  EXPECT_EQ(divide.code, 1);
  EXPECT_EQ(divide.out, "");
  EXPECT_EQ(divide.err, "Divide by zero\n");
  // A parse failure and the command's own; GrammarTest pins the other messages.
  EXPECT_EQ(RunCommand({"nosuch(1)"}).err, "Variable not found at 0 5\n");
  EXPECT_EQ(RunCommand({"--var", "x=1", "--var", "x=2", "x"}).err, "Variable already exists at -1 -1\n");
}

TEST(ExprCommand, SeedFixesBothGenerators) {
  auto a = RunCommand({"--seed", "12", "rand() + random() * 1000"});
  EXPECT_EQ(a.code, 0);
  EXPECT_EQ(a.out, RunCommand({"--seed", "12", "rand() + random() * 1000"}).out);
  EXPECT_NE(a.out, RunCommand({"--seed", "13", "rand() + random() * 1000"}).out);
}

TEST(ExprCommand, BadArgumentsShowTheUsage) {
  for (const std::vector<std::string> &args : std::vector<std::vector<std::string>>{
           {}, {"--var", "x", "1"}, {"--var", "=1", "1"}, {"--var", "x=abc", "1"}, {"--seed", "x", "1"},
           {"--print"}, {"1", "2"}, {"--bogus", "1"}}) {
    auto r = RunCommand(args);
    EXPECT_EQ(r.code, 2);
    EXPECT_NE(r.err.find("usage: velmor-tool expr"), std::string::npos);
  }
}

#ifdef VELMOR_TOOL_PATH
Result RunTool(const std::string &arguments) {
  std::string command = std::string(VELMOR_TOOL_PATH) + " expr " + arguments + " 2>&1";
  Result result{0, {}, {}};
  FILE *pipe = popen(command.c_str(), "r");
  std::array<char, 256> buffer;
  while (fgets(buffer.data(), buffer.size(), pipe)) result.out += buffer.data();
  int status = pclose(pipe);
  result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

TEST(ExprCommand, TheInstalledToolRunsIt) {
  auto ok = RunTool("--var x=3 --print x \"x = x ^ 2; x + 1\"");
  EXPECT_EQ(ok.code, 0);
  EXPECT_EQ(ok.out, "10\nx=9\n");
  auto failed = RunTool("'$'");
  EXPECT_EQ(failed.code, 1);
  EXPECT_EQ(failed.out, "Unknown token\n");  // only the message: the log does not echo
}
#endif

}  // namespace
