#include "tools/meridian/vector_findings.h"

#include <algorithm>
#include <iostream>

#include "meridian/base/printable.h"

namespace meridian::command {
namespace {

/// A repeated flag loses a value unless it had the same one before, and a text or path in lower case is another one.
/// Other warnings without a remedy only state a fact.
bool concernsUnusedValue(const TranscodeWarning& warning, const ExplainedSetting& setting) {
  if (warning.code == TranscodeWarningCode::lowerCased) {
    using enum PropertyKind;
    const auto kind = setting.property != nullptr ? setting.property->kind : onOff;
    return kind == text || kind == path || kind == file;
  }
  if (warning.code == TranscodeWarningCode::repeated) {
    return std::ranges::any_of(setting.earlierValues,
                               [&setting](const std::string& earlier) { return earlier != setting.value; });
  }
  return !warning.remedy().empty();
}

}  // namespace

bool reportFindings(const TranscodeExplanation& explanation, std::string_view place, Findings findings) {
  bool isAny = false;
  const auto report = [&](const auto& finding) {
    std::cerr << "meridian: " << place << (findings == Findings::all ? "" : "warning: ") << finding.message() << '\n';
    isAny = true;
  };
  if (findings == Findings::all) {
    for (const ExplainedPreset& preset : explanation.presets) {
      if (preset.earlierNames.empty()) continue;
      report(TranscodeWarning{
          {TranscodeWarningCode::repeated, SAVPresetFlag.string(), "previously " + inQuotes(preset.earlierNames)}});
    }
    for (const ExplainedSetting& setting : explanation.settings) {
      for (const TranscodeWarning& warning : setting.warnings) {
        if (concernsUnusedValue(warning, setting)) report(warning);
      }
    }
  }
  if (findings != Findings::strayWords) {
    for (const RejectedEntry& entry : explanation.rejectedEntries) {
      if (!entry.isListing()) report(entry.error);
    }
  }
  for (const DroppedWord& dropped : explanation.droppedWords) report(dropped.warning);
  return isAny;
}

Option strictOption() {
  return {
      Option::Kind::flag, "strict",
      "Exit with status 1 if a flag, a preset or a value is rejected or will not be used, or if a word belongs to no "
      "flag"};
}

void warnOfReadingBack(const TranscodeCliArguments& store, std::string_view place) {
  for (const TranscodeWarning& warning : readingBackWarnings(store)) {
    std::cerr << "meridian: " << place << "warning: " << warning.message() << '\n';
  }
}

}  // namespace meridian::command
