/// \file
/// An argument vector explained: where each setting came from, what its text means, and what became of every other
/// word.
///
///     const TranscodeExplanation explanation = explain({"-dims", "1280 x 720", "-vcoedc", "h264"});
///     explanation.settings[0].warnings[0].message();  // "-dims": cannot be parsed: "1280 x 720" is not a size;
///                                                     // did you mean 1280x720?
///     explanation.rejectedEntries[0].error.message();      // "-vcoedc": is not a flag of the transcoder;
///                                                     // did you mean -vcodec?
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/cli/advised.h"
#include "meridian/cli/argument_words.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_preset.h"
#include "meridian/cli/transcode_properties.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Why a setting or a dropped word deserves attention. A code without a remedy only reports what happened.
enum class TranscodeWarningCode : std::uint8_t {
  /// The text is not valid for the flag's property.
  invalidValue,
  /// The text would be valid in capitals, but a vector's values are lower-cased.
  needsCapitals,
  /// The flag accepts no value but has one: it consumed the following word.
  holdsValueButTakesNone,
  /// The flag needs a value but has none.
  lacksValue,
  /// The flag is not in the vocabulary; it was accepted only because it contains a known flag.
  acceptedByContainment,
  /// The flag begins with "-in" but does not have the two numbers of an input file.
  inputWithoutNumbers,
  /// The flag begins with "-ac_omit" but does not have the number of an audio track.
  omissionWithoutNumber,
  /// The flag was written several times.
  repeated,
  /// The value was not written in lower case, but is stored so.
  lowerCased,
  /// The setting is also one of a preset, with another value or the same.
  overridesPreset,
  /// The flag is a timecode source, but another one counts.
  unusedTimecodeSource,
  /// A word belongs to no flag and was dropped.
  strayWord,
  /// A reader of the rendered vector gets another value than is stored.
  readsBackDifferently,
};

template <>
struct EnumerationTable<TranscodeWarningCode> {
  static constexpr auto rows = std::to_array<ErrorRow<TranscodeWarningCode>>({
      {TranscodeWarningCode::invalidValue, "invalidValue", "cannot be parsed", "correct the value"},
      {TranscodeWarningCode::needsCapitals, "needsCapitals", "has a value that no argument vector can carry",
       "choose another value, or set the property in the application"},
      {TranscodeWarningCode::holdsValueButTakesNone, "holdsValueButTakesNone",
       "accepts no value but consumed the following word", "remove the word, or move it after the flag it belongs to"},
      {TranscodeWarningCode::lacksValue, "lacksValue", "needs a value but has none",
       "write its value right after it; no value can begin with \"-\""},
      {TranscodeWarningCode::acceptedByContainment, "acceptedByContainment",
       "is not a flag of the transcoder, and was accepted only because it contains one", "check the spelling"},
      {TranscodeWarningCode::inputWithoutNumbers, "inputWithoutNumbers", "is not an input file",
       "number the inputs by group and place, such as -in_0_0 for the first"},
      {TranscodeWarningCode::omissionWithoutNumber, "omissionWithoutNumber", "leaves out no audio track",
       "number the tracks from 0, such as -ac_omit_0 for the first"},
      {TranscodeWarningCode::repeated, "repeated", "is repeated, and the last value wins"},
      {TranscodeWarningCode::lowerCased, "lowerCased", "was written differently"},
      {TranscodeWarningCode::overridesPreset, "overridesPreset", "overrides a preset"},
      {TranscodeWarningCode::unusedTimecodeSource, "unusedTimecodeSource", "is not used",
       "remove all timecode sources but one"},
      {TranscodeWarningCode::strayWord, "strayWord", "belongs to no flag"},
      {TranscodeWarningCode::readsBackDifferently, "readsBackDifferently", "will be read differently"},
  });
};

/// Warns about one flag or word, which is the place.
using TranscodeWarning = Advised<Warning<TranscodeWarningCode>>;

/// Why an entry of an argument vector was rejected.
enum class TranscodeErrorCode : std::uint8_t {
  unknownFlag,
  unknownPreset,
  /// The flag is "-presets", a listing command, which a store takes for a preset without a name.
  listing,
};

template <>
struct EnumerationTable<TranscodeErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<TranscodeErrorCode>>({
      {TranscodeErrorCode::unknownFlag, "unknownFlag", "is not a flag of the transcoder", "check the spelling"},
      {TranscodeErrorCode::unknownPreset, "unknownPreset", "does not name a preset", "check the spelling"},
      {TranscodeErrorCode::listing, "listing", "prints the presets, and is not kept as a setting"},
  });
};

