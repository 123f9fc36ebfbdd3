// meridian lut info: shows what LUT files hold, and why a file is not a LUT.
#include <cstdint>
#include <iostream>
#include <new>
#include <nlohmann/json.hpp>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/lut_warning.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "meridian/lut/published_lut.h"
#include "tools/meridian/command.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

Json asJson(const LutColor& color) { return {color.red, color.green, color.blue}; }

/// Returns the warning without the file's name, which is shown anyway.
std::string messageOf(LutWarning warning) {
  warning.place.clear();
  return warning.message();
}

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
  if (const LutDeclaredDomain& domain = description.declaredDomain; domain.isDeclared) {
    document["domainMinimum"] = asJson(domain.minimum);
    document["domainMaximum"] = asJson(domain.maximum);
  }
  document["warnings"] = Json::array();
  for (const LutWarning& warning : warningsOf(lut)) {
    document["warnings"].push_back({{"warning", rawValue(warning.code)}, {"message", messageOf(warning)}});
  }
  return document;
}

Json asJson(const std::string& path, const LutError& error) {
  return {{"file", path}, {"error", rawValue(error.code)}, {"message", error.message()}};
}

/// Returns a member of the document as text; numbers in the library's form.
std::string textOf(const Json& value) {
  if (value.is_number_float()) return shortestDecimalText(value.get<double>());
  if (!value.is_array()) return value.is_string() ? value.get<std::string>() : value.dump();
  std::string text;
  for (const Json& each : value) text += (text.empty() ? "" : " ") + textOf(each);
  return text;
}

void printAsTable(const std::string& path, const ParsedLutFile& lut) {
  const Json document = asJson(path, lut);
  std::vector<std::vector<Cell>> rows;
  for (const auto& [name, value] : document.items()) {
    if (name != "file" && name != "warnings") rows.push_back({{name, Style::name}, {textOf(value)}});
  }
  for (const Json& warning : document["warnings"]) {
    rows.push_back({{"warning", Style::name}, {textOf(warning["message"])}});
  }
  std::cout << styled(Style::heading, printable(path)) << '\n';
  printTable(rows);
}

/// Reads a LUT. A file of another published format is called that, not what its lines would be as the suite's own text.
Expected<std::unique_ptr<const ParsedLutFile>, LutError> parseLutOrName(const std::string& path) {
  auto file = parseLut(path);
  if (file) return file;
  if (auto published = readPublishedLut(Url::fromFilePath(path));
      !published && published.error().code == LutErrorCode::otherPublishedFormat) {
    return Unexpected(std::move(published).error());
  }
  return file;
}

Status showLuts(const Arguments& arguments) {
  const bool json = arguments.has("json");
  Json documents = Json::array();
  Status status = done;
  bool isFirst = true;
  for (const std::string& path : arguments.given.at("luts")) {
    try {
      const auto file = parseLutOrName(path);
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
      .details =
          "Warnings say what may surprise when the LUT is applied as the suite reads it. The exit status is 1 "
          "if a file is not a LUT; the others are still shown.",
      .example = "meridian lut info look.cube\nmeridian lut info --json *.cube",
      .options =
          {files,
           {Option::Kind::flag, "json",
            "Print a JSON list with an object for each file: file, class, dimensions, markup, rows, faceSize, "
            "bitDepth, lutBitDepth, lowValue, highValue, domainMinimum, domainMaximum, as far as its kind has them, "
            "and warnings, each with warning and message; for a file that is not a LUT: file, error, message"}},
      .action = showLuts,
  };
}

}  // namespace meridian::command
