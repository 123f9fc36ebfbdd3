// Timecode of hours, minutes, seconds and frames, and its text form ("01:02:03;04").
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

/// What a text says of each component of a timecode.
struct DecomposedTimecode {
  std::optional<std::int64_t> hours;
  std::optional<std::int64_t> minutes;
  std::optional<std::int64_t> seconds;
  std::optional<std::int64_t> frames;
  bool isDropFrame = false;

  friend constexpr bool operator==(const DecomposedTimecode&, const DecomposedTimecode&) = default;
};

/// A timecode: the label of a frame. The components are free numbers; reading a text is what checks them. What frame a
/// label belongs to depends on the frame rate: see frame_number.h.
struct TimecodeComponents {
  std::int64_t hours = 0;
  std::int64_t minutes = 0;
  std::int64_t seconds = 0;
  /// The number of the frame within its second.
  std::int64_t frames = 0;
  /// Drop-frame counting: decides the last separator.
  bool isDropFrame = false;

  static constexpr std::string_view dropFrameSeparator = ";";
  static constexpr std::string_view nonDropSeparator = ":";
  static constexpr std::string_view defaultNonDropTimecode = "00:00:00:00";
  static constexpr std::string_view defaultDropFrameTimecode = "00:00:00;00";
  static const TimecodeComponents defaultNonDropTimecodeComponents;
  static const TimecodeComponents defaultDropFrameTimecodeComponents;

  /// The components of a text of proper form, length and bounds: "01:02:03;04". Absent for any other.
  [[nodiscard]] static constexpr std::optional<TimecodeComponents> fromTimecode(std::string_view timecode) noexcept;

  /// The text: each component with at least two digits, then ":", and ";" before the frames of a drop-frame timecode.
  /// A negative component gets its "0" too, on purpose: -3 is "0-3". Such a text does not read back.
  [[nodiscard]] MERIDIAN_API std::string timecodeString() const;

  /// Cuts the text at each ":" and ";" into fields for hours, minutes, seconds and frames, in this order. Every ";"
  /// makes it drop frame, whichever separator it stands for ("01;02;03;04" is a form in use). A field is a number when
  /// it is digits 0 to 9 and nothing else, within 63 bits; any other field (empty, with a sign or a blank, too large)
  /// leaves its component empty, as a missing one does. More than four fields leave the frames empty, since nothing
  /// says which of them they are.
  [[nodiscard]] static constexpr DecomposedTimecode decomposeTimecodeString(std::string_view text) noexcept;

  /// What can be read of a text that need not be a proper timecode: 0 for each component that cannot. Never fails.
  [[nodiscard]] static constexpr TimecodeComponents sanitizedTimecode(std::string_view text) noexcept;

  /// Whether the text has all four components; with `forceProperComponentLength`, each of two digits at least; with
  /// `forceProperComponentBounds`, minutes and seconds of at most 60. The bound includes 60 on purpose, and hours and
  /// frames have none.
  [[nodiscard]] static constexpr bool timecodeHasProperForm(std::string_view text, bool forceProperComponentLength,
                                                            bool forceProperComponentBounds) noexcept {
    return timecodeHasProperForm(text, forceProperComponentLength, forceProperComponentBounds,
                                 [](std::int64_t, std::int64_t, std::int64_t, std::int64_t, bool) {});
  }

  /// The same with a closure: calls it once with hours, minutes, seconds, frames and whether they are drop frame, when
  /// the answer is yes.
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

/// The digits as a number; absent when it leaves 63 bits.
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
    // So many digits always fit; more have wrapped round.
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
  // A text of proper form decomposes into the same components, so it needs no step of its own.
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
