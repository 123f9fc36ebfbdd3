/// \file
/// The values of "-vprofile": the profiles of each codec, and the levels of those that have levels. For example:
///
///     videoProfileNamed(SAVAvcH264Codec, "high10")->formats  // yuv420p, yuv420p10
///     videoLevelsOf(SAVAvcH264Codec)                         // rows of "1", "1b", "1.1", ...
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "meridian/cli/transcode_values.h"
#include "meridian/engine/pixel_format.h"

namespace meridian::inline v0_2 {

namespace detail {

inline constexpr auto formats420x8 = std::to_array({PixelFormat::yuv420p});
inline constexpr auto formats420x10 = std::to_array({PixelFormat::yuv420p, PixelFormat::yuv420p10});
inline constexpr auto formats420x12 =
    std::to_array({PixelFormat::yuv420p, PixelFormat::yuv420p10, PixelFormat::yuv420p12});
inline constexpr auto formats422x10 = std::to_array({PixelFormat::yuv422p, PixelFormat::yuv422p10});
inline constexpr auto formats444x10 = std::to_array({PixelFormat::yuv444p, PixelFormat::yuv444p10});
inline constexpr auto only422x8 = std::to_array({PixelFormat::yuv422p});
inline constexpr auto only422x10 = std::to_array({PixelFormat::yuv422p10});
inline constexpr auto only444x10 = std::to_array({PixelFormat::yuv444p10});

}  // namespace detail

/// A profile of a codec.
struct VideoProfileRow {
  SAVTranscodeArgumentVideoCodecValue codec;
  /// The value of "-vprofile".
  std::string_view name;
  /// The value of the encoder's option "profile".
  std::string_view option;
  /// The pixel formats that the profile has; the chroma of the first is that of the output.
  std::span<const PixelFormat> formats;
};

/// Lists the profiles (ITU-T H.264 and H.265, ISO/IEC 14496-2, SMPTE ST 2019-1). The profile of ProRes is the codec
/// itself, and Motion JPEG has none.
inline constexpr auto videoProfileRows = std::to_array<VideoProfileRow>({
    {SAVAvcH264Codec, "baseline", "baseline", detail::formats420x8},
    {SAVAvcH264Codec, "main", "main", detail::formats420x8},
    {SAVAvcH264Codec, "high", "high", detail::formats420x8},
    {SAVAvcH264Codec, "high10", "high10", detail::formats420x10},
    {SAVAvcH264Codec, "high422", "high422", detail::formats422x10},
    {SAVAvcH264Codec, "high444", "high444", detail::formats444x10},
    {SAVHevcCodec, "main", "main", detail::formats420x8},
    {SAVHevcCodec, "main10", "main10", detail::formats420x10},
    {SAVHevcCodec, "main12", "main12", detail::formats420x12},
    {SAVHevcCodec, "main422-10", "main422-10", detail::only422x10},
    {SAVMpeg4Codec, "simple", "0", detail::formats420x8},
    {SAVMpeg4Codec, "asp", "15", detail::formats420x8},
    {SAVDnxhdCodec, "dnxhd", "dnxhd", detail::formats422x10},
    {SAVDnxhdCodec, "dnxhr_lb", "dnxhr_lb", detail::only422x8},
    {SAVDnxhdCodec, "dnxhr_sq", "dnxhr_sq", detail::only422x8},
    {SAVDnxhdCodec, "dnxhr_hq", "dnxhr_hq", detail::only422x8},
    {SAVDnxhdCodec, "dnxhr_hqx", "dnxhr_hqx", detail::only422x10},
    {SAVDnxhdCodec, "dnxhr_444", "dnxhr_444", detail::only444x10},
});

/// Returns the profile of the codec with exactly this name; null if there is none.
[[nodiscard]] constexpr const VideoProfileRow* videoProfileNamed(const SAVTranscodeArgumentVideoCodecValue& codec,
                                                                 std::string_view name) noexcept {
  for (const VideoProfileRow& row : videoProfileRows) {
    if (row.codec == codec && row.name == name) return &row;
  }
  return nullptr;
}

/// A level of a codec, and the limits that its encoder insists on.
struct VideoLevelRow {
  std::string_view name;
  /// MaxLumaPs of ITU-T H.265, table A.8: the most pixels of an image, whose sides are at most the square root of
  /// 8 times as many; 0 where the encoder accepts any.
  std::int64_t greatestPixels = 0;
  /// MaxLumaSr of ITU-T H.265, table A.9: the most pixels a second.
  std::int64_t greatestPixelRate = 0;

  /// Returns true if images of this size, in pixels, and rate, in frames per second, are within the limits.
  [[nodiscard]] constexpr bool holds(std::int64_t width, std::int64_t height, double framesPerSecond) const noexcept {
    if (greatestPixels == 0) return true;
    // Images are coded in blocks of 8 x 8.
    constexpr std::int64_t block = 8;
    const std::int64_t codedWidth = (width + block - 1) / block * block;
    const std::int64_t codedHeight = (height + block - 1) / block * block;
    const std::int64_t side = std::max(codedWidth, codedHeight);
    const std::int64_t pixels = codedWidth * codedHeight;
    return pixels <= greatestPixels && side * side <= 8 * greatestPixels &&
           static_cast<double>(pixels) * framesPerSecond <= static_cast<double>(greatestPixelRate);
  }
};

namespace detail {

inline constexpr auto h264Levels = std::to_array<VideoLevelRow>({
    {"1"},   {"1b"}, {"1.1"}, {"1.2"}, {"1.3"}, {"2"},   {"2.1"}, {"2.2"}, {"3"},   {"3.1"},
    {"3.2"}, {"4"},  {"4.1"}, {"4.2"}, {"5"},   {"5.1"}, {"5.2"}, {"6"},   {"6.1"}, {"6.2"},
});
inline constexpr auto h265Levels = std::to_array<VideoLevelRow>({
    {"1", 36'864, 552'960},
    {"2", 122'880, 3'686'400},
    {"2.1", 245'760, 7'372'800},
    {"3", 552'960, 16'588'800},
    {"3.1", 983'040, 33'177'600},
    {"4", 2'228'224, 66'846'720},
    {"4.1", 2'228'224, 133'693'440},
    {"5", 8'912'896, 267'386'880},
    {"5.1", 8'912'896, 534'773'760},
    {"5.2", 8'912'896, 1'069'547'520},
    {"6", 35'651'584, 1'069'547'520},
    {"6.1", 35'651'584, 2'139'095'040},
    {"6.2", 35'651'584, 4'278'190'080},
});

}  // namespace detail

/// Returns the levels that may follow a profile after "@": "high@4.1", the lowest first; empty for a codec without
/// levels.
[[nodiscard]] constexpr std::span<const VideoLevelRow> videoLevelsOf(
    const SAVTranscodeArgumentVideoCodecValue& codec) noexcept {
  if (codec == SAVAvcH264Codec) return detail::h264Levels;
  if (codec == SAVHevcCodec) return detail::h265Levels;
  return {};
}

}  // namespace meridian::inline v0_2
