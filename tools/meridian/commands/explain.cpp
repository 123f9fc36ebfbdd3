// meridian explain: what became of every word of an argument vector.
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/serialization/media_json.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

std::string joined(const std::vector<std::string>& texts) {
  std::string result;
  for (const std::string& text : texts) result += (result.empty() ? "" : ", ") + inQuotes(text);
  return result;
}

std::string textOf(const ExplainedSetting& setting) {
  std::string text(description(*setting.remark));
  if (setting.containedFlag) text += ": " + std::string(*setting.containedFlag);
  return text;
}

std::string sourceOf(const ExplainedSetting& setting) {
  std::string text(rawValue(setting.source));
  if (setting.source == SettingSource::preset) text += " " + std::string(preset(*setting.preset));
  return text;
}

/// Says that a text does not read as its property, and what would.
std::optional<std::string> typeWarning(const ExplainedSetting& setting) {
  if (setting.property == nullptr || setting.typed || setting.value.empty()) return std::nullopt;
  for (const std::string_view allowed : allowedTexts(*setting.property)) {
    if (!equalsIgnoringCase(allowed, setting.value)) continue;
    return std::string(allowed) + " cannot be said on a command line, which is lower-cased in reading";
  }
  return inQuotes(setting.value) + " does not read as " + std::string(description(setting.property->kind)) +
         "; write " + setting.readableText.value_or(expectedFormOfFlag(setting.flag));
}

std::vector<std::string> notesOn(const ExplainedSetting& setting) {
  std::vector<std::string> notes;
  if (const auto warning = typeWarning(setting)) notes.push_back(*warning);
  if (setting.remark) notes.push_back(textOf(setting));
  if (setting.source == SettingSource::repeated) {
    notes.push_back("the last one stays; before: " + joined(setting.earlierValues));
  }
  if (setting.source != SettingSource::preset && setting.writtenValue != setting.value) {
    notes.push_back("lower-cased from " + inQuotes(setting.writtenValue));
  }
  if (setting.presetValue) {
    notes.push_back("stands over " + std::string(preset(*setting.preset)) + "'s " + inQuotes(*setting.presetValue));
  }
  return notes;
}

std::string noteOn(const ExplainedRejection& rejection) {
  const bool isPreset = rejection.flag == SAVPresetFlag.rawValue();
  std::string note;
  if (rejection.suggestion) {
    note = "did you mean " + std::string(*rejection.suggestion) + "?";
  } else if (rejection.valueless) {
    note = "if it was meant as the value of " + *rejection.valueless + ": no value can begin with \"-\"";
  } else {
    note = isPreset ? "no such preset" : "no such flag";
  }
  if (rejection.writtenFlag != rejection.flag) {
    note += "; written as " + rejection.writtenFlag + ", which begins with " + rejection.flag;
  }
  if (!rejection.earlierValues.empty()) note += "; before: " + joined(rejection.earlierValues);
  return note;
}

std::string shownValue(std::string_view flag, std::string_view value) {
  if (!value.empty()) return std::string(value);
  const FlagDescription* const known = findFlag(flag);
  return known != nullptr && !known->takesValue() ? "(on)" : "(no value)";
}

std::string counted(std::size_t count, std::string_view what) {
  return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

void printHeading(std::string_view text) { std::cout << '\n' << styled(Style::heading, text) << '\n'; }

void printSettings(const TranscodeExplanation& explanation) {
  printHeading("Settings");
  std::vector<std::vector<Cell>> rows{
      {{"FLAG", Style::faint}, {"VALUE", Style::faint}, {"FROM", Style::faint}, {"NOTE", Style::faint}}};
  for (const ExplainedSetting& setting : explanation.settings) {
    std::string notes = setting.meaning;
    for (const std::string& note : notesOn(setting)) notes += (notes.empty() ? "" : "; ") + note;
    const Style valueStyle = setting.value.empty() ? Style::faint : Style::plain;
    const Style noteStyle = setting.remark || typeWarning(setting) ? Style::warning : Style::faint;
    rows.push_back({{setting.flag, Style::name},
                    {shownValue(setting.flag, setting.value), valueStyle},
                    {sourceOf(setting), setting.source == SettingSource::preset ? Style::good : Style::plain},
                    {notes, noteStyle}});
  }
  printTable(rows);
}

void printRejections(const TranscodeExplanation& explanation) {
  printHeading("Rejected");
  std::vector<std::vector<Cell>> rows;
  for (const ExplainedRejection& rejection : explanation.rejections) {
    rows.push_back({{rejection.flag, Style::bad},
                    {rejection.value.empty() ? "(no value)" : rejection.value,
                     rejection.value.empty() ? Style::faint : Style::plain},
                    {noteOn(rejection), Style::warning}});
  }
  printTable(rows);
}

void printDropped(const TranscodeExplanation& explanation) {
  printHeading("Dropped");
  std::vector<std::vector<Cell>> rows;
  for (const DroppedWord& dropped : explanation.droppedWords) {
    rows.push_back({{"word " + std::to_string(dropped.index + 1), Style::bad},
                    {inQuotes(dropped.word)},
                    {"belongs to no flag", Style::faint}});
  }
  printTable(rows);
}

Json orNull(const auto& optionalText) { return optionalText ? Json(*optionalText) : Json(); }

Json typedAsJson(const std::optional<PropertyValue>& typed) {
  if (!typed) return nullptr;
  return std::visit(
      [](const auto& value) -> Json {
        using Value = std::remove_cvref_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, Size>) {
          return {{"width", value.width}, {"height", value.height}};
        } else if constexpr (std::is_same_v<Value, RgbColor>) {
          return {{"red", value.red}, {"green", value.green}, {"blue", value.blue}};
        } else if constexpr (std::is_same_v<Value, float>) {
          // As the number that was written, not as the float's exact value; "inf" and "nan" are no JSON numbers.
          const std::string text = shortestDecimalText(value);
          const Json number = Json::parse(text, nullptr, false);
          return number.is_discarded() ? Json(text) : number;
        } else {
          return value;
        }
      },
      *typed);
}

