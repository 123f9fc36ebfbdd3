/// \file
/// The built-in presets: named groups of transcode settings, chosen with "-preset".
///
///     orderedArguments(TranscodeCliPreset::cloud)[0];             // "-file_format", "qt"
///     presetArguments(TranscodeCliPreset::cloud).find("-dims");  // "960x540"
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/text_dictionary.h"
#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The presets: small H.264 proxies for the suite's cloud service, and a mastering format. The raw value is the value
/// of "-preset".
enum class TranscodeCliPreset : std::uint8_t { cloud, proRes4444XQ };

template <>
struct EnumerationTable<TranscodeCliPreset> {
  static constexpr auto rows = std::to_array<EnumerationRow<TranscodeCliPreset>>({
      {TranscodeCliPreset::cloud, SAVSolvaneCloudPresetValue, "cloud"},
      {TranscodeCliPreset::proRes4444XQ, SAVSolvaneProRes4444XQPresetValue, "ProRes 4444 XQ"},
  });
};

/// A flag and its value; the value is empty for a flag without one.
struct TranscodeCliPair {
  std::string_view flag;
  std::string_view value;
};

/// Returns the value of "-preset" for the preset: "solvane_cloud", "solvane_4444xq".
[[nodiscard]] constexpr std::string_view preset(TranscodeCliPreset preset) noexcept { return rawValue(preset); }

/// Returns the preset's settings, in the order of rendering.
[[nodiscard]] MERIDIAN_API std::span<const TranscodeCliPair> orderedArguments(TranscodeCliPreset preset) noexcept;

/// Returns the preset's settings as a dictionary, in the same order.
[[nodiscard]] MERIDIAN_API const TextDictionary& presetArguments(TranscodeCliPreset preset);

/// Returns the preset's settings as an argument vector: two elements for each setting, the second possibly empty.
[[nodiscard]] MERIDIAN_API std::vector<std::string> orderedArgumentsAsList(TranscodeCliPreset preset);

}  // namespace meridian::inline v0_2
