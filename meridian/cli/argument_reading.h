// The rules by which the transcoder's argument vector is read, shared by the store and by its explanation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "meridian/base/function_ref.h"
#include "meridian/cli/sanitizer.h"

namespace meridian::inline v0_2 {

/// The form in which flags are stored and compared: lower-cased and trimmed.
[[nodiscard]] std::string normalizedFlag(std::string_view word);

enum class FlagKind : std::uint8_t {
  setting,
  /// Begins with "-preset": its value names a preset. On purpose this takes in the listing command "-presets".
  preset,
  rejected,
};

/// What reading makes of a flag.
struct FlagTreatment {
  FlagKind kind = FlagKind::rejected;
  /// What is done to its value. Values of "-clut", "-out", "-progress_file", "-work_dir" and of every flag that begins
  /// with "-in" are paths and keep their case; all others are lower-cased.
  CLISanitizationOptions valueOptions;
};

/// The treatment of a normalised flag.
[[nodiscard]] FlagTreatment treatmentOf(std::string_view flag);

/// The known flag that the normalised flag is, or else the first of all known flags that it contains; absent when it
/// contains none, or does not begin with "-". The test is loose on purpose: numbered inputs ("-in_0_3") and flags
/// outside the known ones ("-acl_descs") pass by it, and so does anything else that holds a short flag ("-hello" holds
/// "-h").
[[nodiscard]] std::optional<std::string_view> containedKnownFlag(std::string_view flag);

/// A flag as it stands in an argument vector.
struct ReadFlag {
  /// Normalised.
  std::string flag;
  /// Treated by the flag's options; empty when there is none.
  std::string value;
  /// The value as it stands in the vector: a view into it.
  std::string_view writtenValue;
  FlagKind kind;
  /// The flag's place in the vector. Its value, when it has one, stands right behind it.
  std::size_t index;
  bool hasValue;
};

/// Reads an argument vector, without a program path, from the first word to the last. A word that begins with "-" after
/// trimming is a flag; the word after it is its value unless it begins with "-" too. All other words are stray: they
/// belong to nothing.
///
/// On purpose: a value that begins with "-" cannot be read, and what follows a flag, not the vocabulary, decides
/// whether it has a value, so that a value-less flag swallows a stray word behind it.
void readArgumentVector(std::span<const std::string_view> words, FunctionRef<void(ReadFlag&&)> foundFlag,
                        FunctionRef<void(std::size_t index)> foundStrayWord);

}  // namespace meridian::inline v0_2
