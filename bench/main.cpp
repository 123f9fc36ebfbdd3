// Runs the benchmarks and, for every case that a peer does as well, prints how the peer's time compares.
#include <benchmark/benchmark.h>

#include <iostream>
#include <map>
#include <string>

namespace {

/// The usual table, and under it the ratios of "case/peer" to "case/meridian".
class RatioReporter final : public benchmark::ConsoleReporter {
 public:
  RatioReporter() : ConsoleReporter(OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      // Of repeated runs the median counts.
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
        if (peer != "meridian")
          std::cout << test << ": " << peer << " takes " << time / own->second << " times as long\n";
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
