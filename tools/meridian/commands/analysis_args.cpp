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
    throw UsageError("--" + std::string(name) + " takes a number such as 0.5, and not " + inQuotes(text));
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
  const bool isAsked = std::ranges::any_of(imageOptionNames, [&](const char* name) { return arguments.has(name); });
  if (!isAsked) return std::nullopt;
  for (const char* const name : {"snapshot", "max-width"}) {
    if (!arguments.has(name)) throw UsageError("images need --" + std::string(name) + " as well");
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
    throw UsageError("--parent-pid takes a process identifier, and not " + inQuotes(*text));
  }
  return Factory::custodialOptions(static_cast<std::int32_t>(*number));
}

/// What would make the tool read something else, or else what it could not work with.
std::vector<std::string> refusalsOf(const Factory::BasicOptions& basic,
                                    const std::optional<Factory::ImageOptions>& image,
                                    std::span<const MediaAnalysisCLIOptions* const> all) {
  std::vector<std::string> refusals;
  for (const MediaAnalysisCLIOptions* const options : all) {
    for (const MediaAnalysisCLILoss& loss : lossesInReading(*options)) refusals.push_back(loss.message());
  }
  if (!refusals.empty()) return refusals;
  for (const MediaAnalysisCLIError error : missingOptions(basic)) refusals.emplace_back(description(error));
  if (!image) return refusals;
  for (const MediaAnalysisCLIImageError error : errorsOf(*image)) refusals.emplace_back(description(error));
  return refusals;
}

Status printAnalysisVector(const Arguments& arguments) {
  const auto basic = basicOptions(arguments);
  const auto image = imageOptions(arguments);
  const auto custodial = custodialOptions(arguments);
  std::vector<const MediaAnalysisCLIOptions*> all{&basic};
  if (image) all.push_back(&*image);
  if (custodial) all.push_back(&*custodial);

  std::string message;
  for (const std::string& refusal : refusalsOf(basic, image, all)) {
    message += (message.empty() ? "" : "\nmeridian: ") + refusal;
  }
  if (!message.empty()) throw CommandError(message);

  std::vector<std::string> vector;
  for (const MediaAnalysisCLIOptions* const options : all) {
    std::ranges::move(options->commandLineArguments(), std::back_inserter(vector));
  }
  printVector(vector, arguments);
  return done;
}

/// A vector as it is read, with all that is wrong with it.
struct CheckedVector {
  MediaAnalysisCLIReading read;
  std::vector<MediaAnalysisCLIFault> errors;
  std::vector<MediaAnalysisCLIImageError> imageErrors;

  explicit CheckedVector(std::span<const std::string_view> words)
      : read(readMediaAnalysisArguments(words)), errors(faultsOf(read.basic)) {
    if (read.image) imageErrors = errorsOf(*read.image);
  }

  [[nodiscard]] bool isSound() const { return errors.empty() && imageErrors.empty() && read.remarks.empty(); }
};

/// As the number that was written, not as the float's exact value.
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

Json asJson(const CheckedVector& checked) {
  const auto& [read, faults, imageFaults] = checked;
  Json errors = Json::array();
  for (const MediaAnalysisCLIFault& fault : faults) {
    errors.push_back({{"error", rawValue(fault.error)}, {"path", fault.path}, {"message", fault.message()}});
  }
  Json imageErrors = Json::array();
  for (const MediaAnalysisCLIImageError error : imageFaults) {
    imageErrors.push_back({{"error", rawValue(error)}, {"message", message(error)}});
  }
  Json remarks = Json::array();
  for (const MediaAnalysisCLIRemark& remark : read.remarks) {
    remarks.push_back({{"remark", rawValue(remark.kind)},
                       {"flag", remark.flag},
                       {"value", orNull(remark.value)},
                       {"suggestion", orNull(remark.suggestion())},
                       {"message", remark.message()}});
  }
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
          {"errors", errors},
          {"imageErrors", imageErrors},
          {"remarks", remarks}};
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

  if (checked.isSound()) {
    std::cout << '\n' << styled(Style::good, "No errors") << '\n';
    return;
  }
  if (!checked.errors.empty() || !checked.imageErrors.empty()) {
    std::cout << '\n' << styled(Style::heading, "Errors") << '\n';
    for (const auto& fault : checked.errors) std::cout << "  " << styled(Style::bad, fault.message()) << '\n';
    for (const auto error : checked.imageErrors) std::cout << "  " << styled(Style::bad, message(error)) << '\n';
  }
  if (!checked.read.remarks.empty()) {
    std::cout << '\n' << styled(Style::heading, "Not read") << '\n';
    for (const auto& remark : checked.read.remarks) {
      std::cout << "  " << styled(Style::warning, remark.message()) << '\n';
    }
  }
}

