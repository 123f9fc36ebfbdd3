// meridian explain: what became of every word of an argument vector.
#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/serialization/media_json.h"
#include "tools/meridian/command.h"
#include "tools/meridian/engine_module.h"
#include "tools/meridian/output.h"
#include "tools/meridian/vector_findings.h"
#include "tools/meridian/vector_input.h"

namespace meridian::command {
namespace {

std::string sourceOf(const ExplainedSetting& setting) {
  std::string text(rawValue(setting.source));
  if (setting.source == SettingSource::preset) text += " " + std::string(preset(*setting.preset));
  return text;
}

std::string noteOn(const ExplainedSetting& setting) {
  std::string note = setting.meaning;
  for (const TranscodeWarning& warning : setting.warnings) note += (note.empty() ? "" : "; ") + warning.sentence();
  return note;
}

/// Whether a warning asks for a change, rather than state a fact.
bool hasRemedy(const TranscodeWarning& warning) { return !warning.remedy().empty(); }

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
    const Style valueStyle = setting.value.empty() ? Style::faint : Style::plain;
    const Style noteStyle = std::ranges::any_of(setting.warnings, hasRemedy) ? Style::warning : Style::faint;
    rows.push_back({{setting.flag, Style::name},
                    {shownValue(setting.flag, setting.value), valueStyle},
                    {sourceOf(setting), setting.source == SettingSource::preset ? Style::good : Style::plain},
                    {noteOn(setting), noteStyle}});
  }
  for (const RejectedEntry& entry : explanation.rejectedEntries) {
    if (!entry.isListing()) continue;
    rows.push_back(
        {{entry.writtenFlag, Style::name}, {"(on)", Style::faint}, {"given"}, {entry.error.sentence(), Style::faint}});
  }
  printTable(rows);
}

void printRejectedEntries(const TranscodeExplanation& explanation) {
  printHeading("Rejected");
  std::vector<std::vector<Cell>> rows;
  for (const RejectedEntry& entry : explanation.rejectedEntries) {
    if (entry.isListing()) continue;
    rows.push_back(
        {{entry.flag, Style::bad},
         {entry.value.empty() ? "(no value)" : entry.value, entry.value.empty() ? Style::faint : Style::plain},
         {entry.error.sentence(), Style::warning}});
  }
  printTable(rows);
}

void printDropped(const TranscodeExplanation& explanation) {
  printHeading("Dropped");
  std::vector<std::vector<Cell>> rows;
  for (const DroppedWord& dropped : explanation.droppedWords) {
    rows.push_back({{"word " + std::to_string(dropped.index + 1), Style::bad},
                    {inQuotes(dropped.word)},
                    {dropped.warning.sentence(), Style::faint}});
  }
  printTable(rows);
}

/// What the engine says about a vector.
struct PlanFindings {
  std::vector<TranscodePlanError> errors;
  std::vector<TranscodePlanWarning> warnings;
};

/// Plans the vector if that is asked for; absent too for one that asks for a listing, which transcodes nothing.
std::optional<PlanFindings> planFindings(const TranscodeExplanation& explanation, const Arguments& arguments) {
  if (!arguments.has("plan")) return std::nullopt;
  const EngineModule& engine = engineModule();
  if (engine.listing(explanation)) return std::nullopt;
  PlannedTranscode planned = engine.plan(explanation);
  if (!planned) return PlanFindings{std::move(planned.error()), {}};
  return PlanFindings{{}, std::move(planned->warnings)};
}

/// Whether the explanation says the same.
bool isFoundInWords(TranscodePlanErrorCode code) {
  using enum TranscodePlanErrorCode;
  return code == unknownFlag || code == unreadableValue || code == lacksValue || code == unnumberedFlag;
}

void printPlanFindings(const PlanFindings& findings) {
  printHeading("Plan");
  std::vector<std::vector<Cell>> rows;
  for (const TranscodePlanError& error : findings.errors) {
    rows.push_back({{error.place, Style::bad}, {error.sentence(), Style::warning}});
  }
  for (const TranscodePlanWarning& warning : findings.warnings) {
    rows.push_back({{warning.place, Style::name}, {warning.sentence(), Style::faint}});
  }
  if (rows.empty()) rows.push_back({{"can be carried out", Style::good}});
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
          // The number as written, not the exact value of the float. "inf" and "nan" are not JSON numbers.
          const std::string text = shortestDecimalText(value);
          const Json number = Json::parse(text, nullptr, false);
          return number.is_discarded() ? Json(text) : number;
        } else {
          return value;
        }
      },
      *typed);
}

Json asJson(const auto& errorOrWarning) {
  return {{"code", rawValue(errorOrWarning.code)}, {"message", errorOrWarning.message()}};
}

