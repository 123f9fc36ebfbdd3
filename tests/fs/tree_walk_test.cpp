#include "meridian/fs/tree_walk.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <random>

#include "tests/fs/plain_item_filter.h"
#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

namespace filesystem = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

struct Found {
  ItemKind kind;
  ItemDecision decision;

  friend bool operator==(const Found&, const Found&) = default;
};

struct Walk {
  std::map<std::string, Found> items;
  std::vector<std::string> order;
  std::vector<TreeWalkError> errors;
};

Walk walked(const std::string& path, const ItemFilter& filter = ItemFilter({})) {
  Walk walk;
  walkTree(
      Url::fromFilePath(path), filter,
      [&walk](const TreeItem& item, bool& /*stop*/) {
        EXPECT_EQ(item.name, lastPathComponent(item.path));
        EXPECT_TRUE(walk.items.emplace(item.path, Found{item.kind, item.decision}).second) << item.path;
        walk.order.emplace_back(item.path);
      },
      [&walk](const TreeWalkError& error) { walk.errors.push_back(error); });
  return walk;
}

/// Walks with the standard library and the plain filtering rule.
void walkPlainly(const filesystem::path& directory, const ItemFilterSettings& settings,
                 std::map<std::string, Found>& items) {
  for (const auto& entry : filesystem::directory_iterator(directory)) {
    const filesystem::file_status status = entry.symlink_status();
    const ItemKind kind = is_symlink(status)        ? ItemKind::symbolicLink
                          : is_directory(status)    ? ItemKind::directory
                          : is_regular_file(status) ? ItemKind::file
                                                    : ItemKind::other;
    const ItemDecision decision = test::plainDecision(Url::fromFilePath(entry.path().string()), settings);
    items[entry.path().string()] = {kind, decision};
    if (kind == ItemKind::directory && !decision.isIgnored) walkPlainly(entry.path(), settings, items);
  }
}

TEST(TreeWalk, PassesTheItemsOfThePlainWalk) {
  const test::TemporaryDirectory folder;
  std::mt19937 random(3);
  const std::vector<std::string> names{"DCIM",      "A001.mov", "clip.MOV", ".hidden", ".DS_Store",
                                       "line\nend", "\xff.mov", "\xc3\xa9", "b.xml",   "x"};
  std::vector<filesystem::path> directories{folder.path()};
  for (int i = 0; i < 400; ++i) {
    const filesystem::path path = directories[random() % directories.size()] / names[random() % names.size()];
    if (exists(symlink_status(path))) continue;
    switch (random() % 6) {
      case 0:
      case 1:
        create_directory(path);
        directories.push_back(path);
        break;
      case 2:
        // Links to directories of the tree, above and below, make loops.
        create_directory_symlink(directories[random() % directories.size()], path);
        break;
      case 3:
        filesystem::create_symlink(names[random() % names.size()], path);
        break;
      case 4:
        ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
        break;
      default:
        std::ofstream(path).close();
    }
  }
  for (int round = 0; round < 40; ++round) {
    ItemFilterSettings settings{.ignoreHiddenItems = random() % 2 == 0};
    if (random() % 2 == 0) settings.forcePathComponents = {".ds_store", names[random() % names.size()]};
    if (random() % 4 != 0) settings.extensionFilterList = {"mov"};
    settings.filteringOption = allCases<ItemFilteringOption>()[random() % 2];
    std::map<std::string, Found> plain;
    walkPlainly(folder.path(), settings, plain);
    const Walk walk = walked(folder.path().string(), ItemFilter(settings));
    EXPECT_EQ(walk.items, plain);
    EXPECT_THAT(walk.errors, IsEmpty());
  }
}

TEST(TreeWalk, ReadsADirectoryWhenTheItemAfterItIsAskedFor) {
  const test::TemporaryDirectory folder;
  const std::string root = folder.path().string();
  filesystem::create_directory(root + "/a");
  std::ofstream(root + "/b").close();
  meridian::TreeWalk walk(Url::fromFilePath(root), ItemFilter({}));
  const auto next = [&walk] {
    const auto item = walk.next([](const TreeWalkError& error) { ADD_FAILURE() << error.message(); });
    return item ? std::string(item->path) : std::string();
  };
  EXPECT_EQ(next(), root + "/a");
  std::ofstream(root + "/a/late").close();
  meridian::TreeWalk moved(std::move(walk));
  walk = std::move(moved);
  EXPECT_EQ(next(), root + "/a/late");
  EXPECT_EQ(next(), root + "/b");
  EXPECT_EQ(next(), "");
  EXPECT_EQ(next(), "");
}

