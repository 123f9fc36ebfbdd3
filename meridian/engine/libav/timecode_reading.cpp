#include "meridian/engine/libav/timecode_reading.h"

extern "C" {
#include <libavutil/timecode.h>
}

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/base/printable.h"
#include "meridian/engine/libav/media_decoder.h"
#include "meridian/media/frame_number.h"

namespace meridian::inline v0_2::libav {
namespace {

/// A big-endian number of four bytes.
std::uint32_t bigEndian(const std::uint8_t* bytes) noexcept {
  std::uint32_t number = 0;
  for (std::size_t place = 0; place < 4; ++place) number = number << 8U | bytes[place];
  return number;
}

/// The sample description of a timecode track (QuickTime File Format, "Timecode Sample Description").
struct TimecodeTrackFormat {
  static constexpr std::uint32_t dropFrame = 1;
  static constexpr std::uint32_t wrapsAtMidnight = 2;
  static constexpr std::uint32_t mayBeNegative = 4;
  static constexpr std::uint32_t isCounter = 8;

  std::uint32_t flags = 0;
  /// Frames per second, and how many of them labels count.
  MediaRational rate;
  std::int64_t framesPerSecond = 0;

  [[nodiscard]] bool has(std::uint32_t flag) const noexcept { return (flags & flag) != 0; }

  [[nodiscard]] static std::optional<TimecodeTrackFormat> of(const AVCodecParameters& parameters) noexcept {
    constexpr int size = 17;
    if (parameters.extradata == nullptr || parameters.extradata_size < size) return std::nullopt;
    const std::uint8_t* const data = parameters.extradata;
    const MediaRational rate{bigEndian(data + 8), bigEndian(data + 12)};
    return TimecodeTrackFormat{bigEndian(data + 4), rate, data[16]};
  }
};

/// Returns the rate that the labels of a track count at; absent if it has none.
std::optional<VideoFrameRate> rateOfLabels(const TimecodeTrackFormat& format) {
  const std::int64_t counted = format.framesPerSecond;
  const auto exact = recognizedRate(format.rate);
  const auto rate = exact ? VideoFrameRate::matching(*exact) : std::nullopt;
  const auto nominal = rate ? timecodeFramesPerSecond(*rate) : std::nullopt;
  if (!nominal) return counted > 0 ? VideoFrameRate::matching({counted, 1}) : std::nullopt;
  // Some writers round 29.97 down to 29, and mean 30.
  const bool isRoundedDown = counted == exact->numerator / exact->denominator;
  if (counted <= 0 || counted == *nominal || isRoundedDown) return rate;
  // Labels may count each second frame, such as 30 of 59.94: at 29.97.
  const auto numerator = checkedProduct<std::int64_t>(exact->numerator, counted);
  const auto denominator = checkedProduct<std::int64_t>(exact->denominator, *nominal);
  const auto reduced = numerator && denominator ? inLowestTerms({*numerator, *denominator}) : std::nullopt;
  return reduced ? VideoFrameRate::matching(*reduced) : std::nullopt;
}

/// Collects the timecode of a description from one source after the other.
class TimecodeReading {
 public:
  TimecodeReading(MediaInput& input, MediaDescription& description) : input_(input), description_(description) {}

  [[nodiscard]] std::optional<TimecodeDescription> read() {
    bool hasTrack = false;
    for (const OtherStreamDescription& stream : description_.others) {
      if (stream.kind != OtherStreamKind::timecode) continue;
      hasTrack = true;
      if (auto timecode = ofTrack(stream)) return timecode;
    }
    // FFmpeg makes up the other tags of a movie from the track, also if it counts something else than time.
    if (!hasTrack || !description_.formatName.starts_with("mov,")) {
      for (const VideoStreamDescription& stream : description_.video) {
        if (auto timecode = ofTag(stream.tags, &stream, MediaTimecodeSource::stream)) return timecode;
      }
      if (auto timecode = ofTag(description_.tags, description_.mainVideo(), MediaTimecodeSource::format)) {
        return timecode;
      }
    }
    for (const OtherStreamDescription& stream : description_.others) {
      if (stream.codecTag != "rtmd") continue;
      if (auto timecode = ofTag(stream.tags, description_.mainVideo(), MediaTimecodeSource::rtmd)) return timecode;
    }
    return ofFirstImage();
  }

