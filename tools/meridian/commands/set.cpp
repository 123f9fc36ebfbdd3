// meridian set: sets properties of an argument vector, and prints the new one.
#include <algorithm>
#include <span>
#include <vector>

#include "meridian/base/printable.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/cli/transcode_properties.h"
#include "tools/meridian/command.h"
#include "tools/meridian/vector_findings.h"
#include "tools/meridian/vector_input.h"

namespace meridian::command {
namespace {

/// Returns two lines for each property: its name and meaning, and below the meaning what it accepts.
std::string propertyLines() {
  std::size_t width = 0;
  for (const TranscodeProperty& each : transcodeProperties) width = std::max(width, each.name.size());
  std::string lines;
  for (const TranscodeProperty& each : transcodeProperties) {
    lines += "\n  " + std::string(each.name) + std::string(width - each.name.size() + 2, ' ') +
             std::string(each.meaning) + "\n" + std::string(width + 4, ' ') + expectedForm(each) +
             (each.unit.empty() ? "" : ", in " + std::string(each.unit));
  }
  return lines;
}

/// Returns the properties for the completion.
std::vector<Option::Name> propertyNames() {
  std::vector<Option::Name> names;
  for (const TranscodeProperty& each : transcodeProperties) {
    names.push_back({each.name, each.meaning, allowedTexts(each)});
    if (each.kind == PropertyKind::onOff) names.back().values = {"true", "false"};
  }
  return names;
}

struct Assignment {
  const TranscodeProperty& property;
  std::string_view input;
};

Assignment assignmentOf(std::string_view text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos) {
    throw UsageError(inQuotes(text) + " is not an assignment; expected PROPERTY=VALUE");
  }
  const std::string_view name = text.substr(0, equals);
  const auto property = transcodePropertyNamed(name);
  if (!property) {
    const std::string& advice = property.error().advice;
    throw UsageError("unknown property " + inQuotes(name) + (advice.empty() ? "" : "; " + advice) +
                     "\n\"meridian set --help\" lists all properties.");
  }
  return {**property, text.substr(equals + 1)};
}

/// Sets the properties. The paths of all assignments to the input files together replace those of the store.
void assignAll(TranscodeCliArguments& store, std::span<const Assignment> assignments) {
  const TranscodeProperty* inputFiles = nullptr;
  std::vector<std::string> paths;
  for (const auto& [property, input] : assignments) {
    if (property.kind != PropertyKind::files) continue;
    inputFiles = &property;
    if (input.empty()) {
      paths.clear();
    } else {
      paths.emplace_back(input);
    }
  }
  if (inputFiles != nullptr) valueOf(setPropertyValue(store, *inputFiles, paths));
  for (const auto& [property, input] : assignments) {
    if (property.kind != PropertyKind::files) valueOf(setPropertyText(store, property, input));
  }
}

Status setInVector(const GivenVector& given, std::span<const Assignment> assignments, const Arguments& arguments) {
  TranscodeExplanation explanation = explain(given.wordViews(), arguments.has("keep-order"));
  TranscodeCliArguments& store = explanation.arguments;
  if (given.store) store = *given.store;
  assignAll(store, assignments);
  warnOfReadingBack(store, given.place());
  reportFindings(explanation, given.place(), Findings::unusedWords);
  printGivenVector(store.commandLine(), given, arguments);
  return done;
}

std::vector<Assignment> readAssignments(const Arguments& arguments) {
  std::vector<Assignment> assignments;
  const auto given = arguments.given.find("assignments");
  if (given == arguments.given.end()) return assignments;
  for (const std::string& text : given->second) assignments.push_back(assignmentOf(text));
  return assignments;
}

Status setProperties(const Arguments& arguments) {
  const std::vector<Assignment> assignments = readAssignments(arguments);
  return forEachVector(arguments, [&](const GivenVector& given) { return setInVector(given, assignments, arguments); });
}

}  // namespace

Subcommand setCommand() {
  return {
      .name = "set",
      .description = "Set properties of an argument vector, and print the new vector",
      .details =
          "Assignments take effect in the order given. Several vectors are printed one on each line: quoted for a "
          "shell,\n"
          "or with --json as JSON lists.\n\n"
          "Properties, what they do and what they accept:" +
          propertyLines(),
      .example = "meridian set videoFormat=h264 videoDimensions=1280x720 videoFrameRate= -- -preset solvane_cloud",
      .takesWords = true,
      .fileOptions = {"from"},
      .options = {{.kind = Option::Kind::positional,
                   .name = "assignments",
                   .help = "PROPERTY=VALUE; an empty VALUE removes the setting; inputFiles may be repeated",
                   .valueName = "ASSIGNMENT",
                   .repeated = true,
                   .names = propertyNames()},
                  {Option::Kind::flag, "keep-order", "Keep the order of the flags; a store keeps its own"},
                  {Option::Kind::flag, "json", "Print a JSON list"},
                  {Option::Kind::flag, "null", "End each element with a NUL instead of a newline"},
                  {Option::Kind::flag, "shell", "Print one line that is quoted for a shell"},
                  fromOption()},
      .exclusive = {"json", "null", "shell"},
      .checkNames = [](const Arguments& arguments) { static_cast<void>(readAssignments(arguments)); },
      .action = setProperties,
  };
}

}  // namespace meridian::command
