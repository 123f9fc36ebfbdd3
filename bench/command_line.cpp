// Reading and rendering transcoder command lines, beside CLI11 and getopt_long.
#include <benchmark/benchmark.h>
#include <getopt.h>

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#ifdef MERIDIAN_BENCH_CLI11
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#endif

#include "bench/allocations.h"
#include "bench/argument_vectors.h"
#include "meridian/cli/transcode_cli_arguments.h"

namespace meridian::bench {
namespace {

/// Returns the words as other parsers accept them: with a program name, and two dashes before a long name.
std::vector<std::string> peerWords() {
  std::vector<std::string> result{"transcoder"};
  for (const std::string_view word : words) result.push_back((word.starts_with('-') ? "-" : "") + std::string(word));
  return result;
}

/// Returns the flags that a peer has to know to read the same: the whole vocabulary, and the one numbered input.
std::vector<std::pair<std::string, bool>> peerFlags() {
  std::vector<std::pair<std::string, bool>> flags{{"in_0_0", true}};
  for (const FlagDescription& flag : flagDescriptions) {
    flags.emplace_back(flag.text.substr(1), flag.takesValue());
  }
  return flags;
}

void parseVectorMeridian(benchmark::State& state) {
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) {
    TranscodeCliArguments arguments(words);
    benchmark::DoNotOptimize(arguments);
  }
}
BENCHMARK(parseVectorMeridian)->Name("parse_vector/meridian");

#ifdef MERIDIAN_BENCH_CLI11
void parseVectorCli11(benchmark::State& state) {
  CLI::App app;
  std::map<std::string, std::string> values;
  std::map<std::string, bool> switches;
  app.set_help_flag();  // "-h" is in the vocabulary
  for (const auto& [name, takesValue] : peerFlags()) {
    // CLI11 reads a name of one letter as a short option.
    const std::string dashed = (name.size() == 1 ? "-" : "--") + name;
    if (takesValue) {
      app.add_option(dashed, values[name]);
    } else {
      app.add_flag(dashed, switches[name]);
    }
  }
  std::vector<std::string> texts = peerWords();
  std::vector<char*> argv;
  for (std::string& text : texts) argv.push_back(text.data());

  const AllocationsPerIteration allocations(state);
  for (auto _ : state) {
    app.parse(static_cast<int>(argv.size()), argv.data());
    benchmark::DoNotOptimize(values);
  }
}
BENCHMARK(parseVectorCli11)->Name("parse_vector/cli11");
#endif

void parseVectorGetoptLong(benchmark::State& state) {
  const auto flags = peerFlags();
  std::vector<option> options;
  for (const auto& [name, takesValue] : flags) {
    options.push_back({name.c_str(), takesValue ? required_argument : no_argument, nullptr, 0});
  }
  options.push_back({nullptr, 0, nullptr, 0});
  std::vector<std::string> texts = peerWords();
  std::vector<char*> argv;
  for (std::string& text : texts) argv.push_back(text.data());
  argv.push_back(nullptr);

  const AllocationsPerIteration allocations(state);
  for (auto _ : state) {
    std::map<std::string, std::string> values;
    optind = 0;
    int place = 0;
    while (getopt_long(static_cast<int>(argv.size() - 1), argv.data(), "", options.data(), &place) == 0) {
      values[options[static_cast<std::size_t>(place)].name] = optarg == nullptr ? "" : optarg;
    }
    benchmark::DoNotOptimize(values);
  }
}
BENCHMARK(parseVectorGetoptLong)->Name("parse_vector/getopt_long");

void renderVector(benchmark::State& state) {
  const TranscodeCliArguments arguments(words, true);
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) benchmark::DoNotOptimize(arguments.commandLine());
}
BENCHMARK(renderVector)->Name("render_vector/meridian");

/// A vector with this many input files.
class InputVector {
 public:
  explicit InputVector(std::int64_t count) {
    for (std::int64_t place = 0; place < count; ++place) {
      texts_.push_back("-in_0_" + std::to_string(place));
      texts_.push_back("/Volumes/A001/CLIPS/A001C" + std::to_string(place) + ".mov");
    }
    views_.assign(texts_.begin(), texts_.end());
  }
  [[nodiscard]] std::span<const std::string_view> words() const noexcept { return views_; }

 private:
  std::vector<std::string> texts_;
  std::vector<std::string_view> views_;
};

void parseInputs(benchmark::State& state) {
  const InputVector vector(state.range(0));
  for (auto _ : state) {
    TranscodeCliArguments arguments(vector.words());
    benchmark::DoNotOptimize(arguments);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(parseInputs)->Name("parse_inputs")->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);

void readInputs(benchmark::State& state) {
  const TranscodeCliArguments arguments(InputVector(state.range(0)).words());
  for (auto _ : state) benchmark::DoNotOptimize(arguments.inputFiles());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(readInputs)->Name("read_inputs")->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);

void renderInputs(benchmark::State& state) {
  const TranscodeCliArguments arguments(InputVector(state.range(0)).words(), true);
  for (auto _ : state) benchmark::DoNotOptimize(arguments.commandLine());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(renderInputs)->Name("render_inputs")->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace meridian::bench
