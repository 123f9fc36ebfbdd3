// meridian analysis-args: writes the media-analysis tool's argument vector, or reads one and reports its errors.
#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/cli/media_analysis_argument_factory.h"
#include "meridian/cli/media_analysis_errors.h"
#include "meridian/cli/media_analysis_flags.h"
#include "meridian/cli/media_analysis_reading.h"
#include "tools/meridian/analysis_flags.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

using Factory = MediaAnalysisCLIArgumentFactory;

constexpr std::array imageOptionNames{"snapshot", "max-width", "height", "compression", "finder-images", "lut"};
constexpr std::array otherOptionNames{"path", "work-dir", "results", "id", "deep", "parent-pid", "null"};

std::string required(const Arguments& arguments, std::string_view name) {
  const auto value = arguments.value(name);
  if (!value) throw UsageError("--" + std::string(name) + " is missing");
  return *value;
}

float readNumber(std::string_view name, std::string_view text) {
  const auto number = floatFromText(text);
  if (!number || !std::isfinite(*number)) {
    throw CommandError(inQuotes(text) + " is not a number for --" + std::string(name) + "; expected one such as 0.5");
  }
  return *number;
}

std::optional<float> numberOf(const Arguments& arguments, std::string_view name) {
  const auto text = arguments.value(name);
  return text ? std::optional(readNumber(name, *text)) : std::nullopt;
}

Factory::BasicOptions basicOptions(const Arguments& arguments) {
  static_cast<void>(required(arguments, "path"));
  return Factory::buildBasicOptions(arguments.given.at("path"), required(arguments, "work-dir"),
                                    required(arguments, "results"), arguments.value("id"), arguments.has("deep"));
}

std::optional<Factory::ImageOptions> imageOptions(const Arguments& arguments) {
  const bool isAny = std::ranges::any_of(imageOptionNames, [&](const char* name) { return arguments.has(name); });
  if (!isAny) return std::nullopt;
  for (const char* const name : {"snapshot", "max-width"}) {
    if (!arguments.has(name)) throw UsageError("image options need --snapshot and --max-width");
  }
  std::vector<float> locations;
  for (const std::string& text : arguments.given.at("snapshot")) locations.push_back(readNumber("snapshot", text));
  const float width = *numberOf(arguments, "max-width");
  const auto compression = numberOf(arguments, "compression");
  const bool allowsFinder = arguments.has("finder-images");
  const auto lut = arguments.value("lut");
  if (const auto height = numberOf(arguments, "height")) {
    return Factory::buildImageOptions(std::move(locations), width, *height, compression, allowsFinder, lut);
  }
  return Factory::buildImageOptions(std::move(locations), width, compression, allowsFinder, lut);
}

std::optional<Factory::CustodialOptions> custodialOptions(const Arguments& arguments) {
  using Limits = std::numeric_limits<std::int32_t>;
  const auto text = arguments.value("parent-pid");
  if (!text) return std::nullopt;
  const auto number = integerFromText(*text);
  if (!number || *number < Limits::min() || *number > Limits::max()) {
    throw CommandError(inQuotes(*text) + " is not a process identifier for --parent-pid; expected a whole number");
  }
  return Factory::custodialOptions(static_cast<std::int32_t>(*number));
}

/// The messages of all `errors`, or of warnings that count as errors here.
template <typename Errors>
void appendMessages(std::vector<std::string>& messages, const Errors& errors) {
  for (const auto& error : errors) messages.push_back(error.message());
}

/// Why the vector is not written: options that would not read back, or else options that are missing.
std::vector<std::string> errorMessagesOf(const Factory::BasicOptions& basic,
                                         const std::optional<Factory::ImageOptions>& image,
                                         std::span<const MediaAnalysisCLIOptions* const> all) {
  std::vector<std::string> messages;
  for (const MediaAnalysisCLIOptions* const options : all) appendMessages(messages, warningsOfWriting(*options));
  if (!messages.empty()) return messages;
  appendMessages(messages, errorsOfMissingOptions(basic));
  if (image) appendMessages(messages, errorsOf(*image));
  return messages;
}

