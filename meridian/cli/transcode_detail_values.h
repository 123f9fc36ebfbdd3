/// \file
/// Values of the typed settings that are choices of their own: crop anchor, audio quality, source of the timecode.
///
///     fromRawValue<VideoCropAnchor>("tl");           // VideoCropAnchor::topLeft
///     avAudioQuality(TranscodeAudioQuality::medium);  // 64
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_values.h"

namespace meridian::inline v0_2 {

/// Which part of an image a crop keeps. The raw value is the text of "-crop_anchor".
enum class VideoCropAnchor : std::uint8_t {
  topLeft,
  topCenter,
  topRight,
  centerLeft,
  center,
  centerRight,
  bottomLeft,
  bottomCenter,
  bottomRight,
};

template <>
struct EnumerationTable<VideoCropAnchor> {
  static constexpr auto rows = std::to_array<EnumerationRow<VideoCropAnchor>>({
      {VideoCropAnchor::topLeft, SAVAnchorTopLeft.rawValue(), "Top left"},
      {VideoCropAnchor::topCenter, SAVAnchorTopCenter.rawValue(), "Top centre"},
      {VideoCropAnchor::topRight, SAVAnchorTopRight.rawValue(), "Top right"},
      {VideoCropAnchor::centerLeft, SAVAnchorCenterLeft.rawValue(), "Centre left"},
      {VideoCropAnchor::center, SAVAnchorCenter.rawValue(), "Centre"},
      {VideoCropAnchor::centerRight, SAVAnchorCenterRight.rawValue(), "Centre right"},
      {VideoCropAnchor::bottomLeft, SAVAnchorBottomLeft.rawValue(), "Bottom left"},
      {VideoCropAnchor::bottomCenter, SAVAnchorBottomCenter.rawValue(), "Bottom centre"},
      {VideoCropAnchor::bottomRight, SAVAnchorBottomRight.rawValue(), "Bottom right"},
  });
};

/// The quality of the audio encoder. The raw value is the text of "-aqual".
enum class TranscodeAudioQuality : std::uint8_t { min, low, medium, high, max };

struct TranscodeAudioQualityRow {
  TranscodeAudioQuality value;
  std::string_view rawValue;
  /// On the platform's scale of audio-encoder qualities, 0 to 127.
  int avAudioQuality;
  std::string_view description = {};
};

template <>
struct EnumerationTable<TranscodeAudioQuality> {
  static constexpr auto rows = std::to_array<TranscodeAudioQualityRow>({
      {TranscodeAudioQuality::min, "min", 0},
      {TranscodeAudioQuality::low, "low", 32},
      {TranscodeAudioQuality::medium, "medium", 64},
      {TranscodeAudioQuality::high, "high", 96},
      {TranscodeAudioQuality::max, "max", 127},
  });
};

/// Returns the quality on the platform's scale of audio-encoder qualities, 0 to 127.
[[nodiscard]] constexpr int avAudioQuality(TranscodeAudioQuality quality) noexcept {
  return tableRow(quality).avAudioQuality;
}

/// Returns the flag that stores the quality, "-aqual".
[[nodiscard]] constexpr SAVTranscodeAudioArgumentFlag audioFlag(TranscodeAudioQuality /*quality*/) noexcept {
  return SAVAudioQualityFlag;
}
[[nodiscard]] constexpr std::string_view cliFlag(TranscodeAudioQuality quality) noexcept {
  return audioFlag(quality).rawValue();
}

/// Where the timecode of the output comes from. Each source has a flag of its own.
enum class TimecodeSource : std::uint8_t {
  /// "-tc_match": the source's timecode.
  match,
  /// "-tc_creation": the source's date of creation.
  creationDate,
  /// "-tc_custom": a timecode that is given.
  custom,
};

struct TimecodeSourceRow {
  TimecodeSource value;
  std::string_view rawValue;
  std::string_view description;
  SAVTranscodeTimecodeArgumentFlag flag;
};

template <>
struct EnumerationTable<TimecodeSource> {
  static constexpr auto rows = std::to_array<TimecodeSourceRow>({
      {TimecodeSource::match, "match", "As the source", SAVTimecodeMatchSourceFlag},
      {TimecodeSource::creationDate, "creationDate", "From the creation date", SAVTimecodeFromCreationDateFlag},
      {TimecodeSource::custom, "custom", "Custom", SAVTimecodeCustomFlag},
  });
};

/// Returns the flag that stores the source.
[[nodiscard]] constexpr SAVTranscodeTimecodeArgumentFlag timecodeFlag(TimecodeSource source) noexcept {
  return tableRow(source).flag;
}

}  // namespace meridian::inline v0_2
