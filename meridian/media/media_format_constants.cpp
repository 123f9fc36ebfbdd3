#include "meridian/media/media_format_constants.h"

#include <algorithm>
#include <array>
#include <span>

#include "meridian/base/no_destructor.h"
#include "meridian/base/text.h"
#include "meridian/media/media_names.h"

namespace meridian::inline v0_2 {
namespace {

struct ContainerRow {
  std::string_view name;
  /// Ends at the first empty one.
  std::array<std::string_view, 6> extensions;
};

/// In the order in which containers are searched.
constexpr auto containers = std::to_array<ContainerRow>({
    {SLVMediaFileContainerQuickTimeMovie, {"mov"}},
    {SLVMediaFileContainerMXF, {"mxf"}},
    {SLVMediaFileContainerMP4, {"mp4", "m4v", ".m4a", ".m4p", ".m4b", ".m4r"}},
    {SLVMediaFileContainerAVI, {"avi"}},
    {SLVMediaFileContainerR3D, {"r3d"}},
    {SLVMediaFileContainerBRAW, {"braw"}},
    {SLVMediaFileContainerDPX, {"dpx"}},
    {SLVMediaFileContainerHDE, {"arx"}},
    {SLVMediaFileContainerCINE, {"cine"}},
});

constexpr auto listedCorporations = std::to_array<std::string_view>({
    SLVMediaCorporationAdobe,
    SLVMediaCorporationApple,
    SLVMediaCorporationArri,
    SLVMediaCorporationAvid,
    SLVMediaCorporationBlackMagic,
    SLVMediaCorporationCanon,
    SLVMediaCorporationCodex,
    SLVMediaCorporationDJI,
    SLVMediaCorporationInsta360,
    SLVMediaCorporationGoPro,
    SLVMediaCorporationJVC,
    SLVMediaCorporationPanasonic,
    SLVMediaCorporationPhantom,
    SLVMediaCorporationRED,
    SLVMediaCorporationSony,
});

void enumerate(std::span<const std::string_view> texts, MediaFormatConstants::Block block) {
  bool stop = false;
  for (const std::string_view text : texts) {
    block(text, stop);
    if (stop) return;
  }
}

}  // namespace

MediaFormatConstants::MediaFormatConstants() {
  for (const auto& [name, extensions] : containers) {
    cachedContainerFileExtensionLookup_[name].assign(extensions.begin(), std::ranges::find(extensions, ""));
  }
}

const MediaFormatConstants& MediaFormatConstants::sharedInstance() {
  static const NoDestructor<MediaFormatConstants> instance;
  return *instance;
}

void MediaFormatConstants::enumerateValidFileExtensionsForMediaContainer(std::string_view container, Block block) {
  const auto& lookup = sharedInstance().cachedContainerFileExtensionLookup();
  if (const auto found = lookup.find(container); found != lookup.end()) enumerate(found->second, block);
}

void MediaFormatConstants::enumerateContainersForFileExtension(std::string_view fileExtension, Block block) {
  bool stop = false;
  for (const ContainerRow& container : containers) {
    enumerateValidFileExtensionsForMediaContainer(container.name, [&](std::string_view each, bool& stopExtensions) {
      if (equalsIgnoringCase(each, fileExtension)) block(container.name, stop);
      stopExtensions = stop;
    });
    if (stop) return;
  }
}

void MediaFormatConstants::alphabeticalEnumerationOfCorporations(
    const std::function<void(std::string_view name, bool& stop)>& block) {
  if (block) enumerate(listedCorporations, block);
}

}  // namespace meridian::inline v0_2
