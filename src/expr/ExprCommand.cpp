#include "expr/ExprCommand.h"

#include "core/Log.h"
#include "core/Random.h"
#include "expr/ExprEvaluator.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>
#include <utility>
#include <vector>

const char *const kExprCommandUsage = "[--var NAME=VALUE]... [--print NAME]... [--seed N] TEXT";

namespace {

struct Options {
  std::vector<std::pair<std::string, double>> vars;
  std::vector<std::string> prints;
  bool seeded = false;
  uint32_t seed = 0;
  const char *text = nullptr;
};

bool ParseDouble(const char *text, double &value) {
  char *end = nullptr;
  errno = 0;
  value = strtod(text, &end);
  return end != text && *end == 0 && errno == 0;
}

bool ParseSeed(const char *text, uint32_t &seed) {
  char *end = nullptr;
  errno = 0;
  long long value = strtoll(text, &end, 0);
  seed = static_cast<uint32_t>(value);
  return end != text && *end == 0 && errno == 0;
}

// Empty on success, else what was wrong.
std::string ParseOptions(int argc, char **argv, Options &options) {
  bool optionsEnded = false;
  for (int i = 1; i < argc; ++i) {
    const char *arg = argv[i];
    bool isOption = !optionsEnded && strncmp(arg, "--", 2) == 0;
    if (isOption && strcmp(arg, "--") == 0) {
      optionsEnded = true;
      continue;
    }
    if (!isOption) {
      if (options.text) return "more than one TEXT";
      options.text = arg;
      continue;
    }
    if (strcmp(arg, "--var") && strcmp(arg, "--print") && strcmp(arg, "--seed"))
      return std::string("unknown option ") + arg;
    if (i + 1 >= argc) return std::string("missing value after ") + arg;
    const char *value = argv[++i];
    if (!strcmp(arg, "--print")) {
      options.prints.emplace_back(value);
    } else if (!strcmp(arg, "--seed")) {
      if (!ParseSeed(value, options.seed)) return std::string("bad seed ") + value;
      options.seeded = true;
    } else {
      const char *equals = strchr(value, '=');
      double number = 0.0;
      if (!equals || equals == value || !ParseDouble(equals + 1, number))
        return std::string("expected NAME=VALUE after --var, got ") + value;
      options.vars.emplace_back(std::string(value, equals), number);
    }
  }
  if (!options.text) return "missing TEXT";
  return {};
}

// Keeps the last line the log gets while the command runs.
class LogCapture {
 public:
  LogCapture() { SetLogSink(&LogCapture::Sink, this); }
  ~LogCapture() { SetLogSink(nullptr, nullptr); }
  LogCapture(const LogCapture &) = delete;
  LogCapture &operator=(const LogCapture &) = delete;
  const std::string &Last() const { return m_Last; }

 private:
  static void Sink(const char *text, bool, void *user) { static_cast<LogCapture *>(user)->m_Last = text; }
  std::string m_Last;
};

}  // namespace

int RunExprCommand(int argc, char **argv, FILE *out, FILE *err) {
  Options options;
  std::string problem = ParseOptions(argc, argv, options);
  if (!problem.empty()) {
    fprintf(err, "velmor-tool expr: %s\nusage: velmor-tool expr %s\n", problem.c_str(), kExprCommandUsage);
    return 2;
  }

  uint32_t seed = options.seeded ? options.seed : StartSeed();
  SeedSharedRandom(seed);
  CExprEvaluator evaluator;
  evaluator.SeedRandom(seed);
  std::deque<double> variables;  // a deque keeps the bound addresses stable
  try {
    for (const auto &[name, value] : options.vars) {
      variables.push_back(0.0);
      evaluator.AddAddress(name, &variables.back(), value);
    }
  } catch (const ExprEval::Exception &e) {
    fprintf(err, "%s\n", e.what());
    return 1;
  }
  evaluator.Attach();

  LogCapture log;
  double result = 0.0;
  if (evaluator.Compile(options.text)) result = evaluator.Evaluate();
  if (!evaluator.m_Compiled) {
    // An empty text fails without a log line; say what parsing it would.
    fprintf(err, "%s\n", log.Last().empty() ? ExprEval::EmptyExpressionException().what() : log.Last().c_str());
    return 1;
  }
  fprintf(out, "%.17g\n", result);
  for (const std::string &name : options.prints) {
    const double *address = evaluator.GetValueList().GetAddress(name);
    fprintf(out, "%s=%.17g\n", name.c_str(), address ? *address : 0.0);
  }
  return 0;
}