 private:
  [[nodiscard]] std::optional<TimecodeDescription> ofTrack(const OtherStreamDescription& track) {
    AVStream& stream = *input_.context().streams[track.index];
    const auto format = TimecodeTrackFormat::of(*stream.codecpar);
    if (!format || format->has(TimecodeTrackFormat::isCounter)) return std::nullopt;
    const auto rate = rateOfLabels(*format);
    if (!rate) return std::nullopt;
    const AVIndexEntry* const sample = avformat_index_get_entry(&stream, 0);
    std::array<char, 4> bytes{};
    if (sample == nullptr || sample->pos < 0 || !input_.readAt(static_cast<std::uint64_t>(sample->pos), bytes))
      return std::nullopt;
    const std::uint32_t raw = bigEndian(reinterpret_cast<const std::uint8_t*>(bytes.data()));
    const std::int64_t number =
        format->has(TimecodeTrackFormat::mayBeNegative) ? static_cast<std::int32_t>(raw) : std::int64_t{raw};

    const bool isDropFrame = dropFrameAt(*rate, format->has(TimecodeTrackFormat::dropFrame), std::to_string(number));
    const auto start = timecodeOfFrame(number, *rate, isDropFrame);
    if (!start) {
      warn(MediaWarningCode::timecodeNotRead, "frame " + std::to_string(number));
      return std::nullopt;
    }
    TimecodeDescription timecode{*start, {}, *rate, MediaTimecodeSource::tmcd};
    if (format->has(TimecodeTrackFormat::wrapsAtMidnight)) timecode.start.hours %= 24;
    timecode.end = endOf(timecode);
    return timecode;
  }

  [[nodiscard]] std::optional<TimecodeDescription> ofTag(const std::vector<MediaTag>& tags,
                                                         const VideoStreamDescription* video,
                                                         MediaTimecodeSource source) {
    const auto text = tagValue(tags, "timecode");
    return text && video != nullptr && video->frameRate ? ofText(*text, *video->frameRate, source) : std::nullopt;
  }

  /// Decodes the first image of a stream whose container has no place for timecode.
  [[nodiscard]] std::optional<TimecodeDescription> ofFirstImage() {
    constexpr auto formats = std::to_array<std::string_view>({"h264", "hevc", "mpeg", "mpegts", "mpegvideo"});
    constexpr auto codecs = std::to_array<std::string_view>({"h264", "hevc", "mpeg2video"});
    const VideoStreamDescription* const video = description_.mainVideo();
    if (video == nullptr || !video->frameRate || !video->isDecodable) return std::nullopt;
    if (std::ranges::find(formats, description_.formatName) == formats.end()) return std::nullopt;
    if (std::ranges::find(codecs, video->codecName) == codecs.end()) return std::nullopt;
    AVFormatContext& context = input_.context();
    auto decoder = MediaDecoder::open(*context.streams[video->index], {.threads = 1});
    if (!decoder) return std::nullopt;
    // Images may have been read for their rate.
    av_seek_frame(&context, -1, 0, AVSEEK_FLAG_BYTE);
    constexpr int mostPackets = 1000;
    for (int count = 0; count < mostPackets; ++count) {
      const PacketPointer packet(av_packet_alloc());
      if (!packet || av_read_frame(&context, packet.get()) < 0) break;
      if (packet->stream_index != video->index) continue;
      (*decoder)->send(packet.get());
      if (const FramePointer image = (*decoder)->receive()) return ofImage(*image, *video->frameRate);
    }
    (*decoder)->send(nullptr);
    const FramePointer image = (*decoder)->receive();
    return image ? ofImage(*image, *video->frameRate) : std::nullopt;
  }

