// Runs the benchmarks, and prints the ratio of the times for every case that a peer is measured in, too.
#include <benchmark/benchmark.h>

#include <iostream>
#include <map>
#include <string>

namespace {

/// Reports by the reporter that --benchmark_format chooses. Below its table for people it prints the ratio of each
/// "case/peer" to "case/meridian"; JSON and CSV stay as they are.
class RatioReporter final : public benchmark::BenchmarkReporter {
 public:
  RatioReporter()
      : chosen_(benchmark::CreateDefaultDisplayReporter()),
        isForPeople_(dynamic_cast<benchmark::ConsoleReporter*>(chosen_) != nullptr) {}

  bool ReportContext(const Context& context) override { return chosen_->ReportContext(context); }

  void ReportRuns(const std::vector<Run>& runs) override {
    chosen_->ReportRuns(runs);
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
    chosen_->Finalize();
    if (!isForPeople_) return;
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
  /// Owned by the benchmark library.
  benchmark::BenchmarkReporter* chosen_;
  bool isForPeople_;
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
