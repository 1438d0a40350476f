// Expression evaluation per element, against muParser as the baseline: the
// same texts, the same inputs, in the same run. Prints ns per evaluation for
// both, their ratio, and the heap allocations made while evaluating.

#include "expr/ExprEvaluator.h"
#include "expr/Noise.h"
#include "support/CountingAllocator.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <string>

#ifdef VELMOR_HAVE_MUPARSER
#include <muParser.h>
#endif

namespace {

struct Case {
  const char *name;
  const char *velmor;
  const char *muparser;  // the same expression in muParser's syntax
};

const Case kCases[] = {
    {"trig", "sin(x*3.1+t)*0.5+cos(y*2.3-t)*0.25+x*y*0.1+b*0.3",
     "sin(x*3.1+t)*0.5+cos(y*2.3-t)*0.25+x*y*0.1+b*0.3"},
    {"poly3", "2.5*x*x-1.5*x+0.5", "2.5*x*x-1.5*x+0.5"},
    // 30 nodes in Velmor's tree.
    {"if_clamp_noise2", "if(above(x, 0.5), clamp(x*4+t, 0, 1), noise2(x*3, y*3+t))*b + clamp(y-x, 0, 2)",
     "(x > 0.5 ? clamp(x*4+t, 0, 1) : noise2(x*3, y*3+t))*b + clamp(y-x, 0, 2)"},
};

// Inputs sweep the unit square, so that both arms of a choice are taken.
struct Inputs {
  double x = 0, y = 0, t = 1.2, b = 0.4;
  size_t step = 0;
  void Next() {
    step = (step + 1) & 1023;
    x = step / 1024.0;
    y = 1.0 - x * 0.75;
  }
};

void Finish(benchmark::State &state, const CountingAllocator::Scope &allocations) {
  state.counters["allocs/eval"] =
      benchmark::Counter(static_cast<double>(allocations.Allocations()) / static_cast<double>(state.iterations()));
}

void RunVelmor(benchmark::State &state, const Case &c) {
  Inputs in;
  CExprEvaluator evaluator;
  evaluator.AddAddress("x", &in.x, 0.0);
  evaluator.AddAddress("y", &in.y, 0.0);
  evaluator.AddAddress("t", &in.t, 1.2);
  evaluator.AddAddress("b", &in.b, 0.4);
  evaluator.Attach();
  if (!evaluator.Compile(c.velmor)) {
    state.SkipWithError("does not compile");
    return;
  }
  CountingAllocator::Scope allocations;
  for (auto _ : state) {
    in.Next();
    benchmark::DoNotOptimize(evaluator.Evaluate());
  }
  Finish(state, allocations);
  if (!evaluator.m_Compiled) state.SkipWithError("evaluation failed");
}

#ifdef VELMOR_HAVE_MUPARSER
double MuClamp(double v, double lo, double hi) {
  if (lo == hi) return lo;
  double r = std::fmod(v - lo, hi - lo);
  return r < 0.0 ? r + hi : r + lo;
}
double MuNoise2(double x, double y) { return SimplexNoise2(static_cast<float>(x), static_cast<float>(y)); }

void RunMuParser(benchmark::State &state, const Case &c) {
  Inputs in;
  mu::Parser parser;
  try {
    parser.DefineVar("x", &in.x);
    parser.DefineVar("y", &in.y);
    parser.DefineVar("t", &in.t);
    parser.DefineVar("b", &in.b);
    parser.DefineFun("clamp", MuClamp);
    parser.DefineFun("noise2", MuNoise2);
    parser.SetExpr(c.muparser);
    parser.Eval();
  } catch (const mu::Parser::exception_type &e) {
    state.SkipWithError(e.GetMsg().c_str());
    return;
  }
  CountingAllocator::Scope allocations;
  for (auto _ : state) {
    in.Next();
    benchmark::DoNotOptimize(parser.Eval());
  }
  Finish(state, allocations);
}
#endif

// Passes everything to the console and keeps CPU ns per evaluation by name
// (CPU time: other processes on the machine disturb it less).
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run> &runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run &run : runs) {
      if (run.error_occurred) continue;
      bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      if (run.run_type == Run::RT_Iteration || median) m_Ns[run.run_name.function_name] = run.GetAdjustedCPUTime();
    }
  }

  void PrintRatios() const {
    printf("\n%-18s %14s %14s %8s\n", "expression", "Velmor ns/eval", "muParser ns", "ratio");
    for (const Case &c : kCases) {
      auto v = m_Ns.find(std::string("Velmor/") + c.name);
      auto m = m_Ns.find(std::string("muParser/") + c.name);
      if (v == m_Ns.end()) continue;
      if (m == m_Ns.end()) {
        printf("%-18s %14.2f %14s %8s\n", c.name, v->second, "-", "-");
        continue;
      }
      printf("%-18s %14.2f %14.2f %8.3f\n", c.name, v->second, m->second, v->second / m->second);
    }
  }

 private:
  std::map<std::string, double> m_Ns;
};

}  // namespace

int main(int argc, char **argv) {
  for (const Case &c : kCases) {
    benchmark::RegisterBenchmark((std::string("Velmor/") + c.name).c_str(), RunVelmor, c)
        ->Unit(benchmark::kNanosecond);
#ifdef VELMOR_HAVE_MUPARSER
    benchmark::RegisterBenchmark((std::string("muParser/") + c.name).c_str(), RunMuParser, c)
        ->Unit(benchmark::kNanosecond);
#endif
  }
  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