Status printAnalysisVector(const Arguments& arguments) {
  const auto basic = basicOptions(arguments);
  const auto image = imageOptions(arguments);
  const auto custodial = custodialOptions(arguments);
  std::vector<const MediaAnalysisCLIOptions*> all{&basic};
  if (image) all.push_back(&*image);
  if (custodial) all.push_back(&*custodial);

  std::string text;
  for (const std::string& message : errorMessagesOf(basic, image, all)) {
    text += (text.empty() ? "" : "\nmeridian: ") + message;
  }
  if (!text.empty()) throw CommandError(text);

  std::vector<std::string> vector;
  for (const MediaAnalysisCLIOptions* const options : all) {
    std::ranges::move(options->commandLineArguments(), std::back_inserter(vector));
  }
  printVector(vector, arguments);
  return done;
}

/// A vector as the tool reads it, with all errors.
struct CheckedVector {
  MediaAnalysisCLIReading read;
  std::vector<MediaAnalysisBasicOptionsError> errors;
  std::vector<MediaAnalysisImageOptionsError> imageErrors;

  explicit CheckedVector(std::span<const std::string_view> words)
      : read(readMediaAnalysisArguments(words)), errors(errorsOf(read.basic)) {
    if (read.image) imageErrors = errorsOf(*read.image);
  }

  [[nodiscard]] bool isFlawless() const { return errors.empty() && imageErrors.empty() && read.warnings.empty(); }
};

/// The number as it is written in the vector ("0.1"), not the float's exact value as a double (0.10000000149...).
Json asJson(float number) { return *doubleFromText(shortestDecimalText(number)); }

template <typename Value>
Json orNull(const std::optional<Value>& value) {
  if (!value) return nullptr;
  if constexpr (std::is_same_v<Value, float>) {
    return asJson(*value);
  } else {
    return *value;
  }
}

Json asJson(const Factory::ImageOptions& image) {
  Json locations = Json::array();
  for (const float location : image.snapshotLocations()) locations.push_back(asJson(location));
  return {{"snapshotLocations", locations},
          {"maxImageWidth", asJson(image.maxImageWidth())},
          {"imageHeight", orNull(image.imageHeight())},
          {"compressionFactor", orNull(image.compressionFactor())},
          {"allowFinderImages", image.allowFinderImages()},
          {"lutToApply", orNull(image.lutToApply())}};
}

template <ErrorCode Code>
Json asJson(const std::vector<Error<Code>>& errors) {
  Json list = Json::array();
  for (const Error<Code>& error : errors) {
    list.push_back({{"code", rawValue(error.code)}, {"place", error.place}, {"message", error.message()}});
  }
  return list;
}

Json asJson(const std::vector<MediaAnalysisCLIWarning>& warnings) {
  Json list = Json::array();
  for (const MediaAnalysisCLIWarning& warning : warnings) {
    list.push_back({{"code", rawValue(warning.code)},
                    {"place", warning.place},
                    {"value", orNull(warning.value)},
                    {"suggestion", orNull(warning.suggestion())},
                    {"message", warning.message()}});
  }
  return list;
}

Json asJson(const CheckedVector& checked) {
  const MediaAnalysisCLIReading& read = checked.read;
  const std::vector<std::string> paths(read.basic.pathsToAnalyze().begin(), read.basic.pathsToAnalyze().end());
  return {{"basic",
           {{"pathsToAnalyze", paths},
            {"analysisId", orNull(read.basic.analysisId())},
            {"workDirectory", read.basic.workDirectory()},
            {"resultsFilePath", read.basic.resultsFilePath()},
            {"deepAnalysis", read.basic.deepAnalysis()}}},
          {"image", read.image ? asJson(*read.image) : Json()},
          {"custodial",
           {{"parentPid", orNull(read.custodial.parentPid())},
            {"parentAppNumber", orNull(read.custodial.parentAppNumber())}}},
          {"errors", asJson(checked.errors)},
          {"imageErrors", asJson(checked.imageErrors)},
          {"warnings", asJson(read.warnings)}};
}

void printMessages(std::string_view heading, Style style, const std::vector<std::string>& messages) {
  if (messages.empty()) return;
  std::cout << '\n' << styled(Style::heading, heading) << '\n';
  for (const std::string& message : messages) std::cout << "  " << styled(style, message) << '\n';
}

