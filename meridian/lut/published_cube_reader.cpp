// Reads .cube files as published: red fastest, on their declared domain.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/base/text.h"
#include "meridian/lut/published_lut_reading.h"

namespace meridian::inline v0_2::detail {
namespace {

constexpr std::array channels{&LutColor::red, &LutColor::green, &LutColor::blue};

/// Returns whether the minimum is below the maximum in each channel, by a number that a double holds.
bool hasExtent(const LutDeclaredDomain& domain) noexcept {
  return std::ranges::all_of(channels, [&domain](const auto channel) {
    const double extent = domain.maximum.*channel - domain.minimum.*channel;
    return extent > 0 && std::isfinite(extent);
  });
}

/// One of the two tables that a file may have.
struct Table {
  std::optional<std::int64_t> size;
  /// What the table's own range line declares.
  std::optional<LutDeclaredDomain> range;

  [[nodiscard]] std::size_t rowCount(bool isCube) const noexcept {
    const auto points = static_cast<std::size_t>(size.value_or(0));
    return isCube ? points * points * points : points;
  }
};

/// Returns the highest value of rows that look like code values: whole numbers, some of them of 7 bits or more.
std::optional<double> highestCodeValue(std::span<const LutColor> rows) noexcept {
  double highest = 0;
  for (const LutColor& row : rows) {
    for (const auto channel : channels) {
      if (row.*channel != std::floor(row.*channel)) return std::nullopt;
      highest = std::max(highest, row.*channel);
    }
  }
  return highest >= 127 ? std::optional(highest) : std::nullopt;
}

/// Exchanges the red and the blue axis of a cube, in strips that use all of a cache line.
void transpose(std::span<LutColor> points, std::size_t face) {
  constexpr std::size_t strip = 8;
  for (std::size_t j = 0; j < face; ++j) {
    for (std::size_t first = 0; first < face; first += strip) {
      const std::size_t end = std::min(first + strip, face);
      for (std::size_t k = 0; k < end; ++k) {
        for (std::size_t i = std::max(first, k + 1); i < end; ++i) {
          std::swap(points[(i * face + j) * face + k], points[(k * face + j) * face + i]);
        }
      }
    }
  }
}

class CubeReader {
 public:
  explicit CubeReader(TextLines& lines) : lines_(lines), lut_{.format = LutFormat::cube, .path = lines.path()} {}

  Expected<PublishedLut, LutError> read() {
    if (auto header = readHeader(); !header) return Unexpected(std::move(header).error());
    const std::size_t curveRows = curve_.rowCount(false);
    const std::size_t cubeRows = cube_.rowCount(true);
    if (curveRows + cubeRows == 0) return lines_.error(LutErrorCode::noPublishedFormat);
    auto rows = readRows(curveRows, cubeRows);
    if (!rows) return Unexpected(std::move(rows).error());
    if (const auto highest = highestCodeValue(cube_.size ? points_ : curveRows_)) {
      lut_.warnings.push_back(
          {LutWarningCode::wholeNumbers, lut_.path, "the highest is " + plainDecimalText(*highest)});
    }
    warnOfDomains();
    addStages();
    ignored_.warn(lut_);
    return std::move(lut_);
  }

 private:
  using Result = Expected<void, LutError>;

  /// Reads up to the first row, which it keeps.
  Result readHeader() {
    while (true) {
      firstRow_ = lines_.nextRow();
      if (firstRow_) break;
      const auto line = lines_.next();
      if (!line) break;
      if (line->empty() || line->starts_with('#')) continue;
      if (lines_.isOverlong()) return lines_.lineError(LutErrorCode::malformedLine);
      if (beginsLikeNumber(*line)) {
        firstRow_ = colorOf(*line);
        if (!firstRow_) return lines_.lineError(LutErrorCode::malformedLine);
        break;
      }
      if (auto taken = readKeyword(*line); !taken) return taken;
    }
    return {};
  }

  Result readKeyword(std::string_view line) {
    const std::string_view keyword = firstWord(line);
    const auto is = [keyword](std::string_view other) { return equalsIgnoringCase(keyword, other); };
    if (is("LUT_1D_SIZE")) return readSize(line, curve_, mostCurveRows);
    if (is("LUT_3D_SIZE")) return readSize(line, cube_, mostCubePoints);
    if (is("LUT_1D_INPUT_RANGE")) return readRange(line, curve_);
    if (is("LUT_3D_INPUT_RANGE")) return readRange(line, cube_);
    if (is("DOMAIN_MIN")) return readBound(line, minimum_);
    if (is("DOMAIN_MAX")) return readBound(line, maximum_);
    if (!is("TITLE")) ignored_.add(lines_);
    return {};
  }

  Result readSize(std::string_view text, Table& table, std::int64_t most) {
    const auto size = integerFromText(firstWord(text));
    if (!firstWord(text).empty() || !size || table.size) return lines_.lineError(LutErrorCode::malformedLine);
    if (*size < 2 || *size > most) return lines_.lineError(LutErrorCode::unsupportedSize);
    table.size = size;
    return {};
  }

