// meridian set: edits an argument vector through the typed properties, and prints the new one.
#include <algorithm>
#include <iostream>
#include <optional>
#include <span>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_explanation.h"
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

void setIncludeVideo(TranscodeCliArguments& store, bool include) { store.setOmitVideo(!include); }
void setIncludeAudio(TranscodeCliArguments& store, bool include) { store.setIncludeAudio(include); }
void setCopyAudio(TranscodeCliArguments& store, bool copy) { store.setCopyAudio(copy); }
void setIncludeTimecode(TranscodeCliArguments& store, bool include) { store.setIncludeTimecode(include); }

/// The empty input takes the flag away, which for some properties means that they hold.
template <void (*setter)(TranscodeCliArguments&, bool), bool withoutFlag>
bool setSwitch(TranscodeCliArguments& store, std::string_view input) {
  const auto read = readInput(onOff, input);
  if (read) setter(store, input.empty() ? withoutFlag : read->text.has_value());
  return read.has_value();
}

constexpr std::string_view inputFilesName = "inputFiles";

constexpr auto jointProperties = std::to_array<JointProperty>({
    {"includeVideo", "true or false", &setSwitch<setIncludeVideo, true>},
    {"includeAudio", "true or false", &setSwitch<setIncludeAudio, true>},
    {"copyAudio", "true or false", &setSwitch<setCopyAudio, false>},
    {"ignoredAudioFileTracks", "the tracks' numbers from 0, such as 0,2",
     [](TranscodeCliArguments& store, std::string_view input) {
       std::vector<std::int64_t> tracks;
       while (!input.empty()) {
         const std::size_t end = input.find(',');
         const std::string_view digits = trimmed(input.substr(0, end));
         const auto track = integerFromText(digits);
         if (!track || digits.find_first_not_of("0123456789") != std::string_view::npos) return false;
         tracks.push_back(*track);
         if (end == std::string_view::npos) break;
         input.remove_prefix(end + 1);
         if (input.empty()) return false;
       }
       store.setIgnoredAudioFileTracks(tracks);
       return true;
     }},
    {"includeTimecode", "true or false", &setSwitch<setIncludeTimecode, false>},
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
  add(inputFilesName, "a path; repeated for several files");
  for (const JointProperty& each : jointProperties) add(each.name, std::string(each.expectedForm));
  for (const TranscodeProperty& each : transcodeProperties) add(each.name, expectedForm(each));
  return names;
}

[[noreturn]] void refuse(std::string_view name, std::string_view input, const std::string& expected) {
  throw CommandError(inQuotes(input) + " does not read as " + std::string(name) + "; it takes " + expected);
}

struct Assignment {
  std::string_view name;
  std::string_view input;
};

Assignment assignmentOf(std::string_view text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos) {
    throw UsageError(inQuotes(text) + " is no assignment; write PROPERTY=VALUE");
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

void assign(TranscodeCliArguments& store, const Assignment& assignment) {
  const auto [name, input] = assignment;
  const auto joint = std::ranges::find(jointProperties, name, &JointProperty::name);
  if (joint != jointProperties.end()) {
    if (!joint->set(store, input)) refuse(name, input, std::string(joint->expectedForm));
    return;
  }
  const TranscodeProperty* const property = findProperty(name);
  if (property == nullptr) {
    throw CommandError("there is no property " + inQuotes(name) + "; there is:" + allNames());
  }
  const auto read = readInput(*property, input);
  if (!read) refuse(name, input, expectedForm(*property));
  // These have rules of their own towards other settings.
  if (property->name == "timecode" && read->text) {
    store.setTimecode(TimecodeComponents::fromTimecode(*read->text));
  } else if (property->name == "channelLayout" && !read->text) {
    store.setChannelLayout(std::nullopt);
  } else if (property->name == "outputChannels" && !read->text) {
    store.setOutputChannels(std::nullopt);
  } else {
    store.setArgumentFlagValue(property->flag, read->text);
  }
}

void assignAll(TranscodeCliArguments& store, std::span<const std::string> texts) {
  std::vector<Assignment> assignments;
  std::optional<std::vector<std::string>> inputs;
  for (const std::string& text : texts) {
    const Assignment assignment = assignmentOf(text);
    if (assignment.name != inputFilesName) {
      assignments.push_back(assignment);
      continue;
    }
    if (!inputs || assignment.input.empty()) inputs.emplace();
    if (!assignment.input.empty()) inputs->emplace_back(assignment.input);
  }
  // All at once: the first replaces the inputs of the words, and the others follow it.
  if (inputs) store.setInputFiles(inputs);
  for (const Assignment& assignment : assignments) assign(store, assignment);
}

/// Refuses values that a command line cannot carry, and says on standard error which ones its reader will see
/// otherwise, since values are trimmed and mostly lower-cased in reading.
void checkReading(const TranscodeCliArguments& store) {
  for (const auto& [flag, value] : store.flagValueLookup()) {
    if (!trimmed(value).starts_with('-')) continue;
    throw CommandError(printable(flag) + " cannot be " + inQuotes(value) +
                       ": a value that begins with \"-\" is read as a flag; a path can begin with \"./\"");
  }
  const TranscodeCliArguments read(store.commandLine());
  for (const auto& [flag, value] : store.flagValueLookup()) {
    const auto seen = read.argumentFlagValue(flag);
    if (seen == value) continue;
    std::cerr << "meridian: warning: " << printable(flag) << " \"" << printable(value) << "\" will be read as "
              << (seen ? inQuotes(*seen) : "nothing") << '\n';
  }
}

Status setProperties(const Arguments& arguments) {
  TranscodeCliArguments store(arguments.words, arguments.has("keep-order"));
  assignAll(store, arguments.given.at("assignments"));
  checkReading(store);
  reportUnknownFlags(store);
  for (const DroppedWord& dropped : explain(arguments.words).droppedWords) {
    std::cerr << "meridian: dropped: \"" << printable(dropped.word) << "\" belongs to no flag\n";
  }
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
