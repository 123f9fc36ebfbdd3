/// \file
/// The rules by which an argument vector of the transcoder is read, shared by the store and its explanation.
///
///     const ReadArguments read = readArgumentVector({{"-VR", "25", "stray"}});
///     read.flags[0].flag;   // "-vr"
///     read.strayWords[0];  // 2
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/cli/sanitizer.h"

namespace meridian::inline v0_2 {

enum class FlagKind : std::uint8_t {
  setting,
  /// Begins with "-preset": its value names a preset. The listing command "-presets" is deliberately one of these.
  preset,
  rejected,
};

/// What reading makes of a flag.
struct FlagTreatment {
  FlagKind kind = FlagKind::rejected;
  /// How its value is sanitized. Values of "-clut", "-out", "-progress_file", "-work_dir" and of every flag that begins
  /// with "-in" are paths and keep their case; all others are lower-cased.
  CLISanitizationOptions valueOptions;
};

/// Returns the treatment of a normalised flag.
[[nodiscard]] FlagTreatment treatmentOf(std::string_view flag);

/// Returns the known flag that the normalised flag is, or else the first of all known flags that it contains; absent
/// when it contains none, or does not begin with "-". The test is deliberately loose: it admits numbered inputs
/// ("-in_0_3") and flags outside the known ones ("-acl_descs"), and with them anything else that contains a short flag
/// ("-hello" contains "-h").
[[nodiscard]] std::optional<std::string_view> containedKnownFlag(std::string_view flag);

/// One flag of an argument vector.
struct ReadFlag {
  /// Normalised.
  std::string flag;
  /// Sanitized by the flag's options; empty when there is none.
  std::string value;
  /// The value as written: a view into the vector.
  std::string_view writtenValue;
  FlagKind kind = FlagKind::rejected;
  /// The place of the flag in the vector. Its value, if any, follows it.
  std::size_t index = 0;
};

struct ReadArguments {
  /// Every flag, in the order of the vector.
  std::vector<ReadFlag> flags;
  /// The places of the words that belong to no flag.
  std::vector<std::size_t> strayWords;
};

/// Reads an argument vector, without a program path. A word that begins with "-" after trimming is a flag; the word
/// after it is its value unless it begins with "-" too. All other words are stray.
///
/// What follows a flag decides whether it has a value, not the vocabulary. So a value that begins with "-" cannot be
/// read, and a flag without a value consumes a following stray word; the transcoder reads its vector in the same way.
[[nodiscard]] ReadArguments readArgumentVector(std::span<const std::string_view> words);

}  // namespace meridian::inline v0_2
