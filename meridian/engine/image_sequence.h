/// \file
/// Finds the numbered images of a directory. For example:
///
///     const auto frames = imageSequence("/card/A001");  // A001.0001.dpx, A001.0002.dpx ...
///     frames->paths.front();                            // "/card/A001/A001.0001.dpx"
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/media_error.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The images of a directory in the order of their numbers.
struct ImageSequence {
  std::vector<std::string> paths;
  /// The number of each.
  std::vector<std::int64_t> numbers;
  /// Bytes of all of them.
  std::uint64_t size = 0;
  std::int64_t firstNumber = 0;
  std::int64_t lastNumber = 0;
  /// How many numbers between the first and the last have no image.
  std::int64_t missingCount = 0;
  /// How many images have the number of another one, such as "A.1.dpx" and "A.01.dpx".
  std::int64_t repeatedCount = 0;

  friend bool operator==(const ImageSequence&, const ImageSequence&) = default;
};

/// Returns whether a file of this name is an image, by its extension.
[[nodiscard]] bool isImageName(std::string_view name);

/// Returns how far the number of an image is behind that of another one, such as 1 for "A.0009.dpx" and "A.0010.dpx";
/// absent if either path has no number before the extension, or if they differ in more than it and the case of the
/// extension.
[[nodiscard]] std::optional<std::int64_t> stepOfNumbers(std::string_view path, std::string_view nextPath);

/// Returns the images of the directory whose names end in a number before the extension, such as "A001.0001.dpx".
/// Hidden files, files of other kinds, images without a number and directories within are passed over. An error if no
/// image is left, if images are left whose names differ in more than the number and the case of the extension, or if
/// the directory needs more time or has more entries than the limits allow.
[[nodiscard]] MERIDIAN_API Expected<ImageSequence, MediaError> imageSequence(const std::string& directory,
                                                                             const DescriptionLimits& limits = {});

}  // namespace meridian::inline v0_2
