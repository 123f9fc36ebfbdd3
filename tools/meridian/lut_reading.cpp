#include "tools/meridian/lut_reading.h"

#include <iostream>
#include <string_view>
#include <utility>

#include "meridian/base/printable.h"
#include "meridian/lut/published_lut.h"
#include "tools/meridian/loaded_module.h"
#include "tools/meridian/lut_arguments.h"

namespace meridian::command {
namespace {

/// Returns the options that do what the remedy of a warning says; empty if none do.
std::string_view optionsFor(LutWarningCode code) noexcept {
  switch (code) {
    case LutWarningCode::domainNotApplied:
    case LutWarningCode::highestBelowFullScale:
    case LutWarningCode::highestAboveFullScale:
      return " (--domain declared, or --reading published)";
    case LutWarningCode::bothSizesDeclared:
    case LutWarningCode::cubeReadAs1D:
    case LutWarningCode::otherAxisOrder:
    case LutWarningCode::otherPublishedFormat:
      return " (--reading published)";
    case LutWarningCode::wholeNumbers:
      return " (--reading suite)";
    default:
      return {};
  }
}

/// Returns whether the suite's reading, which ignores what it does not understand, may still read the file.
bool mayBeReadLeniently(LutErrorCode code) noexcept {
  using enum LutErrorCode;
  return code == malformedLine || code == unsupportedSize || code == invalidDomain || code == truncated ||
         code == surplusRows || code == unknownCubeSize || code == implausibleValues;
}

/// Reads a file of a format that the library leaves to others.
Expected<PublishedLut, LutError> readByModule(const std::string& path, LutFormat format) {
  const auto symbol = moduleSymbol(MERIDIAN_LUT_FORMAT_MODULE, lutFormatModuleEntry);
  if (symbol) return reinterpret_cast<const LutFormatModule* (*)()>(*symbol)()->read(path, format);
  return Unexpected(LutError{.code = LutErrorCode::otherPublishedFormat,
                             .place = path,
                             .detail = std::string(description(format)) +
                                       ", which needs OpenColorIO, but the module for it cannot be loaded (" +
                                       symbol.error() + ")"});
}

ChosenLut suiteLut(const std::string& path, const ImageLutOptions& options) {
  auto file = parseLut(path);
  const auto format = publishedLutFormat(Url::fromFilePath(path));
  const bool isOther = format && !isReadBySuite(*format);
  if (!file) {
    // A file of another format is called that, not what its lines would be as rows.
    const LutError error = isOther ? LutError{.code = LutErrorCode::otherPublishedFormat,
                                              .place = path,
                                              .detail = std::string(description(*format))}
                                   : file.error();
    throw CommandError(error.message() + (format ? ", or try --reading published" : ""));
  }
  ChosenLut lut{std::shared_ptr<const ParsedLutFile>(*std::move(file)), options, {}};
  if (isOther) {
    lut.warnings.push_back({LutWarningCode::otherPublishedFormat, path, std::string(description(*format))});
  } else {
    lut.warnings = warningsOf(*lut.suiteFile(), options);
  }
  return lut;
}

}  // namespace

bool isReadBySuite(LutFormat format) noexcept { return format == LutFormat::cube || format == LutFormat::threeDl; }

Expected<std::unique_ptr<const ParsedLutFile>, LutError> parseLut(const std::string& path) {
  return ParsedLutFactory::parsing(Url::fromFilePath(path));
}

Expected<PublishedLut, LutError> readPublished(const std::string& path) {
  const Url file = Url::fromFilePath(path);
  auto lut = readPublishedLut(file);
  if (lut || lut.error().code != LutErrorCode::otherPublishedFormat) return lut;
  const auto format = publishedLutFormat(file);
  return format ? readByModule(path, *format) : Unexpected(format.error());
}

const ParsedLutFile* ChosenLut::suiteFile() const noexcept {
  const auto* const file = std::get_if<std::shared_ptr<const ParsedLutFile>>(&lut);
  return file == nullptr ? nullptr : file->get();
}

ImageLut ChosenLut::forFloats() const {
  if (const ParsedLutFile* const file = suiteFile()) return ImageLut::forFloats(*file, options);
  return ImageLut::forFloats(std::get<PublishedLut>(lut), options);
}

ImageLut ChosenLut::forCodeValues(int source, int destination) const {
  if (const ParsedLutFile* const file = suiteFile()) {
    return *ImageLut::forCodeValues(*file, source, destination, options);
  }
  return *ImageLut::forCodeValues(std::get<PublishedLut>(lut), source, destination, options);
}

LutReading chosenReading(const Arguments& arguments, LutReading byDefault) {
  const auto named = arguments.value("reading");
  for (const std::string name : {"axis-order", "domain"}) {
    if (!arguments.has(name)) continue;
    if (named == rawValue(LutReading::published)) {
      throw UsageError("--" + name + " is for --reading suite; a published format says itself what its files mean");
    }
    return LutReading::suite;
  }
  if (!named) return byDefault;
  return named == rawValue(LutReading::suite) ? LutReading::suite : LutReading::published;
}

ChosenLut readChosenLut(const Arguments& arguments, LutReading byDefault) {
  const std::string path = *arguments.value("lut");
  const ImageLutOptions options = chosenImageLutOptions(arguments);
  if (chosenReading(arguments, byDefault) == LutReading::suite) return suiteLut(path, options);
  auto published = readPublished(path);
  if (published) {
    if (arguments.has("interpolation")) {
      for (LutStage& stage : published->stages) {
        if (auto* const cube = std::get_if<LutCubeStage>(&stage)) cube->interpolation.reset();
      }
    }
    auto warnings = published->warnings;
    return {*std::move(published), options, std::move(warnings)};
  }
  const LutError& error = published.error();
  if (error.code != LutErrorCode::noPublishedFormat) {
    throw CommandError(error.message() +
                       (mayBeReadLeniently(error.code) ? ", or try --reading suite, which is lenient" : ""));
  }
  ChosenLut lut = suiteLut(path, options);
  lut.warnings.insert(lut.warnings.begin(), {LutWarningCode::noPublishedFormat, path});
  return lut;
}

std::string messageOf(const LutWarning& warning) {
  LutWarning withoutPlace = warning;
  withoutPlace.place.clear();
  return withoutPlace.message() + std::string(optionsFor(warning.code));
}

void printWarnings(std::span<const LutWarning> warnings) {
  for (const LutWarning& warning : warnings) {
    std::cerr << "meridian: " << inQuotes(warning.place) << ": warning: " << messageOf(warning) << '\n';
  }
}

std::string describedStage(const LutStage& stage) {
  struct Describe {
    std::string operator()(const LutMatrix& /*stage*/) const { return "matrix"; }
    std::string operator()(const LutRange& /*stage*/) const { return "range"; }
    std::string operator()(const LutCurve& curve) const {
      return "curve of " + std::to_string(curve.rows->size()) + " rows";
    }
    std::string operator()(const LutCubeStage& cube) const {
      return "cube of " + std::to_string(cube.faceSize) + " points per axis" +
             (cube.interpolation ? ", " + std::string(rawValue(*cube.interpolation)) : "");
    }
    std::string operator()(const LutFunction& /*stage*/) const { return "function of OpenColorIO"; }
  };
  return std::visit(Describe{}, stage);
}

Option readingOption(LutReading byDefault) {
  const std::string isDefault = " (the default)";
  const auto name = [&](LutReading reading) {
    return std::string(rawValue(reading)) + (reading == byDefault ? isDefault : "");
  };
  return {Option::Kind::value,
          "reading",
          "How FILE is read: " + name(LutReading::published) +
              ", as its format says, so that images look as in other "
              "programs and code values are rounded to the nearest; or " +
              name(LutReading::suite) +
              ", as the suite reads every text, which --axis-order and --domain choose and adjust",
          "READING",
          {rawValue(LutReading::published), rawValue(LutReading::suite)}};
}

}  // namespace meridian::command
