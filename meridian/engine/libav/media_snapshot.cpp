#include "meridian/engine/media_snapshot.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/engine/image_sequence.h"
#include "meridian/engine/libav/frame_finder.h"
#include "meridian/engine/libav/still_image.h"
#include "meridian/engine/libav/timecode_reading.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "meridian/lut/published_lut.h"
#include "meridian/media/media_names.h"

namespace meridian::inline v0_2 {

using libav::FoundFrame;
using libav::FrameFinder;

Expected<SnapshotLut, LutError> SnapshotLut::read(const Url& file) {
  SnapshotLut read;
  auto published = readPublishedLut(file);
  if (published) {
    read.warnings_ = published->warnings;
    read.lut_ = *std::move(published);
    return read;
  }
  if (published.error().code != LutErrorCode::noPublishedFormat) return Unexpected(std::move(published).error());
  auto parsed = ParsedLutFactory::parsing(file);
  if (!parsed) return Unexpected(std::move(parsed).error());
  read.warnings_ = warningsOf(**parsed, {});
  read.warnings_.insert(read.warnings_.begin(), {LutWarningCode::noPublishedFormat, file.path()});
  read.lut_ = std::shared_ptr<const ParsedLutFile>(*std::move(parsed));
  return read;
}

ImageLut SnapshotLut::forBitDepth(int bitDepth) const {
  if (const auto* const published = std::get_if<PublishedLut>(&lut_)) {
    return *ImageLut::forCodeValues(*published, bitDepth, bitDepth, {.interpolation = LutInterpolation::tetrahedral});
  }
  return *ImageLut::forCodeValues(*std::get<1>(lut_), bitDepth, bitDepth);
}

/// The file, or the images of the directory, that frames come from.
class MediaSnapshots::Source {
 public:
  Source(const MediaDescription& description, const SnapshotOptions& options)
      : path_(description.path),
        video_(*description.mainVideo()),
        timecode_(description.timecode),
        limits_(options.limits),
        endsEarly_(std::ranges::any_of(
            description.warnings,
            [](const MediaWarning& warning) { return warning.code == MediaWarningCode::endsBeforeItsData; })),
        images_(video_, options) {}

  [[nodiscard]] std::optional<MediaSnapshotError> openFile() {
    auto opened = FrameFinder::open(path_, video_.index, endsEarly_, limits_);
    if (!opened) return std::move(opened).error();
    finder_ = *std::move(opened);
    return std::nullopt;
  }

  [[nodiscard]] std::optional<MediaSnapshotError> openDirectory() {
    auto sequence = imageSequence(path_, limits_);
    if (!sequence) {
      const MediaError& error = sequence.error();
      const bool isLimit = error.code == MediaErrorCode::limitReached;
      return MediaSnapshotError{isLimit ? MediaSnapshotErrorCode::limitReached : MediaSnapshotErrorCode::notRead, path_,
                                error.detail, error.systemError};
    }
    sequence_ = std::move(sequence->paths);
    return std::nullopt;
  }

  [[nodiscard]] Expected<MediaSnapshot, MediaSnapshotError> at(double location, const std::stop_token& stop) {
    auto found = sequence_.empty() ? finder_->find(location, stop) : findImage(location, stop);
    const auto named = [&](const std::string& said) {
      return "at " + shortestDecimalText(static_cast<float>(location)) + (said.empty() ? "" : ", ") + said;
    };
    if (!found) {
      found.error().detail = named(found.error().detail);
      return Unexpected(std::move(found).error());
    }
    auto image = images_.image(*found->frame);
    if (!image) {
      return Unexpected(MediaSnapshotError{MediaSnapshotErrorCode::notEncoded, path_, named(image.error())});
    }
    image->frame = numberOf(*found);
    image->seconds = found->seconds;
    image->timecode = labelOf(image->frame);
    return *std::move(image);
  }

 private:
  [[nodiscard]] Expected<FoundFrame, MediaSnapshotError> findImage(double location, const std::stop_token& stop) {
    const auto count = static_cast<double>(sequence_.size());
    const auto number = std::min(static_cast<std::size_t>(location * count * (1 + 0x1p-23)), sequence_.size() - 1);
    auto image = FrameFinder::open(sequence_[number], video_.index, false, limits_);
    if (!image) return Unexpected(std::move(image).error());
    auto found = (*image)->find(0, stop);
    if (!found) return found;
    found->seconds.reset();
    found->number = static_cast<std::int64_t>(number);
    return found;
  }

  [[nodiscard]] std::optional<std::int64_t> numberOf(const FoundFrame& found) const {
    if (found.number || !found.seconds || video_.isVariable || !video_.exactFrameRate) return found.number;
    return std::llround(*found.seconds * video_.exactFrameRate->rawValue());
  }

  [[nodiscard]] std::optional<TimecodeComponents> labelOf(const std::optional<std::int64_t>& frame) const {
    if (!timecode_ || !frame || !video_.frameRate) return std::nullopt;
    return libav::labelOfImage(*frame, *video_.frameRate, *timecode_);
  }

  std::string path_;
  VideoStreamDescription video_;
  std::optional<TimecodeDescription> timecode_;
  DescriptionLimits limits_;
  bool endsEarly_;
  libav::StillImages images_;
  std::unique_ptr<FrameFinder> finder_;
  std::vector<std::string> sequence_;
};

MediaSnapshots::MediaSnapshots(std::unique_ptr<Source> source) noexcept : source_(std::move(source)) {}
MediaSnapshots::MediaSnapshots(MediaSnapshots&&) noexcept = default;
MediaSnapshots& MediaSnapshots::operator=(MediaSnapshots&&) noexcept = default;
MediaSnapshots::~MediaSnapshots() = default;

Expected<MediaSnapshots, MediaSnapshotError> MediaSnapshots::open(const MediaDescription& description,
                                                                  const SnapshotOptions& options) {
  if (description.mainVideo() == nullptr) {
    return Unexpected(MediaSnapshotError{MediaSnapshotErrorCode::noVideo, description.path});
  }
  if (const VideoStreamDescription& video = *description.mainVideo(); !video.isDecodable) {
    return Unexpected(MediaSnapshotError{MediaSnapshotErrorCode::notDecodable, description.path, video.codecName});
  }
  auto source = std::make_unique<Source>(description, options);
  const bool isDirectory = description.container == SLVMediaFileContainerImageSequence;
  if (auto error = isDirectory ? source->openDirectory() : source->openFile()) return Unexpected(*std::move(error));
  return MediaSnapshots(std::move(source));
}

Expected<MediaSnapshot, MediaSnapshotError> MediaSnapshots::at(double location, const std::stop_token& stop) {
  const bool isInClip = location >= 0 && location <= 1;
  if (!isInClip) {
    return Unexpected(MediaSnapshotError{MediaSnapshotErrorCode::locationOutOfRange,
                                         shortestDecimalText(static_cast<float>(location))});
  }
  return source_->at(location, stop);
}

}  // namespace meridian::inline v0_2
