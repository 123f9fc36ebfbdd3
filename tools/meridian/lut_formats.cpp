// Reads published LUT formats by OpenColorIO, as stages of the library.
#include "tools/meridian/lut_formats.h"

#include <OpenColorIO/OpenColorIO.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/base/ascii.h"
#include "meridian/base/text.h"

namespace meridian::command {
namespace {

namespace ocio = OCIO_NAMESPACE;

/// Returns the matrix; absent if alpha has a part in it or is changed, or if it is to be inverted.
std::optional<LutStage> stageOf(const ocio::MatrixTransform& transform) {
  std::array<double, 16> factors{};
  std::array<double, 4> offsets{};
  transform.getMatrix(factors.data());
  transform.getOffset(offsets.data());
  LutMatrix matrix;
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) matrix.rows[row][column] = factors[row * 4 + column];
    if (factors[row * 4 + 3] != 0) return std::nullopt;
    matrix.offset[row] = offsets[row];
  }
  constexpr std::array unchangedAlpha{0.0, 0.0, 0.0, 1.0};
  const bool changesAlpha = !std::equal(factors.begin() + 12, factors.end(), unchangedAlpha.begin());
  if (changesAlpha || offsets[3] != 0) return std::nullopt;
  return matrix;
}

LutStage stageOf(const ocio::RangeTransform& transform) {
  const bool hasLow = transform.hasMinInValue() && transform.hasMinOutValue();
  const bool hasHigh = transform.hasMaxInValue() && transform.hasMaxOutValue();
  double scale = 1;
  double offset = 0;
  if (hasLow && hasHigh) {
    scale = (transform.getMaxOutValue() - transform.getMinOutValue()) /
            (transform.getMaxInValue() - transform.getMinInValue());
    offset = transform.getMinOutValue() - scale * transform.getMinInValue();
  } else if (hasLow) {
    offset = transform.getMinOutValue() - transform.getMinInValue();
  } else if (hasHigh) {
    offset = transform.getMaxOutValue() - transform.getMaxInValue();
  }
  LutRange range{.scale = {scale, scale, scale}, .offset = {offset, offset, offset}};
  if (transform.getStyle() == ocio::RANGE_NO_CLAMP) return range;
  const auto all = [](double value) { return LutColor{value, value, value}; };
  if (hasLow) range.lowest = all(transform.getMinOutValue());
  if (hasHigh) range.highest = all(transform.getMaxOutValue());
  return range;
}

/// Returns the 1D LUT; absent if its rows belong to half-precision numbers, or if it preserves hues.
std::optional<LutStage> stageOf(const ocio::Lut1DTransform& transform) {
  if (transform.getInputHalfDomain() || transform.getHueAdjust() != ocio::HUE_NONE) return std::nullopt;
  std::vector<LutColor> rows(transform.getLength());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    std::array<float, 3> row{};
    transform.getValue(i, row[0], row[1], row[2]);
    rows[i] = {row[0], row[1], row[2]};
  }
  return LutCurve{std::make_shared<const std::vector<LutColor>>(std::move(rows))};
}

LutStage stageOf(const ocio::Lut3DTransform& transform) {
  const std::size_t face = transform.getGridSize();
  std::vector<LutColor> points;
  points.reserve(face * face * face);
  for (std::size_t red = 0; red < face; ++red) {
    for (std::size_t green = 0; green < face; ++green) {
      for (std::size_t blue = 0; blue < face; ++blue) {
        std::array<float, 3> point{};
        transform.getValue(red, green, blue, point[0], point[1], point[2]);
        points.push_back({point[0], point[1], point[2]});
      }
    }
  }
  LutCubeStage cube{.faceSize = static_cast<std::int64_t>(face),
                    .points = std::make_shared<const std::vector<LutColor>>(std::move(points))};
  if (transform.getInterpolation() == ocio::INTERP_TETRAHEDRAL) cube.interpolation = LutInterpolation::tetrahedral;
  if (transform.getInterpolation() == ocio::INTERP_LINEAR) cube.interpolation = LutInterpolation::trilinear;
  return cube;
}