void printForPeople(const CheckedVector& checked) {
  std::vector<std::vector<Cell>> rows;
  const auto append = [&rows](const MediaAnalysisCLIOptions& options) {
    options.enumerateArguments([&rows](std::string_view flag, std::optional<std::string_view> value) {
      Cell cell{"(on)", Style::faint};
      if (value) cell = value->empty() ? Cell{"(empty)", Style::faint} : Cell{std::string(*value)};
      rows.push_back({{std::string(flag), Style::name}, cell});
    });
  };
  append(checked.read.basic);
  if (checked.read.image) append(*checked.read.image);
  append(checked.read.custodial);
  std::cout << styled(Style::heading, "Read as") << '\n';
  printTable(rows);

  if (checked.isFlawless()) {
    std::cout << '\n' << styled(Style::good, "No errors and no warnings") << '\n';
    return;
  }
  std::vector<std::string> errors;
  appendMessages(errors, checked.errors);
  appendMessages(errors, checked.imageErrors);
  printMessages("Errors", Style::bad, errors);
  std::vector<std::string> warnings;
  appendMessages(warnings, checked.read.warnings);
  printMessages("Warnings", Style::warning, warnings);
}

Status checkAnalysisVector(const Arguments& arguments) {
  const auto requireAbsent = [&arguments](const char* name) {
    if (arguments.has(name)) throw UsageError("--check reads a vector and cannot be used with --" + std::string(name));
  };
  std::ranges::for_each(otherOptionNames, requireAbsent);
  std::ranges::for_each(imageOptionNames, requireAbsent);
  const CheckedVector checked(arguments.words);
  if (arguments.has("json")) {
    warnOfInvalidText(arguments.words, "Without --json, such bytes are shown as \\xff");
    printJson(asJson(checked));
  } else {
    printForPeople(checked);
  }
  return checked.isFlawless() ? done : failed;
}

}  // namespace

Subcommand analysisArgsCommand() {
  using enum Option::Kind;
  return {
      .name = "analysis-args",
      .description = "Print the media-analysis tool's argument vector, or check one",
      .details =
          "--path, --work-dir and --results are required, and --snapshot and --max-width for images. The paths need\n"
          "not exist. Options that the tool would not read as they are, such as a path that begins with \"-\", are\n"
          "errors. With --check, the words after \"--\" are read as the tool reads them, and the exit status is 1 if\n"
          "there is an error or a warning. No file is created.",
      .example =
          "meridian analysis-args --path /card/a.mov --work-dir /tmp --results /out/a.json --deep\n"
          "meridian analysis-args --check -- -pathToAnalyze /card/a.mov -workDirectory /tmp",
      .takesWords = true,
      .wordsOption = "check",
      .wordFlags = analysisFlags(),
      .options =
          {{.kind = value,
            .name = "path",
            .help = "The media to analyze",
            .valueName = "PATH",
            .repeated = true,
            .path = true},
           {.kind = value,
            .name = "work-dir",
            .help = "A directory for scratch files",
            .valueName = "DIR",
            .path = true},
           {.kind = value,
            .name = "results",
            .help = "The file to write the results to; must not exist",
            .valueName = "FILE",
            .path = true},
           {value, "id", "A name for the run", "TEXT"},
           {flag, "deep", "Request the deep analysis"},
           {.kind = value,
            .name = "snapshot",
            .help = "The positions in the media to take images at",
            .valueName = "POSITION",
            .repeated = true},
           {value, "max-width", "The largest width of an image, in pixels", "WIDTH"},
           {value, "height", "The height of every image, in pixels", "HEIGHT"},
           {value, "compression", "The compression factor of the images", "FACTOR"},
           {flag, "finder-images", "Let the desktop's file browser show the images"},
           {.kind = value, .name = "lut", .help = "A LUT to apply to the images", .valueName = "FILE", .path = true},
           {value, "parent-pid", "The process identifier of the application that starts the tool", "NUMBER"},
           {flag, "check", "Read the vector after \"--\" and report its errors"},
           {flag, "json", "Print a JSON list; with --check: basic, image, custodial, errors, imageErrors, warnings"},
           {flag, "null", "End each element with a NUL instead of a newline, for xargs -0"}},
      .exclusive = {"json", "null"},
      .action =
          [](const Arguments& arguments) {
            return arguments.has("check") ? checkAnalysisVector(arguments) : printAnalysisVector(arguments);
          },
  };
}

}  // namespace meridian::command
