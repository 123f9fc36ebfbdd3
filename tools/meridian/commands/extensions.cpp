// meridian extensions: lists the known file extensions and their groups.
#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/media/file_extension.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

template <typename Extensions>
std::vector<std::string_view> rawValuesOf(const Extensions& extensions) {
  std::vector<std::string_view> texts;
  for (const FileExtension extension : extensions) texts.push_back(rawValue(extension));
  return texts;
}

void printGroup(const FileExtensionGroup& group, bool json) {
  const auto texts = rawValuesOf(group.members());
  if (json) {
    printJson(texts);
  } else {
    for (const std::string_view text : texts) std::cout << text << '\n';
  }
}

void printAll(bool json) {
  if (json) {
    Json groups;
    for (const FileExtensionGroup& group : fileExtensionGroups) {
      groups[std::string(group.name)] = rawValuesOf(group.members());
    }
    printJson({{"extensions", rawValuesOf(allCases<FileExtension>())}, {"groups", groups}});
    return;
  }
  for (const FileExtensionGroup& group : fileExtensionGroups) {
    const auto texts = rawValuesOf(group.members());
    std::cout << styled(Style::heading, group.name) << "  " << texts.size() << '\n';
    std::string line = " ";
    for (const std::string_view text : texts) {
      const std::string word = text.empty() ? "(none: a directory)" : std::string(text);
      if (line.size() + 1 + word.size() > 100) {
        std::cout << line << '\n';
        line = " ";
      }
      line += " " + word;
    }
    std::cout << line << '\n';
  }
}

Status listExtensions(const Arguments& arguments) {
  const bool json = arguments.has("json");
  if (const auto name = arguments.value("group")) {
    printGroup(*std::ranges::find(fileExtensionGroups, *name, &FileExtensionGroup::name), json);
  } else {
    printAll(json);
  }
  return done;
}

}  // namespace

Subcommand extensionsCommand() {
  Option group{Option::Kind::value, "group", "Print the members of one group, one per line", "NAME"};
  for (const FileExtensionGroup& each : fileExtensionGroups) group.choices.push_back(each.name);
  return {
      .name = "extensions",
      .description = "List the known file extensions by group",
      .example = "meridian extensions --group videoFileExtensions",
      .options = {group,
                  {Option::Kind::flag, "json", "Print JSON: extensions and groups, or the members of the one group"}},
      .action = listExtensions,
  };
}

}  // namespace meridian::command
