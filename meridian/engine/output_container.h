/// \file
/// The containers that a transcode writes: their extensions, what they can hold, and which codecs may be copied into
/// them. For example:
///
///     containerOfExtension(FileExtension::mov)      // OutputContainer::mov
///     holdsCodec(OutputContainer::mp4, "pcm_s16le") // false: MP4 has no PCM
///     containerOfFormat(SAVQuickTimeFileFormat)     // OutputContainer::mov
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/media/file_extension.h"

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

struct OutputContainerRow {
  OutputContainer value;
  std::string_view rawValue;
  std::string_view description;
  FileExtension extension;
  bool holdsVideo;
  /// The number of audio tracks that it can hold.
  int audioTracks;
  TimecodeStorage timecode;
  /// True if its index can be put in front of the media.
  bool hasIndex;
  /// True if it keeps tags such as the camera's maker.
  bool keepsTags;
};

template <>
struct EnumerationTable<OutputContainer> {
  using enum OutputContainer;
  static constexpr int many = 64;
  static constexpr auto rows = std::to_array<OutputContainerRow>({
      {mov, "mov", "QuickTime", FileExtension::mov, true, many, TimecodeStorage::track, true, true},
      {mp4, "mp4", "MP4", FileExtension::mp4, true, many, TimecodeStorage::track, true, true},
      {wav, "wav", "Wave", FileExtension::wav, false, 1, TimecodeStorage::none, false, false},
      {mxf, "mxf", "MXF", FileExtension::mxf, true, many, TimecodeStorage::always, false, false},
      {mjpeg, "mjpeg", "raw Motion JPEG", FileExtension::mjpeg, true, 0, TimecodeStorage::none, false, false},
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

/// The codecs whose packets a container can hold as they are.
struct ContainerCodecs {
  OutputContainer container;
  /// FFmpeg's names; empty texts at the end.
  std::array<std::string_view, 32> codecs;
};

/// Lists what FFmpeg 5.1 writes and reads back with the same codec; AAC in Wave is left out, because its bit rate is
/// read back wrongly.
inline constexpr auto containerCodecs = std::to_array<ContainerCodecs>({
    {OutputContainer::mov,
     {"h264",      "hevc",      "prores",    "mjpeg",     "mpeg4",     "dnxhd",     "mpeg2video", "mpeg1video",
      "cfhd",      "png",       "jpeg2000",  "rawvideo",  "v210",      "qtrle",     "hap",        "dvvideo",
      "aac",       "alac",      "mp3",       "ac3",       "eac3",      "pcm_u8",    "pcm_s16le",  "pcm_s16be",
      "pcm_s24le", "pcm_s24be", "pcm_s32le", "pcm_s32be", "pcm_f32le", "pcm_f32be", "pcm_f64le",  "pcm_f64be"}},
    {OutputContainer::mp4,
     {"h264", "hevc", "mpeg4", "mpeg2video", "mjpeg", "av1", "vp9", "aac", "alac", "mp3", "ac3", "eac3", "opus",
      "flac"}},
    {OutputContainer::wav, {"pcm_u8", "pcm_s16le", "pcm_s24le", "pcm_s32le", "pcm_f32le", "pcm_f64le", "mp3"}},
    {OutputContainer::mxf, {"dnxhd", "mpeg2video", "h264", "prores", "jpeg2000", "dvvideo", "pcm_s16le", "pcm_s24le"}},
    {OutputContainer::mjpeg, {"mjpeg"}},
});

/// Returns whether packets of the codec, by FFmpeg's name, can be stored in the container.
[[nodiscard]] constexpr bool holdsCodec(OutputContainer container, std::string_view codec) noexcept {
  return std::ranges::any_of(containerCodecs, [&](const ContainerCodecs& each) {
    return each.container == container && !codec.empty() && std::ranges::find(each.codecs, codec) != each.codecs.end();
  });
}

}  // namespace meridian::inline v0_2
