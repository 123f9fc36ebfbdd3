// The lines of a look-up table written as text, read one after the other.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/base/decimal_number.h"
#include "meridian/export.h"
#include "meridian/lut/lut_file.h"
#include "meridian/lut/lut_values.h"

namespace meridian::inline v0_2 {

/// The words of header lines, whatever their case and wherever they stand in the line.
struct LutHeaderWords {
  bool oneDimensionalSize = false;    ///< "LUT_1D_SIZE"
  bool threeDimensionalSize = false;  ///< "LUT_3D_SIZE"
  bool inputRange = false;            ///< "INPUT_RANGE"
  bool threeD = false;                ///< "3d"
  bool oneD = false;                  ///< "1d"

  [[nodiscard]] static MERIDIAN_API LutHeaderWords in(std::string_view line);

  LutHeaderWords& operator|=(const LutHeaderWords& other) noexcept;
};

/// Takes in the lines of one file, in file order, and keeps what they say. A row is three decimal numbers with exactly
/// one white-space character between them; other lines are passed over, whatever they hold.
class MERIDIAN_API GenericTextLutInterpreter {
 public:
  /// The rows of cubes with 17, 33 and 65 points per axis. The second name is spelled so on purpose.
  static constexpr std::int64_t seventeenGridCubeSize = std::int64_t{17} * 17 * 17;
  static constexpr std::int64_t thrityThreeGridCubeSize = std::int64_t{33} * 33 * 33;
  static constexpr std::int64_t sixtyFiveGridCubeSize = std::int64_t{65} * 65 * 65;

  /// One line, with or without its end.
  void interpret(std::string_view line);

  /// A line that is too long to be a row, by the words in it.
  void interpretOverlong(const LutHeaderWords& words);

  /// Takes a row in. The extremes are compared by their doubles; of equal ones the first stays.
  void record(const LutValueTriplet& triplet);
  void record(const LutColor& color);

  [[nodiscard]] static constexpr LutMarkupType markupType() noexcept { return LutMarkupType::txt; }

  /// What the header lines say.
  [[nodiscard]] const std::optional<LutDimensions>& explicitDimensions() const noexcept { return explicitDimensions_; }

  /// A size read from a header line: the number that stands before the word, up to and with the word's first letter.
  /// A text that ends in a letter is no number, so none is ever found and the size comes from the rows; kept so on
  /// purpose.
  [[nodiscard]] const std::optional<std::uint64_t>& explicitLutSize() const noexcept { return explicitLutSize_; }

  /// The smallest and the largest number of all rows.
  [[nodiscard]] const std::optional<DecimalNumber>& explicitMinValue() const noexcept { return explicitMinValue_; }
  [[nodiscard]] const std::optional<DecimalNumber>& explicitMaxValue() const noexcept { return explicitMaxValue_; }

  [[nodiscard]] const LutValueTriplets& triplets() const noexcept { return triplets_; }
  [[nodiscard]] LutValueTriplets& triplets() noexcept { return triplets_; }

  /// What the number of rows says: a cube for those of 17, 33 and 65 points, 1D for a power of two, else nothing.
  [[nodiscard]] std::optional<LutDimensions> inferredDimensions() const noexcept;

  /// The points per axis of a cube of 17, 33 or 65, the rows of a power of two, else the smallest power of two that is
  /// at least the integer value of the largest number; absent where that is not positive.
  [[nodiscard]] std::optional<std::uint64_t> lutSize() const noexcept;

  /// What lines of the form "DOMAIN_MIN R G B", "DOMAIN_MAX R G B" and "LUT_3D_INPUT_RANGE MIN MAX" before the first
  /// row declare. They decide nothing in a file's reading. A maximum that is not above its minimum counts as
  /// undeclared.
  [[nodiscard]] LutDeclaredDomain declaredDomain() const noexcept;

 private:
  /// Whether the line, which comes before the first row, is a header line and no row.
  [[nodiscard]] bool takeHeader(const LutHeaderWords& words, std::string_view line);
  void readSize(std::string_view line, std::string_view keyword);
  void readDomain(std::string_view line);
  void readInputRange(std::string_view line);

  std::optional<LutDimensions> explicitDimensions_;
  std::optional<std::uint64_t> explicitLutSize_;
  std::optional<DecimalNumber> explicitMinValue_;
  std::optional<DecimalNumber> explicitMaxValue_;
  LutValueTriplets triplets_;
  std::optional<LutColor> domainMinimum_;
  std::optional<LutColor> domainMaximum_;
};

}  // namespace meridian::inline v0_2