TEST(TreeWalk, PassesDirectoriesBeforeTheirItemsInTheOrderOfNames) {
  const test::TemporaryDirectory folder;
  const std::string root = folder.path().string();
  filesystem::create_directories(root + "/b/z");
  for (const char* const name : {"c", "b/y", "b/z/x", "a", "B", "b.x"}) folder.write(name, "");
  const std::vector<std::string> expected{"/B", "/a", "/b", "/b/y", "/b/z", "/b/z/x", "/b.x", "/c"};
  const auto below = [&expected](const std::string& path) {
    std::vector<std::string> paths;
    for (const std::string& each : expected) paths.push_back(path + each);
    return paths;
  };
  EXPECT_EQ(walked(root).order, below(root));
  EXPECT_EQ(walked(root + "/").order, below(root));
  filesystem::create_directory_symlink(root, root + "-link");
  EXPECT_EQ(walked(root + "-link").order, below(root + "-link"));
  filesystem::remove(root + "-link");

  std::vector<std::string> visited;
  walkTree(
      Url::fromFilePath(root), ItemFilter({}),
      [&visited](const TreeItem& item, bool& stop) {
        visited.emplace_back(item.name);
        stop = visited.size() == 3;
      },
      [](const TreeWalkError& error) { ADD_FAILURE() << error.message(); });
  EXPECT_THAT(visited, ElementsAre("B", "a", "b"));
}

TEST(TreeWalk, ReportsWhatItCannotReadAndContinues) {
  const test::TemporaryDirectory folder;
  const std::string root = folder.path().string();
  const std::string file = folder.write("a", "");
  const auto error = [](TreeWalkErrorCode code, const std::string& path, std::errc systemError) {
    return TreeWalkError{code, path, {}, make_error_code(systemError)};
  };
  using enum TreeWalkErrorCode;
  EXPECT_THAT(walked(file).errors, ElementsAre(error(unreadableItem, file, std::errc::not_a_directory)));
  for (const std::string& missing : {root + "/none", std::string(), root + std::string("\0x", 2)}) {
    EXPECT_THAT(walked(missing).errors,
                ElementsAre(error(unreadableItem, missing, std::errc::no_such_file_or_directory)));
  }

  // Directories are removed, or replaced by links out of the tree, after they were passed and before they are entered.
  for (const char* const name : {"gone", "link", "sealed", "z"}) filesystem::create_directories(root + "/" + name);
  filesystem::create_symlink(std::string(300, 'x'), root + "/far");  // longer than a name may be
  folder.write("sealed/x", "");
  folder.write("z/x", "");
  filesystem::permissions(root + "/sealed", filesystem::perms::none);
  std::vector<std::string> passed;
  std::map<std::string, TreeWalkError> errors;
  walkTree(
      Url::fromFilePath(root), ItemFilter({}),
      [&](const TreeItem& item, bool& /*stop*/) {
        passed.emplace_back(item.path.substr(root.size()));
        if (item.name == "gone" || item.name == "link") filesystem::remove(item.path);
        if (item.name == "link") filesystem::create_directory_symlink("/", item.path);
      },
      [&](const TreeWalkError& each) { errors.emplace(each.place.substr(root.size()), each); });
  filesystem::permissions(root + "/sealed", filesystem::perms::all);

  const bool mayReadAnything = ::geteuid() == 0;
  EXPECT_EQ(errors.size(), mayReadAnything ? 3U : 4U);
  EXPECT_EQ(errors["/gone"], error(unreadableItem, root + "/gone", std::errc::no_such_file_or_directory));
  EXPECT_EQ(errors["/link"].code, unreadableItem);
  EXPECT_TRUE(errors["/link"].systemError);
  EXPECT_EQ(errors["/far"], error(unresolvedLink, root + "/far", std::errc::filename_too_long));
  if (!mayReadAnything) {
    EXPECT_EQ(errors["/sealed"], error(unreadableItem, root + "/sealed", std::errc::permission_denied));
  }
  std::vector<std::string> expected{"/a", "/far", "/gone", "/link", "/sealed", "/sealed/x", "/z", "/z/x"};
  if (!mayReadAnything) std::erase(expected, "/sealed/x");
  EXPECT_EQ(passed, expected);
}

constexpr int depthOfTree = 40;

/// Makes nested directories, each with another directory and a file in that one, which are visited after the nested
/// ones. Returns them from the outermost one on.
std::vector<std::string> nestedDirectories(const std::string& root) {
  std::vector<std::string> levels{root};
  for (int level = 0; level <= depthOfTree; ++level) {
    filesystem::create_directories(levels.back() + "/z");
    std::ofstream(levels.back() + "/z/" + std::to_string(level));
    levels.push_back(levels.back() + "/d");
  }
  return levels;
}

