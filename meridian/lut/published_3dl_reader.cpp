// Reads .3dl files as published: rows of code values, blue fastest, with an optional shaper before them.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/base/text.h"
#include "meridian/lut/bit_depth.h"
#include "meridian/lut/published_lut_reading.h"

namespace meridian::inline v0_2::detail {
namespace {

constexpr auto mostRows = static_cast<std::size_t>(mostCubePoints * mostCubePoints * mostCubePoints);

/// A lower highest value is that of no bit depth in use.
constexpr double leastHighest = 128;

bool isWhole(double number) noexcept { return std::trunc(number) == number; }

bool isWhole(const LutColor& color) noexcept {
  return isWhole(color.red) && isWhole(color.green) && isWhole(color.blue);
}

/// Returns the bit depth of code values with this highest one: the smallest whose range, doubled, holds it.
int impliedDepth(double highest) noexcept {
  for (const int depth : {8, 10, 12}) {
    if (highest < std::ldexp(2.0, depth)) return depth;
  }
  return 16;
}

double fullScaleOf(int depth) noexcept { return static_cast<double>(largestCodeValue(depth)); }

/// Returns whether values rise from 0 to full scale in a straight line, but for less than 2 code values.
bool isStraight(std::span<const double> values, double fullScale) noexcept {
  const double step = fullScale / static_cast<double>(values.size() - 1);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (std::fabs(static_cast<double>(i) * step - values[i]) >= 2) return false;
  }
  return true;
}

class ThreeDlReader {
 public:
  explicit ThreeDlReader(TextLines& lines) : lines_(lines), lut_{.format = LutFormat::threeDl, .path = lines.path()} {}

  Expected<PublishedLut, LutError> read() {
    if (auto taken = readLines(); !taken) return Unexpected(std::move(taken).error());
    const auto face = faceSize();
    if (!face) return Unexpected(face.error());
    if (auto added = addShaper(); !added) return Unexpected(std::move(added).error());
    if (auto added = addCube(*face); !added) return Unexpected(std::move(added).error());
    ignored_.warn(lut_);
    return std::move(lut_);
  }

 private:
  using Result = Expected<void, LutError>;

  Result readLines() {
    while (true) {
      auto row = lines_.nextRow();
      if (!row) {
        const auto line = lines_.next();
        if (!line) return {};
        if (line->empty() || line->starts_with('#')) continue;
        if (lines_.isOverlong()) return lines_.lineError(LutErrorCode::malformedLine);
        row = colorOf(*line);
        if (!row) {
          auto taken = readOtherLine(*line);
          if (taken) continue;
          if (!lines_.isUnterminated()) return taken;
          const auto face = faceSize();
          const bool isCut = !face && face.error().code == LutErrorCode::truncated;
          return isCut ? Unexpected(face.error()) : std::move(taken);
        }
      }
      if (!isWhole(*row)) return lines_.lineError(LutErrorCode::malformedLine);
      if (points_.size() == mostRows) return lines_.lineError(LutErrorCode::surplusRows);
      points_.push_back(*row);
      highest_ = std::max({highest_, row->red, row->green, row->blue});
    }
  }

  /// Reads a line that is not a row: a keyword or the shaper.
  Result readOtherLine(std::string_view line) {
    std::string_view rest = line;
    const std::string_view keyword = firstWord(rest);
    const auto is = [keyword](std::string_view other) { return equalsIgnoringCase(keyword, other); };
    if (is("Mesh")) return readMesh(rest);
    if (is("3DMESH") || is("gamma") || equalsIgnoringCase(keyword.substr(0, 3), "LUT")) return {};
    if (!beginsLikeNumber(line)) {
      ignored_.add(lines_);
      return {};
    }
    return readShaper(line);
  }

  Result readMesh(std::string_view text) {
    const auto inputDepth = integerFromText(firstWord(text));
    const auto outputDepth = integerFromText(firstWord(text));
    if (meshFace_ || !inputDepth || !outputDepth || *outputDepth < 8 || *outputDepth > 16 || !firstWord(text).empty()) {
      return lines_.lineError(LutErrorCode::malformedLine);
    }
    constexpr std::int64_t mostInputDepth = 7;  // 129 points; 8 is one more than 256
    if (*inputDepth < 0 || *inputDepth > mostInputDepth) return lines_.lineError(LutErrorCode::unsupportedSize);
    meshFace_ = (std::size_t{1} << static_cast<unsigned>(*inputDepth)) + 1;
    points_.reserve(std::min(*meshFace_ * *meshFace_ * *meshFace_, lines_.mostRows()));
    declaredDepth_ = static_cast<int>(*outputDepth);
    return {};
  }

