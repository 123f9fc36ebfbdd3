// meridian lut info: shows what LUT files hold, and why a file is not a LUT.
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/lut_warning.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "meridian/lut/published_lut.h"
#include "tools/meridian/command.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/lut_reading.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

Json asJson(const LutColor& color) { return {color.red, color.green, color.blue}; }

Json asJson(const LutError& error) { return {{"error", rawValue(error.code)}, {"message", error.message()}}; }

/// Returns the error of one reading of a file that the other reads; like warnings it does not name the file.
Json asJsonOfReading(LutError error) {
  error.place.clear();
  return asJson(error);
}

/// What the two readings of a file yield.
struct Readings {
  Expected<std::unique_ptr<const ParsedLutFile>, LutError> suite;
  Expected<PublishedLut, LutError> published;
  /// The published format; absent if it has none.
  std::optional<LutFormat> format;

  explicit Readings(const std::string& path) : suite(parseLut(path)), published(readPublished(path)) {
    if (const auto found = publishedLutFormat(Url::fromFilePath(path))) format = *found;
  }

  /// Returns whether the suite takes the lines of another format for rows of its own.
  [[nodiscard]] bool isOfOtherFormat() const noexcept { return format && !isReadBySuite(*format); }

  /// Returns why the file is not a LUT; null if it is one. A file of another format is called that, not what its lines
  /// would be as rows.
  [[nodiscard]] const LutError* error() const noexcept {
    if (published || (suite && !isOfOtherFormat())) return nullptr;
    return format ? &published.error() : &suite.error();
  }
};

void addFacts(Json& document, const ParsedLutFile& lut) {
  const LutDescription description = describe(lut);
  document["class"] = lut.className();
  document["dimensions"] = rawValue(description.dimensions);
  document["markup"] = rawValue(lut.fileMarkup());
  document["rows"] = description.rows;
  const bool isCube = description.dimensions == LutDimensions::cube;
  if (isCube) document["faceSize"] = description.size;
  if (description.inputBitDepth) document[isCube ? "bitDepth" : "lutBitDepth"] = *description.inputBitDepth;
  document["lowValue"] = description.lowValue;
  document["highValue"] = description.highValue;
  if (const LutDeclaredDomain& domain = description.declaredDomain; domain.isDeclared) {
    document["domainMinimum"] = asJson(domain.minimum);
    document["domainMaximum"] = asJson(domain.maximum);
  }
}

/// Returns whether a matrix keeps the channels apart, as those do that bring a declared domain to 0 to 1.
bool isDiagonal(const LutMatrix& matrix) noexcept {
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      if (row != column && matrix.rows[row][column] != 0) return false;
    }
  }
  return true;
}

void addFacts(Json& document, const PublishedLut& lut) {
  document["format"] = rawValue(lut.format);
  document["stages"] = Json::array();
  for (const LutStage& stage : lut.stages) {
    Json member{{"stage", describedStage(stage)}};
    const auto addDomain = [&member](const LutDeclaredDomain& domain) {
      member["domainMinimum"] = asJson(domain.minimum);
      member["domainMaximum"] = asJson(domain.maximum);
    };
    if (const auto* const matrix = std::get_if<LutMatrix>(&stage); matrix != nullptr && isDiagonal(*matrix)) {
      member["scale"] = {matrix->rows[0][0], matrix->rows[1][1], matrix->rows[2][2]};
      for (const double offset : matrix->offset) member["offset"].push_back(offset + 0.0);  // no -0
    }
    if (const auto* const range = std::get_if<LutRange>(&stage)) {
      member["scale"] = asJson(range->scale);
      member["offset"] = asJson(range->offset);
    }
    if (const auto* const curve = std::get_if<LutCurve>(&stage)) addDomain(curve->domain);
    if (const auto* const cube = std::get_if<LutCubeStage>(&stage)) addDomain(cube->domain);
    document["stages"].push_back(std::move(member));
  }
}

