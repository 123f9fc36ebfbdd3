#include "meridian/cli/cli_argument_store.h"

#include <gmock/gmock.h>

#include "tests/cli/random_words.h"

namespace meridian {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PlainStore : public CliArgumentStore {
 public:
  [[nodiscard]] const TextDictionary& flagValueLookup() const noexcept override { return lookup; }
  TextDictionary lookup;
};

std::vector<std::string> piecesOf(std::string_view list) {
  std::vector<std::string> pieces;
  CliArgumentStore::enumerateListValues(list, [&pieces](std::string_view piece) { pieces.emplace_back(piece); });
  return pieces;
}

TEST(CliArgumentStoreTest, RendersTwoElementsForEachFlagByDefault) {
  PlainStore store;
  EXPECT_THAT(store.commandLineArguments(), IsEmpty());
  EXPECT_EQ(store.cliString(), "");
  store.lookup = {{"-out", "/a b.mov"}, {"-overwrite", ""}, {"-in", "x"}};
  EXPECT_THAT(store.commandLineArguments(), ElementsAre("-out", "/a b.mov", "-overwrite", "", "-in", "x"));
  EXPECT_EQ(store.cliString(), "-out/a b.mov-overwrite-inx");
}

TEST(CliArgumentStoreTest, BuildsLists) {
  EXPECT_EQ(CliArgumentStore::buildCLIList(std::span<const std::string>()), "");
  EXPECT_EQ(CliArgumentStore::buildCLIList(std::vector<std::string_view>{"v"}), "[v");
  EXPECT_EQ(CliArgumentStore::buildCLIList(std::vector<std::string>{"", "a b", "", "c]"}), "[ a b  c]");
}

TEST(CliArgumentStoreTest, SplitsListsAndKeepsEmptyPieces) {
  EXPECT_THAT(piecesOf("[a  b"), ElementsAre("a", "", "b"));
  EXPECT_THAT(piecesOf("a b"), ElementsAre("a", "b"));
  EXPECT_THAT(piecesOf("[[a [b [["), ElementsAre("a", "[b", ""));
  EXPECT_THAT(piecesOf("[a\tb"), ElementsAre("a\tb"));
  EXPECT_THAT(piecesOf(""), ElementsAre(""));
  EXPECT_THAT(piecesOf("[["), ElementsAre(""));
}

TEST(CliArgumentStoreTest, ListsOfValuesWithoutSpacesReadBack) {
  RandomWords random(1);
  for (int round = 0; round < 2000; ++round) {
    std::vector<std::string> values = random.vector();
    for (std::string& value : values) std::erase(value, ' ');
    if (values.empty()) continue;
    SCOPED_TRACE(shown(values));
    ASSERT_EQ(piecesOf(CliArgumentStore::buildCLIList(values)), values);
  }
}

}  // namespace
}  // namespace meridian
