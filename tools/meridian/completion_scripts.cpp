#include "tools/meridian/completion_scripts.h"

#include <algorithm>

#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_properties.h"

namespace meridian::command {

std::vector<Candidate> firstWords(const std::vector<Subcommand>& subcommands) {
  std::vector<Candidate> words;
  for (const Subcommand& each : subcommands) {
    if (each.group.empty()) {
      words.push_back({each.name, each.description});
    } else if (std::ranges::find(words, each.group, &Candidate::text) == words.end()) {
      const auto& group = *std::ranges::find(commandGroups, each.group, &CommandGroup::name);
      words.push_back({each.group, std::string(group.description)});
    }
  }
  return words;
}

std::vector<Candidate> membersOf(const CommandGroup& group, const std::vector<Subcommand>& subcommands) {
  std::vector<Candidate> members;
  for (const Subcommand& each : subcommands) {
    if (each.group == group.name) members.push_back({each.name, each.description});
  }
  return members;
}

std::vector<Candidate> transcoderFlags() {
  std::vector<Candidate> flags;
  for (const FlagDescription& flag : flagDescriptions) {
    std::string text(flag.text);
    // The prefixes are useless without numbers.
    if (flag.text == SAVInputPrefixFlag.rawValue()) text = "-in_0_0";
    if (flag.text == SAVAudioIgnoreTracksPrefixFlag.rawValue()) text = "-ac_omit_0";
    flags.push_back({std::move(text), std::string(meaningOfFlag(flag))});
  }
  return flags;
}

std::vector<FlagValues> valuesOfFlags() {
  std::vector<FlagValues> all;
  for (const FlagDescription& flag : flagDescriptions) {
    if (auto values = allowedTextsOfFlag(flag.text); !values.empty()) all.push_back({flag.text, std::move(values)});
  }
  return all;
}

std::vector<std::string> textsOf(const std::vector<Candidate>& candidates) {
  std::vector<std::string> texts;
  std::ranges::transform(candidates, std::back_inserter(texts), &Candidate::text);
  return texts;
}

}  // namespace meridian::command
