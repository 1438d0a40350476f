#pragma once
// A console reporter that also remembers each benchmark's CPU time per
// iteration, so a run can end with ratios against a baseline measured in
// the same process.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run> &runs) override {
    for (const Run &r : runs)
      if (r.run_type == Run::RT_Iteration && !r.error_occurred) m_Times[r.benchmark_name()] = r.GetAdjustedCPUTime();
    ConsoleReporter::ReportRuns(runs);
  }
  // Prints "name / baseline = ratio" for each pair that ran.
  void PrintRatios(const std::vector<std::pair<std::string, std::string>> &pairs) const {
    printf("\n%-44s %-36s %8s\n", "benchmark", "baseline", "ratio");
    for (const auto &[name, base] : pairs) {
      auto a = m_Times.find(name), b = m_Times.find(base);
      if (a == m_Times.end() || b == m_Times.end() || b->second <= 0) continue;
      printf("%-44s %-36s %8.2f\n", name.c_str(), base.c_str(), a->second / b->second);
    }
  }

 private:
  std::map<std::string, double> m_Times;
};

// main() for a benchmark file: runs everything, then prints the ratios.
#define VELMOR_BENCHMARK_MAIN_WITH_RATIOS(...)                   \
  int main(int argc, char **argv) {                              \
    benchmark::Initialize(&argc, argv);                          \
    RatioReporter reporter;                                      \
    benchmark::RunSpecifiedBenchmarks(&reporter);                \
    reporter.PrintRatios({__VA_ARGS__});                         \
    benchmark::Shutdown();                                       \
    return 0;                                                    \
  }