  Result readRange(std::string_view text, Table& table) {
    const auto low = DecimalNumber::fromText(firstWord(text));
    const auto high = DecimalNumber::fromText(firstWord(text));
    if (!low || !high || !firstWord(text).empty()) return lines_.lineError(LutErrorCode::malformedLine);
    if (table.range) return lines_.lineError(LutErrorCode::malformedLine);
    const double from = low->doubleValue();
    const double to = high->doubleValue();
    table.range = {{from, from, from}, {to, to, to}, true};
    return hasExtent(*table.range) ? Result() : lines_.lineError(LutErrorCode::invalidDomain);
  }

  Result readBound(std::string_view text, std::optional<LutColor>& bound) {
    const auto color = colorOf(text);
    if (!color || bound) return lines_.lineError(LutErrorCode::malformedLine);
    bound = color;
    return {};
  }

  Result readRows(std::size_t curveRows, std::size_t cubeRows) {
    if (minimum_) domain_.minimum = *minimum_;
    if (maximum_) domain_.maximum = *maximum_;
    domain_.isDeclared = minimum_ || maximum_;
    if (!hasExtent(domain_)) return lines_.error(LutErrorCode::invalidDomain);
    const std::size_t all = curveRows + cubeRows;
    const auto reserve = [this](std::vector<LutColor>& rows, std::size_t count) {
      rows.reserve(std::min(count, lines_.mostRows()));
    };
    reserve(curveRows_, curveRows);
    reserve(points_, cubeRows);
    std::size_t count = 0;
    for (auto row = std::exchange(firstRow_, std::nullopt); true; row = lines_.nextRow()) {
      if (!row) {
        const auto line = lines_.next();
        if (!line) break;
        if (line->empty() || line->starts_with('#')) continue;
        if (lines_.isOverlong()) return lines_.lineError(LutErrorCode::malformedLine);
        if (count == all && !beginsLikeNumber(*line)) {
          ignored_.add(lines_);
          continue;
        }
        row = colorOf(*line);
        if (!row && lines_.isUnterminated() && count < all) break;
        if (!row) return lines_.lineError(LutErrorCode::malformedLine);
      }
      if (count == all) return lines_.lineError(LutErrorCode::surplusRows);
      (count < curveRows ? curveRows_ : points_).push_back(*row);
      ++count;
    }
    if (count < all) return lines_.rowsError(LutErrorCode::truncated, count, all);
    return {};
  }

  /// Warns of DOMAIN lines that a table does not follow.
  void warnOfDomains() {
    if (!domain_.isDeclared) return;
    const LutDeclaredDomain unit{.isDeclared = true};
    const auto isOverridden = [this](const Table& table) {
      return table.size && table.range && *table.range != domain_;
    };
    std::string_view detail;
    if (isOverridden(curve_)) {
      detail = "LUT_1D_INPUT_RANGE overrides DOMAIN_MIN and DOMAIN_MAX";
    } else if (!curve_.size && isOverridden(cube_)) {
      detail = "LUT_3D_INPUT_RANGE overrides DOMAIN_MIN and DOMAIN_MAX";
    } else if (curve_.size && cube_.size && cube_.range.value_or(unit) != domain_) {
      detail = "DOMAIN_MIN and DOMAIN_MAX are for the 1D LUT before the cube";
    }
    if (!detail.empty()) {
      lut_.warnings.push_back({LutWarningCode::domainPartlyApplied, lut_.path, std::string(detail)});
    }
  }

  void addStages() {
    if (curve_.size) {
      lut_.stages.emplace_back(LutCurve{std::make_shared<const std::vector<LutColor>>(std::move(curveRows_)),
                                        curve_.range.value_or(domain_)});
    }
    if (cube_.size) {
      transpose(points_, static_cast<std::size_t>(*cube_.size));
      const LutDeclaredDomain domain = curve_.size ? LutDeclaredDomain{} : domain_;
      lut_.stages.emplace_back(LutCubeStage{*cube_.size,
                                            std::make_shared<const std::vector<LutColor>>(std::move(points_)),
                                            cube_.range.value_or(domain)});
    }
  }

  TextLines& lines_;
  PublishedLut lut_;
  Table curve_;
  Table cube_;
  std::optional<LutColor> minimum_;
  std::optional<LutColor> maximum_;
  /// What the DOMAIN lines declare, for the first table.
  LutDeclaredDomain domain_;
  std::optional<LutColor> firstRow_;
  std::vector<LutColor> curveRows_;
  std::vector<LutColor> points_;
  IgnoredLines ignored_;
};

}  // namespace

Expected<PublishedLut, LutError> readPublishedCube(TextLines& lines) { return CubeReader(lines).read(); }

}  // namespace meridian::inline v0_2::detail
