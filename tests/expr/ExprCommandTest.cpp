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
  std::string text(static_cast<size_t>(ftell(f)), '\0');
  rewind(f);
  text.resize(fread(text.data(), 1, text.size(), f));
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

TEST(ExprCommand, SeedFixesBothGenerators) {
  auto a = RunCommand({"--seed", "12", "rand() + random() * 1000"});
  EXPECT_EQ(a.code, 0);
  EXPECT_EQ(a.out, RunCommand({"--seed", "12", "rand() + random() * 1000"}).out);
  EXPECT_NE(a.out, RunCommand({"--seed", "13", "rand() + random() * 1000"}).out);
}

// A parse failure and the command's own; GrammarTest pins the other messages.
TEST(ExprCommand, FailuresPrintTheLoggedMessageAndBadArgumentsTheUsage) {
  const struct {
    std::vector<std::string> args;
    int code;
    const char *err;
  } cases[] = {{{"1 / 0"}, 1, "Divide by zero\n"},
               {{"nosuch(1)"}, 1, "Variable not found at 0 5\n"},
               {{"--var", "x=1", "--var", "x=2", "x"}, 1, "Variable already exists at -1 -1\n"},
               {{}, 2, nullptr}, {{"--var", "x", "1"}, 2, nullptr}, {{"--var", "=1", "1"}, 2, nullptr},
               {{"--var", "x=abc", "1"}, 2, nullptr}, {{"--seed", "x", "1"}, 2, nullptr}, {{"--print"}, 2, nullptr},
               {{"1", "2"}, 2, nullptr}, {{"--bogus", "1"}, 2, nullptr}};
  for (const auto &c : cases) {
    auto r = RunCommand(c.args);
    SCOPED_TRACE(c.args.empty() ? "(none)" : c.args[0]);
    EXPECT_EQ(r.code, c.code);
    EXPECT_EQ(r.out, "");
    if (c.err) EXPECT_EQ(r.err, c.err);
    else EXPECT_NE(r.err.find("usage: velmor-tool expr"), std::string::npos);
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