Json asJson(const TranscodeExplanation& explanation) {
  Json settings = Json::array();
  for (const ExplainedSetting& setting : explanation.settings) {
    Json warnings = Json::array();
    for (const TranscodeWarning& warning : setting.warnings) warnings.push_back(asJson(warning));
    settings.push_back({{"flag", setting.flag},
                        {"value", setting.value},
                        {"source", rawValue(setting.source)},
                        {"property", setting.property == nullptr ? Json() : Json(setting.property->name)},
                        {"typed", typedAsJson(setting.typed)},
                        {"meaning", setting.meaning.empty() ? Json() : Json(setting.meaning)},
                        {"readableText", orNull(setting.readableText)},
                        {"preset", setting.preset ? Json(preset(*setting.preset)) : Json()},
                        {"earlierValues", setting.earlierValues},
                        {"presetValue", orNull(setting.presetValue)},
                        {"warnings", warnings}});
  }
  Json presets = Json::array();
  for (const ExplainedPreset& each : explanation.presets) {
    presets.push_back({{"name", preset(each.preset)}, {"earlierNames", each.earlierNames}});
  }
  Json rejected = Json::array();
  for (const RejectedEntry& entry : explanation.rejectedEntries) {
    rejected.push_back({{"flag", entry.flag},
                        {"value", entry.value},
                        {"earlierValues", entry.earlierValues},
                        {"suggestion", orNull(entry.suggestion)},
                        {"error", asJson(entry.error)}});
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

Json asJson(const std::optional<PlanFindings>& findings) {
  if (!findings) return nullptr;
  Json errors = Json::array();
  Json warnings = Json::array();
  for (const TranscodePlanError& error : findings->errors) errors.push_back(asJson(error));
  for (const TranscodePlanWarning& warning : findings->warnings) warnings.push_back(asJson(warning));
  return {{"errors", errors}, {"warnings", warnings}};
}

/// Prints an explanation, with the number of its line if there are several.
Status explainVector(const GivenVector& given, const Arguments& arguments) {
  const std::vector<std::string_view> words = given.wordViews();
  const TranscodeExplanation explanation = explain(words);
  const std::optional<PlanFindings> plan = planFindings(explanation, arguments);
  if (arguments.has("json")) {
    warnOfInvalidText(words);
    Json document = given.isFromFile() ? Json{{"line", given.line}} : Json::object();
    document.update(asJson(explanation));
    if (arguments.has("plan")) document["plan"] = asJson(plan);
    printJson(document, given.isFromFile() ? JsonForm::oneLine : JsonForm::indented);
  } else {
    if (given.inBatch) std::cout << styled(Style::heading, "Line " + std::to_string(given.line)) << '\n';
    printExplanation(explanation, words.size());
    if (plan) printPlanFindings(*plan);
    if (given.inBatch) std::cout << '\n';
  }
  if (!arguments.has("strict")) return done;
  bool isAny = reportFindings(explanation, given.place(), Findings::all);
  if (plan) {
    for (const TranscodePlanError& error : plan->errors) {
      if (isFoundInWords(error.code)) continue;
      std::cerr << "meridian: " << given.place() << error.message() << '\n';
      isAny = true;
    }
  }
  return isAny ? failed : done;
}

}  // namespace

void printExplanation(const TranscodeExplanation& explanation, std::size_t wordCount) {
  std::string summary = counted(wordCount, "word") + ": " + counted(explanation.settings.size(), "setting");
  for (const ExplainedPreset& each : explanation.presets) {
    summary += ", with preset " + std::string(preset(each.preset));
    if (!each.earlierNames.empty()) summary += " (previously " + inQuotes(each.earlierNames) + ")";
  }
  const std::ptrdiff_t listings = std::ranges::count_if(explanation.rejectedEntries, &RejectedEntry::isListing);
  const std::ptrdiff_t rejected = std::ssize(explanation.rejectedEntries) - listings;
  if (rejected > 0) summary += ", " + styled(Style::bad, std::to_string(rejected) + " rejected");
  if (!explanation.droppedWords.empty()) {
    summary += ", " + styled(Style::bad, std::to_string(explanation.droppedWords.size()) + " dropped");
  }
  std::cout << summary << '\n';
  if (!explanation.settings.empty() || listings > 0) printSettings(explanation);
  if (!explanation.notes.empty()) {
    printHeading("Altogether");
    for (const std::string& note : explanation.notes) std::cout << "  " << note << '\n';
  }
  if (rejected > 0) printRejectedEntries(explanation);
  if (!explanation.droppedWords.empty()) printDropped(explanation);
}

Subcommand explainCommand() {
  return {
      .name = "explain",
      .description = "Explain an argument vector: every setting, where it came from, and what was rejected or dropped",
      .details =
          "With --strict, what was found is also reported on standard error, a line each.\n"
          "With --plan, the files are looked at as by \"meridian transcode --plan\", and what the transcode fails for "
          "or\n"
          "warns of is printed as well; JSON has it as errors and warnings of \"plan\".\n"
          "With --from, --json prints one document on each line, which begins with the number of the line.",
      .example =
          "meridian explain -- -preset solvane_cloud -dims 1920x1080 -vcoedc h264 -overwrite a.mov\n"
          "meridian explain --strict --from jobs.txt",
      .takesWords = true,
      .fileOptions = {"from"},
      .options = {{Option::Kind::flag, "json", "Print JSON: settings, presets, rejected, dropped, notes"},
                  {Option::Kind::flag, "plan", "Also plan the transcode, and print its errors or warnings"},
                  strictOption(),
                  fromOption()},
      .action =
          [](const Arguments& arguments) {
            return forEachVector(arguments,
                                 [&arguments](const GivenVector& given) { return explainVector(given, arguments); });
          },
  };
}

}  // namespace meridian::command