Json asJson(const std::string& path, const Readings& readings) {
  Json document{{"file", path}};
  if (const LutError* const error = readings.error()) {
    document.update(asJson(*error));
    return document;
  }
  Json warnings = Json::array();
  const auto addWarnings = [&warnings](std::span<const LutWarning> all, LutReading reading) {
    for (const LutWarning& warning : all) {
      warnings.push_back(
          {{"warning", rawValue(warning.code)}, {"reading", rawValue(reading)}, {"message", messageOf(warning)}});
    }
  };
  if (readings.isOfOtherFormat()) {
    const std::string name(description(*readings.format));
    const LutWarning warning{LutWarningCode::otherPublishedFormat, {}, name};
    if (readings.suite) {
      addWarnings({&warning, 1}, LutReading::suite);
    } else {
      document["suiteError"] = asJsonOfReading({LutErrorCode::otherPublishedFormat, {}, name});
    }
  } else if (readings.suite) {
    addFacts(document, **readings.suite);
    addWarnings(warningsOf(**readings.suite), LutReading::suite);
  } else {
    document["suiteError"] = asJsonOfReading(readings.suite.error());
  }
  if (readings.published) {
    addFacts(document, *readings.published);
    addWarnings(readings.published->warnings, LutReading::published);
  } else if (readings.format) {
    document["publishedError"] = asJsonOfReading(readings.published.error());
  } else {
    const LutWarning warning{LutWarningCode::noPublishedFormat};
    addWarnings({&warning, 1}, LutReading::published);
  }
  document["warnings"] = std::move(warnings);
  return document;
}

/// Returns a member of the document as text; numbers in the library's form.
std::string textOf(const Json& value) {
  if (value.is_number_float()) return shortestDecimalText(value.get<double>());
  if (!value.is_array()) return value.is_string() ? value.get<std::string>() : value.dump();
  std::string text;
  for (const Json& each : value) text += (text.empty() ? "" : " ") + textOf(each);
  return text;
}

/// Returns a stage as text: cube of 33 points per axis, inputs 0.0 0.0 0.0 to 1.0 1.0 1.0
std::string stageText(const Json& stage) {
  std::string text = textOf(stage["stage"]);
  if (stage.contains("domainMinimum")) {
    text += ", inputs " + textOf(stage["domainMinimum"]) + " to " + textOf(stage["domainMaximum"]);
  }
  if (stage.contains("scale")) {
    text += ", times " + textOf(stage["scale"]) + ", plus " + textOf(stage["offset"]);
  }
  return text;
}

/// Returns what a reading is called in a sentence.
std::string nameOf(const Json& reading) {
  return reading == rawValue(LutReading::suite) ? "the suite's reading" : "the published reading";
}

void printAsTable(const std::string& path, const Json& document) {
  std::vector<std::vector<Cell>> rows;
  for (const auto& [name, value] : document.items()) {
    if (name == "file") continue;
    if (name == "stages") {
      for (const Json& stage : value) rows.push_back({{"stage", Style::name}, {stageText(stage)}});
    } else if (name == "warnings") {
      for (const Json& warning : value) {
        rows.push_back({{"warning", Style::name}, {nameOf(warning["reading"]) + ": " + textOf(warning["message"])}});
      }
    } else if (value.is_object()) {
      const std::string_view reading = rawValue(name == "suiteError" ? LutReading::suite : LutReading::published);
      rows.push_back({{"error", Style::name}, {nameOf(reading) + ": " + textOf(value["message"])}});
    } else {
      rows.push_back({{name, Style::name}, {textOf(value)}});
    }
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
      const Readings readings(path);
      if (json) warnOfInvalidPath(path);
      const LutError* const error = readings.error();
      if (error != nullptr) {
        std::cerr << "meridian: " << error->message() << '\n';
        status = failed;
      }
      if (json) {
        documents.push_back(asJson(path, readings));
      } else if (error == nullptr) {
        std::cout << (isFirst ? "" : "\n");
        printAsTable(path, asJson(path, readings));
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
  files.help = "Files that may hold a look-up table (LUT)";
  files.repeated = true;
  return {
      .group = "lut",
      .name = "info",
      .description = "Show what LUT files hold, or why a file is not a LUT",
      .details =
          "A file has two readings: the suite's, which \"meridian lut sample\" applies, and that of its published\n"
          "format, which \"meridian lut apply\" and \"plot\" apply. The first lines are the suite's, then format and\n"
          "stages are the published ones. Warnings say what may surprise in each. The exit status is 1 if a file is\n"
          "not a LUT; the others are still shown.",
      .example = "meridian lut info look.cube\nmeridian lut info --json *.cube",
      .options =
          {files,
           {Option::Kind::flag, "json",
            "Print a JSON list with an object for each file: file; as the suite reads it class, dimensions, markup, "
            "rows, faceSize, bitDepth, lutBitDepth, lowValue, highValue, domainMinimum, domainMaximum, as far as its "
            "kind has them, or suiteError, or a warning that its rows are those of another format; as its format "
            "publishes it format and stages, each with its domain or "
            "its scale and offset, or publishedError; and warnings, each with warning, reading and message. For a file "
            "that is not a LUT: file, "
            "error, message"}},
      .action = showLuts,
  };
}

}  // namespace meridian::command