  Result readShaper(std::string_view line) {
    std::vector<double> values;
    while (true) {
      const std::string_view word = firstWord(line);
      if (word.empty()) break;
      const auto value = integerFromText(word);
      if (!value || values.size() == static_cast<std::size_t>(mostCurveRows)) {
        return lines_.lineError(LutErrorCode::malformedLine);
      }
      values.push_back(static_cast<double>(*value));
    }
    if (values.size() <= 3 || !shaper_.empty() || !points_.empty()) {
      return lines_.lineError(LutErrorCode::malformedLine);
    }
    shaper_ = std::move(values);
    return {};
  }

  /// Returns the points per axis: as the mesh line declares, or as the number of rows says.
  Expected<std::size_t, LutError> faceSize() const {
    const std::size_t rows = points_.size();
    const auto cubeOf = [](std::size_t face) { return face * face * face; };
    if (meshFace_) {
      if (rows == cubeOf(*meshFace_)) return *meshFace_;
      return lines_.rowsError(rows < cubeOf(*meshFace_) ? LutErrorCode::truncated : LutErrorCode::surplusRows, rows,
                              cubeOf(*meshFace_));
    }
    const auto face = static_cast<std::size_t>(std::lround(std::cbrt(static_cast<double>(rows))));
    if (face >= 2 && rows == cubeOf(face)) return face;
    const std::size_t shaperFace = shaper_.size();
    if (shaperFace <= static_cast<std::size_t>(mostCubePoints) && rows < cubeOf(shaperFace)) {
      return lines_.rowsError(LutErrorCode::truncated, rows, cubeOf(shaperFace));
    }
    return lines_.error(LutErrorCode::unknownCubeSize, std::to_string(rows) + " rows read");
  }

  Result addShaper() {
    if (shaper_.empty()) return {};
    const double highest = *std::ranges::max_element(shaper_);
    if (highest < leastHighest) return lines_.error(LutErrorCode::implausibleValues, "in the mesh values");
    const double fullScale = fullScaleOf(impliedDepth(highest));
    if (isStraight(shaper_, fullScale)) return {};
    std::vector<LutColor> rows;
    rows.reserve(shaper_.size());
    for (const double value : shaper_) rows.push_back({value / fullScale, value / fullScale, value / fullScale});
    lut_.stages.emplace_back(LutCurve{std::make_shared<const std::vector<LutColor>>(std::move(rows))});
    return {};
  }

  Result addCube(std::size_t face) {
    if (highest_ < leastHighest) return lines_.error(LutErrorCode::implausibleValues);
    const double fullScale = fullScaleOf(depth());
    for (LutColor& point : points_) {
      point = {point.red / fullScale, point.green / fullScale, point.blue / fullScale};
    }
    lut_.stages.emplace_back(LutCubeStage{static_cast<std::int64_t>(face),
                                          std::make_shared<const std::vector<LutColor>>(std::move(points_))});
    return {};
  }

  /// Returns the depth of the cube's code values, and warns if the declared one does not suit them.
  int depth() {
    if (!declaredDepth_) return impliedDepth(highest_);
    const auto warn = [this](LutWarningCode code) {
      lut_.warnings.push_back(
          {code, lut_.path, std::to_string(*declaredDepth_) + " bits, highest value " + plainDecimalText(highest_)});
    };
    const int implied = impliedDepth(highest_);
    if (highest_ >= std::ldexp(2.0, *declaredDepth_)) {
      warn(LutWarningCode::depthExceeded);
      return implied;
    }
    if (implied < *declaredDepth_ && highest_ < std::ldexp(1.0, *declaredDepth_ - 1)) warn(LutWarningCode::depthUnused);
    return *declaredDepth_;
  }

  TextLines& lines_;
  PublishedLut lut_;
  std::optional<std::size_t> meshFace_;
  std::optional<int> declaredDepth_;
  std::vector<double> shaper_;
  std::vector<LutColor> points_;
  double highest_ = -std::numeric_limits<double>::infinity();
  IgnoredLines ignored_;
};

}  // namespace

Expected<PublishedLut, LutError> readPublished3dl(TextLines& lines) { return ThreeDlReader(lines).read(); }

}  // namespace meridian::inline v0_2::detail
