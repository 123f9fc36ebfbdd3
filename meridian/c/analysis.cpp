#include "meridian/c/analysis.h"

#include <algorithm>
#include <iterator>

#include "meridian/c/handles.h"
#include "meridian/cli/media_analysis_argument_factory.h"
#include "meridian/cli/media_analysis_errors.h"
#include "meridian/cli/media_analysis_reading.h"

namespace m = meridian;
using m::c::created;
using m::c::textOf;
using m::c::viewOf;

using Factory = m::MediaAnalysisCLIArgumentFactory;

struct MeridianAnalysis {
  explicit MeridianAnalysis(m::MediaAnalysisCLIReading&& reading)
      : basic(std::move(reading.basic)),
        image(std::move(reading.image)),
        custodial(std::move(reading.custodial)),
        warnings(m::c::errorsOfAll(reading.warnings)) {
    std::ranges::transform(basic.pathsToAnalyze(), std::back_inserter(paths),
                           [](const std::string& path) { return textOf(&path); });
  }

  /// Calls the function with each group of options that there is.
  template <typename Function>
  void forEach(Function&& function) const {
    function(basic);
    if (image) function(*image);
    function(custodial);
  }

  Factory::BasicOptions basic;
  std::optional<Factory::ImageOptions> image;
  Factory::CustodialOptions custodial;
  std::vector<MeridianError> warnings;
  /// Views of those of `basic`.
  std::vector<MeridianText> paths;
};

namespace {

std::optional<std::string> stringOf(MeridianText text) {
  if (text.data == nullptr) return std::nullopt;
  return std::string(viewOf(text));
}

template <typename Value>
std::optional<Value> valueIf(bool isPresent, Value value) {
  return isPresent ? std::optional(value) : std::nullopt;
}

}  // namespace

MeridianAnalysis* meridian_analysis_create(const MeridianAnalysisOptions* options, MeridianError** error) noexcept {
  return created(error, [&] {
    const MeridianAnalysisOptions& given = *options;
    std::optional<Factory::ImageOptions> image;
    if (given.has_images) {
      image.emplace(std::vector<float>(given.snapshot_locations, given.snapshot_locations + given.snapshot_count),
                    given.max_image_width, valueIf(given.has_image_height, given.image_height),
                    valueIf(given.has_compression_factor, given.compression_factor), given.allow_finder_images,
                    stringOf(given.lut_to_apply));
    }
    return new MeridianAnalysis(
        {Factory::BasicOptions(m::c::stringsOf(given.paths_to_analyze, given.path_count), stringOf(given.analysis_id),
                               std::string(viewOf(given.work_directory)), std::string(viewOf(given.results_file_path)),
                               given.deep_analysis),
         std::move(image),
         Factory::CustodialOptions(valueIf(given.has_parent_pid, given.parent_pid),
                                   valueIf(given.has_parent_app_number, given.parent_app_number)),
         {}});
  });
}

MeridianAnalysis* meridian_analysis_create_from_words(const MeridianText* words, size_t count,
                                                      MeridianError** error) noexcept {
  return created(error, [&] {
    return new MeridianAnalysis(m::readMediaAnalysisArguments(m::c::WordViews(words, count).views()));
  });
}

void meridian_analysis_destroy(MeridianAnalysis* analysis) noexcept { delete analysis; }

MeridianAnalysisOptions meridian_analysis_options(const MeridianAnalysis* analysis) noexcept {
  const auto& [basic, image, custodial, warnings, paths] = *analysis;
  MeridianAnalysisOptions options{};
  options.paths_to_analyze = paths.data();
  options.path_count = paths.size();
  options.analysis_id = textOf(basic.analysisId());
  options.work_directory = textOf(basic.workDirectory());
  options.results_file_path = textOf(basic.resultsFilePath());
  options.deep_analysis = basic.deepAnalysis();
  options.has_images = image.has_value();
  if (image) {
    options.snapshot_locations = image->snapshotLocations().data();
    options.snapshot_count = image->snapshotLocations().size();
    options.max_image_width = image->maxImageWidth();
    options.has_image_height = image->imageHeight().has_value();
    options.image_height = image->imageHeight().value_or(0);
    options.has_compression_factor = image->compressionFactor().has_value();
    options.compression_factor = image->compressionFactor().value_or(0);
    options.allow_finder_images = image->allowFinderImages();
    options.lut_to_apply = textOf(image->lutToApply());
  }
  options.has_parent_pid = custodial.parentPid().has_value();
  options.parent_pid = custodial.parentPid().value_or(0);
  options.has_parent_app_number = custodial.parentAppNumber().has_value();
  options.parent_app_number = custodial.parentAppNumber().value_or(0);
  return options;
}

MeridianTexts* meridian_analysis_command_line_create(const MeridianAnalysis* analysis, MeridianError** error) noexcept {
  return created(error, [&] {
    std::vector<std::string> words;
    analysis->forEach([&](const m::MediaAnalysisCLIOptions& options) {
      std::ranges::move(options.commandLineArguments(), std::back_inserter(words));
    });
    return new MeridianTexts(std::move(words));
  });
}

size_t meridian_analysis_warning_count(const MeridianAnalysis* analysis) noexcept { return analysis->warnings.size(); }

const MeridianError* meridian_analysis_warning_at(const MeridianAnalysis* analysis, size_t index) noexcept {
  return &analysis->warnings[index];
}

MeridianErrors* meridian_analysis_errors_create(const MeridianAnalysis* analysis, MeridianError** error) noexcept {
  return created(error, [&] {
    auto errors = m::c::errorsOfAll(m::errorsOf(analysis->basic));
    if (analysis->image) {
      std::ranges::move(m::c::errorsOfAll(m::errorsOf(*analysis->image)), std::back_inserter(errors));
    }
    return new MeridianErrors{std::move(errors)};
  });
}

MeridianErrors* meridian_analysis_writing_warnings_create(const MeridianAnalysis* analysis,
                                                          MeridianError** error) noexcept {
  return created(error, [&] {
    std::vector<MeridianError> warnings;
    analysis->forEach([&](const m::MediaAnalysisCLIOptions& options) {
      std::ranges::move(m::c::errorsOfAll(m::warningsOfWriting(options)), std::back_inserter(warnings));
    });
    return new MeridianErrors{std::move(warnings)};
  });
}
