/// \file
/// Timecode of hours, minutes, seconds and frames, and its text form. For example:
///
///     TimecodeComponents::fromTimecode("01:02:03;04")->frames          // 4, and isDropFrame is true
///     TimecodeComponents::fromTimecode("1:2:3")                        // std::nullopt
///     TimecodeComponents::sanitizedTimecode("1:2:3").timecodeString()  // "01:02:03:00"
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "meridian/base/combined_hash.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The components that a text holds; absent where it has no number.
struct DecomposedTimecode {
  std::optional<std::int64_t> hours;
  std::optional<std::int64_t> minutes;
  std::optional<std::int64_t> seconds;
  std::optional<std::int64_t> frames;
  bool isDropFrame = false;

  friend constexpr bool operator==(const DecomposedTimecode&, const DecomposedTimecode&) = default;
};

/// A timecode: the label of a frame. The components may be any numbers; only reading a text checks them. Which frame a
/// label belongs to depends on the frame rate: see frame_number.h.
struct TimecodeComponents {
  std::int64_t hours = 0;
  std::int64_t minutes = 0;
  std::int64_t seconds = 0;
  /// The number of the frame within its second.
  std::int64_t frames = 0;
  /// True for drop-frame timecode, which has a ";" before the frames.
  bool isDropFrame = false;

  static constexpr std::string_view dropFrameSeparator = ";";
  static constexpr std::string_view nonDropSeparator = ":";
  static constexpr std::string_view defaultNonDropTimecode = "00:00:00:00";
  static constexpr std::string_view defaultDropFrameTimecode = "00:00:00;00";
  static const TimecodeComponents defaultNonDropTimecodeComponents;
  static const TimecodeComponents defaultDropFrameTimecodeComponents;

  /// Returns the components of a text of proper form, length and bounds (see `timecodeHasProperForm`); absent for any
  /// other text.
  [[nodiscard]] static constexpr std::optional<TimecodeComponents> fromTimecode(std::string_view timecode) noexcept;

  /// Returns the text: components of at least two digits, separated by ":", or ";" before the frames of a drop-frame
  /// timecode. A negative component is padded too: -3 becomes "0-3", which does not read back.
  [[nodiscard]] MERIDIAN_API std::string timecodeString() const;

  /// Splits the text at each ":" and ";" into hours, minutes, seconds and frames. Any ";" makes it drop frame,
  /// whichever separator it replaces ("01;02;03;04" is in use). A field is a number if it consists of digits 0 to 9 and
  /// fits 63 bits; the component of any other field (missing, empty, with a sign or a blank, too large) is absent. With
  /// more than four fields the frames are absent, since any of them could be the frames.
  [[nodiscard]] static constexpr DecomposedTimecode decomposeTimecodeString(std::string_view text) noexcept;

  /// Returns the components of any text, with 0 for those that `decomposeTimecodeString` leaves absent.
  [[nodiscard]] static constexpr TimecodeComponents sanitizedTimecode(std::string_view text) noexcept;

  /// Returns true if the text has all four components; with `forceProperComponentLength`, of at least two digits each;
  /// with `forceProperComponentBounds`, minutes and seconds of at most 60. The bound deliberately includes 60; hours
  /// and frames have none.
  [[nodiscard]] static constexpr bool timecodeHasProperForm(std::string_view text, bool forceProperComponentLength,
                                                            bool forceProperComponentBounds) noexcept {
    return timecodeHasProperForm(text, forceProperComponentLength, forceProperComponentBounds,
                                 [](std::int64_t, std::int64_t, std::int64_t, std::int64_t, bool) {});
  }

  /// Does the same, and if true also calls the closure once, with hours, minutes, seconds, frames and `isDropFrame`.
  template <typename Closure>
  static constexpr bool timecodeHasProperForm(std::string_view text, bool forceProperComponentLength,
                                              bool forceProperComponentBounds, Closure&& componentsClosure);

  friend constexpr bool operator==(const TimecodeComponents&, const TimecodeComponents&) = default;
};

inline constexpr TimecodeComponents TimecodeComponents::defaultNonDropTimecodeComponents{0, 0, 0, 0, false};
inline constexpr TimecodeComponents TimecodeComponents::defaultDropFrameTimecodeComponents{0, 0, 0, 0, true};

