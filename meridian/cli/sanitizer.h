/// \file
/// The generic reader of the suite's command-line tools. It normalises the words of an argument vector, pairs every
/// flag with all values that follow it, and separates flags that the tool knows from unknown ones. For example:
///
///     const CLIArgumentSanitizer sanitizer({"-out"}, CLISanitizationOptions::lowercase);
///     sanitizer.enumerateSanitizedCLIEntries(words, optionsOfValues, takeKnown, takeUnknown);
///     // -OUT a b -foo: takeKnown("-out", "a"), takeKnown("-out", "b"), takeUnknown("-foo", std::nullopt)
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/function_ref.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// A set of treatments of a text.
class CLISanitizationOptions {
 public:
  /// Makes the set without treatments, which leaves a text unchanged.
  constexpr CLISanitizationOptions() noexcept = default;
  /// Makes the set of these bits. Bits other than those of the named sets are kept and have no effect.
  constexpr explicit CLISanitizationOptions(std::uint64_t rawValue) noexcept : rawValue_(rawValue) {}

  /// Lower-cases the text.
  static const CLISanitizationOptions lowercase;
  /// Removes white space and new lines from both ends of the text.
  static const CLISanitizationOptions trimWhiteSpace;

  /// Returns the set's bits.
  [[nodiscard]] constexpr std::uint64_t rawValue() const noexcept { return rawValue_; }
  /// Returns true if the set contains all treatments of `options`.
  [[nodiscard]] constexpr bool contains(CLISanitizationOptions options) const noexcept {
    return (rawValue_ & options.rawValue_) == options.rawValue_;
  }

  friend constexpr CLISanitizationOptions operator|(CLISanitizationOptions left,
                                                    CLISanitizationOptions right) noexcept {
    return CLISanitizationOptions(left.rawValue_ | right.rawValue_);
  }
  friend constexpr bool operator==(CLISanitizationOptions, CLISanitizationOptions) noexcept = default;

  /// Applies the set's treatments to the text: lower-cases it first, then trims it.
  [[nodiscard]] MERIDIAN_API std::string sanitize(std::string_view text) const;

 private:
  std::uint64_t rawValue_ = 0;
};

inline constexpr CLISanitizationOptions CLISanitizationOptions::lowercase{1};
inline constexpr CLISanitizationOptions CLISanitizationOptions::trimWhiteSpace{2};

/// Reads argument vectors against a list of valid flags.
class MERIDIAN_API CLIArgumentSanitizer {
 public:
  /// Receives a flag, and one of its values or none. The texts are valid during the call only.
  using PairBlock = FunctionRef<void(std::string_view flag, std::optional<std::string_view> value)>;
  /// Returns how to treat a flag's values. Called once for each flag.
  using OptionsCallback = FunctionRef<CLISanitizationOptions(std::string_view flag)>;

  /// Makes a reader that knows these flags. If there are options, they are applied to every word before flags are
  /// recognised, but not to the values that are reported.
  explicit CLIArgumentSanitizer(std::vector<std::string> validCommandFlags,
                                std::optional<CLISanitizationOptions> flagSanitizationOptions = std::nullopt);

  /// Returns the flags that the tool knows.
  [[nodiscard]] const std::vector<std::string>& validCommandFlags() const noexcept { return validCommandFlags_; }
  /// Returns the options that are applied before flags are recognised, if there are any.
  [[nodiscard]] std::optional<CLISanitizationOptions> flagSanitizationOptions() const noexcept {
    return flagSanitizationOptions_;
  }
  /// Replaces these options.
  void setFlagSanitizationOptions(std::optional<CLISanitizationOptions> options) noexcept {
    flagSanitizationOptions_ = options;
  }

  /// Reads the words (without a program path) in order. A word that begins with "-" is a flag; the words after it, up
  /// to the next flag, are its values. A flag is reported with each of its values in turn, or once without a value: to
  /// `validPairBlock` if it contains one of the valid flags without regard to case, and otherwise to `invalid`. A flag
  /// that occurs twice is reported twice. Words before the first flag are deliberately ignored.
  void enumerateSanitizedCLIEntries(std::span<const std::string_view> cliArgs,
                                    OptionsCallback sanitizationOptionsCallback, PairBlock validPairBlock,
                                    PairBlock invalid) const;

 private:
  std::vector<std::string> validCommandFlags_;
  std::optional<CLISanitizationOptions> flagSanitizationOptions_;
};

/// The housekeeping flags that an application of the suite passes to a tool that it starts: the application's process
/// identifier, and which application of the suite it is.
enum class CLICustodialFlag : std::uint8_t { parentPid, parentAppNumber };

template <>
struct EnumerationTable<CLICustodialFlag> {
  static constexpr auto rows = std::to_array<EnumerationRow<CLICustodialFlag>>({
      {CLICustodialFlag::parentPid, "parentPid"},
      {CLICustodialFlag::parentAppNumber, "parentAppNumber"},
  });
};

/// Returns the flag as it is written on a command line: "-parentPid", "-parentAppNumber".
[[nodiscard]] MERIDIAN_API std::string cliFlag(CLICustodialFlag flag);

/// Returns how to treat the values of a housekeeping flag: by `options`, and trimmed, since the values are numbers.
[[nodiscard]] constexpr CLISanitizationOptions sanitizeAllCLIFlags(CLICustodialFlag /*flag*/,
                                                                   CLISanitizationOptions options = {}) noexcept {
  return options | CLISanitizationOptions::trimWhiteSpace;
}

}  // namespace meridian::inline v0_2
