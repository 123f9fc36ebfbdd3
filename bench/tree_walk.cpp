// Walking a filtered tree, compared with the standard library's iterator without a filter.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "bench/allocations.h"
#include "meridian/fs/tree_walk.h"
#include "tests/support/temporary_directory.h"

namespace meridian::bench {
namespace {

constexpr int fileCount = 100000;

/// A directory of directories with so many files each; in memory if possible, so that the disk is not measured.
class Tree {
 public:
  explicit Tree(int filesPerDirectory)
      : directory_(std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path()) {
    for (int file = 0; file < fileCount; ++file) {
      const std::string name = "A" + std::to_string(1000 + file / filesPerDirectory) + "CARD";
      if (file % filesPerDirectory == 0) std::filesystem::create_directory(directory_.path() / name);
      directory_.write(name + "/" + name + "_C" + std::to_string(100000 + file) + (file % 4 == 0 ? ".XML" : ".mov"),
                       "");
    }
  }

  [[nodiscard]] std::string path() const { return directory_.path().string(); }

 private:
  test::TemporaryDirectory directory_;
};

const Tree& cardTree() {
  static const Tree tree(100);
  return tree;
}

const Tree& flatTree() {
  static const Tree tree(fileCount);
  return tree;
}

void walkMeridian(benchmark::State& state, const Tree& tree) {
  const ItemFilter filter(
      {.extensionFilterList = {"xml", "thm", "jpg"},
       .ignoreHiddenItems = true,
       .forcePathComponents = {defaultForceIgnorePathComponents.begin(), defaultForceIgnorePathComponents.end()}});
  const Url directory = Url::fromFilePath(tree.path());
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) {
    int copied = 0;
    walkTree(
        directory, filter,
        [&copied](const TreeItem& item, bool& /*stop*/) {
          if (item.kind == ItemKind::file && !item.decision.isIgnored) ++copied;
        },
        [&state](const TreeWalkError& error) { state.SkipWithError(error.message().c_str()); });
    if (copied != fileCount / 4 * 3) state.SkipWithError("the walk lost items");
  }
}

void walkStandard(benchmark::State& state, const Tree& tree) {
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) {
    int files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(tree.path())) {
      if (!entry.is_directory()) ++files;
    }
    if (files != fileCount) state.SkipWithError("the walk lost items");
  }
}

void walkCards(benchmark::State& state) { walkMeridian(state, cardTree()); }
BENCHMARK(walkCards)->Name("walk/100000/meridian")->Unit(benchmark::kMillisecond);

void walkCardsStandard(benchmark::State& state) { walkStandard(state, cardTree()); }
BENCHMARK(walkCardsStandard)->Name("walk/100000/recursive_directory_iterator")->Unit(benchmark::kMillisecond);

void walkFlat(benchmark::State& state) { walkMeridian(state, flatTree()); }
BENCHMARK(walkFlat)->Name("walk_one_directory/100000/meridian")->Unit(benchmark::kMillisecond);

void walkFlatStandard(benchmark::State& state) { walkStandard(state, flatTree()); }
BENCHMARK(walkFlatStandard)
    ->Name("walk_one_directory/100000/recursive_directory_iterator")
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace meridian::bench
