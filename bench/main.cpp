// Runs the benchmarks, and prints the ratio of the times for every case that a peer is measured in, too.
#include <benchmark/benchmark.h>

#include <iostream>
#include <map>
#include <string>

namespace {

/// Prints the usual table, and below it the ratio of each "case/peer" to "case/meridian".
class RatioReporter final : public benchmark::ConsoleReporter {
 public:
  RatioReporter() : ConsoleReporter(OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      // If runs are repeated, their median counts.
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median") continue;
      const std::string name = run.run_name.function_name;
      if (const std::size_t slash = name.rfind('/'); slash != std::string::npos) {
        times_[name.substr(0, slash)][name.substr(slash + 1)] = run.GetAdjustedCPUTime();
      }
    }
  }

  void Finalize() override {
    for (const auto& [test, times] : times_) {
      const auto own = times.find("meridian");
      if (own == times.end()) continue;
      for (const auto& [peer, time] : times) {
        if (peer == "meridian") continue;
        std::cout << test << ": " << peer << " needs " << time / own->second << " times the time of meridian\n";
      }
    }
  }

 private:
  std::map<std::string, std::map<std::string, double>> times_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return 0;
}
