/// \file
/// The keys and values of the suite's playback and conversion dictionaries. For example:
///
///     settings[std::string(kAVMDropFrameKey)] = true;  // the key "dropFrame"
#pragma once

#include <array>
#include <string_view>

namespace meridian::inline v0_2 {

#define MERIDIAN_AVM_CONSTANT(name, value) inline constexpr std::string_view name = value;
#include "meridian/media/avm_constants.def"

/// Limits the range of `kAVMVideoQualityLevel`: 1 gives the best image, 0 the smallest file. "Lvel" is spelled as the
/// suite spells it.
inline constexpr double kAVMVideoQualityLevelMax = 1.0;
inline constexpr double kAVMVideoQualityLvelMin = 0.0;

/// A text constant and its name.
struct AvmConstant {
  std::string_view name;
  std::string_view value;
};

/// Lists every text constant of this header, ordered by name.
inline constexpr auto avmConstants = std::to_array<AvmConstant>({
#define MERIDIAN_AVM_CONSTANT(name, value) {#name, value},
#include "meridian/media/avm_constants.def"
});

}  // namespace meridian::inline v0_2
