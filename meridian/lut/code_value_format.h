/// \file
/// What the code values of an image mean: how many bits they have and which of them are black and white. For example:
///
///     constexpr CodeValueFormat legal{10, CodeValueRange::limited};  // black is 64, white is 940
///     legal.black();    // 64.0
///     legal.highest();  // 1019, the largest code value that video data may have
#pragma once

#include <array>
#include <cstdint>

#include "meridian/base/enumeration.h"
#include "meridian/lut/bit_depth.h"

namespace meridian::inline v0_2 {

/// Which code values of n bits are black and white.
enum class CodeValueRange : std::uint8_t {
  full,     ///< black is 0, white is 2^n - 1
  limited,  ///< "video" or "legal" range: black is 16 * 2^(n-8), white is 235 * 2^(n-8)
};

template <>
struct EnumerationTable<CodeValueRange> {
  static constexpr auto rows = std::to_array<EnumerationRow<CodeValueRange>>({
      {CodeValueRange::full, "full"},
      {CodeValueRange::limited, "limited"},
  });
};

/// The bit depth and the range of code values. A depth alone means full range.
///
/// Limited range is that of ITU-R BT.709-6 (digital representation) and BT.2100-2 (table 9): D = Round((219 E' + 16) *
/// 2^(n-8)) for a non-linear signal E' of R, G or B, where video data is kept to 2^(n-8) ... 255 * 2^(n-8) - 1 (1 to
/// 254 in 8 bits, 4 to 1019 in 10); the code values outside are reserved for timing.
struct CodeValueFormat {
  int bitDepth = 8;
  CodeValueRange range = CodeValueRange::full;

  constexpr CodeValueFormat() noexcept = default;
  // NOLINTNEXTLINE(google-explicit-constructor): where the range is full, the depth says it all.
  constexpr CodeValueFormat(int depth, CodeValueRange codeValueRange = CodeValueRange::full) noexcept
      : bitDepth(depth), range(codeValueRange) {}

  /// Returns true for limited range.
  [[nodiscard]] constexpr bool isLimited() const noexcept { return range == CodeValueRange::limited; }

  /// Returns whether black and white are whole code values: always in full range; from 8 bits on in limited range;
  /// never for a range that is not a case of its enumeration.
  [[nodiscard]] constexpr bool hasRange() const noexcept {
    return range == CodeValueRange::full || (isLimited() && bitDepth >= 8);
  }

  /// Returns the code value of 0 and of 1 on the scale from 0 to 1. For depths from 1 to 16 with `hasRange()`.
  [[nodiscard]] constexpr double black() const noexcept { return isLimited() ? static_cast<double>(16 * step()) : 0; }
  [[nodiscard]] constexpr double white() const noexcept {
    return isLimited() ? static_cast<double>(235 * step()) : static_cast<double>(largestCodeValue(bitDepth));
  }

  /// Returns the smallest and the largest code value that a result may have. For depths from 1 to 16 with `hasRange()`.
  [[nodiscard]] constexpr std::uint64_t lowest() const noexcept { return isLimited() ? step() : 0; }
  [[nodiscard]] constexpr std::uint64_t highest() const noexcept {
    return isLimited() ? 255 * step() - 1 : largestCodeValue(bitDepth);
  }

  friend constexpr bool operator==(const CodeValueFormat&, const CodeValueFormat&) noexcept = default;

 private:
  /// Returns 2^(n-8).
  [[nodiscard]] constexpr std::uint64_t step() const noexcept { return std::uint64_t{1} << (bitDepth - 8); }
};

}  // namespace meridian::inline v0_2
