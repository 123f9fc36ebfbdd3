#include "tools/meridian/replacement_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/temporary_directory.h"
#include "tools/meridian/command.h"

/// Leaves crashes to the program: the address sanitizer would report them and exit instead. It reads this by itself.
extern "C" const char* __asan_default_options() {
  return "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_abort=0";
}

namespace meridian::command {
namespace {

namespace fs = std::filesystem;

constexpr ReplacementFile::Unfinished kinds[]{ReplacementFile::Unfinished::withoutName,
                                              ReplacementFile::Unfinished::hidden};

std::string contentsOf(const fs::path& path) {
  std::ostringstream contents;
  contents << std::ifstream(path).rdbuf();
  return contents.str();
}

TEST(ReplacementFile, ReplacesAFileOnlyWhenItIsComplete) {
  for (const auto kind : kinds) {
    const test::TemporaryDirectory directory;
    const std::string old = directory.write("old", "old");
    fs::permissions(old, fs::perms::owner_read | fs::perms::owner_write);
    for (const std::string& path : {old, (directory.path() / "new").string()}) {
      const std::string before = contentsOf(path);
      {
        const ReplacementFile abandoned(path, kind);
      }
      ReplacementFile file(path, kind);
      std::ofstream(file.path()) << "by path";
      EXPECT_EQ(pwrite(file.descriptor(), "BY", 2, 0), 2);
      EXPECT_EQ(contentsOf(path), before);
      file.replace();
      EXPECT_EQ(contentsOf(path), "BY path");
    }
    EXPECT_EQ(fs::status(old).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"new", "old"}));
    fs::create_symlink("old", directory.path() / "link");
    ReplacementFile(directory.path() / "link", kind).replace();
    EXPECT_TRUE(fs::is_symlink(directory.path() / "link"));
    EXPECT_EQ(contentsOf(old), "");
    EXPECT_THROW(ReplacementFile(directory.path(), kind), CommandError);
    EXPECT_THROW(ReplacementFile(directory.path() / "none/new", kind), CommandError);
  }
}

TEST(ReplacementFileDeathTest, LeavesNothingWhenTheProcessEnds) {
  const test::TemporaryDirectory directory;
  for (const auto kind : kinds) {
    const auto ended = [&](int signal) {
      const ReplacementFile file(directory.path() / "new", kind);
      std::raise(signal);
    };
    EXPECT_EXIT(ended(SIGSEGV), testing::KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT(ended(SIGTERM), testing::KilledBySignal(SIGTERM), "");
    EXPECT_TRUE(fs::is_empty(directory.path()));
  }
}

}  // namespace
}  // namespace meridian::command
