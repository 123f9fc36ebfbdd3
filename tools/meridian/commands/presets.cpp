// meridian presets: the built-in presets and their settings.
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/cli/transcode_preset.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

void printPresetsAsJson() {
  Json presets = Json::array();
  for (const TranscodeCliPreset each : allCases<TranscodeCliPreset>()) {
    Json pairs = Json::array();
    for (const auto& [flag, value] : orderedArguments(each)) pairs.push_back({{"flag", flag}, {"value", value}});
    presets.push_back({{"name", preset(each)}, {"description", description(each)}, {"arguments", pairs}});
  }
  printJson(presets);
}

void printPresetsForPeople() {
  for (const TranscodeCliPreset each : allCases<TranscodeCliPreset>()) {
    std::cout << styled(Style::heading, preset(each)) << "  " << description(each) << '\n';
    std::vector<std::vector<Cell>> rows;
    for (const auto& [flag, value] : orderedArguments(each)) {
      rows.push_back({{std::string(flag), Style::name}, {std::string(value)}});
    }
    printTable(rows);
  }
}

}  // namespace

Subcommand presetsCommand() {
  return {
      .name = "presets",
      .description = "List the built-in presets and their settings",
      .example = "meridian presets",
      .options = {{Option::Kind::flag, "json",
                   "Print a JSON list: name, description, arguments (flag and value, in order)"}},
      .action =
          [](const Arguments& arguments) {
            arguments.has("json") ? printPresetsAsJson() : printPresetsForPeople();
            return done;
          },
  };
}

}  // namespace meridian::command
