#include "meridian/engine/describe_media.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

#include "meridian/base/ascii.h"
#include "meridian/engine/image_sequence.h"
#include "meridian/engine/libav/log_collector.h"
#include "meridian/engine/libav/media_input.h"
#include "meridian/engine/libav/rationals.h"
#include "meridian/engine/libav/stream_reading.h"
#include "meridian/engine/libav/timecode_reading.h"
#include "meridian/media/media_names.h"
#include "meridian/platform/file_queries.h"

namespace meridian::inline v0_2 {
namespace {

using libav::MediaInput;

void describeStreams(MediaDescription& description, AVFormatContext& input) {
  for (unsigned place = 0; place < input.nb_streams; ++place) {
    AVStream& stream = *input.streams[place];
    switch (stream.codecpar->codec_type) {
      case AVMEDIA_TYPE_VIDEO:
        description.video.push_back(libav::describedVideo(input, stream));
        break;
      case AVMEDIA_TYPE_AUDIO:
        description.audio.push_back(libav::describedAudio(stream));
        description.audio.back().track = static_cast<int>(description.audio.size()) - 1;
        break;
      default:
        description.others.push_back(libav::describedOther(stream));
        break;
    }
  }
}

/// Returns the sum of two ratios in lowest terms; absent if it leaves 64 bits.
std::optional<MediaRational> checkedRatioSum(const MediaRational& left, const MediaRational& right) noexcept {
  const auto a = checkedProduct(left.numerator, right.denominator);
  const auto b = checkedProduct(right.numerator, left.denominator);
  const auto denominator = checkedProduct(left.denominator, right.denominator);
  const auto numerator = a && b ? checkedSum<std::int64_t>(*a, *b) : std::nullopt;
  return numerator && denominator ? inLowestTerms({*numerator, *denominator}) : std::nullopt;
}

/// Returns the exact time from the first start to the last end of images and sound.
std::optional<MediaRational> exactDuration(const MediaDescription& description) {
  std::optional<MediaRational> first;
  std::optional<MediaRational> last;
  const auto include = [&](const StreamDescription& stream) {
    if (!stream.startTime || !stream.duration) return;
    const auto end = checkedRatioSum(*stream.startTime, *stream.duration);
    if (!end) return;
    if (!first || stream.startTime->rawValue() < first->rawValue()) first = stream.startTime;
    if (!last || end->rawValue() > last->rawValue()) last = end;
  };
  for (const auto& stream : description.video) {
    if (!stream.isAttachedPicture) include(stream);
  }
  std::ranges::for_each(description.audio, include);
  if (!first || !last) return std::nullopt;
  return checkedRatioSum(*last, {-first->numerator, first->denominator});
}

void describeTimes(MediaDescription& description, const AVFormatContext& input) {
  if (libav::isImageFormat(input)) return;
  constexpr AVRational microseconds{1, AV_TIME_BASE};
  description.startTime = libav::secondsOf(input.start_time, microseconds);
  description.duration = libav::lengthOf(input.duration, microseconds);
  // FFmpeg goes by the header of a QuickTime movie, which counts in 1/600 or 1/1000 of a second. Where the header says
  // something else, that counts.
  const auto exact = exactDuration(description);
  constexpr double rounding = 1.0 / 500;
  if (exact && description.duration && std::abs(exact->rawValue() - description.duration->rawValue()) < rounding) {
    description.duration = exact;
  }
  if (input.bit_rate > 0) description.bitRate = input.bit_rate;
}

/// Returns the first of the tags that the file has; empty if it has none of them.
std::string firstTag(const std::vector<MediaTag>& tags, std::initializer_list<std::string_view> keys) {
  for (const std::string_view key : keys) {
    const auto value = tagValue(tags, key);
    if (value && !value->empty()) return std::string(*value);
  }
  return {};
}

/// Returns the maker whose name the text begins with, as a word of its own: "Blackmagic Design", "SONY".
std::optional<MediaCorporation> corporationOf(std::string_view maker) {
  for (const MediaCorporation each : allCases<MediaCorporation>()) {
    const std::string_view name = meridian::description(each);
    if (maker.size() < name.size()) continue;
    if (!std::ranges::equal(maker.substr(0, name.size()), name, {}, detail::lowercasedAscii, detail::lowercasedAscii)) {
      continue;
    }
    if (maker.size() == name.size() || !(detail::isLetter(maker[name.size()]) || detail::isDigit(maker[name.size()]))) {
      return each;
    }
  }
  return std::nullopt;
}

void describeOrigin(MediaDescription& description) {
  const std::vector<MediaTag>& tags = description.tags;
  description.maker = firstTag(tags, {"com.apple.quicktime.make", "make", "com.android.manufacturer", "company_name"});
  description.model = firstTag(tags, {"com.apple.quicktime.model", "model", "com.android.model", "product_name"});
  description.creationDate = firstTag(tags, {"com.apple.quicktime.creationdate", "creation_time", "date"});
  // GoPro names itself in its tracks alone.
  const auto isGoPro = [](const StreamDescription& stream) {
    return tagValue(stream.tags, "handler_name").value_or("").find("GoPro") != std::string_view::npos;
  };
  if (description.maker.empty() && std::ranges::any_of(description.video, isGoPro)) {
    description.maker = SLVMediaCorporationGoPro;
  }
  description.corporation = corporationOf(description.maker);
  for (const OtherStreamDescription& stream : description.others) {
    if (description.reelName.empty()) description.reelName = firstTag(stream.tags, {"reel_name"});
  }
}

/// Warns if the index names data beyond the end of the file.
void checkLength(MediaDescription& description, const AVFormatContext& input) {
  if (!std::string_view(input.iformat->name).starts_with("mov,")) return;
  std::int64_t end = 0;
  for (unsigned place = 0; place < input.nb_streams; ++place) {
    AVStream* const stream = input.streams[place];
    const int count = avformat_index_get_entries_count(stream);
    for (int entry = 0; entry < count; ++entry) {
      const AVIndexEntry* const sample = avformat_index_get_entry(stream, entry);
      end = std::max(end, checkedSum<std::int64_t>(sample->pos, sample->size).value_or(sample->pos));
    }
  }
  if (end <= 0 || static_cast<std::uint64_t>(end) <= description.size) return;
  description.warnings.push_back(
      {MediaWarningCode::endsBeforeItsData, description.path,
       std::to_string(static_cast<std::uint64_t>(end) - description.size) + " bytes are missing"});
}

Expected<MediaDescription, MediaError> describedFile(const std::string& path, const DescriptionLimits& limits) {
  auto opened = MediaInput::open(path, limits);
  if (!opened) return Unexpected(std::move(opened).error());
  MediaInput& input = **opened;
  const AVFormatContext& context = input.context();

  MediaDescription description;
  description.path = path;
  description.identity = {input.file().identity().device, input.file().identity().number};
  description.size = input.file().size();
  description.modificationTime = std::chrono::sys_seconds(std::chrono::seconds(input.file().modificationTime()));
  description.formatName = context.iformat->name;
  description.tags = libav::tagsOf(context.metadata);
  describeStreams(description, input.context());
  if (description.video.empty() && description.audio.empty()) {
    return Unexpected(MediaError{MediaErrorCode::noStreams, path});
  }
  description.container = libav::containerOf(context, description);
  describeTimes(description, context);
  describeOrigin(description);
  checkLength(description, context);
  description.timecode = libav::readTimecode(input, description);
  return description;
}

Expected<MediaDescription, MediaError> describedFolder(const std::string& path, const DescriptionLimits& limits) {
  const auto sequence = imageSequence(path);
  if (!sequence) return Unexpected(sequence.error());
  auto image = describedFile(sequence->paths.front(), limits);
  if (!image) return image;
  MediaDescription description = *std::move(image);
  description.path = path;
  description.size = sequence->size;
  description.container = SLVMediaFileContainerImageSequence;
  for (VideoStreamDescription& stream : description.video) {
    stream.frameCount = static_cast<std::int64_t>(sequence->paths.size());
  }
  if (sequence->missingCount > 0) {
    description.warnings.push_back({MediaWarningCode::missingImages, path,
                                    std::to_string(sequence->missingCount) + " between " +
                                        std::to_string(sequence->firstNumber) + " and " +
                                        std::to_string(sequence->lastNumber)});
  }
  return description;
}

}  // namespace

Expected<MediaDescription, MediaError> describeMedia(const Url& url, const DescriptionLimits& limits) {
  if (!url.isFile()) return Unexpected(MediaError{MediaErrorCode::notAFileUrl, url.text()});
  const libav::LogCollector log;
  const std::string& path = url.path();
  return pathIsDirectory(path) ? describedFolder(path, limits) : describedFile(path, limits);
}

}  // namespace meridian::inline v0_2
