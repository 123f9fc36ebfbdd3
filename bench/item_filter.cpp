// Deciding on items found in a directory, without asking the file system.
#include <benchmark/benchmark.h>

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/allocations.h"
#include "meridian/fs/item_filter.h"
#include "meridian/media/file_extension.h"

namespace meridian::bench {
namespace {

using Names = std::array<std::string_view, 4>;

constexpr Names cardNames{"A001C001_211121_R1AB.mov", "A001C001_211121_R1AB.XML", "IMG_0001.JPG", "README"};
constexpr Names accentedNames{"Café – Prise 1.mov", "Überblick.XML", "scène_0001.JPG", "ÉTÉ"};

ItemFilterSettings settingsWith(std::vector<std::string> extensions) {
  return {.extensionFilterList = std::move(extensions),
          .ignoreHiddenItems = true,
          .forcePathComponents = {defaultForceIgnorePathComponents.begin(), defaultForceIgnorePathComponents.end()}};
}

void decide(benchmark::State& state, const ItemFilterSettings& settings, const Names& names) {
  const ItemFilter filter(settings);
  const AllocationsPerIteration allocations(state);
  std::size_t place = 0;
  for (auto _ : state) benchmark::DoNotOptimize(filter.decision(names[place++ % 4], [] { return false; }));
}

void filterByForcedNames(benchmark::State& state) { decide(state, settingsWith({}), cardNames); }
BENCHMARK(filterByForcedNames)->Name("filter_item/no_extensions");

void filterByFewExtensions(benchmark::State& state) { decide(state, settingsWith({"xml", "thm", "jpg"}), cardNames); }
BENCHMARK(filterByFewExtensions)->Name("filter_item/3_extensions");

void filterByAllExtensions(benchmark::State& state) {
  std::vector<std::string> extensions;
  for (const FileExtension extension : allCases<FileExtension>()) extensions.emplace_back(rawValue(extension));
  decide(state, settingsWith(extensions), cardNames);
}
BENCHMARK(filterByAllExtensions)->Name("filter_item/245_extensions");

void filterAccentedNames(benchmark::State& state) { decide(state, settingsWith({"xml", "thm", "jpg"}), accentedNames); }
BENCHMARK(filterAccentedNames)->Name("filter_item/not_ascii");

}  // namespace
}  // namespace meridian::bench
