/// \file
/// Reads one file of a clip: its images, its sound and its packets, with times from its first image on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/engine/image_sequence.h"
#include "meridian/engine/libav/decode_times.h"
#include "meridian/engine/libav/media_decoder.h"
#include "meridian/engine/libav/media_input.h"
#include "meridian/engine/libav/source_reader.h"
#include "meridian/engine/libav/time_line.h"

namespace meridian::inline v0_2::libav {

/// A track of sound that is wanted of a part.
struct WantedSound {
  /// The audio track of the plan and the origin within it.
  std::size_t track = 0;
  std::size_t origin = 0;
  /// The place among the file's streams of sound, from 0.
  std::size_t place = 0;
  bool isCopied = false;
};

/// What is wanted of the parts of a group.
struct WantedStreams {
  bool hasVideo = false;
  bool copiesVideo = false;
  bool decodesOnGpu = false;
  /// The image as planned.
  ImageForm image;
  bool isVariable = false;
  std::vector<WantedSound> sounds;
  /// The numbers in the file of other streams of images that are wanted as well.
  std::vector<int> otherVideo;

  /// Returns how long an image of a constant rate is shown.
  [[nodiscard]] Ticks imageDuration() const noexcept {
    const MediaRational rate = image.frameRate.rawValue();
    return rate.numerator > 0 ? timeLineOf({rate.denominator, rate.numerator}) : 0;
  }
};

/// A source of items that ends: a file of a clip, or the images of a sequence.
class PartSource {
 public:
  PartSource() = default;
  PartSource(const PartSource&) = delete;
  PartSource& operator=(const PartSource&) = delete;
  PartSource(PartSource&&) = delete;
  PartSource& operator=(PartSource&&) = delete;
  virtual ~PartSource() = default;

  /// Returns the next item; nothing at the end.
  [[nodiscard]] virtual Expected<std::optional<SourceItem>, TranscodeRunError> next() = 0;
  /// Returns where the last image that was read ends; of sound alone, where that ends.
  [[nodiscard]] virtual Ticks end() const = 0;
  /// Returns where the images end by what the file states; absent if it does not state it.
  [[nodiscard]] virtual std::optional<Ticks> statedEnd() const = 0;
  /// Returns the description of a copied stream: of video without a track of the plan.
  [[nodiscard]] virtual CopiedStream copiedStream(std::optional<std::size_t> track) const = 0;
  /// Returns what was noticed so far, and forgets it.
  [[nodiscard]] virtual std::vector<TranscodeRunWarning> takeWarnings() = 0;
};

/// Opens a file. `wanted` must outlive it.
[[nodiscard]] Expected<std::unique_ptr<PartSource>, TranscodeRunError> openPart(const std::string& path,
                                                                                const WantedStreams& wanted,
                                                                                const ReadingOptions& options);

/// An image of a sequence, and the place of its frame from 0.
struct PlacedImage {
  std::string path;
  std::int64_t place = 0;
};

/// Returns the images of a directory from a place on, which is moved to the place after the last. Where numbers are
/// missing, so are places; of several images with one number, each has its own.
[[nodiscard]] std::vector<PlacedImage> placedImages(ImageSequence images, std::int64_t& place);

/// Opens images in the order of their places, each of which is shown for the duration of the planned rate.
[[nodiscard]] Expected<std::unique_ptr<PartSource>, TranscodeRunError> openImages(std::vector<PlacedImage> images,
                                                                                  const WantedStreams& wanted,
                                                                                  const ReadingOptions& options);

}  // namespace meridian::inline v0_2::libav
