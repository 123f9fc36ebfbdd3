#include "meridian/cli/transcode_explanation.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/cli/nearest_text.h"
#include "meridian/cli/transcode_argument_reading.h"
#include "meridian/cli/transcode_detail_values.h"
#include "meridian/media/frame_rate.h"
#include "meridian/media/video_frame_rate.h"

namespace meridian::inline v0_2 {
namespace {

constexpr auto presetTexts = [] {
  std::array<std::string_view, allCases<TranscodeCliPreset>().size()> texts{};
  std::ranges::transform(allCases<TranscodeCliPreset>(), texts.begin(), preset);
  return texts;
}();

/// What the reading of a vector found.
struct Trace {
  /// Every flag as written, in order.
  std::vector<ReadFlag> flags;
  /// The places in `flags` of each flag's occurrences.
  std::unordered_map<std::string_view, std::vector<std::size_t>> occurrences;
  /// The values of the flags that name no preset but should, in the order of reading. The store keeps the last.
  std::vector<std::string> unknownPresetNames;
  /// The last flag with such a value.
  std::string unknownPresetFlag;

  explicit Trace(std::vector<ReadFlag> read) : flags(std::move(read)) {
    for (std::size_t place = 0; place < flags.size(); ++place) occurrences[flags[place].flag].push_back(place);
  }

  /// Returns the last occurrence; null for a flag that was not written.
  [[nodiscard]] const ReadFlag* last(std::string_view flag) const {
    const auto places = occurrences.find(flag);
    return places == occurrences.end() ? nullptr : &flags[places->second.back()];
  }

