/// \file
/// Still images of a media file, as JPEG. For example:
///
///     const MediaDescription clip = describeMedia(Url::fromFilePath("/card/A001.mov")).value();
///     auto snapshots = MediaSnapshots::open(clip, {.maxWidth = 960});
///     if (!snapshots) return report(snapshots.error().message());
///     const auto middle = snapshots->at(0.5);   // 0 is the first frame, 1 the last
///     if (middle) save(middle->jpeg);
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <variant>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/base/expected.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/media_description.h"
#include "meridian/export.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_error.h"
#include "meridian/lut/lut_file.h"
#include "meridian/lut/lut_stages.h"
#include "meridian/lut/lut_warning.h"
#include "meridian/media/timecode_components.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// Why there is no image.
enum class MediaSnapshotErrorCode : std::uint8_t {
  noVideo,
  notDecodable,
  notRead,
  locationOutOfRange,
  noFrame,
  limitReached,
  notEncoded,
  stopped,
};

template <>
struct EnumerationTable<MediaSnapshotErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<MediaSnapshotErrorCode>>({
      {MediaSnapshotErrorCode::noVideo, "noVideo", "has no video to take an image of"},
      {MediaSnapshotErrorCode::notDecodable, "notDecodable", "has video that this FFmpeg cannot decode",
       "use the maker's own program"},
      {MediaSnapshotErrorCode::notRead, "notRead", "cannot be read", "check that it is still there and not changed"},
      {MediaSnapshotErrorCode::locationOutOfRange, "locationOutOfRange", "is not a location in a clip",
       "give a number from 0, the first frame, to 1, the last"},
      {MediaSnapshotErrorCode::noFrame, "noFrame", "has no undamaged image at this location",
       "copy it again from the card"},
      {MediaSnapshotErrorCode::limitReached, "limitReached", "takes too much reading, time or memory for an image",
       "check that it is not damaged, that its volume is not too slow, and that its images are not too large"},
      {MediaSnapshotErrorCode::notEncoded, "notEncoded", "has an image that cannot be converted to JPEG",
       "check that the FFmpeg libraries have the encoder \"mjpeg\", and that there is enough memory"},
      {MediaSnapshotErrorCode::stopped, "stopped", "is not finished, since the work was stopped"},
  });
};

/// Names the path in `place`, and for locationOutOfRange the location. `detail` gives the location, and what FFmpeg
/// said where it said something.
using MediaSnapshotError = Error<MediaSnapshotErrorCode>;

/// A LUT for images: as its format publishes it, or where no published format claims the file, as the suite reads it.
/// Immutable, so that several threads may share it.
class SnapshotLut {
 public:
  /// Reads a LUT file. Returns otherPublishedFormat for formats that `readPublishedLut` leaves to other libraries.
  [[nodiscard]] MERIDIAN_API static Expected<SnapshotLut, LutError> read(const Url& file);

  /// Returns what may surprise about the file.
  [[nodiscard]] const std::vector<LutWarning>& warnings() const noexcept { return warnings_; }

  /// Prepares it for full-range code values of this depth, 1 to 16, with tetrahedral interpolation where the file does
  /// not say another.
  [[nodiscard]] MERIDIAN_API ImageLut forBitDepth(int bitDepth) const;

 private:
  std::variant<PublishedLut, std::shared_ptr<const ParsedLutFile>> lut_;
  std::vector<LutWarning> warnings_;
};

/// How images are made. Images keep the ratio at which the video is displayed, are turned and mirrored as players turn
/// and mirror it, and are never enlarged.
struct SnapshotOptions {
  /// The largest width in pixels; absent for any.
  std::optional<double> maxWidth{};
  /// The height in pixels, unless the image would become wider than `maxWidth` or larger than the video.
  std::optional<double> height{};
  /// The quality of the JPEG, from 0 to 1, the best; values outside count as the nearest.
  double compressionFactor = 0.8;
  /// Applied after an image has got its size. Has to exist as long as the `MediaSnapshots`; null for none.
  const SnapshotLut* lut = nullptr;
  /// The limits for all images of a file together, for the time that taking them takes. A frame in the middle of a long
  /// group of pictures needs the group up to it, and the last frame of a stream without key frames needs the whole
  /// stream.
  DescriptionLimits limits{.bytes = std::uint64_t{64} << 30U, .time = std::chrono::minutes(10)};
};

/// A still image.
struct MediaSnapshot {
  /// The number of the frame from 0; absent if the rate is variable or not known.
  std::optional<std::int64_t> frame;
  /// Seconds from the first frame; absent for a single image.
  std::optional<double> seconds;
  /// The frame's label; absent without a timecode.
  std::optional<TimecodeComponents> timecode;
  /// In pixels.
  int width = 0;
  int height = 0;
  /// The file: JFIF with square pixels, BT.601 full range as JFIF has it, and nothing of the video's metadata.
  std::string jpeg;

  friend bool operator==(const MediaSnapshot&, const MediaSnapshot&) = default;
};

/// Takes still images of a media file or a directory of numbered images. Not for use by several threads at once.
class MediaSnapshots {
 public:
  /// Opens what the description describes, for images of its main video. An error of FFmpeg is one of these too.
  [[nodiscard]] MERIDIAN_API static Expected<MediaSnapshots, MediaSnapshotError> open(
      const MediaDescription& description, const SnapshotOptions& options = {});

  MERIDIAN_API MediaSnapshots(MediaSnapshots&&) noexcept;
  MERIDIAN_API MediaSnapshots& operator=(MediaSnapshots&&) noexcept;
  MediaSnapshots(const MediaSnapshots&) = delete;
  MediaSnapshots& operator=(const MediaSnapshots&) = delete;
  MERIDIAN_API ~MediaSnapshots();

  /// Takes the image that is shown at this part of the video's duration: 0 is the first frame, 1 the last one, also
  /// where the duration lies past it. Decodes from the last key frame before, so that locations in rising order cost
  /// the least. Checks the token between frames.
  ///
  /// Code values of YCbCr become RGB by the matrix and the range that the frames state. Where they state none, the
  /// matrix is that of BT.709 from 720 lines on and that of BT.601 below, and the range is limited.
  [[nodiscard]] MERIDIAN_API Expected<MediaSnapshot, MediaSnapshotError> at(double location,
                                                                            const std::stop_token& stop = {});

 private:
  class Source;
  explicit MediaSnapshots(std::unique_ptr<Source> source) noexcept;

  std::unique_ptr<Source> source_;
};

}  // namespace meridian::inline v0_2
