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
