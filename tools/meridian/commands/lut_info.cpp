// meridian lut info: shows what LUT files hold, and why a file is not a LUT.
#include <cstdint>
#include <iostream>
#include <new>
#include <nlohmann/json.hpp>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "tools/meridian/command.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

Json asJson(const std::string& path, const ParsedLutFile& lut) {
  const LutDescription description = describe(lut);
  Json document{{"file", path},
                {"class", lut.className()},
                {"dimensions", rawValue(description.dimensions)},
                {"markup", rawValue(lut.fileMarkup())},
                {"rows", description.rows}};
  const bool isCube = description.dimensions == LutDimensions::cube;
  if (isCube) document["faceSize"] = description.size;
  if (description.inputBitDepth) document[isCube ? "bitDepth" : "lutBitDepth"] = *description.inputBitDepth;
  document["lowValue"] = description.lowValue;
  document["highValue"] = description.highValue;
  return document;
}

Json asJson(const std::string& path, const LutError& error) {
  return {{"file", path}, {"error", rawValue(error.code)}, {"message", error.message()}};
}

/// Returns a member of the document as a row of a table; numbers in the library's form.
std::vector<Cell> rowOf(const std::string& name, const Json& value) {
  std::string text = value.is_string() ? value.get<std::string>() : value.dump();
  if (value.is_number_float()) text = shortestDecimalText(value.get<double>());
  return {{name, Style::name}, {text}};
}

void printAsTable(const std::string& path, const ParsedLutFile& lut) {
  const Json document = asJson(path, lut);
  std::vector<std::vector<Cell>> rows;
  for (const auto& [name, value] : document.items()) {
    if (name != "file") rows.push_back(rowOf(name, value));
  }
  std::cout << styled(Style::heading, printable(path)) << '\n';
  printTable(rows);
}

Status showLuts(const Arguments& arguments) {
  const bool json = arguments.has("json");
  Json documents = Json::array();
  Status status = done;
  bool isFirst = true;
  for (const std::string& path : arguments.given.at("luts")) {
    try {
      const auto file = parseLut(path);
      if (json) warnOfInvalidPath(path);
      if (!file) {
        std::cerr << "meridian: " << file.error().message() << '\n';
        status = failed;
      }
      if (json) {
        documents.push_back(file ? asJson(path, **file) : asJson(path, file.error()));
      } else if (file) {
        std::cout << (isFirst ? "" : "\n");
        printAsTable(path, **file);
        isFirst = false;
      }
    } catch (const std::bad_alloc&) {
      std::cerr << "meridian: " << inQuotes(path) << " has more rows than fit into memory\n";
      status = failed;
    }
  }
  if (json) printJson(documents);
  return status;
}

}  // namespace

Subcommand lutInfoCommand() {
  Option files = lutFileOption();
  files.name = "luts";
  files.help = "Text files that may hold a look-up table (LUT)";
  files.repeated = true;
  return {
      .group = "lut",
      .name = "info",
      .description = "Show what LUT files hold, or why a file is not a LUT",
      .details = "The exit status is 1 if a file is not a LUT; the others are still shown.",
      .example = "meridian lut info look.cube\nmeridian lut info --json *.cube",
      .options = {files,
                  {Option::Kind::flag, "json",
                   "Print a JSON list with an object for each file: file, class, dimensions, markup, rows, faceSize, "
                   "bitDepth, lutBitDepth, lowValue, highValue, as far as its kind has them; for a file that is not a "
                   "LUT: file, error, message"}},
      .action = showLuts,
  };
}

}  // namespace meridian::command
