// meridian set: sets properties of an argument vector, and prints the new one.
#include <algorithm>
#include <iostream>
#include <span>
#include <vector>

#include "meridian/base/printable.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/cli/transcode_properties.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

/// Returns a line for each property: its name and what it accepts.
std::string propertyLines() {
  std::size_t width = 0;
  for (const TranscodeProperty& each : transcodeProperties) width = std::max(width, each.name.size());
  std::string lines;
  for (const TranscodeProperty& each : transcodeProperties) {
    lines += "\n  " + std::string(each.name) + std::string(width - each.name.size() + 2, ' ') + expectedForm(each);
  }
  return lines;
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
    throw CommandError("unknown property " + inQuotes(name) +
                       (advice.empty() ? "; known properties:" + propertyLines()
                                       : "; " + advice + "\n\"meridian set --help\" lists all properties."));
  }
  return {**property, text.substr(equals + 1)};
}

void assignAll(TranscodeCliArguments& store, std::span<const std::string> texts) {
  std::vector<Assignment> assignments;
  const TranscodeProperty* inputFiles = nullptr;
  std::vector<std::string> paths;
  for (const std::string& text : texts) {
    const Assignment assignment = assignmentOf(text);
    if (assignment.property.kind != PropertyKind::files) {
      assignments.push_back(assignment);
      continue;
    }
    inputFiles = &assignment.property;
    if (assignment.input.empty()) {
      paths.clear();
    } else {
      paths.emplace_back(assignment.input);
    }
  }
  // All together: they replace the inputs of the words.
  if (inputFiles != nullptr) valueOf(setPropertyValue(store, *inputFiles, paths));
  for (const auto& [property, input] : assignments) valueOf(setPropertyText(store, property, input));
}

Status setProperties(const Arguments& arguments) {
  TranscodeExplanation explanation = explain(arguments.words, arguments.has("keep-order"));
  TranscodeCliArguments& store = explanation.arguments;
  assignAll(store, arguments.given.at("assignments"));
  for (const TranscodeWarning& warning : readingBackWarnings(store)) {
    std::cerr << "meridian: warning: " << warning.message() << '\n';
  }
  reportUnknownFlags(store);
  for (const DroppedWord& dropped : explanation.droppedWords) {
    std::cerr << "meridian: warning: " << dropped.warning.message() << '\n';
  }
  printVector(store.commandLine(), arguments);
  return done;
}

}  // namespace

Subcommand setCommand() {
  return {
      .name = "set",
      .description = "Set properties of an argument vector, and print the new vector",
      .details = "Properties and the values that they accept:" + propertyLines(),
      .example = "meridian set videoFormat=h264 videoDimensions=1280x720 videoFrameRate= -- -preset solvane_cloud",
      .takesWords = true,
      .options = {{.kind = Option::Kind::positional,
                   .name = "assignments",
                   .help = "PROPERTY=VALUE; an empty VALUE removes the setting; inputFiles may be repeated",
                   .valueName = "ASSIGNMENT",
                   .repeated = true},
                  {Option::Kind::flag, "keep-order", "Keep the order of the flags"},
                  {Option::Kind::flag, "json", "Print a JSON list"},
                  {Option::Kind::flag, "null", "End each element with a NUL instead of a newline"}},
      .exclusive = {"json", "null"},
      .action = setProperties,
  };
}

}  // namespace meridian::command
