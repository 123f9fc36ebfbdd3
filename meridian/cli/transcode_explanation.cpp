#include "meridian/cli/transcode_explanation.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/base/text.h"
#include "meridian/cli/argument_reading.h"
#include "meridian/cli/nearest_text.h"
#include "meridian/cli/transcode_detail_values.h"
#include "meridian/media/video_frame_rate.h"

namespace meridian::inline v0_2 {
namespace {

constexpr auto presetTexts = [] {
  std::array<std::string_view, allCases<TranscodeCliPreset>().size()> texts{};
  std::ranges::transform(allCases<TranscodeCliPreset>(), texts.begin(), preset);
  return texts;
}();

/// What the reading of a vector saw, word by word.
struct Trace {
  /// Every flag as it stood, in order.
  std::vector<ReadFlag> flags;
  /// The places in `flags` of each flag's occurrences.
  std::unordered_map<std::string_view, std::vector<std::size_t>> occurrences;
  /// The values of the flags that name no preset but should, in the order in which the store meets the flags. It keeps
  /// the last.
  std::vector<std::string> unknownPresetNames;
  /// The last flag that brought one.
  std::string unknownPresetFlag;

  /// The values that the flag had before its last occurrence.
  [[nodiscard]] std::vector<std::string> earlierValues(std::string_view flag) const {
    std::vector<std::string> values;
    if (const auto places = occurrences.find(flag); places != occurrences.end()) {
      for (const std::size_t place : places->second) values.push_back(flags[place].value);
      values.pop_back();
    }
    return values;
  }
};

/// A number as people write it: "1920", "23.976".
std::string plainNumber(double number) {
  std::string text = shortestDecimalText(number);
  if (text.ends_with(".0")) text.resize(text.size() - 2);
  return text;
}

/// "23.976 fps = 24000/1001": the rate, and the standard rate that it is.
std::string rateMeaning(std::string_view text) {
  const auto number = doubleFromText(text);
  const auto rational = number ? MediaRational::fromRawValue(*number) : std::nullopt;
  const auto rate = rational ? VideoFrameRate::matching(*rational) : std::nullopt;
  if (!number || !(*number > 0)) return "no frame rate: it has to be above 0";
  if (!rate) return "too large for a frame rate";
  const std::string meaning = plainNumber(*number) + " fps";
  if (rate->kind() == VideoFrameRateKind::custom) return meaning + ", no standard rate";
  const auto [numerator, denominator] = rate->rawValue();
  return meaning + (denominator == 1 ? "" : " = " + std::to_string(numerator) + "/" + std::to_string(denominator));
}

const std::string* valueInPreset(TranscodeCliPreset preset, std::string_view flag) {
  return presetArguments(preset).find(flag);
}

std::optional<SettingRemark> remarkOn(const ExplainedSetting& setting, std::optional<std::string_view> contained) {
  if (const FlagDescription* const flag = findFlag(setting.flag)) {
    if (flag->text == SAVInputPrefixFlag.rawValue()) return SettingRemark::inputWithoutNumbers;
    if (flag->text == SAVAudioIgnoreTracksPrefixFlag.rawValue()) return SettingRemark::omissionWithoutNumber;
    if (flag->takesValue() && setting.value.empty()) return SettingRemark::lacksValue;
    if (!flag->takesValue() && !setting.value.empty()) return SettingRemark::holdsValueButTakesNone;
    return std::nullopt;
  }
  if (setting.flag.starts_with(SAVInputPrefixFlag.rawValue())) {
    if (!TranscodeCliArguments::isInputFileFlag(setting.flag)) return SettingRemark::inputWithoutNumbers;
    return setting.value.empty() ? std::optional(SettingRemark::lacksValue) : std::nullopt;
  }
  if (setting.flag.starts_with(SAVAudioIgnoreTracksPrefixFlag.rawValue())) {
    if (!TranscodeCliArguments::isIgnoredTrackFlag(setting.flag)) return SettingRemark::omissionWithoutNumber;
    return setting.value.empty() ? std::nullopt : std::optional(SettingRemark::holdsValueButTakesNone);
  }
  return contained ? std::optional(SettingRemark::acceptedByContainment) : std::nullopt;
}

/// Several flags that begin with "-preset" may name the same preset; it is told once.
void notePreset(std::vector<ExplainedPreset>& presets, TranscodeCliPreset preset,
                std::vector<std::string> earlierNames) {
  auto found = std::ranges::find(presets, preset, &ExplainedPreset::preset);
  if (found == presets.end()) found = presets.insert(found, {preset, {}});
  std::ranges::move(earlierNames, std::back_inserter(found->earlierNames));
}

/// The typed value for people; empty where it would say no more than the text does.
std::string meaningOf(const TranscodeProperty& property, const PropertyValue& value, std::string_view text) {
  if (const auto* const size = std::get_if<Size>(&value)) {
    return plainNumber(size->width) + " x " + plainNumber(size->height);
  }
  if (std::holds_alternative<float>(value)) {
    if (property.name != "videoFrameRate" && property.name != "timecodeFrameRate") return "";
    return rateMeaning(text);
  }
  if (const auto* const color = std::get_if<RgbColor>(&value)) {
    return "red " + std::to_string(color->red) + ", green " + std::to_string(color->green) + ", blue " +
           std::to_string(color->blue);
  }
  if (property.kind == PropertyKind::cropAnchor || property.kind == PropertyKind::overlayAnchor) {
    if (const auto anchor = fromRawValue<VideoCropAnchor>(std::get<std::string>(value))) {
      return lowercased(description(*anchor));
    }
  }
  return "";
}

/// A text near this one that reads as the property: without its blanks, with its "x" or its decimal point put right,
/// with all its digits, or the nearest of the texts that it takes.
std::optional<std::string> readableTextFor(const TranscodeProperty& property, std::string_view text) {
  const auto reads = [&property](std::string_view candidate) {
    return !candidate.empty() && valueOfText(property, candidate).has_value();
  };
  std::string compact(text);
  // Between the digits of one number a blank may stand for anything.
  if (property.kind != PropertyKind::number && property.kind != PropertyKind::integer) {
    std::erase_if(compact, [](char c) { return c == ' ' || c == '\t'; });
  }
  // A decimal comma, but not a comma that parts thousands.
  std::string withPoint;
  if (const std::size_t comma = compact.find(',');
      property.kind == PropertyKind::number && comma != std::string::npos && compact.size() - comma != 4) {
    withPoint = compact;
    withPoint[comma] = '.';
  }
  std::string withX = compact;
  std::ranges::replace(withX, '*', 'x');
  if (const std::size_t cross = withX.find("\u00D7"); cross != std::string::npos) withX.replace(cross, 2, "x");
  for (const std::string& candidate : {compact, withX, withPoint}) {
    if (reads(candidate)) return candidate;
  }
  if (property.kind == PropertyKind::timecode) {
    const DecomposedTimecode read = TimecodeComponents::decomposeTimecodeString(compact);
    std::string whole = TimecodeComponents::sanitizedTimecode(compact).timecodeString();
    if (read.hours && read.minutes && read.seconds && read.frames && reads(whole)) return whole;
    return std::nullopt;
  }
  const std::vector<std::string_view> allowed = allowedTexts(property);
  // What differs in case alone was lower-cased in reading, and would be again.
  if (std::ranges::any_of(allowed, [&](std::string_view each) { return equalsIgnoringCase(each, compact); })) {
    return std::nullopt;
  }
  if (const auto nearest = nearestText(compact, allowed)) return std::string(*nearest);
  return std::nullopt;
}

/// Settings that make up a property together with others.
void explainPart(ExplainedSetting& setting) {
  if (setting.flag == SAVCopyAudioFlag.rawValue()) {
    setting.propertyName = "copyAudio";
    setting.typed = true;
  } else if (setting.flag == SAVTimecodeMatchSourceFlag.rawValue()) {
    setting.propertyName = "timecodeSource";
    setting.typed = std::string(rawValue(TimecodeSource::match));
  } else if (setting.flag == SAVTimecodeFromCreationDateFlag.rawValue()) {
    setting.propertyName = "timecodeSource";
    setting.typed = std::string(rawValue(TimecodeSource::creationDate));
  } else if (TranscodeCliArguments::isIgnoredTrackFlag(setting.flag)) {
    setting.propertyName = "ignoredAudioFileTracks";
    setting.typed = integerFromText(setting.flag.substr(setting.flag.rfind('_') + 1));
  } else if (TranscodeCliArguments::isInputFileFlag(setting.flag)) {
    setting.propertyName = "inputFiles";
    setting.typed = setting.value;
  }
}

void explainType(ExplainedSetting& setting) {
  for (const TranscodeProperty& property : transcodeProperties) {
    if (property.flag != setting.flag) continue;
    const auto typed = valueOfText(property, setting.value);
    // Of two properties under one flag the first that reads counts, else the first.
    if (setting.property != nullptr && !typed) continue;
    setting.property = &property;
    setting.typed = typed;
    if (typed) break;
  }
  if (setting.property == nullptr) {
    explainPart(setting);
    return;
  }
  setting.propertyName = setting.property->name;
  if (setting.typed) {
    setting.meaning = meaningOf(*setting.property, *setting.typed, setting.value);
  } else if (!setting.value.empty()) {
    setting.readableText = readableTextFor(*setting.property, setting.value);
  }
}

/// What the settings mean together.
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
    } else if (arguments.hasArgumentFlag(SAVAudioFormatFlag.rawValue())) {
      reason = "its codec is none that can be encoded";
    }
    notes.push_back("audio is copied because " + reason);
  }
  std::string sources;
  for (const auto& flag : {SAVTimecodeCustomFlag, SAVTimecodeFromCreationDateFlag, SAVTimecodeMatchSourceFlag}) {
    if (arguments.hasArgumentFlag(flag.rawValue())) sources += (sources.empty() ? "" : ", ") + flag.string();
  }
  if (const auto source = arguments.timecodeSource(); source && sources.find(',') != std::string::npos) {
    notes.push_back("of the timecode sources " + sources + " one counts: " + std::string(rawValue(*source)));
  }
  if (arguments.sourceFileAnalysisRequired()) {
    notes.emplace_back("the source has to be analysed first, for the shape of its image");
  }
  return notes;
}

