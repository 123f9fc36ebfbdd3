#include "tools/meridian/replacement_file.h"

#include <gmock/gmock.h>
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

std::string contentsOf(const fs::path& path) {
  std::ostringstream contents;
  contents << std::ifstream(path).rdbuf();
  return contents.str();
}

TEST(ReplacementFile, CanBeWrittenByItsPathAndSaysWhatCannotBeReplaced) {
  const test::TemporaryDirectory directory;
  const std::string old = directory.write("old", "old");
  fs::create_symlink("nowhere", directory.path() / "link");
  for (const bool isHidden : {false, true}) {
    WholeFile file = createReplacement(old, {.isHidden = isHidden});
    std::ofstream(file.unfinishedPath()) << "by path";
    EXPECT_EQ(pwrite(file.descriptor(), "BY", 2, 0), 2);
    publishReplacement(file, old);
    EXPECT_EQ(contentsOf(old), "BY path");
  }
  const auto refusal = [](const std::string& path) {
    try {
      static_cast<void>(createReplacement(path));
      return std::string("none");
    } catch (const CommandError& error) {
      return std::string(error.what());
    }
  };
  EXPECT_THAT(refusal(directory.path()), testing::HasSubstr("Is a directory"));
  EXPECT_THAT(refusal(directory.path() / "none/new"), testing::HasSubstr("No such file"));
  EXPECT_THAT(refusal(directory.path() / "link"), testing::HasSubstr("a link to a file that does not exist"));
  EXPECT_THAT(refusal("/dev/null"), testing::HasSubstr("it is a device or a pipe"));
  EXPECT_EQ(directory.names(), (std::vector<std::string>{"link", "old"}));
}

TEST(ReplacementFileDeathTest, LeavesNothingWhenTheProcessEnds) {
  const test::TemporaryDirectory directory;
  for (const bool isHidden : {false, true}) {
    const auto ended = [&](int signal) {
      const WholeFile file = createReplacement(directory.path() / "new", {.isHidden = isHidden});
      std::raise(signal);
    };
    EXPECT_EXIT(ended(SIGSEGV), testing::KilledBySignal(SIGSEGV), "");
    EXPECT_EXIT(ended(SIGTERM), testing::KilledBySignal(SIGTERM), "");
    EXPECT_TRUE(fs::is_empty(directory.path()));
  }
}

}  // namespace
}  // namespace meridian::command