Status checkAnalysisVector(const Arguments& arguments) {
  const auto refuseOption = [&arguments](const char* name) {
    if (arguments.has(name)) throw UsageError("--check reads a vector and takes no --" + std::string(name));
  };
  std::ranges::for_each(otherOptionNames, refuseOption);
  std::ranges::for_each(imageOptionNames, refuseOption);
  const CheckedVector checked(arguments.words);
  if (arguments.has("json")) {
    warnOfInvalidText(arguments.words, "Without --json they are shown in the form \\xff");
    printJson(asJson(checked));
  } else {
    printForPeople(checked);
  }
  return checked.isSound() ? done : failed;
}

std::vector<std::string> analysisFlags() {
  std::vector<std::string> flags;
  for (const auto flag : allCases<MediaAnalysisCLIFlag>()) flags.push_back(cliFlag(flag));
  for (const auto flag : allCases<MediaAnalysisImageCLIFlags>()) flags.push_back(cliFlag(flag));
  for (const auto flag : allCases<CLICustodialFlag>()) flags.push_back(cliFlag(flag));
  return flags;
}

}  // namespace

Subcommand analysisArgsCommand() {
  using enum Option::Kind;
  return {
      .name = "analysis-args",
      .description = "Print the media-analysis tool's argument vector, or check one",
      .details =
          "--path, --work-dir and --results are needed, and --snapshot and --max-width for images. The paths need not\n"
          "exist. What the tool would not read as it is given, such as a path that begins with \"-\", is refused with\n"
          "status 1. With --check the words behind \"--\" are read as the tool reads them; the exit status is 1 when\n"
          "there is an error or a word that is not read. Nothing is created.",
      .example =
          "meridian analysis-args --path /card/a.mov --work-dir /tmp --results /out/a.json --deep\n"
          "meridian analysis-args --check -- -pathToAnalyze /card/a.mov -workDirectory /tmp",
      .takesWords = true,
      .wordsOption = "check",
      .wordFlags = analysisFlags(),
      .options = {{.kind = value,
                   .name = "path",
                   .help = "The media to analyze",
                   .valueName = "PATH",
                   .repeated = true,
                   .path = true},
                  {.kind = value,
                   .name = "work-dir",
                   .help = "A folder for scratch files",
                   .valueName = "FOLDER",
                   .path = true},
                  {.kind = value,
                   .name = "results",
                   .help = "The file that the results are written to",
                   .valueName = "FILE",
                   .path = true},
                  {value, "id", "The identifier of the run", "TEXT"},
                  {flag, "deep", "Ask for the deep analysis"},
                  {.kind = value,
                   .name = "snapshot",
                   .help = "The positions to take images at",
                   .valueName = "POSITION",
                   .repeated = true},
                  {value, "max-width", "The largest width of an image", "WIDTH"},
                  {value, "height", "The height of every image", "HEIGHT"},
                  {value, "compression", "The compression factor of the images", "FACTOR"},
                  {flag, "finder-images", "Let the desktop's file browser show the images"},
                  {.kind = value,
                   .name = "lut",
                   .help = "A look-up table to lead the images through",
                   .valueName = "FILE",
                   .path = true},
                  {value, "parent-pid", "The process identifier of the application that starts the tool", "NUMBER"},
                  {flag, "check", "Read the vector behind \"--\" and report its errors"},
                  {flag, "json",
                   "Print a JSON list; with --check: basic, image, custodial, errors, imageErrors, remarks"},
                  {flag, "null", "End each element with a NUL, for xargs -0; an element may hold line ends"}},
      .exclusive = {"json", "null"},
      .action =
          [](const Arguments& arguments) {
            return arguments.has("check") ? checkAnalysisVector(arguments) : printAnalysisVector(arguments);
          },
  };
}

}  // namespace meridian::command