  /// Returns the values that the flag had before its last occurrence.
  [[nodiscard]] std::vector<std::string> earlierValues(std::string_view flag) const {
    std::vector<std::string> values;
    if (const auto places = occurrences.find(flag); places != occurrences.end()) {
      for (const std::size_t place : places->second) values.push_back(flags[place].value);
      values.pop_back();
    }
    return values;
  }
};

/// Finds the presets that the vector names, and the names that are not presets. Several flags that begin with "-preset"
/// may name the same preset, which is listed once.
std::vector<ExplainedPreset> explainedPresets(Trace& trace) {
  std::vector<ExplainedPreset> presets;
  for (std::size_t place = 0; place < trace.flags.size(); ++place) {
    const ReadFlag& read = trace.flags[place];
    const std::vector<std::size_t>& places = trace.occurrences[read.flag];
    if (places.front() != place || read.kind != FlagKind::preset) continue;
    const auto preset = fromRawValue<TranscodeCliPreset>(trace.flags[places.back()].value);
    if (!preset) {
      trace.unknownPresetFlag = read.flag;
      for (const std::size_t each : places) trace.unknownPresetNames.push_back(trace.flags[each].value);
      continue;
    }
    auto found = std::ranges::find(presets, *preset, &ExplainedPreset::preset);
    if (found == presets.end()) found = presets.insert(found, {*preset, {}});
    std::ranges::move(trace.earlierValues(read.flag), std::back_inserter(found->earlierNames));
  }
  return presets;
}

const std::string* valueInPreset(TranscodeCliPreset preset, std::string_view flag) {
  return presetArguments(preset).find(flag);
}

/// Returns the warning about how the flag was written; absent when there is none.
std::optional<TranscodeWarningCode> flagWarning(const ExplainedSetting& setting,
                                                std::optional<std::string_view> contained) {
  using enum TranscodeWarningCode;
  const bool hasValue = !setting.value.empty();
  if (TranscodeCliArguments::isInputFileFlag(setting.flag)) return hasValue ? std::nullopt : std::optional(lacksValue);
  if (setting.flag.starts_with(SAVInputPrefixFlag.rawValue())) return inputWithoutNumbers;
  if (TranscodeCliArguments::isIgnoredTrackFlag(setting.flag)) {
    return hasValue ? std::optional(holdsValueButTakesNone) : std::nullopt;
  }
  if (setting.flag.starts_with(SAVAudioIgnoreTracksPrefixFlag.rawValue())) return omissionWithoutNumber;
  if (const FlagDescription* const flag = findFlag(setting.flag)) {
    if (flag->takesValue() == hasValue) return std::nullopt;
    return hasValue ? holdsValueButTakesNone : lacksValue;
  }
  return contained ? std::optional(acceptedByContainment) : std::nullopt;
}

/// Returns the typed value for people; empty where it would say no more than the text does.
std::string meaningOf(const TranscodeProperty& property, const PropertyValue& value, std::string_view text) {
  // A rate or size of conversion settings may be relative to the source's.
  if (const auto* const size = std::get_if<Size>(&value)) {
    if (*size == Size{0, 0}) return "as the source";
    if (size->width == size->height && size->width > 0 && size->width <= 1) {
      return plainDecimalText(size->width) + " times the source's size";
    }
    return plainDecimalText(size->width) + " x " + plainDecimalText(size->height);
  }
  if (const auto* const color = std::get_if<RgbColor>(&value)) {
    return "red " + std::to_string(color->red) + ", green " + std::to_string(color->green) + ", blue " +
           std::to_string(color->blue);
  }
  if (property.flag == SAVVideoFrameRateFlag.rawValue()) {
    const double number = doubleFromText(text).value_or(0);
    if (number == FrameRate::match.rawValue()) return "as the source";
    if (number == FrameRate::halfstep.rawValue()) return "half the source's rate";
  }
  if (property.kind == PropertyKind::frameRate) return describeFrameRate(doubleFromText(text).value_or(0));
  if (property.kind == PropertyKind::cropAnchor || property.kind == PropertyKind::overlayAnchor) {
    if (const auto anchor = fromRawValue<VideoCropAnchor>(std::get<std::string>(value))) {
      return lowercased(description(*anchor));
    }
  }
  return "";
}

/// Returns the text with its decimal comma as a point; absent without one. A comma before exactly three characters may
/// separate thousands, and is left alone.
std::optional<std::string> withDecimalPoint(std::string text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos || text.size() - comma == 4) return std::nullopt;
  text[comma] = '.';
  return text;
}

/// Returns a valid text near this one: without its blanks, with its "x" or its decimal point corrected, with all its
/// digits, or the nearest of the texts that the property accepts.
std::optional<std::string> readableTextFor(const TranscodeProperty& property, std::string_view text) {
  const auto isValid = [&property](std::string_view candidate) {
    return !candidate.empty() && valueOfText(property, candidate).has_value();
  };
  const bool isNumber = property.kind == PropertyKind::number || property.kind == PropertyKind::frameRate;
  std::string compact(text);
  // Between the digits of one number a blank may mean anything.
  if (!isNumber && property.kind != PropertyKind::integer)
    std::erase_if(compact, [](char c) { return c == ' ' || c == '\t'; });
  std::string withX = compact;
  std::ranges::replace(withX, '*', 'x');
  if (const std::size_t cross = withX.find("\u00D7"); cross != std::string::npos) withX.replace(cross, 2, "x");
  for (const std::string& candidate : {compact, withX, isNumber ? withDecimalPoint(compact).value_or("") : ""}) {
    if (isValid(candidate)) return candidate;
  }
  if (property.kind == PropertyKind::timecode) {
    const DecomposedTimecode read = TimecodeComponents::decomposeTimecodeString(compact);
    std::string whole = TimecodeComponents::sanitizedTimecode(compact).timecodeString();
    if (read.hours && read.minutes && read.seconds && read.frames && isValid(whole)) return whole;
    return std::nullopt;
  }
  const std::vector<std::string_view> allowed = allowedTexts(property);
  // A text that differs in case alone was lower-cased in reading, and would be again.
  if (std::ranges::any_of(allowed, [&](std::string_view each) { return equalsIgnoringCase(each, compact); })) {
    return std::nullopt;
  }
  if (const auto nearest = nearestText(compact, allowed)) return std::string(*nearest);
  return std::nullopt;
}

/// Explains a flag that is a part of a joint property.
void explainPart(ExplainedSetting& setting) {
  using enum PropertyKind;
  std::string_view flag = setting.flag;
  if (TranscodeCliArguments::isInputFileFlag(flag)) {
    flag = SAVInputPrefixFlag.rawValue();
  } else if (TranscodeCliArguments::isIgnoredTrackFlag(flag)) {
    flag = SAVAudioIgnoreTracksPrefixFlag.rawValue();
  } else if (flag == SAVInputPrefixFlag.rawValue() || flag == SAVAudioIgnoreTracksPrefixFlag.rawValue()) {
    return;
  }
  const auto properties = propertiesOfFlag(flag);
  if (properties.empty()) return;
  setting.property = properties.front();
  if (setting.property->kind == files) {
    setting.typed = setting.value;
  } else if (setting.property->kind == trackNumbers) {
    setting.typed = integerFromText(setting.flag.substr(setting.flag.rfind('_') + 1));
  } else if (setting.property->kind == timecodeSource) {
    const auto& sources = allCases<TimecodeSource>();
    const auto source = std::ranges::find(sources, flag, [](auto each) { return timecodeFlag(each).rawValue(); });
    setting.typed = std::string(rawValue(*source));
  } else {
    setting.typed = true;
  }
}

/// Explains what the text of a setting is; warns about one that is not valid.
void explainValue(ExplainedSetting& setting) {
  const auto properties = propertiesOfFlag(setting.flag);
  if (properties.empty() || properties.front()->isJoint()) {
    explainPart(setting);
    return;
  }
  setting.property = properties.front();
  if (isCopyOfSource(setting.flag, setting.value)) {
    setting.meaning = "as the source";
    return;
  }
  for (const TranscodeProperty* const property : properties) {
    setting.typed = valueOfText(*property, setting.value);
    if (!setting.typed) continue;
    setting.property = property;
    setting.meaning = meaningOf(*property, *setting.typed, setting.value);
    return;
  }
  if (setting.value.empty()) return;
  for (const std::string_view allowed : allowedTexts(*setting.property)) {
    if (!equalsIgnoringCase(allowed, setting.value)) continue;
    setting.warnings.push_back(
        {{TranscodeWarningCode::needsCapitals, setting.flag, std::string(allowed) + " is lower-cased in reading"}});
    return;
  }
  setting.readableText = readableTextFor(*setting.property, setting.value);
  std::string expected;
  for (const TranscodeProperty* const property : properties) {
    expected += (expected.empty() ? "" : ", or ") + expectedForm(*property);
  }
  std::string detail = inQuotes(setting.value) + " is not " + std::string(description(setting.property->kind));
  std::string advice = setting.readableText ? "did you mean " + *setting.readableText + "?" : "expected " + expected;
  setting.warnings.push_back(
      {{TranscodeWarningCode::invalidValue, setting.flag, std::move(detail)}, std::move(advice)});
}

/// Returns the flag of the property whose name was written in place of its flag; absent if no property has that name.
std::optional<std::string_view> flagOfPropertyNamed(std::string_view flag) {
  const std::string_view name = flag.substr(std::min(flag.find_first_not_of('-'), flag.size()));
  const auto property = std::ranges::find_if(
      transcodeProperties, [name](const TranscodeProperty& each) { return equalsIgnoringCase(each.name, name); });
  if (property == transcodeProperties.end()) return std::nullopt;
  if (property->kind == PropertyKind::trackNumbers) return "-ac_omit_0";
  return property->isJoint() ? std::nullopt : std::optional(property->flag);
}

ExplainedSetting explainedSetting(const TextDictionary::Entry& entry, const Trace& trace,
                                  std::span<const ExplainedPreset> presets) {
  ExplainedSetting setting;
  setting.flag = entry.key;
  setting.value = entry.value;
  const auto warn = [&setting](TranscodeWarningCode code, std::string detail) {
    setting.warnings.push_back({{code, setting.flag, std::move(detail)}});
  };

  explainValue(setting);
  const auto contained = containedKnownFlag(setting.flag);
  if (const auto code = flagWarning(setting, contained)) {
    const bool isMisspelt = code == TranscodeWarningCode::acceptedByContainment;
    warn(*code, isMisspelt ? std::string(*contained) : "");
    const auto suggestion = isMisspelt ? flagOfPropertyNamed(setting.flag) : std::nullopt;
    if (suggestion) setting.warnings.back().advice = "did you mean " + std::string(*suggestion) + "?";
  }

  // The first of several presets with the flag counts, as in the store.
  const auto holder = std::ranges::find_if(
      presets, [&](const ExplainedPreset& each) { return valueInPreset(each.preset, setting.flag) != nullptr; });
  if (holder != presets.end()) setting.preset = holder->preset;
  const ReadFlag* const written = trace.last(setting.flag);
  if (written == nullptr) {
    setting.source = SettingSource::preset;
    return setting;
  }
  setting.earlierValues = trace.earlierValues(setting.flag);
  setting.writtenValue = trimmed(written->writtenValue);
  if (!setting.earlierValues.empty()) {
    setting.source = SettingSource::repeated;
    warn(TranscodeWarningCode::repeated, "previously " + inQuotes(setting.earlierValues));
  }
  if (setting.writtenValue != setting.value) {
    warn(TranscodeWarningCode::lowerCased, inQuotes(setting.writtenValue));
  }
  if (setting.preset) {
    setting.presetValue = *valueInPreset(*setting.preset, setting.flag);
    warn(TranscodeWarningCode::overridesPreset,
         inQuotes(*setting.presetValue) + " from " + std::string(preset(*setting.preset)));
  }
  return setting;
}

/// Returns the flag before the rejected one, when it needs a value but got none.
std::optional<std::string> valuelessFlagBefore(const ReadFlag& rejected, const Trace& trace) {
  if (&rejected == trace.flags.data()) return std::nullopt;
  const ReadFlag& before = *(&rejected - 1);
  const FlagDescription* const known = findFlag(before.flag);
  const bool takesValue =
      TranscodeCliArguments::isInputFileFlag(before.flag) || (known != nullptr && known->takesValue());
  if (before.index + 1 != rejected.index || !takesValue) return std::nullopt;
  return before.flag;
}

TranscodeError errorOf(const RejectedEntry& entry) {
  TranscodeError error;
  if (entry.writtenFlag == SAVCliPresetsFlag.rawValue()) {
    error.code = TranscodeErrorCode::listing;
    error.place = entry.writtenFlag;
    if (!entry.value.empty()) error.detail = inQuotes(entry.value) + " is not used";
    return error;
  }
  const bool isPreset = entry.flag == SAVPresetFlag.rawValue();
  error.code = isPreset ? TranscodeErrorCode::unknownPreset : TranscodeErrorCode::unknownFlag;
  error.place = entry.flag;
  if (isPreset) error.detail = inQuotes(entry.value);
  if (entry.writtenFlag != entry.flag) error.detail += " after " + entry.writtenFlag;
  if (!entry.earlierValues.empty()) {
    error.detail += (isPreset ? ", previously " : "previously ") + inQuotes(entry.earlierValues);
  }
  if (entry.suggestion) {
    error.advice = "did you mean " + std::string(*entry.suggestion) + "?";
  } else if (entry.valueless) {
    error.advice = "it cannot be the value of " + *entry.valueless + ", because no value begins with \"-\"";
  }
  return error;
}

RejectedEntry rejectedEntry(std::string_view flag, std::string_view value, const Trace& trace) {
  RejectedEntry entry;
  entry.flag = flag;
  entry.value = value;
  if (flag == SAVPresetFlag.rawValue()) {
    // The store has one entry for every flag that begins with "-preset".
    entry.writtenFlag = trace.unknownPresetFlag;
    entry.earlierValues = trace.unknownPresetNames;
    entry.earlierValues.pop_back();
    entry.suggestion = nearestText(value, presetTexts);
  } else {
    entry.writtenFlag = flag;
    entry.earlierValues = trace.earlierValues(flag);
    entry.suggestion = flagOfPropertyNamed(flag);
    if (!entry.suggestion) entry.suggestion = nearestText(flag, allKnownCommandFlags);
    if (const ReadFlag* const last = trace.last(flag)) entry.valueless = valuelessFlagBefore(*last, trace);
  }
  entry.error = errorOf(entry);
  return entry;
}

/// Returns what the settings mean together.
std::vector<std::string> notesOn(const TranscodeCliArguments& arguments) {
  std::vector<std::string> notes;
  const auto isListing = [](const TextDictionary::Entry& entry) {
    const FlagDescription* const flag = findFlag(entry.key);
    return flag != nullptr && flag->group == FlagGroup::command;
  };
  // A listing transcodes nothing.
  if (std::ranges::all_of(arguments.flagValueLookup(), isListing)) return notes;
  if (!arguments.includeVideo()) notes.emplace_back("video is left out");
  if (!arguments.includeAudio()) {
    notes.emplace_back("audio is left out");
  } else if (arguments.copyAudio()) {
    std::string reason = "no codec is given";
    if (arguments.hasArgumentFlag(SAVCopyAudioFlag.rawValue())) {
      reason = "-acopy asks for it";
    } else if (arguments.argumentFlagValue(SAVAudioFormatFlag.rawValue()) == SAVCopySourceValue) {
      reason = "-acodec asks for it";
    } else if (arguments.hasArgumentFlag(SAVAudioFormatFlag.rawValue())) {
      reason = "its codec cannot be encoded";
    }
    notes.push_back("audio is copied because " + reason);
  }
  std::string sources;
  for (const TimecodeSource source : {TimecodeSource::custom, TimecodeSource::creationDate, TimecodeSource::match}) {
    const auto flag = timecodeFlag(source);
    if (arguments.hasArgumentFlag(flag.rawValue())) sources += (sources.empty() ? "" : ", ") + flag.string();
  }
  if (const auto source = arguments.timecodeSource(); source && sources.find(',') != std::string::npos) {
    notes.push_back("of the timecode sources " + sources + " one counts: " + std::string(rawValue(*source)));
  }
  if (arguments.sourceFileAnalysisRequired()) {
    notes.emplace_back("the source has to be analysed first, to determine its aspect ratio");
  }
  return notes;
}

/// Warns of each timecode source but the one that counts.
void warnOfUnusedTimecodeSources(TranscodeExplanation& explanation) {
  const auto used = explanation.arguments.timecodeSource();
  for (ExplainedSetting& setting : explanation.settings) {
    if (!setting.property || setting.property->kind != PropertyKind::timecodeSource) continue;
    if (setting.flag == timecodeFlag(*used).rawValue()) continue;
    setting.warnings.push_back({{TranscodeWarningCode::unusedTimecodeSource, setting.flag,
                                 "the timecode is " + std::string(rawValue(*used))}});
  }
}

}  // namespace