ExplainedSetting explainedSetting(const TextDictionary::Entry& entry, const Trace& trace,
                                  std::span<const ExplainedPreset> presets) {
  ExplainedSetting setting;
  setting.flag = entry.key;
  setting.value = entry.value;

  // Of several presets the first that has the flag counts, as in the store.
  const auto holder = std::ranges::find_if(
      presets, [&](const ExplainedPreset& each) { return valueInPreset(each.preset, entry.key) != nullptr; });
  if (holder != presets.end()) setting.preset = holder->preset;

  const auto places = trace.occurrences.find(entry.key);
  if (places == trace.occurrences.end()) {
    setting.source = SettingSource::preset;
  } else {
    setting.source = places->second.size() > 1 ? SettingSource::repeated : SettingSource::given;
    setting.earlierValues = trace.earlierValues(entry.key);
    setting.writtenValue = trimmed(trace.flags[places->second.back()].writtenValue);
    if (setting.preset) setting.presetValue = *valueInPreset(*setting.preset, entry.key);
  }

  explainType(setting);
  const auto contained = containedKnownFlag(entry.key);
  setting.remark = remarkOn(setting, contained);
  if (setting.remark == SettingRemark::acceptedByContainment) setting.containedFlag = contained;
  return setting;
}

ExplainedRejection explainedRejection(std::string_view flag, std::string_view value, const Trace& trace) {
  ExplainedRejection rejection;
  rejection.flag = flag;
  rejection.value = value;
  rejection.writtenFlag = flag;
  if (flag == SAVPresetFlag.rawValue()) {
    // Stands for every flag that begins with "-preset".
    rejection.earlierValues = trace.unknownPresetNames;
    rejection.earlierValues.pop_back();
    rejection.suggestion = nearestText(value, presetTexts);
    rejection.writtenFlag = trace.unknownPresetFlag;
    return rejection;
  }
  rejection.earlierValues = trace.earlierValues(flag);
  rejection.suggestion = nearestText(flag, allKnownCommandFlags);
  if (const auto places = trace.occurrences.find(flag); places != trace.occurrences.end()) {
    const std::size_t place = places->second.back();
    if (place > 0) {
      const ReadFlag& before = trace.flags[place - 1];
      const FlagDescription* const known = findFlag(before.flag);
      const bool adjacent = before.index + 1 == trace.flags[place].index;
      if (adjacent && known != nullptr && known->takesValue()) rejection.valueless = before.flag;
    }
  }
  return rejection;
}

}  // namespace

