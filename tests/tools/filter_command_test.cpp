#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "meridian/fs/tree_walk.h"
#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

using nlohmann::json;
using test::Outcome;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Words = std::vector<std::string>;

Outcome meridianWith(const std::string& subcommand, const Words& words) {
  Words command{MERIDIAN_COMMAND, subcommand};
  command.insert(command.end(), words.begin(), words.end());
  return test::run(command);
}

/// A card with every kind of name, and the decisions of the library on it.
class FilterCommand : public testing::Test {
 protected:
  FilterCommand() {
    for (const char* const name : {"DCIM", "DCIM/.hidden", ".Trashes"}) {
      std::filesystem::create_directory(directory_.path() / name);
    }
    for (const char* const name :
         {"DCIM/a.mov", "DCIM/b.XML", "DCIM/.hidden/c.xml", ".Trashes/d", "line\nend.mov", "\xff.mov", "\x1b[2J"}) {
      directory_.write(name, "");
    }
    std::filesystem::create_directory_symlink(directory_.path(), directory_.path() / "loop");
  }

  [[nodiscard]] std::string root() const { return directory_.path().string(); }

  /// Returns the output of --null.
  [[nodiscard]] std::string expected(const ItemFilterSettings& settings) const {
    std::string text;
    walkTree(
        Url::fromFilePath(root()), ItemFilter(settings),
        [&text](const TreeItem& item, bool& /*stop*/) {
          text += item.decision.isIgnored ? "ignore\t" : "copy\t";
          text += std::string(rawValue(item.decision.rule)) + '\t' + std::string(item.path) + '\0';
        },
        [](const TreeWalkError& error) { ADD_FAILURE() << error.message(); });
    return text;
  }

  const test::TemporaryDirectory directory_;
};

TEST_F(FilterCommand, PrintsTheDecisionsOfTheLibrary) {
  const std::vector<std::string> defaults(defaultForceIgnorePathComponents.begin(),
                                          defaultForceIgnorePathComponents.end());
  const std::pair<Words, ItemFilterSettings> cases[] = {
      {{}, {}},
      {{"--ignore-ext", "XML", "--ignore-ext", ".mov"}, {.extensionFilterList = {"xml", "mov"}}},
      {{"--ignore-ext", "XML,.mov"}, {.extensionFilterList = {"xml", "mov"}}},
      {{"--only-ext", "xml"},
       {.extensionFilterList = {"xml"}, .filteringOption = ItemFilteringOption::onlyListedExtensions}},
      {{"--ignore-hidden", "--force", "dcim", "--force", "x"},
       {.ignoreHiddenItems = true, .forcePathComponents = {"DCIM", "x"}}},
      {{"--default-forced"}, {.forcePathComponents = defaults}},
  };
  for (const auto& [options, settings] : cases) {
    Words words = options;
    words.insert(words.end(), {"--null", root()});
    const Outcome outcome = meridianWith("filter", words);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, IsEmpty());
    EXPECT_EQ(outcome.output, expected(settings));
  }
}

TEST_F(FilterCommand, PrintsForPeopleAndAsJson) {
  const Outcome text = meridianWith("filter", {"--ignore-ext", "xml", root()});
  EXPECT_THAT(text.output,
              AllOf(HasSubstr("copy    directory         " + root() + "/DCIM\n"),
                    HasSubstr("ignore  extension         " + root() + "/DCIM/b.XML\n"), HasSubstr("line\\nend.mov\n"),
                    HasSubstr("9 to copy, 2 ignored\n"), Not(HasSubstr("\x1b"))));

  const Outcome outcome = meridianWith("filter", {"--json", root() + "/DCIM", root() + "/\xff.mov"});
  EXPECT_THAT(outcome.errors, HasSubstr("1 path is not valid UTF-8"));
  const json items = json::parse(outcome.output);
  ASSERT_EQ(items.size(), 5U);
  EXPECT_EQ(items[0], json({{"path", root() + "/DCIM/.hidden"}, {"ignored", false}, {"rule", "directory"}}));
  EXPECT_EQ(items[4], json({{"path", root() + "/\xef\xbf\xbd.mov"}, {"ignored", false}, {"rule", "no extensions"}}));
  EXPECT_EQ(json::parse(meridianWith("filter", {"--json", root() + "/none"}).output), json::array());
}

