// The arguments of the media-analysis tool.
#include "meridian/cli/media_analysis_argument_factory.h"
#include "meridian/cli/media_analysis_errors.h"
#include "meridian/cli/media_analysis_reading.h"
#include "meridian/python/errors.h"
#include "meridian/python/module.h"
#include "meridian/python/record.h"

namespace meridian::inline v0_2::python {
namespace {

using py::literals::operator""_a;
using Factory = MediaAnalysisCLIArgumentFactory;
using Basic = Factory::BasicOptions;
using Image = Factory::ImageOptions;
using Custodial = Factory::CustodialOptions;

template <typename Problems>
py::list problemList(const Problems& problems) {
  py::list result;
  for (const auto& problem : problems) result.append(errorOf(problem));
  return result;
}

std::optional<std::string> stringOf(const std::optional<Path>& path) {
  return path ? std::optional(path->value) : std::nullopt;
}

/// Adds what all options have.
template <typename Options>
void addRendering(Record<Options>& record) {
  record.done()
      .def(
          "command_line_arguments", [](const Options& options) { return shown(options.commandLineArguments()); },
          "Returns the argument vector, without a program path.")
      .def(
          "warnings_of_writing",
          [](const Options& options) {
            return Typed<"list[MediaAnalysisCLIWritingWarning]">(problemList(warningsOfWriting(options)));
          },
          "Returns a warning for each option that a reader of the vector would not read as it is.");
}

void addBasic(const py::object& scope) {
  Record<Basic> record(scope, "BasicOptions", "What is analysed, and where the results go.");
  record
      .fact(
          "pathsToAnalyze",
          [](const Basic& options) {
            return shown(std::vector<std::string>(options.pathsToAnalyze().begin(), options.pathsToAnalyze().end()));
          },
          "The paths of the media.", /*isField=*/true)
      .fact(
          "workDirectory", [](const Basic& options) { return shown(options.workDirectory()); },
          "The directory for scratch files.", /*isField=*/true)
      .fact(
          "resultsFilePath", [](const Basic& options) { return shown(options.resultsFilePath()); },
          "The path of the file for the results.", /*isField=*/true)
      .fact(
          "analysisId", [](const Basic& options) { return shown(options.analysisId()); },
          "The name of the run; or None.", /*isField=*/true)
      .fact("deepAnalysis", &Basic::deepAnalysis, "Whether the deep analysis is requested.", /*isField=*/true)
      .value(
          [](const Words& paths, const Path& workDirectory, const Path& results, const std::optional<Path>& analysisId,
             bool deep) { return Basic(paths.values, stringOf(analysisId), workDirectory.value, results.value, deep); },
          "paths_to_analyze"_a, "work_directory"_a, "results_file_path"_a, "analysis_id"_a = py::none(),
          "deep_analysis"_a = false,
          "Makes the options, kept as given: errors() checks them. Raises TypeError for values of other types.");
  addRendering(record);
  record.type().def(
      "errors",
      [](const Basic& options) {
        return Typed<"list[MediaAnalysisBasicOptionsError]">(
            problemList(withoutLock([&] { return errorsOf(options); })));
      },
      "Returns the errors that would stop the tool, of the options and of the paths in the file system.");
}

void addImage(const py::object& scope) {
  Record<Image> record(scope, "ImageOptions", "Which still images are taken of the media.");
  record
      .fact(
          "snapshotLocations",
          [](const Image& options) {
            return std::vector<float>(options.snapshotLocations().begin(), options.snapshotLocations().end());
          },
          "The positions at which images are taken.", /*isField=*/true)
      .fact("maxImageWidth", &Image::maxImageWidth, "The largest width of an image, in pixels.", /*isField=*/true)
      .fact("imageHeight", &Image::imageHeight, "The height of every image in pixels, if it is fixed; or None.",
            /*isField=*/true)
      .fact("compressionFactor", &Image::compressionFactor, "The compression factor; or None.", /*isField=*/true)
      .fact("allowFinderImages", &Image::allowFinderImages, "Whether the desktop's file browser may show the images.",
            /*isField=*/true)
      .fact(
          "lutToApply", [](const Image& options) { return shown(options.lutToApply()); },
          "The path of the LUT that is applied to the images; or None.", /*isField=*/true)
      .value(
          [](const std::vector<float>& locations, float width, std::optional<float> height,
             std::optional<float> compression, bool allowFinderImages, const std::optional<Path>& lut) {
            return Image(locations, width, height, compression, allowFinderImages, stringOf(lut));
          },
          "snapshot_locations"_a, "max_image_width"_a, "image_height"_a = py::none(),
          "compression_factor"_a = py::none(), "allow_finder_images"_a = false, "lut_to_apply"_a = py::none(),
          "Makes the options, kept as given: errors() checks them. Raises TypeError for values of other types.");
  addRendering(record);
  record.type().def(
      "errors",
      [](const Image& options) {
        return Typed<"list[MediaAnalysisImageOptionsError]">(problemList(errorsOf(options)));
      },
      "Returns an error for each option that is missing.");
}

void addCustodial(const py::object& scope) {
  Record<Custodial> record(scope, "CustodialOptions", "Which application starts the tool.");
  record.fact("parentPid", &Custodial::parentPid, "The application's process identifier; or None.", /*isField=*/true)
      .fact("parentAppNumber", &Custodial::parentAppNumber, "Which application of the suite it is; or None.",
            /*isField=*/true)
      .value([](std::optional<std::int32_t> pid, std::optional<std::int32_t> number) { return Custodial(pid, number); },
             "parent_pid"_a = py::none(), "parent_app_number"_a = py::none(),
             "Makes the options. Both are whole numbers of 32 bits, or None. Raises TypeError for anything else.");
  addRendering(record);
}

}  // namespace

void addAnalysis(py::module_& module) {
  const py::class_<Factory, std::unique_ptr<Factory, py::nodelete>> factory(
      module, "MediaAnalysisCLIArgumentFactory",
      "The options of the media-analysis tool. Each group renders its argument vector.");
  addBasic(factory);
  addImage(factory);
  addCustodial(factory);

  using Reading = MediaAnalysisCLIReading;
  Record<Reading>(module, "MediaAnalysisCLIReading", "An argument vector of the analysis tool as options.")
      .field("basic", &Reading::basic, "What is analysed, and where the results go.")
      .field("image", &Reading::image, "Which still images are taken; None if the vector has no image flag.")
      .field("custodial", &Reading::custodial, "Which application starts the tool.")
      .fact(
          "warnings",
          [](const Reading& reading) { return Typed<"list[MediaAnalysisCLIWarning]">(problemList(reading.warnings)); },
          "The words that are not in the options, in the order of the vector.", /*isField=*/true)
      .fact(
          "unknownFlags", [](const Reading& reading) { return shown(reading.unknownFlags()); },
          "The flags that the tool does not know; None if there are none.")
      .fact("allFlagsAreValid", &Reading::allFlagsAreValid, "Whether the tool knows every flag of the vector.")
      .done();
  module.def(
      "read_media_analysis_arguments", [](const Words& words) { return readMediaAnalysisArguments(words.values); },
      "words"_a, "Reads an argument vector, without a program path. Never fails: what cannot be read is a warning.");
}

}  // namespace meridian::inline v0_2::python
