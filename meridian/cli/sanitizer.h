// The generic reader of the suite's command-line tools: it normalises the words of an argument vector, pairs every flag
// with all values that follow it, and tells flags that the tool knows from those it does not.
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

/// A set of treatments of one text.
class CLISanitizationOptions {
 public:
  /// No treatment: the text stays as it is.
  constexpr CLISanitizationOptions() noexcept = default;
  constexpr explicit CLISanitizationOptions(std::uint64_t rawValue) noexcept : rawValue_(rawValue) {}

  /// Lower-cases the text.
  static const CLISanitizationOptions lowercase;
  /// Removes white space and new lines from both ends of the text.
  static const CLISanitizationOptions trimWhiteSpace;

  [[nodiscard]] constexpr std::uint64_t rawValue() const noexcept { return rawValue_; }
  [[nodiscard]] constexpr bool contains(CLISanitizationOptions options) const noexcept {
    return (rawValue_ & options.rawValue_) == options.rawValue_;
  }

  friend constexpr CLISanitizationOptions operator|(CLISanitizationOptions left,
                                                    CLISanitizationOptions right) noexcept {
    return CLISanitizationOptions(left.rawValue_ | right.rawValue_);
  }
  friend constexpr bool operator==(CLISanitizationOptions, CLISanitizationOptions) noexcept = default;

  /// The text after the set's treatments: lower-cased first, then trimmed.
  [[nodiscard]] MERIDIAN_API std::string sanitize(std::string_view text) const;

 private:
  std::uint64_t rawValue_ = 0;
};

inline constexpr CLISanitizationOptions CLISanitizationOptions::lowercase{1};
inline constexpr CLISanitizationOptions CLISanitizationOptions::trimWhiteSpace{2};

/// Reads argument vectors against a list of valid flags.
class MERIDIAN_API CLIArgumentSanitizer {
 public:
  /// A flag, and one of its values or none.
  using PairBlock = FunctionRef<void(std::string_view flag, std::optional<std::string_view> value)>;
  /// Asked once for each flag: what to do to the flag's values.
  using OptionsCallback = FunctionRef<CLISanitizationOptions(std::string_view flag)>;

  /// With options, every word is treated by them before flags are recognised; without, words are taken as they are.
  explicit CLIArgumentSanitizer(std::vector<std::string> validCommandFlags,
                                std::optional<CLISanitizationOptions> flagSanitizationOptions = std::nullopt);

  [[nodiscard]] const std::vector<std::string>& validCommandFlags() const noexcept { return validCommandFlags_; }
  [[nodiscard]] std::optional<CLISanitizationOptions> flagSanitizationOptions() const noexcept {
    return flagSanitizationOptions_;
  }
  void setFlagSanitizationOptions(std::optional<CLISanitizationOptions> options) noexcept {
    flagSanitizationOptions_ = options;
  }

  /// Reads the words (without a program path) in order. A word that begins with "-" is a flag; the words after it, up
  /// to the next flag, are its values. `validPairBlock` gets the flag with each of its values in turn, or once without
  /// a value, when the flag contains one of the valid flags without regard to case; `invalid` gets it otherwise, and
  /// always when there are no valid flags. Words before the first flag are dropped on purpose. A flag that stands twice
  /// is reported twice. The texts live for the length of the call.
  void enumerateSanitizedCLIEntries(std::span<const std::string_view> cliArgs,
                                    OptionsCallback sanitizationOptionsCallback, PairBlock validPairBlock,
                                    PairBlock invalid) const;

 private:
  std::vector<std::string> validCommandFlags_;
  std::optional<CLISanitizationOptions> flagSanitizationOptions_;
};

/// The housekeeping flags that an application of the suite passes to a tool that it starts: the process identifier of
/// the application, and which application of the suite it is.
enum class CLICustodialFlag : std::uint8_t { parentPid, parentAppNumber };

template <>
struct EnumerationTable<CLICustodialFlag> {
  static constexpr auto rows = std::to_array<EnumerationRow<CLICustodialFlag>>({
      {CLICustodialFlag::parentPid, "parentPid"},
      {CLICustodialFlag::parentAppNumber, "parentAppNumber"},
  });
};

/// The flag as it is written on a command line: "-parentPid", "-parentAppNumber".
[[nodiscard]] MERIDIAN_API std::string cliFlag(CLICustodialFlag flag);

/// What to do to the values of a housekeeping flag. They are numbers, so they are trimmed, whatever else `options` asks
/// for.
[[nodiscard]] constexpr CLISanitizationOptions sanitizeAllCLIFlags(CLICustodialFlag /*flag*/,
                                                                   CLISanitizationOptions options = {}) noexcept {
  return options | CLISanitizationOptions::trimWhiteSpace;
}

}  // namespace meridian::inline v0_2
