// meridian lut info: what look-up table files hold, and why a file is none.
#include <cstdint>
#include <iostream>
#include <new>
#include <nlohmann/json.hpp>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "tools/meridian/command.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

/// The members that tables of one kind alone have.
void addKindsMembers(Json& document, const ParsedLutFile& lut) {
  const LutRGBSampleConverter& converter = lut.inputConverter();
  if (const auto* const cube = dynamic_cast<const ThreeDimensionalLutConverter*>(&converter)) {
    document["faceSize"] = cube->interpolator().cube()->faceSize();
  }
  if (const auto* const integers = dynamic_cast<const UnsignedIntegerLutFile*>(&lut)) {
    document["bitDepth"] = integers->bitDepth();
  }
  if (const auto* const integers = dynamic_cast<const OneDimensionsUnsignedIntegerConverter*>(&converter)) {
    document["lutBitDepth"] = integers->lutBitDepth();
  }
}

Json asJson(const std::string& path, const ParsedLutFile& lut) {
  Json document{{"file", path},
                {"class", lut.className()},
                {"dimensions", rawValue(lut.dimensions())},
                {"markup", rawValue(lut.fileMarkup())},
                {"rows", lut.orderedValues().size()}};
  addKindsMembers(document, lut);
  document["lowValue"] = lut.inputConverter().lowValue();
  document["highValue"] = lut.inputConverter().highValue();
  return document;
}

Json asJson(const std::string& path, const LutRefusal& refusal) {
  return {{"file", path}, {"refusal", rawValue(refusal.reason)}, {"message", refusal.message()}};
}

/// A member of the document as a row of a table; numbers in the library's form.
std::vector<Cell> rowOf(const std::string& name, const Json& value) {
  std::string text = value.is_string() ? value.get<std::string>() : value.dump();
  if (value.is_number_float()) text = shortestDecimalText(value.get<double>());
  return {{name, Style::name}, {text}};
}

void printForPeople(const std::string& path, const ParsedLutFile& lut) {
  const Json document = asJson(path, lut);
  std::vector<std::vector<Cell>> rows;
  for (const auto& [name, value] : document.items()) {
    if (name != "file") rows.push_back(rowOf(name, value));
  }
  std::cout << styled(Style::heading, printable(path)) << '\n';
  printTable(rows);
}

/// Neither table nor refusal where the memory is too small.
LutParsing parseWithinMemory(const std::string& path) {
  try {
    return parseLut(path);
  } catch (const std::bad_alloc&) {
    return {};
  }
}

Status showTables(const Arguments& arguments) {
  const bool json = arguments.has("json");
  Json documents = Json::array();
  Status status = done;
  bool isFirst = true;
  for (const std::string& path : arguments.given.at("luts")) {
    const LutParsing parsing = parseWithinMemory(path);
    if (!parsing.file && !parsing.refusal) {
      std::cerr << "meridian: " << inQuotes(path) << " has more rows than fit into memory\n";
      status = failed;
      continue;
    }
    if (json) warnOfInvalidPath(path);
    if (parsing.refusal) {
      std::cerr << "meridian: " << refusalText(path, *parsing.refusal) << '\n';
      status = failed;
    }
    if (json) {
      documents.push_back(parsing.refusal ? asJson(path, *parsing.refusal) : asJson(path, *parsing.file));
    } else if (parsing.file) {
      std::cout << (isFirst ? "" : "\n");
      printForPeople(path, *parsing.file);
      isFirst = false;
    }
  }
  if (json) printJson(documents);
  return status;
}

}  // namespace

Subcommand lutInfoCommand() {
  Option files = lutFileOption();
  files.name = "luts";
  files.help = "Files of text that may hold a look-up table";
  files.repeated = true;
  return {
      .group = "lut",
      .name = "info",
      .description = "Show what look-up table files hold, or why they are refused",
      .details = "A refused file makes the exit status 1; the others are still shown.",
      .example = "meridian lut info look.cube\nmeridian lut info --json *.cube",
      .options = {files,
                  {Option::Kind::flag, "json",
                   "Print a JSON list with an object for each file: file, class, dimensions, markup, rows, faceSize, "
                   "bitDepth, lutBitDepth, lowValue, highValue, as far as its kind has them; for a refused file: "
                   "file, refusal, message"}},
      .action = showTables,
  };
}

}  // namespace meridian::command
