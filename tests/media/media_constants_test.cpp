#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "meridian/media/avm_constants.h"
#include "meridian/media/media_corporation.h"
#include "meridian/media/media_format_constants.h"

namespace meridian {
namespace {

using ::testing::ElementsAre;
using Texts = std::vector<std::string>;
using Enumeration = void (*)(std::string_view, MediaFormatConstants::Block);

Texts found(Enumeration enumerate, std::string_view text, std::size_t limit = 100) {
  Texts texts;
  enumerate(text, [&](std::string_view each, bool& stop) {
    texts.emplace_back(each);
    stop = texts.size() >= limit;
  });
  return texts;
}

TEST(MediaFormatConstants, FindsExtensionsAndContainers) {
  constexpr Enumeration extensions = MediaFormatConstants::enumerateValidFileExtensionsForMediaContainer;
  constexpr Enumeration containers = MediaFormatConstants::enumerateContainersForFileExtension;
  EXPECT_THAT(found(extensions, "MP4"), ElementsAre("mp4", "m4v", ".m4a", ".m4p", ".m4b", ".m4r"));
  EXPECT_THAT(found(extensions, "MP4", 2), ElementsAre("mp4", "m4v"));
  for (const std::string_view none : {"Image Sequence", "mp4", "", "QuickTime "}) {
    EXPECT_THAT(found(extensions, none), ElementsAre()) << none;
  }
  EXPECT_THAT(found(containers, ".M4A"), ElementsAre("MP4"));
  EXPECT_THAT(found(containers, "aRx"), ElementsAre("HDE"));
  for (const std::string_view none : {"m4a", ".mov", "hde", ""}) {
    EXPECT_THAT(found(containers, none), ElementsAre()) << none;
  }
  // Every extension leads back to its container.
  const auto& lookup = MediaFormatConstants::sharedInstance().cachedContainerFileExtensionLookup();
  EXPECT_EQ(lookup.size(), 9U);
  for (const auto& [container, listed] : lookup) {
    EXPECT_EQ(found(extensions, container), Texts(listed.begin(), listed.end()));
    for (const std::string_view extension : listed) {
      EXPECT_THAT(found(containers, extension), ElementsAre(container)) << extension;
    }
  }
}

TEST(MediaFormatConstants, StopsListingCorporationsWhenTold) {
  Texts names;
  MediaFormatConstants::alphabeticalEnumerationOfCorporations([&](std::string_view name, bool& stop) {
    names.emplace_back(name);
    stop = name == "GoPro";
  });
  ASSERT_EQ(names.size(), 10U);
  // Not quite alphabetical.
  EXPECT_EQ(names[8] + names[9], "Insta360GoPro");
  MediaFormatConstants::alphabeticalEnumerationOfCorporations(nullptr);
}

TEST(AvmConstants, AreListedByName) {
  EXPECT_EQ(avmConstants.size(), 79U);
  EXPECT_TRUE(std::ranges::is_sorted(avmConstants, std::less_equal(), &AvmConstant::name));
  const auto named = std::ranges::find(avmConstants, "kAVMMediaMetdataSourceFile", &AvmConstant::name);
  EXPECT_EQ(named->value, kAVMMediaMetdataSourceFile);
}

static_assert(!isHardwareManufacturer(MediaCorporation::insta360) && isHardwareManufacturer(MediaCorporation::red));

}  // namespace
}  // namespace meridian