TranscodeExplanation explain(std::span<const std::string_view> words, bool maintainOriginalOrdering) {
  TranscodeExplanation explanation;
  explanation.arguments = TranscodeCliArguments(words, maintainOriginalOrdering);

  Trace trace;
  readArgumentVector(
      words, [&trace](ReadFlag&& read) { trace.flags.push_back(std::move(read)); },
      [&](std::size_t index) { explanation.droppedWords.push_back({index, std::string(words[index])}); });
  for (std::size_t place = 0; place < trace.flags.size(); ++place) {
    trace.occurrences[trace.flags[place].flag].push_back(place);
  }
  for (std::size_t place = 0; place < trace.flags.size(); ++place) {
    const ReadFlag& read = trace.flags[place];
    const std::vector<std::size_t>& places = trace.occurrences[read.flag];
    if (places.front() != place || read.kind != FlagKind::preset) continue;
    if (const auto preset = fromRawValue<TranscodeCliPreset>(trace.flags[places.back()].value)) {
      notePreset(explanation.presets, *preset, trace.earlierValues(read.flag));
    } else {
      trace.unknownPresetFlag = read.flag;
      for (const std::size_t each : places) trace.unknownPresetNames.push_back(trace.flags[each].value);
    }
  }

  for (const TextDictionary::Entry& entry : explanation.arguments.flagValueLookup()) {
    explanation.settings.push_back(explainedSetting(entry, trace, explanation.presets));
  }
  explanation.arguments.enumerateUnknownFlags([&](std::string_view flag, std::string_view value) {
    explanation.rejections.push_back(explainedRejection(flag, value, trace));
  });
  explanation.notes = notesOn(explanation.arguments);
  return explanation;
}

}  // namespace meridian::inline v0_2
