// Media containers with the file extensions that belong to each, and the list of makers to show.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <string_view>
#include <vector>

#include "meridian/base/function_ref.h"
#include "meridian/export.h"
#include "meridian/media/media_names.h"

namespace meridian::inline v0_2 {

/// The containers, in the order in which they are searched.
inline constexpr auto mediaFileContainers = std::to_array<std::string_view>({
    SLVMediaFileContainerQuickTimeMovie,
    SLVMediaFileContainerMXF,
    SLVMediaFileContainerMP4,
    SLVMediaFileContainerAVI,
    SLVMediaFileContainerR3D,
    SLVMediaFileContainerBRAW,
    SLVMediaFileContainerDPX,
    SLVMediaFileContainerHDE,
    SLVMediaFileContainerCINE,
    SLVMediaFileContainerImageSequence,
});

template <typename Object>
class NoDestructor;

/// Lookups in the table of containers. The table is built on first use and only read afterwards, from any thread.
class MERIDIAN_API MediaFormatConstants {
 public:
  /// Takes a text, and may set `stop` to end the enumeration.
  using Block = FunctionRef<void(std::string_view text, bool& stop)>;

  MediaFormatConstants(const MediaFormatConstants&) = delete;
  MediaFormatConstants& operator=(const MediaFormatConstants&) = delete;

  [[nodiscard]] static const MediaFormatConstants& sharedInstance();

  /// The extensions of each container by its name; "Image Sequence" has none. ".m4a", ".m4p", ".m4b" and ".m4r" have a
  /// leading dot on purpose: only a query with the dot finds them.
  [[nodiscard]] const std::map<std::string_view, std::vector<std::string_view>>& cachedContainerFileExtensionLookup()
      const noexcept {
    return cachedContainerFileExtensionLookup_;
  }

  /// Calls the block with each extension of the container, in the table's order; not at all for a container that has no
  /// entry.
  static void enumerateValidFileExtensionsForMediaContainer(std::string_view container, Block block);

  /// Calls the block with each container that has the extension, in the order of `mediaFileContainers`. Letter case is
  /// ignored, a leading dot is not.
  static void enumerateContainersForFileExtension(std::string_view fileExtension, Block block);

  /// Calls the block with the names of fifteen makers. Their order is fixed (Insta360 before GoPro), and two makers are
  /// not among them (Convergent Design, Nikon), on purpose. Without a block (null) nothing happens.
  static void alphabeticalEnumerationOfCorporations(
      const std::function<void(std::string_view name, bool& stop)>& block);

 private:
  friend class NoDestructor<MediaFormatConstants>;

  MediaFormatConstants();
  ~MediaFormatConstants() = default;

  std::map<std::string_view, std::vector<std::string_view>> cachedContainerFileExtensionLookup_;
};

}  // namespace meridian::inline v0_2
