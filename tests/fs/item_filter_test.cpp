#include "meridian/fs/item_filter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <random>

#include "meridian/fs/extension_filter.h"
#include "meridian/platform/file_queries.h"
#include "meridian/suite/localization.h"
#include "tests/fs/plain_item_filter.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

using enum ItemFilterRule;
constexpr auto onlyListed = ItemFilteringOption::onlyListedExtensions;

TEST(ItemFilteringOption, IsStoredAsANumberAndTranslated) {
  EXPECT_EQ(rawValue(ItemFilteringOption::ignoreListedExtensions), 0);
  EXPECT_EQ(rawValue(onlyListed), 1);
  EXPECT_EQ(fromRawValue<ItemFilteringOption>(0), ItemFilteringOption::ignoreListedExtensions);
  EXPECT_EQ(fromRawValue<ItemFilteringOption>(1), onlyListed);
  for (const std::int64_t number : {-1, 2, 256, 257}) {
    EXPECT_EQ(fromRawValue<ItemFilteringOption>(number), std::nullopt);
  }
  setTranslator([](std::string_view text) { return "<" + std::string(text) + ">"; });
  EXPECT_EQ(localizedString(onlyListed), "<Only copy files with extension(s)>");
  EXPECT_EQ(localizedTooltip(onlyListed), "<Only copies files with the listed extensions>");
  setTranslator(nullptr);
}

TEST(ExtensionFilter, NeverPermitsKnownExtensionsThatAreNotListed) {
  using enum FileExtension;
  const struct {
    std::string_view extension;
    bool listedOnly, withUnknown;
  } cases[] = {
      {"mov", true, true}, {".MOV", true, true}, {"avi", false, false},  {"fooextension", false, true},
      {"", false, false},  {".", false, false},  {"..mov", false, true}, {"\xff", false, true},
  };
  for (const auto& [extension, listedOnly, withUnknown] : cases) {
    EXPECT_EQ((ExtensionFilter{{mov, mxf}, false}.permitsExtension(extension)), listedOnly) << extension;
    EXPECT_EQ((ExtensionFilter{{mov, mxf}, true}.permitsExtension(extension)), withUnknown) << extension;
  }
  EXPECT_TRUE((ExtensionFilter{{directory}, false}.permitsExtension("")));
}

TEST(ItemFilter, DecidesByTheFirstRuleThatApplies) {
  const test::TemporaryDirectory folder;
  const std::string root = folder.path().string();
  std::filesystem::create_directory(root + "/footage.mov");
  for (const char* const name : {"clip.MOV", ".mov", "clip.mxf", ".ds_store", "clipmov", "clip.tar.gz", "x.STRASSE"})
    folder.write(name, "");
  std::filesystem::create_symlink("nowhere", root + "/.dangling");
  std::filesystem::create_directory_symlink(root, root + "/link.mov");
  const std::vector<std::string> defaults(defaultForceIgnorePathComponents.begin(),
                                          defaultForceIgnorePathComponents.end());
  using Settings = ItemFilterSettings;
  const struct {
    std::string_view name;
    Settings settings;
    ItemDecision decision;
  } cases[] = {
      {".ds_store", {.forcePathComponents = defaults}, {true, forcedComponent}},
      {"$recycle.bin", {.forcePathComponents = defaults}, {true, forcedComponent}},  // does not exist
      {"footage.mov", {.forcePathComponents = {"x", "FOOTAGE.MOV"}}, {true, forcedComponent}},
      {"clip.MOV", {.forcePathComponents = {"clip", "MOV", "clip.MOV2"}}, {false, noExtensions}},
      {".ds_store", {.ignoreHiddenItems = true, .forcePathComponents = defaults}, {true, forcedComponent}},
      {"footage.mov", {.extensionFilterList = {"mov"}}, {false, directory}},
      {"footage.mov", {.extensionFilterList = {"mxf"}, .filteringOption = onlyListed}, {false, directory}},
      {".mov", {.extensionFilterList = {"mov"}, .ignoreHiddenItems = true}, {true, hidden}},
      {".dangling", {.ignoreHiddenItems = true}, {true, hidden}},
      {"link.mov", {.extensionFilterList = {"mov"}}, {false, directory}},
      {".missing", {.ignoreHiddenItems = true}, {false, noExtensions}},
      {".mov", {.extensionFilterList = {"mov"}}, {true, extension}},
      {"clip.MOV", {.extensionFilterList = {".mov"}}, {true, extension}},
      {"clip.MOV", {.extensionFilterList = {"Mov"}, .filteringOption = onlyListed}, {false, extension}},
      {"clip.mxf", {.extensionFilterList = {"mov"}, .filteringOption = onlyListed}, {true, extension}},
      {"clipmov", {.extensionFilterList = {"mov"}}, {false, extension}},
      {"clip.mxf", {.filteringOption = onlyListed}, {false, noExtensions}},
      {"clip.", {.extensionFilterList = {""}}, {true, extension}},
      {"clip.MOV", {.extensionFilterList = {""}}, {false, extension}},
      {"clip.MOV", {.extensionFilterList = {"..mov"}}, {false, extension}},
      {"clip.tar.gz", {.extensionFilterList = {"tar.gz"}}, {true, extension}},
      {"clip.tar.gz", {.extensionFilterList = {"gz"}}, {true, extension}},
      {"clip.tar.gz", {.extensionFilterList = {"tar"}}, {false, extension}},
      {"x.STRASSE", {.extensionFilterList = {"stra\xc3\x9f\x65"}}, {false, extension}},  // lower case is not folding
      {"X.stra\xc3\x9f\x65", {.forcePathComponents = {"x.STRASSE"}}, {true, forcedComponent}},
      {"", {.extensionFilterList = {"mov"}, .filteringOption = onlyListed}, {false, directory}},
  };
  for (const auto& [name, settings, decision] : cases) {
    const Url item = Url::fromFilePath(root + "/" + std::string(name));
    EXPECT_EQ(test::plainDecision(item, settings), decision) << name;
    EXPECT_EQ(decisionBasedOnSettings(item, settings), decision) << name;
    EXPECT_EQ(shouldIgnoreBasedOnSettings(item, settings), decision.isIgnored) << name;
  }
}

