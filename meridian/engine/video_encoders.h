/// \file
/// The encoder of each value of "-vcodec": its pixel formats, containers and rate control. For example:
///
///     const VideoEncoderRow* row = videoEncoderOf(SAVProRes422HQ);
///     row->encoders[0];  // "prores_ks"
///     row->formats[0];   // PixelFormat::yuv422p10
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "meridian/cli/transcode_values.h"
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

inline constexpr auto movAndMp4 = std::to_array({OutputContainer::mov, OutputContainer::mp4});
inline constexpr auto movOnly = std::to_array({OutputContainer::mov});
inline constexpr auto jpegContainers =
    std::to_array({OutputContainer::mov, OutputContainer::mp4, OutputContainer::mjpeg});
inline constexpr auto mxfOnly = std::to_array({OutputContainer::mxf});

}  // namespace detail

/// How a value of "-vcodec" is encoded.
struct VideoEncoderRow {
  SAVTranscodeArgumentVideoCodecValue codec;
  /// FFmpeg's names of the encoder and of the one that replaces it if it is missing; the second may be empty.
  std::array<std::string_view, 2> encoders;
  /// What the encoder accepts; of several formats with the same chroma, the least depth comes first.
  std::span<const PixelFormat> formats;
  std::span<const OutputContainer> containers;
  /// The four characters that name the codec in a QuickTime file; empty where FFmpeg's own are right.
  std::string_view tag;
  VideoRateControl rateControl;
  /// The option of constant quality; without a name where there is none.
  EncoderOption quality;
  /// The option that chooses the variant of the codec; without a name where "-vprofile" chooses it or there is none.
  EncoderOption variant;
  /// True if every frame is a key frame.
  bool isIntraOnly = false;
  /// True if it codes interlaced frames as such.
  bool keepsFields = false;
};

/// Lists the encoders. The quality of x264, x265 and Motion JPEG is the one at which a proxy shows no artefacts at
/// normal distance. Of FFmpeg's two ProRes encoders prores_aw is five times faster and better at the proxy's rate, but
/// exceeds the rates of the larger ones on noisy material.
inline constexpr auto videoEncoderRows = std::to_array<VideoEncoderRow>({
    {SAVDnxhdCodec,
     {"dnxhd"},
     detail::dnxFormats,
     detail::mxfOnly,
     "",
     VideoRateControl::listedRate,
     {},
     {},
     true,
     true},
    {SAVAvcH264Codec,
     {"libx264"},
     detail::h264Formats,
     detail::movAndMp4,
     "avc1",
     VideoRateControl::anyRate,
     {"crf", "20"},
     {}},
    {SAVHevcCodec,
     {"libx265"},
     detail::h265Formats,
     detail::movAndMp4,
     "hvc1",
     VideoRateControl::anyRate,
     {"crf", "22"},
     {}},
    {SAVMotionJpegCodec,
     {"mjpeg"},
     detail::jpegFormats,
     detail::jpegContainers,
     "",
     VideoRateControl::anyRate,
     {"qscale", "3"},
     {},
     true},
    {SAVMpeg4Codec,
     {"mpeg4"},
     detail::mpeg4Formats,
     detail::movAndMp4,
     "mp4v",
     VideoRateControl::anyRate,
     {"qscale", "3"},
     {}},
    {SAVProRes4444,
     {"prores_ks", "prores_aw"},
     detail::proRes4444Formats,
     detail::movOnly,
     "ap4h",
     VideoRateControl::none,
     {},
     {"profile", "4"},
     true,
     true},
    {SAVProRes4444XQ,
     {"prores_ks", "prores_aw"},
     detail::proRes4444Formats,
     detail::movOnly,
     "ap4x",
     VideoRateControl::none,
     {},
     {"profile", "5"},
     true,
     true},
    {SAVProRes422,
     {"prores_ks", "prores_aw"},
     detail::proRes422Formats,
     detail::movOnly,
     "apcn",
     VideoRateControl::none,
     {},
     {"profile", "2"},
     true,
     true},
    {SAVProRes422HQ,
     {"prores_ks", "prores_aw"},
     detail::proRes422Formats,
     detail::movOnly,
     "apch",
     VideoRateControl::none,
     {},
     {"profile", "3"},
     true,
     true},
    {SAVProRes422LT,
     {"prores_ks", "prores_aw"},
     detail::proRes422Formats,
     detail::movOnly,
     "apcs",
     VideoRateControl::none,
     {},
     {"profile", "1"},
     true,
     true},
    {SAVProRes422Proxy,
     {"prores_aw", "prores_ks"},
     detail::proRes422Formats,
     detail::movOnly,
     "apco",
     VideoRateControl::none,
     {},
     {"profile", "0"},
     true,
     true},
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

}  // namespace meridian::inline v0_2
