/// \file
/// The encoder of each value of "-vcodec": its pixel formats and rate control. For example:
///
///     const VideoEncoderRow* row = videoEncoderOf(SAVProRes422HQ);
///     row->encoders[0].name;  // "prores_ks"
///     row->formats[0];   // PixelFormat::yuv422p10
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "meridian/cli/transcode_values.h"
#include "meridian/engine/color_spaces.h"
#include "meridian/engine/output_container.h"
#include "meridian/engine/pixel_format.h"

namespace meridian::inline v0_2 {

/// What "-vbr" sets.
enum class VideoRateControl : std::uint8_t {
  /// Any average bit rate; without one a constant quality.
  anyRate,
  /// One of the codec's bit rates.
  listedRate,
  /// Nothing: the profile decides the bit rate.
  none,
};

/// A pair of an encoder's or container's option and its value, by FFmpeg's names.
struct EncoderOption {
  std::string_view name;
  std::string_view value;
};

namespace detail {

inline constexpr auto h264Formats =
    std::to_array({PixelFormat::yuv420p, PixelFormat::yuv420p10, PixelFormat::yuv422p, PixelFormat::yuv422p10,
                   PixelFormat::yuv444p, PixelFormat::yuv444p10});
inline constexpr auto h265Formats =
    std::to_array({PixelFormat::yuv420p, PixelFormat::yuv420p10, PixelFormat::yuv420p12, PixelFormat::yuv422p10});
inline constexpr auto jpegFormats = std::to_array({PixelFormat::yuvj420p, PixelFormat::yuvj422p});
inline constexpr auto mpeg4Formats = std::to_array({PixelFormat::yuv420p});
inline constexpr auto dnxFormats =
    std::to_array({PixelFormat::yuv422p, PixelFormat::yuv422p10, PixelFormat::yuv444p10});
inline constexpr auto proRes422Formats = std::to_array({PixelFormat::yuv422p10});
inline constexpr auto proRes4444Formats = std::to_array({PixelFormat::yuv444p10, PixelFormat::yuva444p10});

}  // namespace detail

/// An encoder by FFmpeg's name, and which sizes it refuses.
struct VideoEncoder {
  std::string_view name;
  /// True if the width must be even whatever the chroma is.
  bool needsEvenWidth = false;
  /// True if a size must be even in the direction in which the chroma is halved.
  bool needsEvenChroma = false;
  /// True if it fails with fields whose lines are not a multiple of 16: FFmpeg's prores_aw 5.1 then writes beyond its
  /// buffers.
  bool needsWholeBlocksInFields = false;
  /// True if it states no colour but those that ProRes has code points for.
  bool statesProResColorsAlone = false;

