#include <gmock/gmock.h>

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
  for (const std::string_view container : mediaFileContainers) {
    for (const std::string& extension : found(extensions, container)) {
      EXPECT_THAT(found(containers, extension), ElementsAre(container)) << extension;
    }
  }
}

TEST(MediaFormatConstants, ListsCorporationsInTheirOwnOrder) {
  Texts names;
  MediaFormatConstants::alphabeticalEnumerationOfCorporations([&](std::string_view name, bool& stop) {
    names.emplace_back(name);
    stop = name == "GoPro";
  });
  EXPECT_THAT(
      names, ElementsAre("Adobe", "Apple", "Arri", "Avid", "Blackmagic", "Canon", "Codex", "DJI", "Insta360", "GoPro"));
  MediaFormatConstants::alphabeticalEnumerationOfCorporations(nullptr);
}

static_assert(kAVMMediaMetdataSourceFile == "filePath" && kAVMPreferRGBFormat == "kAVMPreferRGBFormat");
static_assert(!isHardwareManufacturer(MediaCorporation::insta360) && isHardwareManufacturer(MediaCorporation::red));
static_assert(fromRawValue<MediaCorporation>("convergentDesign") == MediaCorporation::convergentDesign);
static_assert(description(MediaCorporation::convergentDesign) == "Convergent Design");

}  // namespace
}  // namespace meridian