/// Says why an entry was rejected. The place is its flag.
using TranscodeError = Advised<Error<TranscodeErrorCode>>;

/// Where a setting's value came from: written once, written more than once (the last value wins), or from a preset.
enum class SettingSource : std::uint8_t { given, repeated, preset };

template <>
struct EnumerationTable<SettingSource> {
  static constexpr auto rows = std::to_array<EnumerationRow<SettingSource>>({
      {SettingSource::given, "given"},
      {SettingSource::repeated, "repeated"},
      {SettingSource::preset, "preset"},
  });
};

/// A setting of the store, with its source, its meaning and its warnings.
struct ExplainedSetting {
  std::string flag;
  std::string value;
  /// The value as written, trimmed; equal to `value` for one that keeps its case. Empty for a preset's value.
  std::string writtenValue;
  SettingSource source = SettingSource::given;
  /// The preset that gave the value, or whose value was overridden.
  std::optional<TranscodeCliPreset> preset;
  /// Values that were written earlier in the vector and overridden, in their order.
  std::vector<std::string> earlierValues;
  /// The preset's value that was overridden.
  std::optional<std::string> presetValue;
  /// The property that the flag stores or is a part of. If two properties share the flag, the first whose text is
  /// valid. Null for a flag without one, such as a listing command.
  const TranscodeProperty* property = nullptr;
  /// The text parsed as the property; for a joint property, the value of this flag alone. Absent if the text is not
  /// valid.
  std::optional<PropertyValue> typed;
  /// The typed value for people: "1920 x 1080", "23.976 fps = 24000/1001"; empty where the text says it already.
  std::string meaning;
  /// A valid text that was probably meant by one that is not: "1280x720" for "1280 x 720".
  std::optional<std::string> readableText;
  /// The warnings about the setting, the most important first.
  std::vector<TranscodeWarning> warnings;
};

/// A preset whose settings were merged into those given.
struct ExplainedPreset {
  TranscodeCliPreset preset;
  /// Preset names that were written earlier in the vector and overridden.
  std::vector<std::string> earlierNames;
};

/// An entry that the store rejected, and why.
struct RejectedEntry {
  /// The normalised flag; "-preset" for an unknown preset name, also if the flag was written as "-presets".
  std::string flag;
  /// The flag as written: differs for flags that begin with "-preset", such as "-presets".
  std::string writtenFlag;
  std::string value;
  /// Values that were written earlier in the vector and overridden, in their order.
  std::vector<std::string> earlierValues;
  /// The flag of the property that the flag names ("-vcodec" for "-videoFormat"), or the nearest known flag; for an
  /// unknown preset name the nearest preset. Absent when nothing is near.
  std::optional<std::string_view> suggestion;
  /// The preceding flag if it needs a value and got none. The rejected word was probably meant as its value, but a
  /// value cannot begin with "-".
  std::optional<std::string> valueless;
  TranscodeError error;

  /// Returns whether the entry asks the transcoder for a listing, and so is not an error.
  [[nodiscard]] bool isListing() const noexcept { return error.code == TranscodeErrorCode::listing; }
};

/// A word that belongs to no flag.
struct DroppedWord {
  /// Its place in the vector, from 0.
  std::size_t index = 0;
  std::string word;
  TranscodeWarning warning;
};

/// What `explain` finds in an argument vector.
struct TranscodeExplanation {
  /// The store that the vector gives; `settings` are its flags, in its order.
  TranscodeCliArguments arguments;
  std::vector<ExplainedSetting> settings;
  std::vector<ExplainedPreset> presets;
  std::vector<RejectedEntry> rejectedEntries;
  std::vector<DroppedWord> droppedWords;
  /// What the settings mean together, one clause each: "video is left out".
  std::vector<std::string> notes;
};

/// Explains an argument vector, without a program path. Reads it once, as `TranscodeCliArguments` does.
[[nodiscard]] MERIDIAN_API TranscodeExplanation explain(const ArgumentWords& words,
                                                        bool maintainOriginalOrdering = false);

/// Returns the store's `commandLine()` followed by the flags that it rejected, each with its value if it has one, so
/// that reading them again rejects the same.
[[nodiscard]] MERIDIAN_API std::vector<std::string> wordsWithRejected(const TranscodeCliArguments& arguments);

/// Warns about each value that a reader of the store's `commandLine()` gets differently: values are trimmed and mostly
/// lower-cased, and one that begins with "-" is a flag.
[[nodiscard]] MERIDIAN_API std::vector<TranscodeWarning> readingBackWarnings(const TranscodeCliArguments& arguments);

}  // namespace meridian::inline v0_2
