// meridian flags: the transcoder's flags, group by group, and the properties that they store.
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/cli/transcode_properties.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

void printFlagsAsJson() {
  Json flags = Json::array();
  for (const FlagDescription& flag : flagDescriptions) {
    Json properties = Json::array();
    for (const TranscodeProperty* const property : propertiesOfFlag(flag.text)) {
      properties.push_back({{"name", property->name},
                            {"kind", rawValue(property->kind)},
                            {"unit", property->unit.empty() ? Json() : Json(property->unit)},
                            {"allowedValues", allowedTexts(*property)},
                            {"default", property->whenAbsent},
                            {"example", property->example},
                            {"meaning", property->meaning}});
    }
    flags.push_back({{"group", rawValue(flag.group)},
                     {"text", flag.text},
                     {"takesValue", flag.takesValue()},
                     {"isKnown", flag.isCase},
                     {"meaning", flag.meaning.empty() ? Json() : Json(flag.meaning)},
                     {"allowedValues", allowedTextsOfFlag(flag.text)},
                     {"properties", properties}});
  }
  printJson(flags);
}

/// What follows the flag: "a number, in megabits per second".
std::string argumentForm(const FlagDescription& flag, const TranscodeProperty& property) {
  if (!flag.takesValue()) return "";
  return expectedForm(property) + (property.unit.empty() ? "" : ", in " + std::string(property.unit));
}

void addRows(const FlagDescription& flag, std::vector<std::vector<Cell>>& rows) {
  const Cell name{std::string(flag.text), Style::name};
  const std::string notOffered = flag.isCase ? "" : " (not offered)";
  const auto properties = propertiesOfFlag(flag.text);
  for (const TranscodeProperty* const property : properties) {
    rows.push_back({name,
                    {std::string(property->name)},
                    {std::string(property->meaning) + notOffered},
                    {std::string(property->whenAbsent), Style::faint},
                    {argumentForm(flag, *property)}});
  }
  if (!properties.empty()) return;
  std::string values;
  for (const std::string_view text : allowedTextsOfFlag(flag.text))
    values += (values.empty() ? "" : ", ") + std::string(text);
  rows.push_back({name, {""}, {std::string(flag.meaning) + notOffered}, {""}, {values}});
}

void printFlagsForPeople() {
  for (const FlagGroup group : allCases<FlagGroup>()) {
    std::cout << styled(Style::heading, description(group)) << '\n';
    std::vector<std::vector<Cell>> rows{{{"FLAG", Style::faint},
                                         {"PROPERTY", Style::faint},
                                         {"MEANING", Style::faint},
                                         {"DEFAULT", Style::faint},
                                         {"VALUE", Style::faint}}};
    for (const FlagDescription& flag : flagDescriptions) {
      if (flag.group == group) addRows(flag, rows);
    }
    printTable(rows);
  }
}

}  // namespace

Subcommand flagsCommand() {
  return {
      .name = "flags",
      .description = "List the transcoder's flags: their properties, values and defaults",
      .example = "meridian flags --json",
      .options = {{Option::Kind::flag, "json",
                   "Print a JSON list: group, text, takesValue, isKnown (offered, and known to the parser), meaning, "
                   "allowedValues, properties"}},
      .action =
          [](const Arguments& arguments) {
            arguments.has("json") ? printFlagsAsJson() : printFlagsForPeople();
            return done;
          },
  };
}

}  // namespace meridian::command
