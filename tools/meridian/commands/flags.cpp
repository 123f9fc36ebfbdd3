// meridian flags: the transcoder's flags, group by group, and the properties that they store.
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/base/joined.h"
#include "meridian/cli/transcode_properties.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

bool isPreset(const FlagDescription& flag) { return flag.text == SAVPresetFlag.rawValue(); }

/// Returns true if a value follows the flag. None follows a left-out track, whose number is in the flag.
bool hasValue(const FlagDescription& flag, const TranscodeProperty* property) {
  return flag.takesValue() && (property == nullptr || property->kind != PropertyKind::trackNumbers);
}

/// Returns what kind of value the flag accepts. Each input file is a flag of its own, with a path.
std::string_view kindOf(const FlagDescription& flag, const TranscodeProperty* property) {
  if (!hasValue(flag, property)) return rawValue(PropertyKind::onOff);
  if (property == nullptr) return "preset";
  return rawValue(property->kind == PropertyKind::files ? PropertyKind::path : property->kind);
}

std::string_view defaultOf(const FlagDescription& flag, const TranscodeProperty* property) {
  if (property != nullptr) return property->whenAbsent;
  return isPreset(flag) ? "none" : "not printed";
}

/// Returns what follows the flag: "a number, such as 3.5, in megabits per second".
std::string argumentForm(const FlagDescription& flag, const TranscodeProperty* property) {
  if (!hasValue(flag, property)) return "no value";
  if (property == nullptr) return "a preset: " + joined(allowedTextsOfFlag(flag.text), ", ");
  if (property->kind == PropertyKind::files) return "a path, such as " + std::string(property->example);
  return expectedForm(*property) + (property->unit.empty() ? "" : ", in " + std::string(property->unit));
}

void printFlagsAsJson() {
  Json flags = Json::array();
  for (const FlagDescription& flag : flagDescriptions) {
    Json properties = Json::array();
    const auto ofFlag = propertiesOfFlag(flag.text);
    for (const TranscodeProperty* const property : ofFlag) {
      properties.push_back({{"name", property->name},
                            {"kind", rawValue(property->kind)},
                            {"unit", property->unit.empty() ? Json() : Json(property->unit)},
                            {"allowedValues", allowedTexts(*property)},
                            {"default", property->whenAbsent},
                            {"example", property->example},
                            {"meaning", property->meaning}});
    }
    const TranscodeProperty* const first = ofFlag.empty() ? nullptr : ofFlag.front();
    flags.push_back({{"group", rawValue(flag.group)},
                     {"text", flag.text},
                     {"takesValue", hasValue(flag, first)},
                     {"isKnown", flag.isCase},
                     {"kind", kindOf(flag, first)},
                     {"unit", first == nullptr || first->unit.empty() ? Json() : Json(first->unit)},
                     {"allowedValues", allowedTextsOfFlag(flag.text)},
                     {"default", defaultOf(flag, first)},
                     {"meaning", meaningOfFlag(flag)},
                     {"properties", properties}});
  }
  printJson(flags);
}

void addRows(const FlagDescription& flag, std::vector<std::vector<Cell>>& rows) {
  const auto addRow = [&](const TranscodeProperty* property) {
    rows.push_back(
        {{std::string(flag.text), Style::name},
         {property == nullptr ? "" : std::string(property->name)},
         {std::string(flag.meaning.empty() ? property->meaning : flag.meaning) + (flag.isCase ? "" : " (not offered)")},
         {std::string(defaultOf(flag, property)), Style::faint},
         {argumentForm(flag, property)}});
  };
  const auto properties = propertiesOfFlag(flag.text);
  for (const TranscodeProperty* const property : properties) addRow(property);
  if (properties.empty()) addRow(nullptr);
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
      .description = "List the transcoder's flags: their properties, values, defaults and meanings",
      .example = "meridian flags --json",
      .options = {{Option::Kind::flag, "json",
                   "Print a JSON list: group, text, takesValue, isKnown (offered, and known to the parser), kind, "
                   "unit, allowedValues, default, meaning, properties (of which \"-acl\" has two)"}},
      .action =
          [](const Arguments& arguments) {
            arguments.has("json") ? printFlagsAsJson() : printFlagsForPeople();
            return done;
          },
  };
}

}  // namespace meridian::command
