/// \file
/// The lines of a LUT written as text, read one after the other. For example:
///
///     GenericTextLutInterpreter lines;
///     lines.interpret("LUT_3D_SIZE 33");
///     lines.interpret("0.0 0.5 1.0");
///     lines.explicitDimensions();  // LutDimensions::cube
///     lines.triplets().size();     // 1
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/base/decimal_number.h"
#include "meridian/export.h"
#include "meridian/lut/lut_values.h"

namespace meridian::inline v0_2 {

/// The keywords of a header line, whatever their case and wherever they are in the line.
struct LutHeaderWords {
  bool oneDimensionalSize = false;    ///< "LUT_1D_SIZE"
  bool threeDimensionalSize = false;  ///< "LUT_3D_SIZE"
  bool inputRange = false;            ///< "INPUT_RANGE"
  bool threeD = false;                ///< "3d"
  bool oneD = false;                  ///< "1d"

  /// Returns the keywords that the line contains.
  [[nodiscard]] static MERIDIAN_API LutHeaderWords in(std::string_view line);

  /// Adds the keywords of another part of the line.
  LutHeaderWords& operator|=(const LutHeaderWords& other) noexcept;
};

/// Reads the lines of one file, in file order, and keeps what they say. A row is three decimal numbers with exactly one
/// white-space character between them; other lines are ignored, whatever they hold.
class GenericTextLutInterpreter {
 public:
  /// The number of rows of cubes with 17, 33 and 65 points per axis. The second name keeps its published spelling.
  static constexpr std::int64_t seventeenGridCubeSize = std::int64_t{17} * 17 * 17;
  static constexpr std::int64_t thrityThreeGridCubeSize = std::int64_t{33} * 33 * 33;
  static constexpr std::int64_t sixtyFiveGridCubeSize = std::int64_t{65} * 65 * 65;

  /// Reads one line, with or without its newline. `number` is that of the line in the file, for `textFacts`.
  MERIDIAN_API void interpret(std::string_view line, std::uint64_t number = 0);

  /// Reads a line that is too long to be a row, of which only the keywords count.
  MERIDIAN_API void interpretOverlong(const LutHeaderWords& words, std::uint64_t number = 0);

  /// Appends a row. The extremes are compared as doubles; of equal ones the first is kept.
  MERIDIAN_API void record(const LutValueTriplet& triplet);
  void record(const LutColor& color);

  /// Returns how the lines are written: as text.
  [[nodiscard]] static constexpr LutMarkupType markupType() noexcept { return LutMarkupType::txt; }

  /// Returns what the header lines say.
  [[nodiscard]] const std::optional<LutDimensions>& explicitDimensions() const noexcept { return explicitDimensions_; }

  /// Always absent. The parser looks for the size before the keyword and includes the keyword's first letter, so what
  /// it finds is never a number; this is deliberate, and the size comes from the rows.
  [[nodiscard]] const std::optional<std::uint64_t>& explicitLutSize() const noexcept { return explicitLutSize_; }

  /// Returns the smallest and the largest number of all rows; absent before the first row.
  [[nodiscard]] const std::optional<DecimalNumber>& explicitMinValue() const noexcept { return explicitMinValue_; }
  [[nodiscard]] const std::optional<DecimalNumber>& explicitMaxValue() const noexcept { return explicitMaxValue_; }

  /// Return the rows read so far, in file order.
  [[nodiscard]] const LutValueTriplets& triplets() const noexcept { return triplets_; }
  [[nodiscard]] LutValueTriplets& triplets() noexcept { return triplets_; }

  /// Returns what the number of rows implies: a cube of 17, 33 or 65 points per axis, or 1D for a power of two; absent
  /// for any other number.
  [[nodiscard]] MERIDIAN_API std::optional<LutDimensions> inferredDimensions() const noexcept;

  /// Returns the points per axis for the rows of a cube of 17, 33 or 65 points; the number of rows if it is a power of
  /// two; otherwise the smallest power of two that is at least the integer value of the largest number. Absent if that
  /// value is not positive.
  [[nodiscard]] MERIDIAN_API std::optional<std::uint64_t> lutSize() const noexcept;

  /// Returns what lines of the form "DOMAIN_MIN R G B", "DOMAIN_MAX R G B" and "LUT_3D_INPUT_RANGE MIN MAX" before the
  /// first row declare. They do not affect how a file is read. If a channel's maximum is not above its minimum, nothing
  /// is declared.
  [[nodiscard]] MERIDIAN_API LutDeclaredDomain declaredDomain() const noexcept;

  /// Returns what the lines say beyond the rows.
  [[nodiscard]] MERIDIAN_API LutTextFacts textFacts() const noexcept;

 private:
  /// Reads a line before the first row; returns whether it is a header line.
  [[nodiscard]] bool takeHeader(const LutHeaderWords& words, std::string_view line);
  void readSize(std::string_view line, std::string_view keyword);
  void readDomain(std::string_view line);
  void readInputRange(std::string_view line);
  void noteIgnored(std::uint64_t number) noexcept;

  std::optional<LutDimensions> explicitDimensions_;
  std::optional<std::uint64_t> explicitLutSize_;
  std::optional<DecimalNumber> explicitMinValue_;
  std::optional<DecimalNumber> explicitMaxValue_;
  LutValueTriplets triplets_;
  std::optional<LutColor> domainMinimum_;
  std::optional<LutColor> domainMaximum_;
  LutTextFacts facts_;
};

inline void GenericTextLutInterpreter::record(const LutColor& color) {
  const double largest = std::max({color.red, color.green, color.blue});
  const double smallest = std::min({color.red, color.green, color.blue});
  if (!explicitMaxValue_ || explicitMaxValue_->doubleValue() < largest) explicitMaxValue_ = DecimalNumber(largest);
  if (!explicitMinValue_ || explicitMinValue_->doubleValue() > smallest) explicitMinValue_ = DecimalNumber(smallest);
  triplets_.append(color);
}

}  // namespace meridian::inline v0_2