  /// Returns whether it encodes images of this many lines with these colours.
  [[nodiscard]] constexpr bool encodes(int lines, bool keepsFields, const ColorSpaceCodes& color) const noexcept {
    const bool takesFields = !keepsFields || !needsWholeBlocksInFields || lines % 32 == 0;
    return takesFields && (!statesProResColorsAlone || isProResColor(color));
  }
};

/// The matrix of JPEG files: that of BT.601 with 625 lines (ITU-T T.871, "JFIF", 7).
inline constexpr int jfifMatrix = 5;

/// The most pixels of a side, but for encoders that have less.
inline constexpr int usualGreatestSide = 16384;

/// How a value of "-vcodec" is encoded.
struct VideoEncoderRow {
  SAVTranscodeArgumentVideoCodecValue codec;
  /// The encoder, and the one that replaces it if it is missing; the name of the second may be empty.
  std::array<VideoEncoder, 2> encoders;
  /// What the encoder accepts; of several formats with the same chroma, the least depth comes first.
  std::span<const PixelFormat> formats;
  /// The four characters that name the codec in a QuickTime file; empty where FFmpeg's own are right.
  std::string_view tag;
  VideoRateControl rateControl;
  /// The option of constant quality; without a name where there is none.
  EncoderOption quality = {};
  /// The quantizer of constant quality, from 1, the best, to 31; 0 where the quality is an option or there is none.
  int quantizer = 0;
  /// The value of the option "profile"; empty where "-vprofile" chooses it or there is none.
  std::string_view profile = {};
  /// The vendor that the file names; empty for FFmpeg's own.
  std::string_view vendor = {};
  /// The option that has parameters of the encoder itself; empty if there is none.
  std::string_view parameters = {};
  /// True if a bit rate needs a limit and a buffer beside it: "maxrate" and "bufsize".
  bool limitsRate = false;
  /// True if the chroma is as much of the source's as the formats have, instead of that of the first format.
  bool followsChroma = false;
  /// True if every frame is a key frame.
  bool isIntraOnly = false;
  /// True if it codes interlaced frames as such.
  bool keepsFields = false;
  /// The code point of the matrix that the format has without saying so; 0 for one that states its own.
  int fixedMatrix = 0;
  /// True if it is ProRes, which of code points for the same thing has one.
  bool hasProResColors = false;
  /// The greatest numerator of a frame rate in lowest terms; 0 for any.
  int greatestTimeScale = 0;
  /// The most pixels of a side.
  int greatestSide = usualGreatestSide;
};

namespace detail {

inline constexpr VideoEncoder proResKs{.name = "prores_ks"};
inline constexpr VideoEncoder proResAw{
    .name = "prores_aw", .needsEvenWidth = true, .needsWholeBlocksInFields = true, .statesProResColorsAlone = true};

constexpr VideoEncoderRow proResRow(const SAVTranscodeArgumentVideoCodecValue& codec,
                                    const std::array<VideoEncoder, 2>& encoders, std::span<const PixelFormat> formats,
                                    std::string_view tag, std::string_view profile) noexcept {
  return {.codec = codec,
          .encoders = encoders,
          .formats = formats,
          .tag = tag,
          .rateControl = VideoRateControl::none,
          .profile = profile,
          .vendor = "apl0",
          .isIntraOnly = true,
          .keepsFields = true,
          .hasProResColors = true};
}

}  // namespace detail

/// Lists the encoders. The quality of x264, x265 and Motion JPEG is the one at which a proxy shows no artefacts at
/// normal distance. Of FFmpeg's two ProRes encoders prores_aw is four times as fast and better at the proxy's rate, but
/// exceeds the rates of the larger ones on noisy material.
inline constexpr auto videoEncoderRows = std::to_array<VideoEncoderRow>({
    {.codec = SAVDnxhdCodec,
     .encoders = {{{.name = "dnxhd"}}},
     .formats = detail::dnxFormats,
     .tag = "",
     .rateControl = VideoRateControl::listedRate,
     .profile = "dnxhd",
     .isIntraOnly = true,
     .keepsFields = true},
    {.codec = SAVAvcH264Codec,
     .encoders = {{{.name = "libx264", .needsEvenChroma = true}}},
     .formats = detail::h264Formats,
     .tag = "avc1",
     .rateControl = VideoRateControl::anyRate,
     .quality = {"crf", "20"},
     .limitsRate = true},
    {.codec = SAVHevcCodec,
     .encoders = {{{.name = "libx265", .needsEvenChroma = true}}},
     .formats = detail::h265Formats,
     .tag = "hvc1",
     .rateControl = VideoRateControl::anyRate,
     .quality = {"crf", "22"},
     .parameters = "x265-params",
     .limitsRate = true},
    {.codec = SAVMotionJpegCodec,
     .encoders = {{{.name = "mjpeg"}}},
     .formats = detail::jpegFormats,
     .tag = "",
     .rateControl = VideoRateControl::anyRate,
     .quantizer = 3,
     .followsChroma = true,
     .isIntraOnly = true,
     .fixedMatrix = jfifMatrix},
    {.codec = SAVMpeg4Codec,
     .encoders = {{{.name = "mpeg4"}}},
     .formats = detail::mpeg4Formats,
     .tag = "mp4v",
     .rateControl = VideoRateControl::anyRate,
     .quantizer = 3,
     .greatestTimeScale = 65535,
     .greatestSide = 8191},
    detail::proResRow(SAVProRes4444, {detail::proResKs, detail::proResAw}, detail::proRes4444Formats, "ap4h", "4"),
    detail::proResRow(SAVProRes4444XQ, {detail::proResKs, detail::proResAw}, detail::proRes4444Formats, "ap4x", "5"),
    detail::proResRow(SAVProRes422, {detail::proResKs, detail::proResAw}, detail::proRes422Formats, "apcn", "2"),
    detail::proResRow(SAVProRes422HQ, {detail::proResKs, detail::proResAw}, detail::proRes422Formats, "apch", "3"),
    detail::proResRow(SAVProRes422LT, {detail::proResKs, detail::proResAw}, detail::proRes422Formats, "apcs", "1"),
    detail::proResRow(SAVProRes422Proxy, {detail::proResAw, detail::proResKs}, detail::proRes422Formats, "apco", "0"),
});

static_assert(std::ranges::equal(videoEncoderRows, SAVTranscodeArgumentVideoCodecValue::allCases(), {},
                                 &VideoEncoderRow::codec),
              "each codec has an encoder, in the order of the codecs");

/// Returns the encoder of a codec; null for a text that is not a codec.
[[nodiscard]] constexpr const VideoEncoderRow* videoEncoderOf(
    const SAVTranscodeArgumentVideoCodecValue& codec) noexcept {
  for (const VideoEncoderRow& row : videoEncoderRows) {
    if (row.codec == codec) return &row;
  }
  return nullptr;
}

/// Returns whether a container may hold the codec, as its extensions say.
[[nodiscard]] constexpr bool holdsEncoded(OutputContainer container,
                                          const SAVTranscodeArgumentVideoCodecValue& codec) noexcept {
  return std::ranges::find(codec.permittedExtensions(), tableRow(container).extension) !=
         codec.permittedExtensions().end();
}

/// An encoder of a kind of GPU, by FFmpeg's names, which codes 8 bits of 4:2:0.
struct GpuEncoderRow {
  SAVTranscodeArgumentVideoCodecValue codec;
  std::string_view device;
  std::string_view encoder;
  /// The option of constant quality, whose value is that of the codec's own encoder.
  std::string_view quality;
  /// The values of its option "profile", which are those of "-vprofile".
  std::span<const std::string_view> profiles;
};

namespace detail {

inline constexpr auto gpuProfiles = std::to_array<std::string_view>({"main", "high", "baseline"});
inline constexpr std::span vaapiH264Profiles = std::span(gpuProfiles).first(2);
inline constexpr std::span mainProfile = std::span(gpuProfiles).first(1);

}  // namespace detail

/// Lists the encoders of GPUs, in the order in which they are tried.
inline constexpr auto gpuEncoderRows = std::to_array<GpuEncoderRow>({
    {SAVAvcH264Codec, "vaapi", "h264_vaapi", "qp", detail::vaapiH264Profiles},
    {SAVAvcH264Codec, "cuda", "h264_nvenc", "cq", detail::gpuProfiles},
    {SAVHevcCodec, "vaapi", "hevc_vaapi", "qp", detail::mainProfile},
    {SAVHevcCodec, "cuda", "hevc_nvenc", "cq", detail::mainProfile},
});

}  // namespace meridian::inline v0_2
