/// \file
/// The rows of a LUT file. For example:
///
///     for (const LutValueTriplet& row : file->orderedValues()) use(row.first.doubleValue());
///     file->orderedValues().colors()[0];  // the same rows as one block of doubles
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "meridian/base/decimal_number.h"
#include "meridian/base/enumeration.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// What a LUT is indexed by: each channel on its own, or all three together.
enum class LutDimensions : std::uint8_t { oneD, cube };

template <>
struct EnumerationTable<LutDimensions> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutDimensions>>({
      {LutDimensions::oneD, "oneD", "1D"},
      {LutDimensions::cube, "cube", "3D cube"},
  });
};

/// How a LUT file is written. Every file that is read here is `txt`; XML documents are an error.
enum class LutMarkupType : std::uint8_t { xml, txt };

template <>
struct EnumerationTable<LutMarkupType> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutMarkupType>>({
      {LutMarkupType::xml, "xml", "XML"},
      {LutMarkupType::txt, "txt", "text"},
  });
};

/// Red, green and blue on any scale.
struct LutColor {
  double red = 0;
  double green = 0;
  double blue = 0;

  friend constexpr bool operator==(const LutColor&, const LutColor&) noexcept = default;
};

/// The range of input values that a file declares for each channel, in the units of the file: on the scale from 0 to 1
/// or, for a file of code values, as code values. `maximum` is above `minimum`.
struct LutDeclaredDomain {
  LutColor minimum{0, 0, 0};
  LutColor maximum{1, 1, 1};
  /// Whether the file declares the range; otherwise it is 0 to 1.
  bool isDeclared = false;

  friend constexpr bool operator==(const LutDeclaredDomain&, const LutDeclaredDomain&) noexcept = default;
};

/// What the lines of a text say beyond its rows. None of it affects how the suite reads a file.
struct LutTextFacts {
  /// What a size keyword, a title or a comment declares; absent if the number of rows decided.
  std::optional<LutDimensions> dimensions;
  /// The numbers of lines "LUT_1D_SIZE N" and "LUT_3D_SIZE N".
  std::optional<std::int64_t> oneDimensionalSize;
  std::optional<std::int64_t> threeDimensionalSize;
  /// The lines after the first row that are neither rows nor empty nor comments ("#"); the number of the first of them,
  /// from 1 on, or 0 if there are none.
  std::uint64_t ignoredLines = 0;
  std::uint64_t firstIgnoredLine = 0;

  friend constexpr bool operator==(const LutTextFacts&, const LutTextFacts&) noexcept = default;
};

/// One row of a file: three numbers in file order.
struct LutValueTriplet {
  DecimalNumber first;
  DecimalNumber second;
  DecimalNumber third;

  friend constexpr bool operator==(const LutValueTriplet&, const LutValueTriplet&) noexcept = default;
};

/// A type that has the three numbers of a row.
template <typename Type>
concept LutValueEntry = requires(const Type& entry) {
  { entry.first } -> std::convertible_to<const DecimalNumber&>;
  { entry.second } -> std::convertible_to<const DecimalNumber&>;
  { entry.third } -> std::convertible_to<const DecimalNumber&>;
};
static_assert(LutValueEntry<LutValueTriplet>);

/// The rows of a file, in file order. They need 24 bytes each, as doubles in one flat block; the rare integer that a
/// double cannot hold is kept beside it.
class LutValueTriplets {
 public:
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;  // its elements are made on access
    using value_type = LutValueTriplet;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = LutValueTriplet;

    Iterator() noexcept = default;
    [[nodiscard]] LutValueTriplet operator*() const noexcept { return (*triplets_)[place_]; }
    Iterator& operator++() noexcept {
      ++place_;
      return *this;
    }
    Iterator operator++(int) noexcept {
      const Iterator before = *this;
      ++place_;
      return before;
    }
    friend bool operator==(const Iterator& left, const Iterator& right) noexcept { return left.place_ == right.place_; }

   private:
    friend class LutValueTriplets;
    Iterator(const LutValueTriplets& triplets, std::size_t place) noexcept : triplets_(&triplets), place_(place) {}

    const LutValueTriplets* triplets_ = nullptr;
    std::size_t place_ = 0;
  };

  [[nodiscard]] std::size_t size() const noexcept { return colors_.size(); }
  [[nodiscard]] bool empty() const noexcept { return colors_.empty(); }

  /// Returns the row at an index below `size()`, which is not checked.
  [[nodiscard]] LutValueTriplet operator[](std::size_t place) const noexcept {
    const LutColor& color = colors_[place];
    if (!exactIntegers_.empty()) return exactTriplet(place);
    return {DecimalNumber(color.red), DecimalNumber(color.green), DecimalNumber(color.blue)};
  }
  [[nodiscard]] Iterator begin() const noexcept { return {*this, 0}; }
  [[nodiscard]] Iterator end() const noexcept { return {*this, size()}; }

  /// Returns the rows as doubles. Valid until a row is appended.
  [[nodiscard]] std::span<const LutColor> colors() const noexcept { return colors_; }

  void append(const LutColor& color) { colors_.push_back(color); }
  MERIDIAN_API void append(const LutValueTriplet& triplet);

  /// Makes room for this many rows in all.
  void reserve(std::size_t count) { colors_.reserve(count); }
  [[nodiscard]] std::size_t capacity() const noexcept { return colors_.capacity(); }

 private:
  [[nodiscard]] MERIDIAN_API LutValueTriplet exactTriplet(std::size_t place) const noexcept;

  std::vector<LutColor> colors_;
  /// Exact integers that a double cannot hold, keyed by 3 * row + column, in order.
  std::vector<std::pair<std::size_t, std::int64_t>> exactIntegers_;
};

/// A holder of the values of a LUT in file order.
class MERIDIAN_API LutEssence {
 public:
  LutEssence() = default;
  LutEssence(const LutEssence&) = delete;
  LutEssence& operator=(const LutEssence&) = delete;
  LutEssence(LutEssence&&) = delete;
  LutEssence& operator=(LutEssence&&) = delete;
  virtual ~LutEssence();

  [[nodiscard]] virtual const LutValueTriplets& orderedValues() const noexcept = 0;
};

}  // namespace meridian::inline v0_2
