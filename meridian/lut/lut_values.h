// The rows of a look-up table file.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

#include "meridian/base/aligned_allocator.h"
#include "meridian/base/decimal_number.h"
#include "meridian/base/enumeration.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// What a table is indexed by: each channel on its own, or all three together.
enum class LutDimensions : std::uint8_t { oneD, cube };

template <>
struct EnumerationTable<LutDimensions> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutDimensions>>({
      {LutDimensions::oneD, "oneD", "1D"},
      {LutDimensions::cube, "cube", "3D cube"},
  });
};

/// A red, green and blue value on any scale.
struct LutColor {
  double red = 0;
  double green = 0;
  double blue = 0;

  friend constexpr bool operator==(const LutColor&, const LutColor&) noexcept = default;
};

/// Colours in one flat block that begins at a multiple of 64 bytes.
using LutColorBlock = std::vector<LutColor, AlignedAllocator<LutColor, 64>>;

/// The range of input values that a file declares, for each channel, in the units of the file: on the scale from 0 to 1
/// or, for a file of code values, as code values. `maximum` is above `minimum`.
struct LutDeclaredDomain {
  LutColor minimum{0, 0, 0};
  LutColor maximum{1, 1, 1};
  /// Whether the file says so, or leaves it at 0 to 1.
  bool isDeclared = false;

  friend constexpr bool operator==(const LutDeclaredDomain&, const LutDeclaredDomain&) noexcept = default;
};

/// One row of a file: three numbers in the order in which they stand there.
struct LutValueTriplet {
  DecimalNumber first;
  DecimalNumber second;
  DecimalNumber third;

  friend constexpr bool operator==(const LutValueTriplet&, const LutValueTriplet&) noexcept = default;
};

/// What has the three numbers of a row.
template <typename Type>
concept LutValueEntry = requires(const Type& entry) {
  { entry.first } -> std::convertible_to<const DecimalNumber&>;
  { entry.second } -> std::convertible_to<const DecimalNumber&>;
  { entry.third } -> std::convertible_to<const DecimalNumber&>;
};
static_assert(LutValueEntry<LutValueTriplet>);

/// The rows of a file, in file order. They take 24 bytes each, as doubles in one flat block; the rare number that its
/// double does not say exactly is kept beside it.
class LutValueTriplets {
 public:
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;  // its elements are made on the way
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

  /// The row at this place, which is below `size()`.
  [[nodiscard]] LutValueTriplet operator[](std::size_t place) const noexcept {
    const LutColor& color = colors_[place];
    if (!exactIntegers_.empty()) return exactTriplet(place);
    return {DecimalNumber(color.red), DecimalNumber(color.green), DecimalNumber(color.blue)};
  }
  [[nodiscard]] Iterator begin() const noexcept { return {*this, 0}; }
  [[nodiscard]] Iterator end() const noexcept { return {*this, size()}; }

  /// The rows' doubles.
  [[nodiscard]] std::span<const LutColor> colors() const noexcept { return colors_; }

  void append(const LutColor& color) { colors_.push_back(color); }
  MERIDIAN_API void append(const LutValueTriplet& triplet);

  /// Makes room for this many rows in all.
  void reserve(std::size_t count) { colors_.reserve(count); }
  [[nodiscard]] std::size_t capacity() const noexcept { return colors_.capacity(); }

 private:
  [[nodiscard]] MERIDIAN_API LutValueTriplet exactTriplet(std::size_t place) const noexcept;

  LutColorBlock colors_;
  /// The integer values that doubles do not have, by three times the row's place plus the number's, in order.
  std::vector<std::pair<std::size_t, std::int64_t>> exactIntegers_;
};

/// What holds the values of a look-up table in file order.
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
