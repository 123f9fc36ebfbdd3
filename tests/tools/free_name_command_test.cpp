#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using test::Outcome;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Words = std::vector<std::string>;

/// Directories "a" and "b", which are removed after the test.
class FreeNameCommand : public testing::Test {
 protected:
  FreeNameCommand() {
    fs::create_directory(path("a"));
    fs::create_directory(path("b"));
  }

  [[nodiscard]] std::string path(const std::string& name) const { return (directory_.path() / name).string(); }

  static Outcome freeName(Words words) {
    words.insert(words.begin(), {MERIDIAN_COMMAND, "free-name"});
    return test::run(words);
  }
  /// Returns the output of a command that succeeds.
  static std::string printed(const Words& words) {
    const Outcome outcome = freeName(words);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, IsEmpty());
    return outcome.output;
  }

  test::TemporaryDirectory directory_;
};

TEST_F(FreeNameCommand, PrintsANameAndCreatesTheFileIfAsked) {
  const std::string clip = directory_.write("cl\xff ip\n.mov", "");
  const std::string second = path("cl\xff ip\n 2.mov");
  EXPECT_EQ(printed({path("new.mov")}), path("new.mov") + "\n");
  EXPECT_EQ(printed({"--", "-new.mov"}), "-new.mov\n");
  EXPECT_EQ(printed({clip, "--null"}), second + '\0');
  EXPECT_FALSE(fs::exists(second));
  EXPECT_EQ(printed({clip, "--create"}), second + "\n");
  EXPECT_TRUE(fs::exists(second));

  const Outcome third = freeName({clip, "--create", "--json"});
  EXPECT_THAT(third.errors, HasSubstr("\"" + path("cl\\xff ip\\n 3.mov") + "\" is not valid UTF-8"));
  EXPECT_EQ(json::parse(third.output),
            json({{{"path", path("cl\xef\xbf\xbd ip\n 3.mov")}, {"name", "cl\xef\xbf\xbd ip\n 3.mov"}}}));
}

TEST_F(FreeNameCommand, PrintsOneNameForSeveralDirectories) {
  directory_.write("b/clip", "");
  const Words among{"--among", path("a"), path("b")};
  const auto named = [&among](Words words) {
    words.insert(words.end(), among.begin(), among.end());
    return printed(words);
  };
  EXPECT_EQ(named({"--base", "clip"}), "clip 2\n");
  EXPECT_EQ(named({"--base", "clip", "--ext", ""}), "clip 2.\n");
  EXPECT_EQ(named({"--base", "clip", "--ext", ".MOV"}), "clip.MOV\n");
  EXPECT_EQ(named({"--base", "clip", "--ext", "mov", "--create"}), "clip.mov\n");
  EXPECT_TRUE(fs::exists(path("a/clip.mov")) && fs::exists(path("b/clip.mov")));
  EXPECT_EQ(json::parse(named({"--base", "clip", "--ext", "mov", "--json"})),
            json({{{"path", path("a/clip 2.mov")}, {"name", "clip 2.mov"}},
                  {{"path", path("b/clip 2.mov")}, {"name", "clip 2.mov"}}}));
}

TEST_F(FreeNameCommand, PrintsAndCreatesTheSameFilesOfASet) {
  directory_.write("b/clip.mov", "");
  const Words set{"--base", "clip", "--ext", "xml,.mov", "mov", "--ext", "xml", "--set", path("a"), "--set", path("b")};
  const std::string expected = path("a/clip-2.xml") + "\n" + path("a/clip-2.mov") + "\n" + path("b/clip-2.xml") + "\n" +
                               path("b/clip-2.mov") + "\n";
  EXPECT_EQ(printed(set), expected);
  Words create = set;
  create.emplace_back("--create");
  EXPECT_EQ(printed(create), expected);
  create.emplace_back("--json");
  EXPECT_EQ(json::parse(printed(create))[3],
            json({{"path", path("b/clip-3.mov")}, {"name", "clip-3.mov"}, {"extension", "mov"}}));
}

TEST_F(FreeNameCommand, ReportsWhyThereIsNoName) {
  const std::string longest(255, 'x');
  directory_.write("file", "");
  directory_.write(longest, "");
  const struct {
    Words words;
    int status;
    std::string says;
  } cases[] = {
      {{}, 2, "give a PATH, or --base B"},
      {{path("file"), "--set", path("a")}, 2, "give a PATH, or --base B"},
      {{path("file"), "--base", "clip"}, 2, "--base and --ext need"},
      {{"/"}, 1, "does not name a file"},
      {{".."}, 1, "does not name a file"},
      {{path("a/")}, 1, "does not name a file"},
      {{"--", "-x", "-y"}, 2, "unexpected argument: -y"},
      {{"--base", "..", "--among", path("a"), "--create"}, 1, "not a directory"},
      {{""}, 1, "does not name a file"},
      {{"--among", path("a")}, 2, "--base B"},
      {{"--base", "clip", "--ext", "mov", "xml", "--among", path("a")}, 2, "accepts one extension"},
      {{"--base", "clip", "--set", path("a")}, 2, "--ext E..."},
      {{"--base", "a/clip", "--among", path("a")}, 1, "contain a separator"},
      {{"--base", "clip", "--ext", "/mov", "--set", path("a")}, 1, "contain a separator"},
      {{"--base", "clip", "--among", ""}, 1, "write . for the current"},
      {{"--base", "clip", "--set"}, 2, "--set needs a value: DIR"},
      {{path("file/clip")}, 1, "is unused: Not a directory"},
      {{path(longest)}, 1, "is unused: File name too long"},
      {{path(longest), "--create"}, 1, "File name too long"},
      {{path("\x1b[31m/clip"), "--create"}, 1, "\\x1b[31m/clip\": cannot be created: No such file or directory"},
      {{"--base", "clip", "--ext", "mov", "--set", path("a"), path("c"), "--create"}, 1, path("c/clip.mov")},
  };
  for (const auto& [words, status, says] : cases) {
    const Outcome outcome = freeName(words);
    EXPECT_EQ(outcome.status, status) << testing::PrintToString(words);
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_THAT(outcome.errors, AllOf(HasSubstr(says), Not(HasSubstr("\x1b"))));
  }
  EXPECT_TRUE(fs::is_empty(path("a")));
}

}  // namespace
}  // namespace meridian
