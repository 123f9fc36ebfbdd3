#include "meridian/lut/lut_warning.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/base/text.h"
#include "meridian/lut/bit_depth.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/published_lut.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {
namespace {

double cubed(std::int64_t points) noexcept {
  const auto face = static_cast<double>(points);
  return face * face * face;
}

bool isCubeOf(std::size_t rows) noexcept {
  return cubed(std::llround(std::cbrt(static_cast<double>(rows)))) == static_cast<double>(rows);
}

/// Returns a colour as one number if its channels are equal, otherwise as three.
std::string textOf(const LutColor& color) {
  if (color.red == color.green && color.green == color.blue) return plainDecimalText(color.red);
  return plainDecimalText(color.red) + ' ' + plainDecimalText(color.green) + ' ' + plainDecimalText(color.blue);
}

/// Returns the axis order that the published format of such a file has; absent if the file is in none.
std::optional<LutAxisOrder> publishedOrder(const ParsedLutFile& file) {
  if (file.textFacts().threeDimensionalSize) return LutAxisOrder::redFastest;
  if (equalsIgnoringCase(pathExtension(file.file().path()), "3dl")) return LutAxisOrder::blueFastest;
  return std::nullopt;
}

class Warnings {
 public:
  Warnings(const ParsedLutFile& file, const ImageLutOptions& options)
      : file_(file), options_(options), lut_(describe(file)), facts_(file.textFacts()) {}

  std::vector<LutWarning> all() {
    warnOfDomain();
    warnOfRows();
    const auto order = isCube() ? publishedOrder(file_) : std::nullopt;
    if (order && order != options_.axisOrder) {
      add(LutWarningCode::otherAxisOrder, *order == LutAxisOrder::redFastest
                                              ? "red is fastest in the format, blue in this reading"
                                              : "blue is fastest in the format, red in this reading");
    }
    if (facts_.ignoredLines > 0) {
      add(LutWarningCode::ignoredLines, std::to_string(facts_.ignoredLines) +
                                            " after the first row, the first is line " +
                                            std::to_string(facts_.firstIgnoredLine));
    }
    return std::move(warnings_);
  }

 private:
  [[nodiscard]] bool isCube() const noexcept { return lut_.dimensions == LutDimensions::cube; }

  void add(LutWarningCode code, std::string detail) {
    warnings_.push_back({code, file_.file().path(), std::move(detail)});
  }

  void warnOfDomain() {
    if (options_.domain != LutInputDomain::dataRange) return;
    const double lastOfRows = lut_.inputBitDepth ? static_cast<double>(lut_.size - 1) : 1;
    const double lastInput = isCube() ? lut_.highValue : lastOfRows;
    const LutDeclaredDomain& domain = lut_.declaredDomain;
    if (domain != LutDeclaredDomain{{0, 0, 0}, {lastInput, lastInput, lastInput}, true} && domain.isDeclared) {
      add(LutWarningCode::domainNotApplied, textOf(domain.minimum) + " to " + textOf(domain.maximum));
    }
    const double fullScale = lut_.valueBitDepth ? static_cast<double>(largestCodeValue(*lut_.valueBitDepth)) : 1;
    if (isCube() && lut_.highValue < fullScale) {
      add(LutWarningCode::highestBelowFullScale,
          plainDecimalText(lut_.highValue) + " of " + plainDecimalText(fullScale));
    }
    if (isCube() && !domain.isDeclared && lut_.highValue > fullScale) {
      add(LutWarningCode::highestAboveFullScale,
          plainDecimalText(lut_.highValue) + " instead of " + plainDecimalText(fullScale));
    }
  }

  void warnOfRows() {
    if (!isCube() && !facts_.dimensions && isCubeOf(lut_.rows)) {
      const auto format = publishedLutFormat(file_.file());
      add(format && *format == LutFormat::threeDl ? LutWarningCode::cubeReadAs1D
                                                  : LutWarningCode::oneDimensionalByRowCount,
          std::to_string(lut_.rows) + " rows");
    }
    if (facts_.oneDimensionalSize && facts_.threeDimensionalSize) {
      add(LutWarningCode::bothSizesDeclared, isCube() ? "read as a cube" : "read as a 1D LUT");
    }
    if (isCube() && lut_.size == 1) add(LutWarningCode::cubeOfOnePoint, {});
    if (lut_.lowValue < 0) add(LutWarningCode::negativeValues, "the lowest is " + plainDecimalText(lut_.lowValue));
    const std::int64_t size =
        isCube() ? std::max(lut_.size, facts_.threeDimensionalSize.value_or(0)) : facts_.oneDimensionalSize.value_or(0);
    const double needed = isCube() ? cubed(size) : static_cast<double>(size);
    if (static_cast<double>(lut_.rows) < needed) {
      constexpr double mostRows = 0x1p53;
      add(LutWarningCode::tooFewRows,
          std::to_string(lut_.rows) + " of " + (needed < mostRows ? plainDecimalText(needed) : "an unreadable number"));
    }
  }

  const ParsedLutFile& file_;
  const ImageLutOptions& options_;
  LutDescription lut_;
  const LutTextFacts& facts_;
  std::vector<LutWarning> warnings_;
};

}  // namespace

std::vector<LutWarning> warningsOf(const ParsedLutFile& file, const ImageLutOptions& options) {
  return Warnings(file, options).all();
}

}  // namespace meridian::inline v0_2
