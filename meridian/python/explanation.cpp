#include "meridian/cli/transcode_explanation.h"

#include "meridian/python/errors.h"
#include "meridian/python/module.h"
#include "meridian/python/properties.h"
#include "meridian/python/record.h"

namespace meridian::inline v0_2::python {
namespace {

using py::literals::operator""_a;
using WarningList = Typed<"list[TranscodeWarning]">;

WarningList warningsOf(const std::vector<TranscodeWarning>& warnings) {
  py::list result;
  for (const TranscodeWarning& warning : warnings) result.append(errorOf(warning));
  return {std::move(result)};
}

Typed<"Any"> typedValueOf(const ExplainedSetting& setting) {
  if (setting.property == nullptr || !setting.typed) return {py::none()};
  return {conversionOf(setting.property->kind).toPython(*setting.typed)};
}

void addParts(py::module_& module) {
  using Setting = ExplainedSetting;
  Record<Setting>(module, "ExplainedSetting", "A setting of the store, with its source, its meaning and its warnings.")
      .field("flag", &Setting::flag, "The flag that stores it.")
      .field("value", &Setting::value, "The text that is stored.")
      .field("writtenValue", &Setting::writtenValue, "The value as written, trimmed; empty for a preset's value.")
      .field("source", &Setting::source, "Where the value came from.")
      .field("preset", &Setting::preset, "The preset that gave the value, or whose value was overridden; or None.")
      .field("earlierValues", &Setting::earlierValues, "Values that were written earlier and overridden.")
      .field("presetValue", &Setting::presetValue, "The preset's value that was overridden; or None.")
      .fact(
          "property",
          [](const Setting& setting) {
            return setting.property == nullptr ? std::nullopt : std::optional<TranscodeProperty>(*setting.property);
          },
          "The property that the flag stores or is a part of; or None.", /*isField=*/true)
      .fact("typed", &typedValueOf, "The text parsed as the property; None if it is not valid.", /*isField=*/true)
      .field("meaning", &Setting::meaning, "The typed value for people: \"23.976 fps = 24000/1001\"; or empty.")
      .field("readableText", &Setting::readableText, "A valid text that was probably meant; or None.")
      .fact(
          "warnings", [](const Setting& setting) { return warningsOf(setting.warnings); },
          "The warnings about the setting, the most important first.", /*isField=*/true)
      .done();
  Record<ExplainedPreset>(module, "ExplainedPreset", "A preset whose settings were merged into those given.")
      .field("preset", &ExplainedPreset::preset, "The preset.")
      .field("earlierNames", &ExplainedPreset::earlierNames, "Preset names that were written earlier and overridden.")
      .done();
  Record<RejectedEntry>(module, "RejectedEntry", "An entry that the store rejected, and why.")
      .field("flag", &RejectedEntry::flag, "The normalised flag.")
      .field("writtenFlag", &RejectedEntry::writtenFlag, "The flag as written.")
      .field("value", &RejectedEntry::value, "Its value; empty if it has none.")
      .field("earlierValues", &RejectedEntry::earlierValues, "Values that were written earlier and overridden.")
      .field("suggestion", &RejectedEntry::suggestion, "The nearest known flag or preset; None if none is near.")
      .field("valueless", &RejectedEntry::valueless,
             "The preceding flag if it needs a value and got none, probably this word; or None.")
      .fact(
          "error", [](const RejectedEntry& entry) { return Typed<"TranscodeError">(errorOf(entry.error)); },
          "Why it was rejected.", /*isField=*/true)
      .done();
  Record<DroppedWord>(module, "DroppedWord", "A word that belongs to no flag.")
      .field("index", &DroppedWord::index, "Its place in the vector, from 0.")
      .field("word", &DroppedWord::word, "The word.")
      .fact(
          "warning", [](const DroppedWord& word) { return Typed<"TranscodeWarning">(errorOf(word.warning)); },
          "The warning that it was dropped.", /*isField=*/true)
      .done();
}

}  // namespace

void addExplanation(py::module_& module) {
  addParts(module);
  using Explanation = TranscodeExplanation;
  Record<Explanation>(module, "TranscodeExplanation", "What explain() finds in an argument vector.")
      .field("arguments", &Explanation::arguments, "The store that the vector gives.")
      .field("settings", &Explanation::settings, "Its settings, in its order.")
      .field("presets", &Explanation::presets, "The presets whose settings were merged.")
      .field("rejectedEntries", &Explanation::rejectedEntries, "The entries that were rejected.")
      .field("droppedWords", &Explanation::droppedWords, "The words that belong to no flag.")
      .field("notes", &Explanation::notes, "What the settings mean together, one clause each.")
      .done();
  module.def(
      "explain",
      [](const Words& words, bool maintainOriginalOrdering) { return explain(words.values, maintainOriginalOrdering); },
      "words"_a, "maintain_original_ordering"_a = false,
      "Explains an argument vector, without a program path: where each setting came from, what its text means, and "
      "what "
      "became of every other word. Never fails.");
  module.def(
      "reading_back_warnings",
      [](const TranscodeCliArguments& arguments) { return warningsOf(readingBackWarnings(arguments)); }, "arguments"_a,
      "Warns about each value that a reader of arguments.command_line() gets differently.");
}

}  // namespace meridian::inline v0_2::python
