#include "meridian/engine/libav/stream_reading.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/pixdesc.h>
#include <libavutil/samplefmt.h>
}

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

#include "meridian/engine/channel_layouts.h"
#include "meridian/engine/color_spaces.h"
#include "meridian/engine/libav/orientation.h"
#include "meridian/engine/libav/rationals.h"
#include "meridian/engine/libav/vocabulary_names.h"
#include "meridian/media/media_names.h"

namespace meridian::inline v0_2::libav {
namespace {

std::string ownedText(const char* text) { return text != nullptr ? text : ""; }

constexpr std::uint32_t fourCharacters(std::string_view text) noexcept {
  std::uint32_t code = 0;
  for (std::size_t place = 0; place < 4; ++place) {
    code |= std::uint32_t{static_cast<unsigned char>(text[place])} << (8 * place);
  }
  return code;
}

void describeShared(StreamDescription& description, const AVStream& stream) {
  const AVCodecParameters& parameters = *stream.codecpar;
  description.index = stream.index;
  if (parameters.codec_id != AV_CODEC_ID_NONE) description.codecName = avcodec_get_name(parameters.codec_id);
  description.profile = ownedText(avcodec_profile_name(parameters.codec_id, parameters.profile));
  if (parameters.codec_tag != 0) {
    std::array<char, AV_FOURCC_MAX_STRING_SIZE> text{};
    description.codecTag = av_fourcc_make_string(text.data(), parameters.codec_tag);
  }
  description.isDecodable = avcodec_find_decoder(parameters.codec_id) != nullptr;
  if (parameters.bit_rate > 0) description.bitRate = parameters.bit_rate;
  description.startTime = secondsOf(stream.start_time, stream.time_base);
  description.duration = lengthOf(stream.duration, stream.time_base);
  description.tags = tagsOf(stream.metadata);
  const auto language = tagValue(description.tags, "language").value_or("");
  if (language != "und") description.language = language;
}

FieldOrder fieldOrderOf(AVFieldOrder order) noexcept {
  switch (order) {
    case AV_FIELD_PROGRESSIVE:
      return FieldOrder::progressive;
    case AV_FIELD_TT:
      return FieldOrder::topFirst;
    case AV_FIELD_BB:
      return FieldOrder::bottomFirst;
    case AV_FIELD_TB:
      return FieldOrder::topCodedFirst;
    case AV_FIELD_BT:
      return FieldOrder::bottomCodedFirst;
    case AV_FIELD_UNKNOWN:
      break;
  }
  return FieldOrder::unknown;
}

std::optional<ChromaSubsampling> chromaOf(AVPixelFormat format, const AVPixFmtDescriptor& descriptor) {
  using enum ChromaSubsampling;
  if (format == AV_PIX_FMT_XYZ12LE || format == AV_PIX_FMT_XYZ12BE) return xyz;
  // NOLINTBEGIN(hicpp-signed-bitwise): FFmpeg's own flags.
  if ((descriptor.flags & AV_PIX_FMT_FLAG_PAL) != 0) return palette;
  if ((descriptor.flags & AV_PIX_FMT_FLAG_BAYER) != 0) return bayer;
  if ((descriptor.flags & AV_PIX_FMT_FLAG_RGB) != 0) return rgb;
  if ((descriptor.flags & AV_PIX_FMT_FLAG_HWACCEL) != 0) return std::nullopt;
  // NOLINTEND(hicpp-signed-bitwise)
  if (descriptor.nb_components < 3) return yuv400;
  struct Row {
    int width;
    int height;
    ChromaSubsampling chroma;
  };
  constexpr auto rows = std::to_array<Row>(
      {{0, 0, yuv444}, {0, 1, yuv440}, {1, 0, yuv422}, {1, 1, yuv420}, {2, 0, yuv411}, {2, 2, yuv410}});
  const auto* const found = std::ranges::find_if(rows, [&descriptor](const Row& row) {
    return row.width == descriptor.log2_chroma_w && row.height == descriptor.log2_chroma_h;
  });
  return found != rows.end() ? std::optional(found->chroma) : std::nullopt;
}

/// Returns the bits of the deepest colour component; alpha is not one.
int bitDepthOf(const AVPixFmtDescriptor& descriptor) noexcept {
  // NOLINTBEGIN(hicpp-signed-bitwise): FFmpeg's own flags.
  // Each pixel of a sensor has one sample, whose bits FFmpeg shares out among the components.
  if ((descriptor.flags & AV_PIX_FMT_FLAG_BAYER) != 0) return av_get_bits_per_pixel(&descriptor);
  const bool hasAlpha = (descriptor.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
  // NOLINTEND(hicpp-signed-bitwise)
  const int colors = std::max(descriptor.nb_components - (hasAlpha ? 1 : 0), 1);
  int depth = 0;
  for (int each = 0; each < colors; ++each) depth = std::max(depth, descriptor.comp[each].depth);
  return depth;
}

void describePixels(VideoStreamDescription& video, const AVCodecParameters& parameters) {
  const auto format = static_cast<AVPixelFormat>(parameters.format);
  if (const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(format)) {
    video.pixelFormat = descriptor->name;
    video.bitDepth = bitDepthOf(*descriptor);
    video.chroma = chromaOf(format, *descriptor);
    // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flags.
    video.hasAlpha = (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
  }
  if (parameters.color_range == AVCOL_RANGE_MPEG) video.range = ColorRange::limited;
  if (parameters.color_range == AVCOL_RANGE_JPEG) video.range = ColorRange::full;
  const auto code = [](int number, const char* name) {
    return ColorCode{number, name != nullptr ? name : std::to_string(number)};
  };
  video.primaries = code(parameters.color_primaries, av_color_primaries_name(parameters.color_primaries));
  video.transfer = code(parameters.color_trc, av_color_transfer_name(parameters.color_trc));
  video.matrix = code(parameters.color_space, av_color_space_name(parameters.color_space));
  video.colorSpace = colorSpaceOf({video.primaries.number, video.transfer.number, video.matrix.number});
}

void describeOrientation(VideoStreamDescription& video, const AVStream& stream) {
  std::size_t size = 0;
  const std::uint8_t* const data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
  if (data == nullptr) return;
  const auto orientation = orientationOf({data, size});
  if (!orientation) return;
  video.rotation = orientation->rotation;
  video.isMirrored = orientation->isMirrored;
}

int stretched(int length, const MediaRational& ratio) noexcept {
  const double result = std::round(length * ratio.rawValue());
  return static_cast<int>(std::clamp(result, 1.0, double{std::numeric_limits<int>::max()}));
}

void describeSize(VideoStreamDescription& video, AVFormatContext& input, AVStream& stream) {
  video.width = std::max(stream.codecpar->width, 0);
  video.height = std::max(stream.codecpar->height, 0);
  if (const auto ratio = positiveRationalOf(av_guess_sample_aspect_ratio(&input, &stream, nullptr))) {
    video.pixelAspectRatio = *ratio;
  }
  describeOrientation(video, stream);
  if (video.width == 0 || video.height == 0) return;
  video.displayWidth = stretched(video.width, video.pixelAspectRatio);
  video.displayHeight = video.height;
  if (nearestQuarterTurn(video.rotation) % 180 == 90) std::swap(video.displayWidth, video.displayHeight);
}

/// What the times of frames tell of their rate.
struct ListedRate {
  bool isVariable = false;
  /// True if the frames differ by the rounding to ticks, which the rate then has as well.
  bool isRounded = false;
  /// Frames per second; absent if they vary.
  std::optional<MediaRational> rate = std::nullopt;
};

/// Returns what times in ticks tell, in their order, of at least two frames. The rate is constant if they are those of
/// one rate rounded to ticks, that is, within one tick of a line from the first to the last. No rounding hides in
/// frames of less than 4 ticks: these must be equally long.
template <typename TimeAt>
ListedRate rateOfTimes(int count, const TimeAt& timeAt, const AVRational& timeBase) {
  constexpr ListedRate varies{.isVariable = true};
  const std::int64_t first = timeAt(0);
  const std::int64_t steps = count - 1;
  std::int64_t ticks = 0;
  if (__builtin_sub_overflow(timeAt(count - 1), first, &ticks) || ticks <= 0) return varies;
  const std::int64_t whole = ticks / steps;
  const std::int64_t rest = ticks % steps;
  constexpr std::int64_t shortestRounded = 4;
  const std::int64_t tolerance = whole >= shortestRounded ? steps : 0;
  for (int place = 0; place < count; ++place) {
    std::int64_t off = 0;
    if (__builtin_sub_overflow(timeAt(place), first, &off) || __builtin_sub_overflow(off, place * whole, &off)) {
      return varies;
    }
    // Less than 2^31 steps and a rest below that, so that the products fit.
    if (off < -1 || off > steps || std::abs(off * steps - place * rest) > tolerance) return varies;
  }
  const auto length = secondsOf(ticks, timeBase);
  const auto numerator = length ? checkedProduct<std::int64_t>(length->denominator, steps) : std::nullopt;
  return {.isRounded = rest != 0, .rate = numerator ? inLowestTerms({*numerator, length->numerator}) : std::nullopt};
}

/// Returns the rate of the frames that the index lists; absent for formats that do not list each frame, and for fewer
/// than two frames.
std::optional<ListedRate> listedRate(const AVFormatContext& input, AVStream& stream) {
  if (!std::string_view(input.iformat->name).starts_with("mov,")) return std::nullopt;
  const int count = avformat_index_get_entries_count(&stream);
  if (count < 2) return std::nullopt;
  const auto timeAt = [&stream](int place) { return avformat_index_get_entry(&stream, place)->timestamp; };
  return rateOfTimes(count, timeAt, stream.time_base);
}

/// Returns the rate of the first frames of a stream: at most 64, and within 1000 packets of all streams.
ListedRate rateOfFirstFrames(AVFormatContext& input, const AVStream& stream) {
  constexpr int mostPackets = 1000;
  constexpr std::size_t mostFrames = 64;
  std::vector<std::int64_t> times;
  std::int64_t decoded = AV_NOPTS_VALUE;
  const PacketPointer packet(av_packet_alloc());
  for (int count = 0; packet && count < mostPackets && times.size() < mostFrames; ++count) {
    if (av_read_frame(&input, packet.get()) < 0) {
      decoded = AV_NOPTS_VALUE;
      break;
    }
    if (packet->stream_index == stream.index && packet->pts != AV_NOPTS_VALUE) {
      times.push_back(packet->pts);
      decoded = packet->dts;
    }
    av_packet_unref(packet.get());
  }
  // They come in the order of decoding: before those that are shown later than the last was decoded, others are
  // missing.
  std::ranges::sort(times);
  if (decoded != AV_NOPTS_VALUE) {
    times.erase(std::ranges::upper_bound(times, decoded), times.end());
  }
  if (times.size() < 2) return {.isVariable = true};
  const auto timeAt = [&times](int place) { return times[static_cast<std::size_t>(place)]; };
  return rateOfTimes(static_cast<int>(times.size()), timeAt, stream.time_base);
}

void describeRate(VideoStreamDescription& video, AVFormatContext& input, AVStream& stream) {
  // FFmpeg makes up a rate for these.
  if (isImageFormat(input) || std::string_view(input.iformat->name).starts_with("mjpeg")) return;
  video.averageFrameRate = positiveRationalOf(stream.avg_frame_rate);
  auto rate = positiveRationalOf(av_guess_frame_rate(&input, &stream, nullptr));
  const double ratio = rate && video.averageFrameRate ? rate->rawValue() / video.averageFrameRate->rawValue() : 1.0;
  // An AVI has one rate; an empty frame repeats the one before it. So has a CINE.
  const bool isAvi = std::string_view(input.iformat->name) == "avi";
  const bool isCine = std::string_view(input.iformat->name) == "cine";
  const bool countsFields = isInterlaced(video.fieldOrder) && std::abs(ratio - 2) < 0.02;
  const double commonRate = av_q2d(stream.r_frame_rate);
  // The average of a made-up rate is not that rate.
  const bool isCommonAverage =
      video.averageFrameRate && std::abs(commonRate / video.averageFrameRate->rawValue() - 1) < 0.01;
  if (const auto listed = listedRate(input, stream)) {
    video.isVariable = listed->isVariable;
    if (listed->rate) rate = listed->isRounded && video.averageFrameRate ? video.averageFrameRate : listed->rate;
  } else if (commonRate > greatestFrameRate && !isCommonAverage && !isCine) {
    // FFmpeg takes the time base where it finds no rate that the frames have in common, or one as fast as this.
    const ListedRate first = rateOfFirstFrames(input, stream);
    video.isVariable = first.isVariable;
    rate = first.rate ? first.rate : video.averageFrameRate;
  } else if (isAvi || isCine || countsFields || commonRate > greatestFrameRate) {
    rate = video.averageFrameRate;
  } else {
    video.isVariable = std::abs(ratio - 1) > 0.01;
    // What the coded images of a broadcast state is often wrong, such as fields counted as frames. Its times decide.
    const bool isTransportStream = std::string_view(input.iformat->name) == "mpegts";
    const ListedRate first =
        isTransportStream && !isCommonAverage ? rateOfFirstFrames(input, stream) : ListedRate{.isVariable = true};
    if (!first.isVariable) {
      video.isVariable = false;
      rate = first.rate;
    }
  }
  // In QuickTime and MP4, too, the time base may be all that frames have in common.
  const bool isTooFast = rate && rate->rawValue() > greatestFrameRate;
  if (!rate || (isTooFast && video.averageFrameRate)) rate = video.averageFrameRate;
  if (rate) video.exactFrameRate = recognizedRate(*rate);
  if (video.exactFrameRate) video.frameRate = VideoFrameRate::matching(*video.exactFrameRate);
}

/// Returns the frames that the edit list of a movie shows; all frames without an index.
std::int64_t shownFrames(AVStream& stream) {
  const int count = avformat_index_get_entries_count(&stream);
  std::int64_t shown = 0;
  for (int place = 0; place < count; ++place) {
    // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flags.
    if ((avformat_index_get_entry(&stream, place)->flags & AVINDEX_DISCARD_FRAME) == 0) ++shown;
  }
  return count > 0 ? shown : stream.nb_frames;
}

/// Returns the number of frames if the container states it.
std::optional<std::int64_t> frameCountOf(const AVFormatContext& input, AVStream& stream) {
  if (isImageFormat(input)) return 1;
  const std::string_view format = input.iformat->name;
  if (stream.nb_frames > 0) return format.starts_with("mov,") ? shownFrames(stream) : stream.nb_frames;
  // These count time in frames.
  const AVRational rate = stream.r_frame_rate;
  const bool countsFrames = (format == "mxf" || format == "gxf" || format == "dv") && rate.num > 0 &&
                            av_cmp_q(stream.time_base, av_inv_q(rate)) == 0;
  return countsFrames && stream.duration > 0 ? std::optional(stream.duration) : std::nullopt;
}

void describeChannels(AudioStreamDescription& audio, const AVChannelLayout& layout) {
  audio.channelCount = std::max(layout.nb_channels, 0);
  if (layout.order == AV_CHANNEL_ORDER_UNSPEC) return;
  std::array<char, 128> name{};
  if (av_channel_layout_describe(&layout, name.data(), name.size()) > 0) audio.layoutName = name.data();
  for (int place = 0; place < audio.channelCount; ++place) {
    const AVChannel channel = av_channel_layout_channel_from_index(&layout, static_cast<unsigned>(place));
    AudioChannelDescription& each = audio.channels.emplace_back();
    each.label = channelLabelOfBit(channel);
    if (channel >= 0 && av_channel_name(name.data(), name.size(), channel) > 0) each.name = name.data();
  }
  if (layout.order != AV_CHANNEL_ORDER_NATIVE) return;
  audio.channelBitmap = layout.u.mask;
  if (const auto row = channelLayoutWithBitmap(layout.u.mask)) {
    audio.channelLayout = row->value;
    audio.channelLayoutTag = row->tag;
  }
}

OtherStreamKind otherKindOf(const AVCodecParameters& parameters) noexcept {
  if (parameters.codec_tag == fourCharacters("tmcd")) return OtherStreamKind::timecode;
  switch (parameters.codec_type) {
    case AVMEDIA_TYPE_DATA:
      return OtherStreamKind::data;
    case AVMEDIA_TYPE_SUBTITLE:
      return OtherStreamKind::subtitle;
    case AVMEDIA_TYPE_ATTACHMENT:
      return OtherStreamKind::attachment;
    default:
      return OtherStreamKind::unknown;
  }
}

}  // namespace

std::vector<MediaTag> tagsOf(const AVDictionary* tags) {
  std::vector<MediaTag> list;
  const AVDictionaryEntry* entry = nullptr;
  while ((entry = av_dict_get(tags, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
    list.push_back({entry->key, entry->value});
  }
  return list;
}

bool isImageFormat(const AVFormatContext& input) noexcept {
  return std::string_view(input.iformat->name).ends_with("_pipe");
}

VideoStreamDescription describedVideo(AVFormatContext& input, AVStream& stream) {
  const AVCodecParameters& parameters = *stream.codecpar;
  VideoStreamDescription video;
  describeShared(video, stream);
  const auto [codec, format] = videoNames(parameters);
  video.codec = codec;
  video.format = format;
  if (std::string_view(input.iformat->name) == "r3d") {
    // FFmpeg takes REDCODE for JPEG 2000, and cannot decode it.
    video.codec = SLVVideoCodecRedcodeRaw;
    video.codecName.clear();
    video.profile.clear();
    video.isDecodable = false;
  }
  if (parameters.level > 0) video.level = parameters.level;
  video.fieldOrder = fieldOrderOf(parameters.field_order);
  // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flags.
  video.isAttachedImage = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
  describeSize(video, input, stream);
  describePixels(video, parameters);
  if (video.isAttachedImage) {
    video.frameCount = 1;
    return video;
  }
  describeRate(video, input, stream);
  video.frameCount = frameCountOf(input, stream);
  if (isImageFormat(input)) {
    video.startTime.reset();
    video.duration.reset();
    video.bitRate.reset();
  }
  return video;
}

AudioStreamDescription describedAudio(const AVStream& stream) {
  const AVCodecParameters& parameters = *stream.codecpar;
  AudioStreamDescription audio;
  describeShared(audio, stream);
  audio.format = audioFormat(parameters);
  audio.sampleRate = std::max(parameters.sample_rate, 0);
  const int bits = parameters.bits_per_raw_sample > 0 ? parameters.bits_per_raw_sample
                                                      : av_get_exact_bits_per_sample(parameters.codec_id);
  if (bits > 0) audio.bitsPerChannel = bits;
  audio.sampleFormat = ownedText(av_get_sample_fmt_name(static_cast<AVSampleFormat>(parameters.format)));
  describeChannels(audio, parameters.ch_layout);
  return audio;
}

OtherStreamDescription describedOther(const AVStream& stream) {
  OtherStreamDescription other;
  describeShared(other, stream);
  other.kind = otherKindOf(*stream.codecpar);
  return other;
}

std::optional<std::string_view> containerOf(const AVFormatContext& input, const MediaDescription& description) {
  const std::string_view format = input.iformat->name;
  const VideoStreamDescription* const video = description.mainVideo();
  if (format.starts_with("mov,")) {
    if (video != nullptr && video->codec == SLVVideoCodecBlackmagicRaw) return SLVMediaFileContainerBRAW;
    // A file without a brand is older than brands, which only QuickTime's are.
    const auto brand = tagValue(description.tags, "major_brand");
    return !brand || *brand == "qt  " ? SLVMediaFileContainerQuickTimeMovie : SLVMediaFileContainerMP4;
  }
  struct Row {
    std::string_view format;
    std::string_view container;
  };
  constexpr auto rows = std::to_array<Row>({
      {"mxf", SLVMediaFileContainerMXF},
      {"avi", SLVMediaFileContainerAVI},
      {"r3d", SLVMediaFileContainerR3D},
      {"cine", SLVMediaFileContainerCINE},
      {"dpx_pipe", SLVMediaFileContainerDPX},
  });
  const auto* const found = std::ranges::find(rows, format, &Row::format);
  return found != rows.end() ? std::optional(found->container) : std::nullopt;
}

}  // namespace meridian::inline v0_2::libav
