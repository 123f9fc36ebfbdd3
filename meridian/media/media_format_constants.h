/// \file
/// Media containers with their file extensions, and the list of makers to show. For example:
///
///     MediaFormatConstants::enumerateContainersForFileExtension("mov", [](std::string_view container, bool& stop) {
///       std::cout << container << '\n';  // QuickTime
///       stop = true;
///     });
#pragma once

#include <functional>
#include <map>
#include <string_view>
#include <vector>

#include "meridian/base/function_ref.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

template <typename Object>
class NoDestructor;

/// Lookups in the table of containers, which is built on first use. Thread-safe.
class MediaFormatConstants {
 public:
  /// Receives a text, and may set `stop` to end the enumeration.
  using Block = FunctionRef<void(std::string_view text, bool& stop)>;

  MediaFormatConstants(const MediaFormatConstants&) = delete;
  MediaFormatConstants& operator=(const MediaFormatConstants&) = delete;

  /// Returns the one instance.
  [[nodiscard]] MERIDIAN_API static const MediaFormatConstants& sharedInstance();

  /// Returns the extensions of each container, keyed by its name; "Image Sequence" has no entry. ".m4a", ".m4p", ".m4b"
  /// and ".m4r" deliberately have a leading dot, so that only a query with the dot finds them.
  [[nodiscard]] const std::map<std::string_view, std::vector<std::string_view>>& cachedContainerFileExtensionLookup()
      const noexcept {
    return cachedContainerFileExtensionLookup_;
  }

  /// Calls the block with each extension of the container, in the table's order. Does nothing for a container without
  /// an entry.
  MERIDIAN_API static void enumerateValidFileExtensionsForMediaContainer(std::string_view container, Block block);

  /// Calls the block with each container that has the extension, in the order QuickTime, MXF, MP4, AVI, R3D, BRAW,
  /// DPX, HDE, CINE. Ignores case, but not a leading dot.
  MERIDIAN_API static void enumerateContainersForFileExtension(std::string_view fileExtension, Block block);

  /// Calls the block with the names of fifteen makers, in an order that is fixed though not quite alphabetical
  /// (Insta360 before GoPro). Convergent Design and Nikon are deliberately not listed. Does nothing for a null block.
  MERIDIAN_API static void alphabeticalEnumerationOfCorporations(
      const std::function<void(std::string_view name, bool& stop)>& block);

 private:
  friend class NoDestructor<MediaFormatConstants>;

  MediaFormatConstants();
  ~MediaFormatConstants() = default;

  std::map<std::string_view, std::vector<std::string_view>> cachedContainerFileExtensionLookup_;
};

}  // namespace meridian::inline v0_2