/// Returns the stage that a transform is; absent if it is not one.
std::optional<LutStage> stageOf(const ocio::Transform& transform) {
  if (transform.getDirection() != ocio::TRANSFORM_DIR_FORWARD) return std::nullopt;
  switch (transform.getTransformType()) {
    case ocio::TRANSFORM_TYPE_MATRIX:
      return stageOf(dynamic_cast<const ocio::MatrixTransform&>(transform));
    case ocio::TRANSFORM_TYPE_RANGE:
      return stageOf(dynamic_cast<const ocio::RangeTransform&>(transform));
    case ocio::TRANSFORM_TYPE_LUT1D:
      return stageOf(dynamic_cast<const ocio::Lut1DTransform&>(transform));
    case ocio::TRANSFORM_TYPE_LUT3D:
      return stageOf(dynamic_cast<const ocio::Lut3DTransform&>(transform));
    default:
      return std::nullopt;
  }
}

/// Returns the plain name of a transform that is not a stage.
std::string_view nameOf(const ocio::Transform& transform) {
  switch (transform.getTransformType()) {
    case ocio::TRANSFORM_TYPE_MATRIX:
      return transform.getDirection() == ocio::TRANSFORM_DIR_INVERSE
                 ? "inverted matrix"
                 : "matrix with alpha, which counts as 0 and is not changed";
    case ocio::TRANSFORM_TYPE_RANGE:
      return "inverted range";
    case ocio::TRANSFORM_TYPE_LUT1D:
      return transform.getDirection() == ocio::TRANSFORM_DIR_INVERSE
                 ? "inverted 1D LUT"
                 : "1D LUT with half-float inputs or hue adjustment";
    case ocio::TRANSFORM_TYPE_LUT3D:
      return "inverted cube";
    case ocio::TRANSFORM_TYPE_CDL:
      return "ASC CDL";
    case ocio::TRANSFORM_TYPE_EXPONENT:
    case ocio::TRANSFORM_TYPE_EXPONENT_WITH_LINEAR:
      return "exponent";
    case ocio::TRANSFORM_TYPE_LOG:
    case ocio::TRANSFORM_TYPE_LOG_AFFINE:
    case ocio::TRANSFORM_TYPE_LOG_CAMERA:
      return "logarithm";
    case ocio::TRANSFORM_TYPE_EXPOSURE_CONTRAST:
      return "exposure and contrast";
    case ocio::TRANSFORM_TYPE_FIXED_FUNCTION:
      return "fixed function";
    case ocio::TRANSFORM_TYPE_GRADING_PRIMARY:
    case ocio::TRANSFORM_TYPE_GRADING_RGB_CURVE:
    case ocio::TRANSFORM_TYPE_GRADING_TONE:
      return "grading";
    default:
      return "other operation";
  }
}

/// A group of transforms that OpenColorIO computes.
LutFunction functionOf(const ocio::ConstConfigRcPtr& config, const ocio::ConstTransformRcPtr& transforms) {
  return {[processor = config->getProcessor(transforms)->getOptimizedCPUProcessor(ocio::OPTIMIZATION_LOSSLESS)](
              std::span<float> red, std::span<float> green, std::span<float> blue) {
    ocio::PlanarImageDesc image(red.data(), green.data(), blue.data(), nullptr, static_cast<long>(red.size()), 1);
    processor->apply(image);
  }};
}

/// Collects the stages of a LUT.
class Stages {
 public:
  Stages(ocio::ConstConfigRcPtr config, PublishedLut& lut) : config_(std::move(config)), lut_(lut) {}

