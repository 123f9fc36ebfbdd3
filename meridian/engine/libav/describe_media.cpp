#include "meridian/engine/describe_media.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/base/ascii.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/engine/color_spaces.h"
#include "meridian/engine/image_sequence.h"
#include "meridian/engine/libav/log_collector.h"
#include "meridian/engine/libav/media_input.h"
#include "meridian/engine/libav/rationals.h"
#include "meridian/engine/libav/stream_reading.h"
#include "meridian/engine/libav/timecode_reading.h"
#include "meridian/engine/libav/unfinished_media.h"
#include "meridian/engine/recording_format.h"
#include "meridian/media/media_names.h"
#include "meridian/platform/file_queries.h"

namespace meridian::inline v0_2 {
namespace {

using libav::MediaInput;

/// Returns where the colour tags of a stream come from. A decoder's replace those of the container.
std::optional<ColorTagSource> colorSource(const VideoStreamDescription& video,
                                          const ColorSpaceCodes& ofContainer) noexcept {
  const ColorSpaceCodes codes{video.primaries.number, video.transfer.number, video.matrix.number};
  if (codes == ColorSpaceCodes{}) return std::nullopt;
  return ofContainer == codes ? ColorTagSource::container : ColorTagSource::codec;
}

void describeStreams(MediaDescription& description, MediaInput& opened) {
  AVFormatContext& input = opened.context();
  for (unsigned place = 0; place < input.nb_streams; ++place) {
    AVStream& stream = *input.streams[place];
    switch (stream.codecpar->codec_type) {
      case AVMEDIA_TYPE_VIDEO:
        description.video.push_back(libav::describedVideo(input, stream));
        description.video.back().colorSource = colorSource(description.video.back(), opened.colorsOfContainer(place));
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

/// The first start and the last end of images and sound.
struct ExactTimes {
  std::optional<MediaRational> first;
  std::optional<MediaRational> last;

  [[nodiscard]] std::optional<MediaRational> length() const noexcept {
    return first && last ? checkedRatioSum(*last, {-first->numerator, first->denominator}) : std::nullopt;
  }
};

ExactTimes exactTimes(const MediaDescription& description) {
  ExactTimes times;
  const auto include = [&times](const StreamDescription& stream) {
    if (!stream.startTime) return;
    if (!times.first || stream.startTime->rawValue() < times.first->rawValue()) times.first = stream.startTime;
    const auto end = stream.duration ? checkedRatioSum(*stream.startTime, *stream.duration) : std::nullopt;
    if (end && (!times.last || end->rawValue() > times.last->rawValue())) times.last = end;
  };
  for (const auto& stream : description.video) {
    if (!stream.isAttachedImage) include(stream);
  }
  std::ranges::for_each(description.audio, include);
  return times;
}

/// Returns the exact time if it is the rounded one, within the rounding, in seconds; else the rounded one.
std::optional<MediaRational> exactOr(const std::optional<MediaRational>& rounded,
                                     const std::optional<MediaRational>& exact, double rounding) noexcept {
  const bool isSame = rounded && exact && std::abs(exact->rawValue() - rounded->rawValue()) < rounding;
  return isSame ? exact : rounded;
}

void describeTimes(MediaDescription& description, const AVFormatContext& input) {
  if (libav::isImageFormat(input)) return;
  constexpr AVRational microseconds{1, AV_TIME_BASE};
  const ExactTimes exact = exactTimes(description);
  description.startTime = exactOr(libav::secondsOf(input.start_time, microseconds), exact.first, 1e-6);
  if (input.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE) {
    // A guess from the size of the file.
    const auto removeDuration = [](StreamDescription& stream) { stream.duration.reset(); };
    std::ranges::for_each(description.video, removeDuration);
    std::ranges::for_each(description.audio, removeDuration);
    std::ranges::for_each(description.others, removeDuration);
    return;
  }
  // FFmpeg goes by the header of a QuickTime movie, which counts in 1/600 or 1/1000 of a second. Where the header says
  // something else, that counts.
  description.duration = exactOr(libav::lengthOf(input.duration, microseconds), exact.length(), 1.0 / 500);
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
  if (description.formatName == "wav" || description.formatName == "w64") {
    // FFmpeg gives the time of origination without its date.
    const std::string date = firstTag(tags, {"date"});
    const std::string time = firstTag(tags, {"creation_time"});
    const bool isTimeOfDay = !time.empty() && time.find('-') == std::string::npos;
    if (isTimeOfDay) description.creationDate = date.empty() ? std::string() : date + 'T' + time;
  }
  // GoPro names itself in its tracks alone.
  const auto isGoPro = [](const StreamDescription& stream) {
    return tagValue(stream.tags, "handler_name").value_or("").find("GoPro") != std::string_view::npos;
  };
  if (description.maker.empty() && std::ranges::any_of(description.video, isGoPro)) {
    description.maker = SLVMediaCorporationGoPro;
  }
  description.corporation = corporationOf(description.maker);
  if (description.formatName == "r3d") description.corporation = MediaCorporation::red;
  if (description.formatName == "cine") description.corporation = MediaCorporation::phantom;
  const auto findReel = [&description](const StreamDescription& stream) {
    if (description.reelName.empty()) description.reelName = firstTag(stream.tags, {"reel_name"});
  };
  std::ranges::for_each(description.others, findReel);
  std::ranges::for_each(description.video, findReel);
  std::ranges::for_each(description.audio, findReel);
  if (description.reelName.empty()) description.reelName = firstTag(tags, {"reel_name"});
}

/// Returns the end of the last data that the index of a QuickTime movie names.
std::optional<std::uint64_t> endOfIndexedData(const AVFormatContext& input) {
  std::int64_t end = 0;
  for (unsigned place = 0; place < input.nb_streams; ++place) {
    AVStream* const stream = input.streams[place];
    const int count = avformat_index_get_entries_count(stream);
    for (int entry = 0; entry < count; ++entry) {
      const AVIndexEntry* const sample = avformat_index_get_entry(stream, entry);
      end = std::max(end, checkedSum<std::int64_t>(sample->pos, sample->size).value_or(sample->pos));
    }
  }
  return end > 0 ? std::optional(static_cast<std::uint64_t>(end)) : std::nullopt;
}

/// Returns the end of the segment of a Matroska file; absent if it is not known, as in a recording that goes on.
std::optional<std::uint64_t> endOfSegment(libav::MediaInput& input) {
  constexpr std::array<std::string_view, 2> identifiers{"\x1a\x45\xdf\xa3", "\x18\x53\x80\x67"};
  std::uint64_t place = 0;
  for (const std::string_view identifier : identifiers) {
    // An element is an identifier, a length whose leading zeros say of how many bytes it is, and so many bytes.
    std::array<char, 12> bytes{};
    if (!input.readAt(place, bytes) || !std::string_view(bytes.data(), bytes.size()).starts_with(identifier)) return {};
    const auto first = static_cast<unsigned char>(bytes[4]);
    const auto size = static_cast<std::size_t>(std::countl_zero(first)) + 1;
    if (size > 8) return {};
    std::uint64_t length = first & (0xFFU >> size);
    bool isUnknown = length == 0xFFU >> size;
    for (std::size_t each = 1; each < size; ++each) {
      const auto byte = static_cast<unsigned char>(bytes[4 + each]);
      length = length << 8U | byte;
      isUnknown = isUnknown && byte == 0xFF;
    }
    if (isUnknown) return {};
    place += 4 + size + length;
  }
  return place;
}

std::uint64_t numberIn(std::string_view bytes, bool isBigEndian) noexcept {
  std::uint64_t number = 0;
  for (std::size_t each = 0; each < bytes.size(); ++each) {
    number = number << 8U | static_cast<unsigned char>(bytes[isBigEndian ? each : bytes.size() - 1 - each]);
  }
  return number;
}

/// Returns the size that a Flash video states at its beginning, which FFmpeg keeps to itself.
std::optional<std::uint64_t> statedSizeOfFlashVideo(libav::MediaInput& input) {
  using namespace std::string_view_literals;
  // The name, then a zero for a number, and the number as a big-endian double.
  constexpr std::string_view name =
      "\0\x08"
      "filesize\0"sv;
  std::array<char, 1024> bytes{};
  if (!input.readAt(0, bytes)) return std::nullopt;
  const std::size_t place = std::string_view(bytes.data(), bytes.size()).find(name);
  if (place == std::string_view::npos || place + name.size() + 8 > bytes.size()) return std::nullopt;
  const std::string_view number(bytes.data() + place + name.size(), 8);
  return truncatedUnsignedInteger(std::bit_cast<double>(numberIn(number, true)));
}

/// Returns the size that the first chunk of an AVI, Wave or AIFF file states; absent for a recording that goes on,
/// whose size is 0 or the greatest number.
std::optional<std::uint64_t> sizeOfFirstChunk(libav::MediaInput& input) {
  std::array<char, 8> bytes{};
  if (!input.readAt(0, bytes)) return std::nullopt;
  const std::string_view header(bytes.data(), bytes.size());
  const bool isBigEndian = header.starts_with("FORM");
  if (!isBigEndian && !header.starts_with("RIFF")) return std::nullopt;
  const std::uint64_t size = numberIn(header.substr(4), isBigEndian);
  if (size == 0 || size == 0xFFFF'FFFF) return std::nullopt;
  // The size is that of what follows it; some programs state that of the whole file.
  return size;
}

/// Returns the least size of an MXF file, by where its header says that the footer is; absent if it does not say it.
std::optional<std::uint64_t> leastSizeOfMxf(libav::MediaInput& input) {
  constexpr std::size_t keySize = 16;
  constexpr std::size_t placeOfFooter = 24;
  std::array<char, keySize + 9 + placeOfFooter + 8> bytes{};
  if (!input.readAt(0, bytes)) return std::nullopt;
  const std::string_view header(bytes.data(), bytes.size());
  // A length below 128 is one byte; a greater one follows the number of its bytes.
  const auto first = static_cast<unsigned char>(header[keySize]);
  const std::size_t lengthSize = first < 0x80 ? 1 : 1 + (first & 0x7FU);
  if (lengthSize > 9) return std::nullopt;
  const std::uint64_t footer = numberIn(header.substr(keySize + lengthSize + placeOfFooter, 8), true);
  return footer > 0 ? checkedSum<std::uint64_t>(footer, 1) : std::nullopt;
}

/// Returns how long the file says that it is.
std::optional<std::uint64_t> statedSize(const MediaDescription& description, libav::MediaInput& input) {
  if (description.formatName.starts_with("mov,")) return endOfIndexedData(input.context());
  if (description.formatName.starts_with("matroska,")) return endOfSegment(input);
  if (description.formatName == "flv") return statedSizeOfFlashVideo(input);
  if (description.formatName == "mxf") return leastSizeOfMxf(input);
  const bool isChunked =
      description.formatName == "avi" || description.formatName == "wav" || description.formatName == "aiff";
  return isChunked ? sizeOfFirstChunk(input) : std::nullopt;
}

/// Warns if the file is shorter than it says.
void checkLength(MediaDescription& description, libav::MediaInput& input) {
  const auto size = statedSize(description, input);
  if (!size || *size <= description.size) return;
  description.warnings.push_back({MediaWarningCode::endsBeforeItsData, description.path,
                                  std::to_string(*size - description.size) + " bytes are missing"});
}

Expected<MediaDescription, MediaError> describedFile(const std::string& path, const DescriptionLimits& limits,
                                                     const std::string& name = {}) {
  auto opened = MediaInput::open(path, limits, name);
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
  description.recordingFormat = recordingFormatOfPath(path);
  describeStreams(description, input);
  if (description.video.empty() && description.audio.empty()) {
    return Unexpected(MediaError{MediaErrorCode::noStreams, path});
  }
  description.container = libav::containerOf(context, description);
  describeTimes(description, context);
  describeOrigin(description);
  checkLength(description, input);
  description.timecode = libav::readTimecode(input, description);
  return description;
}

Expected<MediaDescription, MediaError> describedDirectory(const std::string& path, const DescriptionLimits& limits) {
  const auto deadline = limits.deadline();
  const auto sequence = imageSequence(path, limits);
  if (!sequence) return Unexpected(sequence.error());
  DescriptionLimits rest = limits;
  rest.time = std::chrono::floor<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  auto image = describedFile(sequence->paths.front(), rest);
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
  if (sequence->repeatedCount > 0) {
    description.warnings.push_back(
        {MediaWarningCode::repeatedImages, path, std::to_string(sequence->repeatedCount) + " too many"});
  }
  return description;
}

}  // namespace

Expected<MediaDescription, MediaError> libav::describeUnfinished(const std::string& path, const std::string& name,
                                                                 const DescriptionLimits& limits) {
  auto description = describedFile(path, limits, name);
  if (description) description->path = name;
  return description;
}

Expected<MediaDescription, MediaError> describeMedia(const Url& url, const DescriptionLimits& limits) {
  if (!url.isFile()) return Unexpected(MediaError{MediaErrorCode::notAFileUrl, url.text()});
  const libav::LogCollector log;
  const std::string& path = url.path();
  return pathIsDirectory(path) ? describedDirectory(path, limits) : describedFile(path, limits);
}

}  // namespace meridian::inline v0_2
