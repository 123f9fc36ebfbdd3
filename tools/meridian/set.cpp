// meridian set: edits an argument vector through the typed properties, and prints the new one.
#include <algorithm>
#include <iostream>
#include <span>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_properties.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

/// A property that stands under several flags or under numbered ones; its setter says whether the input reads.
struct JointProperty {
  std::string_view name;
  std::string_view expectedForm;
  bool (*set)(TranscodeCliArguments& store, std::string_view input);
};

constexpr TranscodeProperty onOff{"", "", PropertyKind::onOff};

template <void (TranscodeCliArguments::*setter)(bool)>
bool setSwitch(TranscodeCliArguments& store, std::string_view input) {
  const auto read = readInput(onOff, input);
  if (!read || input.empty()) return false;
  (store.*setter)(read->text.has_value());
  return true;
}

void setIncludeVideo(TranscodeCliArguments& store, bool include) { store.setOmitVideo(!include); }

constexpr auto jointProperties = std::to_array<JointProperty>({
    {"inputFiles", "a path; repeated for several files",
     [](TranscodeCliArguments& store, std::string_view input) {
       auto files = store.inputFiles().value_or(std::vector<std::string>());
       files.emplace_back(input);
       store.setInputFiles(input.empty() ? std::nullopt : std::optional(files));
       return true;
     }},
    {"includeVideo", "true or false",
     [](TranscodeCliArguments& store, std::string_view input) {
       const auto read = readInput(onOff, input);
       if (!read || input.empty()) return false;
       setIncludeVideo(store, read->text.has_value());
       return true;
     }},
    {"includeAudio", "true or false", &setSwitch<&TranscodeCliArguments::setIncludeAudio>},
    {"copyAudio", "true or false", &setSwitch<&TranscodeCliArguments::setCopyAudio>},
    {"ignoredAudioFileTracks", "the tracks' numbers from 0, such as 0,2",
     [](TranscodeCliArguments& store, std::string_view input) {
       std::vector<std::int64_t> tracks;
       while (!input.empty()) {
         const std::size_t end = input.find(',');
         const auto track = integerFromText(trimmed(input.substr(0, end)));
         if (!track || *track < 0) return false;
         tracks.push_back(*track);
         input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
       }
       store.setIgnoredAudioFileTracks(tracks);
       return true;
     }},
    {"includeTimecode", "true or false", &setSwitch<&TranscodeCliArguments::setIncludeTimecode>},
    {"timecodeSource", "one of match, creationDate, custom",
     [](TranscodeCliArguments& store, std::string_view input) {
       const auto& cases = allCases<TimecodeSource>();
       const auto found = std::ranges::find_if(
           cases, [input](TimecodeSource each) { return equalsIgnoringCase(rawValue(each), input); });
       if (found == cases.end() && !input.empty()) return false;
       store.setTimecodeSource(found == cases.end() ? std::nullopt : std::optional(*found));
       return true;
     }},
});

std::string allNames() {
  std::string names;
  const auto add = [&names](std::string_view name, const std::string& form) {
    names += "\n  " + std::string(name) + std::string(27 - std::min<std::size_t>(name.size(), 26), ' ') + form;
  };
  for (const JointProperty& each : jointProperties) add(each.name, std::string(each.expectedForm));
  for (const TranscodeProperty& each : transcodeProperties) add(each.name, expectedForm(each));
  return names;
}

[[noreturn]] void refuse(std::string_view name, std::string_view input, const std::string& expected) {
  throw Refusal("\"" + printable(input) + "\" does not read as " + std::string(name) + "; it takes " + expected);
}

void assign(TranscodeCliArguments& store, std::string_view assignment) {
  const std::size_t equals = assignment.find('=');
  if (equals == std::string_view::npos) {
    throw UsageError("\"" + printable(assignment) + "\" is no assignment; write PROPERTY=VALUE");
  }
  const std::string_view name = assignment.substr(0, equals);
  const std::string_view input = assignment.substr(equals + 1);

  const auto joint = std::ranges::find(jointProperties, name, &JointProperty::name);
  if (joint != jointProperties.end()) {
    if (!joint->set(store, input)) refuse(name, input, std::string(joint->expectedForm));
    return;
  }
  const TranscodeProperty* const property = findProperty(name);
  if (property == nullptr) {
    throw Refusal("there is no property \"" + printable(name) + "\"; there is:" + allNames());
  }
  if (property->name == "timecode" && !input.empty()) {
    // Leaves no other source behind.
    const auto timecode = TimecodeComponents::fromTimecode(input);
    if (!timecode) refuse(name, input, expectedForm(*property));
    store.setTimecode(timecode);
    return;
  }
  const auto read = readInput(*property, input);
  if (!read) refuse(name, input, expectedForm(*property));
  store.setArgumentFlagValue(property->flag, read->text);
}

Status setProperties(const Arguments& arguments) {
  TranscodeCliArguments store(arguments.words, arguments.has("keep-order"));
  const auto assignments = arguments.given.find("assignments");
  if (assignments != arguments.given.end()) {
    // The first input replaces those of the words, the next ones follow it.
    const auto setsInputs = [](const std::string& assignment) { return assignment.starts_with("inputFiles="); };
    if (std::ranges::any_of(assignments->second, setsInputs)) store.setInputFiles(std::nullopt);
    for (const std::string& assignment : assignments->second) assign(store, assignment);
  }
  reportRejected(store);
  printVector(store.commandLine(), arguments);
  return done;
}

}  // namespace

Subcommand setCommand() {
  return {
      .name = "set",
      .description = "Set typed properties of an argument vector, and print the new vector",
      .example = "meridian set videoFormat=h264 videoDimensions=1280x720 videoFrameRate= -- -preset solvane_cloud",
      .takesWords = true,
      .options = {{.kind = Option::Kind::positional,
                   .name = "assignments",
                   .help = "PROPERTY=VALUE; an empty VALUE takes the setting away",
                   .valueName = "ASSIGNMENT",
                   .repeated = true},
                  {Option::Kind::flag, "keep-order", "Keep the flags in the order of the words"},
                  {Option::Kind::flag, "json", "Print a JSON list"},
                  {Option::Kind::flag, "null", "End each element with a NUL byte instead of a line end"}},
      .exclusive = {"json", "null"},
      .action = setProperties,
  };
}

}  // namespace meridian::command