  void add(const ocio::GroupTransform& group) {
    for (int i = 0; i < group.getNumTransforms(); ++i) {
      const ocio::ConstTransformRcPtr transform = group.getTransform(i);
      if (auto stage = stageOf(*transform)) {
        endFunction();
        lut_.stages.push_back(*std::move(stage));
      } else {
        addToFunction(transform);
      }
    }
    endFunction();
    if (names_.empty()) return;
    lut_.warnings.push_back({LutWarningCode::otherLibrary, lut_.path, names_ + " (OpenColorIO)"});
  }

 private:
  void addToFunction(const ocio::ConstTransformRcPtr& transform) {
    if (!function_) function_ = ocio::GroupTransform::Create();
    function_->appendTransform(transform->createEditableCopy());
    const std::string_view name = nameOf(*transform);
    if (names_.find(name) == std::string::npos) names_.append(names_.empty() ? "" : ", ").append(name);
  }

  void endFunction() {
    if (!function_) return;
    lut_.stages.emplace_back(functionOf(config_, function_));
    function_.reset();
  }

  ocio::ConstConfigRcPtr config_;
  PublishedLut& lut_;
  ocio::GroupTransformRcPtr function_;
  std::string names_;
};

/// Returns a context in which a "$" or "%" in a file's name stays as it is.
ocio::ConstContextRcPtr contextOfNoVariables() {
  const auto context = ocio::Context::Create();
  context->setEnvironmentMode(ocio::ENV_ENVIRONMENT_LOAD_PREDEFINED);
  return context;
}

/// Returns the reason that a message of OpenColorIO gives, on one line.
std::string reasonOf(std::string text, LutFormat format) {
  // The message lists those of all readers for the extension, of which two formats share one.
  if (format == LutFormat::houdini && text.find("'houdini'") != std::string::npos)
    text.erase(0, text.find("'houdini'"));
  constexpr std::string_view lead = "failed with: ";
  if (const std::size_t place = text.find(lead); place != std::string::npos) text.erase(0, place + lead.size());
  text.erase(std::min(text.find("    '"), text.size()));
  std::ranges::replace(text, '\n', ' ');
  if (const std::size_t place = text.find(".. "); place != std::string::npos) text.erase(place, 1);
  while (!text.empty() && (detail::isAsciiWhiteSpace(text.back()) || text.back() == '.')) text.pop_back();
  return text;
}

Unexpected<LutError> errorOf(const std::string& path, LutFormat format, const std::string& reason) {
  return Unexpected(LutError{
      .code = LutErrorCode::notReadByLibrary, .place = path, .detail = std::string(description(format)) + reason});
}

Expected<PublishedLut, LutError> readByOpenColorIO(const std::string& path, LutFormat format) {
  try {
    // A level that the environment sets cannot be changed, but its messages need not go anywhere.
    ocio::SetLoggingFunction([](const char* /*message*/) {});
    const auto config = ocio::Config::CreateRaw();
    const auto transform = ocio::FileTransform::Create();
    transform->setSrc(std::filesystem::absolute(path).c_str());
    transform->setInterpolation(ocio::INTERP_DEFAULT);
    PublishedLut lut{.format = format, .path = path};
    const auto processor = config->getProcessor(contextOfNoVariables(), transform, ocio::TRANSFORM_DIR_FORWARD);
    Stages(config, lut).add(*processor->createGroupTransform());
    warnOfResults(lut);
    return lut;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    const std::string reason = reasonOf(error.what(), format);
    // Readers put what std::length_error says, such as "vector::reserve", into an exception of their own.
    const bool isTooLarge = reason.find("vector") != std::string::npos && reason.find(' ') == std::string::npos;
    return errorOf(path, format, isTooLarge ? ", declares a size that is too large" : ", says OpenColorIO: " + reason);
  }
}

}  // namespace

extern "C" const LutFormatModule* meridianLutFormatModule() {
  static constexpr LutFormatModule module{&readByOpenColorIO};
  return &module;
}

}  // namespace meridian::command