namespace detail {

struct TimecodeFields {
  std::array<std::optional<std::int64_t>, 4> values;
  std::array<std::size_t, 4> lengths{};
  bool isDropFrame = false;
};

/// Returns the digits as a number; absent if it does not fit 63 bits.
constexpr std::optional<std::int64_t> checkedTimecodeNumber(std::string_view digits) noexcept {
  std::int64_t number = 0;
  for (const char c : digits) {
    const auto tenfold = checkedProduct<std::int64_t>(number, 10);
    const auto sum = tenfold ? checkedSum<std::int64_t>(*tenfold, c - '0') : std::nullopt;
    if (!sum) return std::nullopt;
    number = *sum;
  }
  return number;
}

constexpr TimecodeFields timecodeFields(std::string_view text) noexcept {
  TimecodeFields fields;
  std::size_t count = 0;
  std::size_t start = 0;
  std::uint64_t number = 0;
  bool isNumber = true;
  const auto endField = [&](std::size_t end) {
    // So many digits always fit; with more, `number` may have wrapped around.
    constexpr std::size_t safeLength = 18;
    const std::size_t length = end - start;
    if (count >= fields.values.size()) {
      fields.values.back().reset();
    } else {
      fields.lengths[count] = length;
      if (isNumber && length > 0) {
        fields.values[count] = length <= safeLength ? static_cast<std::int64_t>(number)
                                                    : checkedTimecodeNumber(text.substr(start, length));
      }
    }
    ++count;
    start = end + 1;
    number = 0;
    isNumber = true;
  };
  for (std::size_t place = 0; place < text.size(); ++place) {
    const char c = text[place];
    const unsigned digit = static_cast<unsigned>(c) - unsigned{'0'};
    if (digit <= 9) {
      number = number * 10 + digit;
    } else if (c == ':') {
      endField(place);
    } else if (c == ';') {
      fields.isDropFrame = true;
      endField(place);
    } else {
      isNumber = false;
    }
  }
  endField(text.size());
  return fields;
}

}  // namespace detail

constexpr DecomposedTimecode TimecodeComponents::decomposeTimecodeString(std::string_view text) noexcept {
  const detail::TimecodeFields read = detail::timecodeFields(text);
  return {read.values[0], read.values[1], read.values[2], read.values[3], read.isDropFrame};
}

template <typename Closure>
constexpr bool TimecodeComponents::timecodeHasProperForm(std::string_view text, bool forceProperComponentLength,
                                                         bool forceProperComponentBounds, Closure&& componentsClosure) {
  const detail::TimecodeFields read = detail::timecodeFields(text);
  for (std::size_t field = 0; field < read.values.size(); ++field) {
    if (!read.values[field] || (forceProperComponentLength && read.lengths[field] < 2)) return false;
  }
  const auto& [hours, minutes, seconds, frames] = read.values;
  if (forceProperComponentBounds && (*minutes > 60 || *seconds > 60)) return false;
  std::forward<Closure>(componentsClosure)(*hours, *minutes, *seconds, *frames, read.isDropFrame);
  return true;
}

constexpr std::optional<TimecodeComponents> TimecodeComponents::fromTimecode(std::string_view timecode) noexcept {
  std::optional<TimecodeComponents> components;
  timecodeHasProperForm(
      timecode, true, true,
      [&components](std::int64_t hours, std::int64_t minutes, std::int64_t seconds, std::int64_t frames,
                    bool isDropFrame) { components = {hours, minutes, seconds, frames, isDropFrame}; });
  return components;
}

constexpr TimecodeComponents TimecodeComponents::sanitizedTimecode(std::string_view text) noexcept {
  // A text of proper form needs no special case: it decomposes into the same components.
  const DecomposedTimecode read = decomposeTimecodeString(text);
  return {read.hours.value_or(0), read.minutes.value_or(0), read.seconds.value_or(0), read.frames.value_or(0),
          read.isDropFrame};
}

}  // namespace meridian::inline v0_2

template <>
struct std::hash<meridian::TimecodeComponents> {
  [[nodiscard]] constexpr std::size_t operator()(const meridian::TimecodeComponents& timecode) const noexcept {
    return meridian::combinedHash(timecode.hours, timecode.minutes, timecode.seconds, timecode.frames,
                                  timecode.isDropFrame);
  }
};