  [[nodiscard]] std::optional<TimecodeDescription> ofImage(const AVFrame& image, const VideoFrameRate& rate) {
    std::array<char, AV_TIMECODE_STR_SIZE> text{};
    if (const AVFrameSideData* const data = av_frame_get_side_data(&image, AV_FRAME_DATA_S12M_TIMECODE)) {
      // The number of labels, of which the first counts, as SMPTE ST 12-1 codes it.
      const auto* const codes = reinterpret_cast<const std::uint32_t*>(data->data);
      if (data->size < 2 * sizeof(std::uint32_t) || codes[0] == 0) return std::nullopt;
      const MediaRational exact = rate.rawValue();
      const AVRational images{static_cast<int>(exact.numerator), static_cast<int>(exact.denominator)};
      av_timecode_make_smpte_tc_string2(text.data(), images, codes[1], 0, 0);
      return ofText(text.data(), rate, MediaTimecodeSource::stream);
    }
    const AVFrameSideData* const data = av_frame_get_side_data(&image, AV_FRAME_DATA_GOP_TIMECODE);
    if (data == nullptr || data->size < sizeof(std::int64_t)) return std::nullopt;
    const auto code = static_cast<std::uint32_t>(*reinterpret_cast<const std::int64_t*>(data->data));
    av_timecode_make_mpeg_tc_string(text.data(), code);
    // Every group of pictures has one; most encoders that are given none count from here.
    const std::string_view digits(text.data());
    if (digits == "00:00:00:00" || digits == "00:00:00;00") return std::nullopt;
    return ofText(digits, rate, MediaTimecodeSource::stream);
  }

  [[nodiscard]] std::optional<TimecodeDescription> ofText(std::string_view text, const VideoFrameRate& rate,
                                                          MediaTimecodeSource source) {
    auto start = TimecodeComponents::fromTimecode(text);
    if (start) start->isDropFrame = dropFrameAt(rate, start->isDropFrame, text);
    if (!start || !frameNumber(*start, rate)) {
      warn(MediaWarningCode::timecodeNotRead, inQuotes(text));
      return std::nullopt;
    }
    TimecodeDescription timecode{*start, {}, rate, source};
    timecode.end = endOf(timecode);
    return timecode;
  }

  /// Returns whether labels skip at this rate; warns where the file says so and they cannot.
  [[nodiscard]] bool dropFrameAt(const VideoFrameRate& rate, bool isStated, std::string_view written) {
    const bool isPossible = droppedLabelsPerMinute(rate).has_value();
    if (isStated && !isPossible) {
      warn(MediaWarningCode::dropFrameAtOtherRate, std::string(written) + " at " + rate.formattedString());
    }
    return isStated && isPossible;
  }

  [[nodiscard]] std::optional<TimecodeComponents> endOf(const TimecodeDescription& timecode) const {
    const VideoStreamDescription* const video = description_.mainVideo();
    if (video == nullptr || video->isVariable || !video->frameRate || !video->frameCount) return std::nullopt;
    return labelOfImage(*video->frameCount - 1, *video->frameRate, timecode);
  }

  void warn(MediaWarningCode code, std::string detail) {
    description_.warnings.push_back({code, description_.path, std::move(detail)});
  }

  MediaInput& input_;
  MediaDescription& description_;
};

}  // namespace

std::optional<TimecodeComponents> labelOfImage(std::int64_t image, const VideoFrameRate& rate,
                                               const TimecodeDescription& timecode) {
  const auto labels = timecodeFramesPerSecond(timecode.rate);
  const auto images = timecodeFramesPerSecond(rate);
  const auto first = frameNumber(timecode.start, timecode.rate);
  if (!labels || !images || !first || image < 0) return std::nullopt;
  const auto scaled = checkedProduct<std::int64_t>(image, *labels);
  const auto number = scaled ? checkedSum<std::int64_t>(*first, *scaled / *images) : std::nullopt;
  if (!number) return std::nullopt;
  const auto found = timecodeOfFrame(*number, timecode.rate, timecode.start.isDropFrame);
  if (!found) return std::nullopt;
  TimecodeComponents label = *found;
  // A day has a whole number of the ten minutes after which drop frame repeats.
  if (timecode.start.hours < 24) label.hours %= 24;
  return label;
}

std::optional<TimecodeDescription> readTimecode(MediaInput& input, MediaDescription& description) {
  return TimecodeReading(input, description).read();
}

}  // namespace meridian::inline v0_2::libav
