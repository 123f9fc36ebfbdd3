// How an argument vector was understood: where each setting came from, and what became of every other word.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_preset.h"
#include "meridian/cli/transcode_properties.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Where a setting's value came from: written once, written more than once (the last one stays), or from a preset.
enum class SettingSource : std::uint8_t { given, repeated, preset };

template <>
struct EnumerationTable<SettingSource> {
  static constexpr auto rows = std::to_array<EnumerationRow<SettingSource>>({
      {SettingSource::given, "given"},
      {SettingSource::repeated, "repeated"},
      {SettingSource::preset, "preset"},
  });
};

/// What a person should know about a setting that the store accepted.
enum class SettingRemark : std::uint8_t {
  /// The flag takes no value but holds one: it swallowed the word behind it.
  holdsValueButTakesNone,
  /// The flag takes a value but holds none.
  lacksValue,
  /// The flag is none of the vocabulary; it was accepted only because it contains a known flag.
  acceptedByContainment,
  /// The flag begins with "-in" but does not carry the two numbers of an input file.
  inputWithoutNumbers,
  /// The flag begins with "-ac_omit" but does not carry the number of an audio track.
  omissionWithoutNumber,
};

template <>
struct EnumerationTable<SettingRemark> {
  static constexpr auto rows = std::to_array<EnumerationRow<SettingRemark>>({
      {SettingRemark::holdsValueButTakesNone, "holdsValueButTakesNone",
       "takes no value but swallowed the word behind it"},
      {SettingRemark::lacksValue, "lacksValue", "takes a value but has none"},
      {SettingRemark::acceptedByContainment, "acceptedByContainment",
       "no flag of the transcoder; accepted because it contains a known one"},
      {SettingRemark::inputWithoutNumbers, "inputWithoutNumbers",
       "no input file: inputs are numbered, such as -in_0_0 for the first"},
      {SettingRemark::omissionWithoutNumber, "omissionWithoutNumber",
       "leaves out no track: tracks are numbered, such as -ac_omit_0 for the first"},
  });
};

struct ExplainedSetting {
  std::string flag;
  std::string value;
  /// The value as it was written, trimmed; the same as `value` for one that keeps its case. Empty for a preset's value.
  std::string writtenValue;
  SettingSource source = SettingSource::given;
  /// The preset that gave the value, or whose value was overridden.
  std::optional<TranscodeCliPreset> preset;
  /// Values that were written earlier in the vector and lost to this one, in their order.
  std::vector<std::string> earlierValues;
  /// The preset's value that lost to this one.
  std::optional<std::string> presetValue;
  std::optional<SettingRemark> remark;
  /// The known flag that the flag contains, for `acceptedByContainment`.
  std::optional<std::string_view> containedFlag;
  /// The property that stands under the flag: of two that share it the one as which the text reads. Null for a flag
  /// that is none of the list, such as a listing command, or only a part of a property, such as an input file.
  const TranscodeProperty* property = nullptr;
  /// The property's name, also that of a property that several flags make up ("inputFiles"); empty for none.
  std::string_view propertyName;
  /// What the text reads as; absent when it does not read as its property.
  std::optional<PropertyValue> typed;
  /// The typed value for people: "1920 x 1080", "23.976 fps = 24000/1001"; empty where the text says it already.
  std::string meaning;
  /// What could be written where the text does not read: "1280x720" for "1280 x 720".
  std::optional<std::string> readableText;
};

/// A preset whose settings were merged into those given.
struct ExplainedPreset {
  TranscodeCliPreset preset;
  /// Preset names that were written earlier in the vector and lost to this one.
  std::vector<std::string> earlierNames;
};

struct ExplainedRejection {
  /// "-preset" for an unknown preset name, whatever flag that begins so it was written after.
  std::string flag;
  /// The flag that was written: another one for flags that begin with "-preset", such as "-presets".
  std::string writtenFlag;
  std::string value;
  /// Values that were written earlier in the vector and lost to this one, in their order.
  std::vector<std::string> earlierValues;
  /// The known flag, or for an unknown preset name the preset, that comes nearest; absent when nothing is near.
  std::optional<std::string_view> suggestion;
  /// The flag right before it, when that takes a value but got none: the rejected word may have been meant as its
  /// value, but no value begins with "-".
  std::optional<std::string> valueless;
};

/// A word that belongs to no flag.
struct DroppedWord {
  /// Its place in the vector, from 0.
  std::size_t index = 0;
  std::string word;
};

struct TranscodeExplanation {
  /// The store that the vector gives; `settings` are its flags, in its order.
  TranscodeCliArguments arguments;
  std::vector<ExplainedSetting> settings;
  std::vector<ExplainedPreset> presets;
  std::vector<ExplainedRejection> rejections;
  std::vector<DroppedWord> droppedWords;
  /// What the settings mean together, in sentences: "video is left out".
  std::vector<std::string> notes;
};

/// Explains an argument vector, without a program path.
[[nodiscard]] MERIDIAN_API TranscodeExplanation explain(std::span<const std::string_view> words,
                                                        bool maintainOriginalOrdering = false);

}  // namespace meridian::inline v0_2