TEST(TreeWalk, NeedsOnlyThreeOpenDirectories) {
  const test::TemporaryDirectory folder;
  static_cast<void>(nestedDirectories(folder.path().string() + "/root"));
  // A sanitizer opens files when it first sees a class, so it sees these classes before the limit is set.
  for (const std::error_code& code : {std::error_code(), std::make_error_code(std::errc::io_error)}) {
    ASSERT_NE(code, std::errc::too_many_files_open);
  }
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const int free[] = {::dup(0), ::dup(0), ::dup(0)};
  for (const int descriptor : free) ::close(descriptor);
  const rlimit few{static_cast<rlim_t>(free[2]) + 1, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  int files = 0;
  int errors = 0;
  walkTree(
      Url::fromFilePath(folder.path().string()), ItemFilter({}),
      [&files](const TreeItem& item, bool& /*stop*/) { files += item.kind == ItemKind::file ? 1 : 0; },
      [&errors](const TreeWalkError& /*error*/) { ++errors; });
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(files, depthOfTree + 1);
  EXPECT_EQ(errors, 0);
}

// The walk returns through "..", which leads elsewhere if a directory was moved in the meantime.
TEST(TreeWalk, ReturnsFromAMovedDirectory) {
  const test::TemporaryDirectory folder;
  const std::string root = folder.path().string() + "/root";
  const std::vector<std::string> levels = nestedDirectories(root);
  std::vector<std::string> files;
  std::size_t errors = 0;
  walkTree(
      Url::fromFilePath(root), ItemFilter({}),
      [&](const TreeItem& item, bool& /*stop*/) {
        if (item.path == levels[depthOfTree]) filesystem::rename(levels[5], root + "/moved");
        if (item.kind == ItemKind::file) files.emplace_back(item.path);
      },
      [&errors](const TreeWalkError& /*error*/) { ++errors; });
  std::vector<std::string> expected;
  for (int level = depthOfTree; level >= 0; --level) {
    expected.push_back(levels[static_cast<std::size_t>(level)] + "/z/" + std::to_string(level));
  }
  EXPECT_EQ(files, expected);
  EXPECT_EQ(errors, 0U);
}

std::size_t openDescriptors() {
  std::size_t count = 0;
  for (const auto& entry : filesystem::directory_iterator("/proc/self/fd")) count += entry.exists() ? 1U : 0U;
  return count;
}

// Every third level also holds a directory with a file that is visited after the next level: the walk returns to it
// long after its directory was closed.
TEST(TreeWalk, IsNotLimitedByTheLengthOfAPath) {
  constexpr int depth = 5000;
  // In memory if possible: a disk may need half a minute to remove so many directories.
  const filesystem::path memory = "/dev/shm";
  const test::TemporaryDirectory folder(filesystem::is_directory(memory) ? memory : filesystem::temp_directory_path());
  const std::string root = folder.path().string() + "/deep";
  filesystem::create_directory(root);
  int descriptor = ::open(root.c_str(), O_RDONLY | O_DIRECTORY);
  for (int level = 0; level < depth; ++level) {
    ASSERT_EQ(::mkdirat(descriptor, "down", 0700), 0);
    if (level % 3 == 0) {
      ASSERT_EQ(::mkdirat(descriptor, "side", 0700), 0);
      ::close(::openat(descriptor, "side/file", O_WRONLY | O_CREAT, 0600));
      ASSERT_EQ(::symlinkat("side", descriptor, "to side"), 0);
    }
    const int next = ::openat(descriptor, "down", O_RDONLY | O_DIRECTORY);
    ::close(descriptor);
    descriptor = next;
    ASSERT_GE(descriptor, 0);
  }
  ::close(descriptor);

  const std::size_t before = openDescriptors();
  std::size_t mostOpen = 0;
  std::map<std::string, int, std::less<>> counts;
  std::size_t longest = 0;
  walkTree(
      Url::fromFilePath(root), ItemFilter({.extensionFilterList = {"mov"}}),
      [&](const TreeItem& item, bool& /*stop*/) {
        EXPECT_EQ(item.decision.rule, item.name == "file" ? ItemFilterRule::extension : ItemFilterRule::directory);
        ++counts[std::string(item.name)];
        longest = std::max(longest, item.path.size());
        if (counts["down"] % 100 == 0) mostOpen = std::max(mostOpen, openDescriptors());
      },
      [](const TreeWalkError& error) { ADD_FAILURE() << error.place.size() << " " << error.systemError.message(); });
  EXPECT_THAT(counts, ElementsAre(Pair("down", depth), Pair("file", 1667), Pair("side", 1667), Pair("to side", 1667)));
  EXPECT_GE(longest, root.size() + 5UL * depth);
  EXPECT_EQ(mostOpen, before + 33);  // and one more while a directory is entered
  EXPECT_EQ(openDescriptors(), before);

  EXPECT_EQ(test::run({"rm", "-rf", root}).status, 0);  // std::filesystem needs a descriptor for each level
}

}  // namespace
}  // namespace meridian