TEST(ItemFilter, TerminatesForAnUnknownOptionThatWouldDecide) {
  const auto wrong = static_cast<ItemFilteringOption>(2);
  const ItemFilterSettings settings{.extensionFilterList = {"mov"}, .filteringOption = wrong};
  const Url item = Url::fromFilePath("/missing");
  EXPECT_DEATH((void)shouldIgnoreBasedOnSettings(item, settings), "filtering option 2");
  EXPECT_DEATH((void)ItemFilter(settings).isIgnored(item), "filtering option 2");
  // The rules for directories and empty lists come first.
  const Url directory = Url::fromFilePath("/");
  EXPECT_FALSE(shouldIgnoreBasedOnSettings(directory, settings));
  EXPECT_FALSE(ItemFilter(settings).isIgnored(directory));
  EXPECT_FALSE(shouldIgnoreBasedOnSettings(item, {.filteringOption = wrong}));
  EXPECT_FALSE(ItemFilter({.filteringOption = wrong}).isIgnored(item));
}

// Pieces of names and extensions: letters whose case forms differ in length, dots everywhere, stray bytes, and a piece
// that is longer than a name may be.
const std::vector<std::string> pieces{
    ".", "..",   "mov", "MOV",   "tar.gz",    ".Gz", "\xc3\x9f", "SS",       "\xc4\xb0",           "i", "\xe2\x84\xaa",
    "k", "\xff", ".x",  "clip.", ".DS_STORE", "a",   "\xc3\xa9", "\xc3\x89", std::string(260, '.')};

std::string randomName(std::mt19937& random) {
  std::string name;
  for (std::size_t i = 1 + random() % 3; i > 0; --i) name += pieces[random() % pieces.size()];
  return name;
}

ItemFilterSettings randomSettings(std::mt19937& random) {
  const auto names = [&random](std::size_t most) {
    std::vector<std::string> result(random() % (most + 1));
    for (std::string& name : result) name = random() % 10 == 0 ? "" : randomName(random);
    return result;
  };
  return {.extensionFilterList = names(4),
          .filteringOption = allCases<ItemFilteringOption>()[random() % 2],
          .ignoreHiddenItems = random() % 2 == 0,
          .forcePathComponents = names(2)};
}

TEST(ItemFilter, DecidesAsThePlainRule) {
  const test::TemporaryDirectory folder;
  const std::string root = folder.path().string();
  std::mt19937 random(11);
  for (int round = 0; round < 150; ++round) {
    std::error_code ignored;  // for names that are too long or in use, "." and ".."
    const std::filesystem::path path = folder.path() / randomName(random);
    if (round % 3 == 0) {
      std::filesystem::create_directory(path, ignored);
    } else if (round % 3 == 1) {
      std::filesystem::create_symlink(round % 2 == 0 ? "nowhere" : ".", path, ignored);
    } else {
      std::ofstream(path).close();
    }
  }
  std::array<int, allCases<ItemFilterRule>().size()> decided{};
  for (int round = 0; round < 30000; ++round) {
    const ItemFilterSettings settings = randomSettings(random);
    const ItemFilter filter(settings);
    std::string path = root + "/" + randomName(random);
    if (random() % 20 == 0) path += '/';
    if (random() % 100 == 0) path = random() % 2 == 0 ? "/" : "";
    const Url item = Url::fromFilePath(path);

    const ItemDecision plain = test::plainDecision(item, settings);
    ++decided[static_cast<std::size_t>(plain.rule)];
    EXPECT_EQ(filter.decision(item), plain) << path;
    EXPECT_EQ(filter.isIgnored(item), plain.isIgnored) << path;
    if (!pathIsHidden(path)) continue;  // not an entry of a directory

    const std::string_view name = item.lastPathComponent();
    const auto isDirectory = [&path] { return pathIsDirectory(path); };
    EXPECT_EQ(filter.decision(name, isDirectory), plain) << path;
    EXPECT_EQ(filter.isIgnored(name, isDirectory), plain.isIgnored) << path;
  }
  EXPECT_THAT(decided, testing::Each(testing::Gt(100)));
}

TEST(ItemFilter, AsksOnceAndOnlyIfTheAnswerDependsOnIt) {
  std::mt19937 random(13);
  for (int round = 0; round < 20000; ++round) {
    const ItemFilter filter(randomSettings(random));
    const std::string name = randomName(random);
    const auto check = [](auto decide) {
      int questions = 0;
      const auto [asFile, asDirectory] =
          std::pair(decide([&] { return ++questions, false; }), decide([&] { return ++questions, true; }));
      EXPECT_EQ(questions, asFile == asDirectory ? 0 : 2);
    };
    check([&](auto isDirectory) { return filter.isIgnored(name, isDirectory); });
    check([&](auto isDirectory) { return filter.decision(name, isDirectory); });
  }
}

}  // namespace
}  // namespace meridian
