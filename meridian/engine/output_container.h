/// \file
/// The containers that a transcode writes: their extensions, what they can hold, and which codecs may be copied into
/// them. For example:
///
///     containerOfExtension(FileExtension::mov)      // OutputContainer::mov
///     holdsCodec(OutputContainer::mp4, "pcm_s16le") // false: MP4 has no PCM
///     containerOfFormat(SAVQuickTimeFileFormat)     // OutputContainer::mov
///     holdsFrameRate(OutputContainer::mxf, {25, 2}) // false
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/media/file_extension.h"
#include "meridian/media/rational.h"

namespace meridian::inline v0_2 {

/// A container. The raw value is FFmpeg's name of its muxer.
enum class OutputContainer : std::uint8_t { mov, mp4, wav, mxf, mjpeg };

/// Where a container keeps timecode.
enum class TimecodeStorage : std::uint8_t {
  none,
  /// In a track that may be left out.
  track,
  /// Always.
  always,
};

namespace detail {

// What FFmpeg 5.1 writes and reads back with the same codec, by its names. AAC in Wave is left out, because its bit
// rate is read back wrongly; MP2 in MP4, because it is read back as MP3.
inline constexpr auto movCodecs = std::to_array<std::string_view>(
    {"h264",      "hevc",      "prores",    "mjpeg",       "mpeg4",     "dnxhd",     "mpeg2video", "mpeg1video",
     "cfhd",      "png",       "jpeg2000",  "v210",        "qtrle",     "hap",       "dvvideo",    "aac",
     "alac",      "mp3",       "mp2",       "ac3",         "eac3",      "pcm_u8",    "pcm_s8",     "pcm_s16le",
     "pcm_s16be", "pcm_s24le", "pcm_s24be", "pcm_s32le",   "pcm_s32be", "pcm_f32le", "pcm_f32be",  "pcm_f64le",
     "pcm_f64be", "pcm_alaw",  "pcm_mulaw", "adpcm_ima_qt"});
inline constexpr auto mp4Codecs =
    std::to_array<std::string_view>({"h264", "hevc", "mpeg4", "mpeg2video", "mjpeg", "av1", "vp9", "aac", "alac", "mp3",
                                     "ac3", "eac3", "opus", "flac"});
inline constexpr auto wavCodecs =
    std::to_array<std::string_view>({"pcm_u8", "pcm_s16le", "pcm_s24le", "pcm_s32le", "pcm_f32le", "pcm_f64le",
                                     "pcm_alaw", "pcm_mulaw", "adpcm_ms", "mp3", "mp2"});
inline constexpr auto mxfCodecs = std::to_array<std::string_view>(
    {"dnxhd", "mpeg2video", "h264", "prores", "jpeg2000", "dvvideo", "pcm_s16le", "pcm_s24le"});
inline constexpr auto mjpegCodecs = std::to_array<std::string_view>({"mjpeg"});
inline constexpr auto mxfRates = std::to_array({24, 25, 30, 48, 50, 60, 72, 75, 90, 96, 100, 120});

}  // namespace detail

struct OutputContainerRow {
  OutputContainer value;
  /// Also the name of its muxer.
  std::string_view rawValue;
  std::string_view description;
  FileExtension extension;
  bool holdsVideo;
  /// True if it holds audio beside video alone.
  bool needsVideo;
  /// The number of audio tracks that it can hold.
  int audioTracks;
  TimecodeStorage timecode;
  /// True if its index can be put in front of the media.
  bool hasIndex;
  /// True if it keeps tags such as the camera's maker.
  bool keepsTags;
  /// The codecs whose packets it can hold as they are, by FFmpeg's names.
  std::span<const std::string_view> codecs;
  /// The whole frame rates N that it can hold, those of 24 and 30 also times 1000/1001; empty for any rate.
  std::span<const int> frameRates = {};
  /// The only sample rate of its audio, in samples per second; 0 for any.
  int sampleRate = 0;
};

template <>
struct EnumerationTable<OutputContainer> {
  using enum OutputContainer;
  static constexpr int many = 64;
  static constexpr auto rows = std::to_array<OutputContainerRow>({
      {mov, "mov", "QuickTime", FileExtension::mov, true, false, many, TimecodeStorage::track, true, true,
       detail::movCodecs},
      {mp4, "mp4", "MP4", FileExtension::mp4, true, false, many, TimecodeStorage::track, true, true, detail::mp4Codecs},
      {wav, "wav", "Wave", FileExtension::wav, false, false, 1, TimecodeStorage::none, false, false, detail::wavCodecs},
      {mxf, "mxf", "MXF", FileExtension::mxf, true, true, many, TimecodeStorage::always, false, false,
       detail::mxfCodecs, detail::mxfRates, 48000},
      {mjpeg, "mjpeg", "raw Motion JPEG", FileExtension::mjpeg, true, true, 0, TimecodeStorage::none, false, false,
       detail::mjpegCodecs},
  });
};

/// Returns the container whose files have this extension; absent if there is none.
[[nodiscard]] constexpr std::optional<OutputContainer> containerOfExtension(FileExtension extension) noexcept {
  for (const OutputContainerRow& row : EnumerationTable<OutputContainer>::rows) {
    if (row.extension == extension) return row.value;
  }
  return std::nullopt;
}

/// Returns the container of a value of "-file_format"; absent for a text that is not one.
[[nodiscard]] constexpr std::optional<OutputContainer> containerOfFormat(
    const SAVTranscodeArgumentFileFormatValue& format) noexcept {
  if (format == SAVQuickTimeFileFormat) return OutputContainer::mov;
  if (format == SAVMp4Format) return OutputContainer::mp4;
  if (format == SAVWaveFileFormat) return OutputContainer::wav;
  return std::nullopt;
}

/// Returns whether packets of the codec, by FFmpeg's name, can be stored in the container.
[[nodiscard]] constexpr bool holdsCodec(OutputContainer container, std::string_view codec) noexcept {
  const auto codecs = tableRow(container).codecs;
  return std::ranges::find(codecs, codec) != codecs.end();
}

/// Returns whether the container states the shape of pixels of a codec, by FFmpeg's name. In MXF the codec states it,
/// and DNxHD does not.
[[nodiscard]] constexpr bool keepsPixelAspectRatio(OutputContainer container, std::string_view codec) noexcept {
  return container != OutputContainer::mxf || codec != "dnxhd";
}

/// Returns whether the container can hold video of this rate, in lowest terms.
[[nodiscard]] constexpr bool holdsFrameRate(OutputContainer container, const MediaRational& rate) noexcept {
  const auto rates = tableRow(container).frameRates;
  return rates.empty() || std::ranges::any_of(rates, [&rate](int whole) {
           const bool hasSlower = whole % 24 == 0 || whole % 30 == 0;
           return rate == MediaRational{whole, 1} ||
                  (hasSlower && rate == inLowestTerms({std::int64_t{whole} * 1000, 1001}));
         });
}

}  // namespace meridian::inline v0_2