TEST_F(FilterCommand, ContinuesAfterUnreadableItems) {
  const Outcome outcome = meridianWith("filter", {root() + "/none", "--null", root() + "/DCIM/a.mov", "--", "-none"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "copy\tno extensions\t" + root() + "/DCIM/a.mov" + '\0');
  EXPECT_THAT(outcome.errors, AllOf(HasSubstr("/none\": cannot be read: No such file or directory"),
                                    HasSubstr("\"-none\": cannot be read")));
  const Outcome wrong = meridianWith("filter", {"--ignore-ext", "a", "--only-ext", "b", root()});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_THAT(wrong.errors, HasSubstr("cannot be combined"));
}

TEST_F(FilterCommand, PrintsPathsAsRsyncAndTarNeedThem) {
  // A name that would be an option or a comment, and a tree that --no-recursion leaves out in part.
  directory_.write("-x.mov", "");
  directory_.write("#y.mov", "");
  const std::vector<std::string> copied{"#y.mov", "-x.mov", "DCIM", "DCIM/a.mov", "line\nend.mov", "loop", "\xff.mov"};
  const Words options{"--paths", "--null", "--only-ext", "mov", "--default-forced", "--ignore-hidden"};
  for (const std::string end : {"", "/", "//"}) {
    Words words = options;
    words.push_back(root() + end);
    std::string expectedPaths;
    for (const std::string& path : copied) expectedPaths += (path.find_first_of("#-") == 0 ? "./" : "") + path + '\0';
    const Outcome outcome = meridianWith("filter", words);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, expectedPaths);
  }
  // The lines of the help, with each tool that is installed.
  const std::string filter = R"("$0" filter --paths --null --only-ext mov --default-forced --ignore-hidden "$1" | )";
  const std::pair<std::string, std::string> tools[] = {
      {"rsync", R"(rsync -a --from0 --files-from=- "$1" "$2")"},
      {"tar", R"(tar -c -f "$2.tar" -C "$1" --null --no-recursion -T - && mkdir "$2" && tar -x -f "$2.tar" -C "$2")"},
  };
  int toolCount = 0;
  for (const auto& [tool, command] : tools) {
    if (test::run({"bash", "-c", "command -v " + tool}).status != 0) continue;
    ++toolCount;
    const test::TemporaryDirectory target;
    const std::string to = target.path() / "copy";
    const Outcome outcome =
        test::run({"bash", "-c", "set -o pipefail; " + filter + command, MERIDIAN_COMMAND, root(), to});
    EXPECT_EQ(outcome.status, 0) << tool << outcome.errors;
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(to)) {
      found.push_back(std::filesystem::relative(entry.path().parent_path(), to) / entry.path().filename());
    }
    for (std::string& each : found) each = each.starts_with("./") ? each.substr(2) : each;
    EXPECT_THAT(found, testing::UnorderedElementsAreArray(copied)) << tool;
  }
  if (toolCount == 0) GTEST_SKIP() << "neither rsync nor tar is installed";
}

TEST_F(FilterCommand, RefusesPathsThatItCannotPrint) {
  const Outcome newline = meridianWith("filter", {"--paths", "--only-ext", "mov", root()});
  EXPECT_EQ(newline.status, 1);
  EXPECT_EQ(newline.output, ".Trashes\nDCIM\nDCIM/.hidden\nDCIM/a.mov\nloop\n\xff.mov\n");
  EXPECT_THAT(newline.errors, HasSubstr("\"line\\nend.mov\": contains a newline; use --null"));
  const struct {
    Words words;
    int status;
    std::string says;
  } cases[] = {
      {{"--paths", root(), root()}, 2, "--paths needs a single PATH"},
      {{"--paths", "--json", root()}, 2, "cannot be used together"},
      {{"--paths", root() + "/DCIM/a.mov"}, 1, "is not a directory"},
      {{"--paths", root() + "/none"}, 1, "does not exist"},
      {{root(), "--only-ext", "mov", "mxf"},
       2,
       "\"mxf\" does not exist; to list several extensions, write "
       "--only-ext mov,mxf"},
      {{"--ignore-ext", "mov", "mxf", root()}, 2, "write --ignore-ext mov,mxf"},
      {{"--only-ext", "mov,", root()}, 1, "--only-ext has an empty extension; remove the extra comma: \"mov,\""},
      {{"--only-ext", "a/b", root()}, 1, "must not contain a separator"},
  };
  for (const auto& [words, status, says] : cases) {
    const Outcome outcome = meridianWith("filter", words);
    EXPECT_EQ(outcome.status, status) << testing::PrintToString(words);
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_THAT(outcome.errors, HasSubstr(says));
  }
}

TEST(CleanNameCommand, RemovesWhatTheTargetDoesNotAllow) {
  const std::string name = "Caf\xc3\xa9: Take 1/2?\n.mov";
  const std::pair<Words, std::string> cases[] = {
      {{"--ltfs", name}, "Caf: Take 1/2.mov\n"},
      {{"--desktop", name}, "Caf\xc3\xa9 Take 12?\n.mov\n"},
      {{name, "a"}, "Caf Take 12.mov\na\n"},
      {{"--desktop", "--null", name}, "Caf\xc3\xa9 Take 12?\n.mov" + std::string(1, '\0')},
      {{"--", "-a:", "--json"}, "-a\n--json\n"},
  };
  for (const auto& [words, output] : cases) {
    const Outcome outcome = meridianWith("clean-name", words);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, output);
  }
  const Outcome nothing = meridianWith("clean-name", {"--ltfs", "\xc3\xa9", "a"});
  EXPECT_EQ(nothing.status, 1);
  EXPECT_EQ(nothing.output, "\na\n");
  EXPECT_THAT(nothing.errors, HasSubstr("nothing is left"));
}

}  // namespace
}  // namespace meridian