Json asJson(const TranscodeExplanation& explanation) {
  Json settings = Json::array();
  for (const ExplainedSetting& setting : explanation.settings) {
    settings.push_back({{"flag", setting.flag},
                        {"value", setting.value},
                        {"source", rawValue(setting.source)},
                        {"property", setting.propertyName.empty() ? Json() : Json(setting.propertyName)},
                        {"typed", typedAsJson(setting.typed)},
                        {"meaning", setting.meaning.empty() ? Json() : Json(setting.meaning)},
                        {"readableText", orNull(setting.readableText)},
                        {"preset", setting.preset ? Json(preset(*setting.preset)) : Json()},
                        {"earlierValues", setting.earlierValues},
                        {"presetValue", orNull(setting.presetValue)},
                        {"remark", setting.remark ? Json(rawValue(*setting.remark)) : Json()},
                        {"notes", notesOn(setting)}});
  }
  Json presets = Json::array();
  for (const ExplainedPreset& each : explanation.presets) {
    presets.push_back({{"name", preset(each.preset)}, {"earlierNames", each.earlierNames}});
  }
  Json rejected = Json::array();
  for (const ExplainedRejection& rejection : explanation.rejections) {
    rejected.push_back({{"flag", rejection.flag},
                        {"value", rejection.value},
                        {"earlierValues", rejection.earlierValues},
                        {"suggestion", orNull(rejection.suggestion)},
                        {"note", noteOn(rejection)}});
  }
  Json dropped = Json::array();
  for (const DroppedWord& word : explanation.droppedWords) {
    dropped.push_back({{"index", word.index}, {"word", word.word}});
  }
  return {{"settings", settings},
          {"presets", presets},
          {"rejected", rejected},
          {"dropped", dropped},
          {"notes", explanation.notes}};
}

}  // namespace

void printExplanation(std::span<const std::string_view> words) {
  const TranscodeExplanation explanation = explain(words);
  std::string summary = counted(words.size(), "word") + ": " + counted(explanation.settings.size(), "setting");
  for (const ExplainedPreset& each : explanation.presets) {
    summary += ", with preset " + std::string(preset(each.preset));
    if (!each.earlierNames.empty()) summary += " (before: " + printable(joined(each.earlierNames)) + ")";
  }
  if (!explanation.rejections.empty()) {
    summary += ", " + styled(Style::bad, std::to_string(explanation.rejections.size()) + " rejected");
  }
  if (!explanation.droppedWords.empty()) {
    summary += ", " + styled(Style::bad, std::to_string(explanation.droppedWords.size()) + " dropped");
  }
  std::cout << summary << '\n';
  if (!explanation.settings.empty()) printSettings(explanation);
  if (!explanation.notes.empty()) {
    printHeading("Altogether");
    for (const std::string& note : explanation.notes) std::cout << "  " << note << '\n';
  }
  if (!explanation.rejections.empty()) printRejections(explanation);
  if (!explanation.droppedWords.empty()) printDropped(explanation);
}

Subcommand explainCommand() {
  return {
      .name = "explain",
      .description = "Explain an argument vector: every setting, where it came from, and what was lost",
      .example = "meridian explain -- -preset solvane_cloud -dims 1920x1080 -vcoedc h264 -overwrite a.mov",
      .takesWords = true,
      .options = {{Option::Kind::flag, "json", "Print JSON: settings, presets, rejected, dropped, notes"}},
      .action =
          [](const Arguments& arguments) {
            if (arguments.has("json")) {
              warnOfInvalidText(arguments.words);
              printJson(asJson(explain(arguments.words)));
            } else {
              printExplanation(arguments.words);
            }
            return done;
          },
  };
}

}  // namespace meridian::command