TranscodeExplanation explain(const ArgumentWords& words, bool maintainOriginalOrdering) {
  ReadArguments read = readArgumentVector(words.words());
  TranscodeExplanation explanation;
  explanation.arguments = TranscodeCliArguments::fromReading(read.flags, maintainOriginalOrdering);
  for (const std::size_t index : read.strayWords) {
    const std::string word(words.words()[index]);
    const std::string detail = word.empty() ? "the word is empty" : "";
    explanation.droppedWords.push_back({index, word, {{TranscodeWarningCode::strayWord, word, detail}}});
  }
  Trace trace(std::move(read.flags));
  explanation.presets = explainedPresets(trace);
  for (const TextDictionary::Entry& entry : explanation.arguments.flagValueLookup()) {
    explanation.settings.push_back(explainedSetting(entry, trace, explanation.presets));
  }
  warnOfUnusedTimecodeSources(explanation);
  explanation.arguments.enumerateUnknownFlags([&](std::string_view flag, std::string_view value) {
    explanation.rejectedEntries.push_back(rejectedEntry(flag, value, trace));
  });
  explanation.notes = notesOn(explanation.arguments);
  return explanation;
}

std::vector<std::string> wordsWithRejected(const TranscodeCliArguments& arguments) {
  std::vector<std::string> words = arguments.commandLine();
  arguments.enumerateUnknownFlags([&words](std::string_view flag, std::string_view value) {
    words.emplace_back(flag);
    if (!value.empty()) words.emplace_back(value);
  });
  return words;
}

std::vector<TranscodeWarning> readingBackWarnings(const TranscodeCliArguments& arguments) {
  std::vector<TranscodeWarning> warnings;
  for (const auto& [flag, value] : arguments.flagValueLookup()) {
    const bool isFlag = trimmed(value).starts_with('-');
    const std::string read = isFlag ? "" : treatmentOf(flag).valueOptions.sanitize(value);
    if (read == value) continue;
    warnings.push_back({{TranscodeWarningCode::readsBackDifferently, flag,
                         inQuotes(value) + " as " + (isFlag ? "a flag" : inQuotes(read))}});
  }
  return warnings;
}

}  // namespace meridian::inline v0_2
