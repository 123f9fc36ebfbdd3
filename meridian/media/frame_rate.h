/// \file
/// The frame-rate choice that conversion settings offer. For example:
///
///     FrameRate::fromRawValue(25)->description()      // "25 fps", the case fps25
///     FrameRate::fromRawValue(47.952)->description()  // "Custom: 47.952 fps"
///     FrameRate::halfstep.rawValue()                  // 0.5: half the source's rate
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/combined_hash.h"
#include "meridian/base/enumeration.h"
#include "meridian/export.h"
#include "meridian/media/conversion_codec_type.h"

namespace meridian::inline v0_2 {

/// The cases of FrameRate. The raw value is the name of the case; FrameRate makes the display texts.
enum class FrameRateKind : std::uint8_t {
  custom,
  match,
  halfstep,
  fps23_98,
  fps24,
  fps25,
  fps29_97,
  fps30,
  fps50,
  fps59_94,
  fps60,
};

/// A row of the table of frame-rate choices.
struct FrameRateRow {
  FrameRateKind value;
  std::string_view rawValue;
  /// The number that a stored setting holds for the case.
  double storedValue;
  /// The display text; empty if it is made from the number.
  std::string_view description = {};
};

template <>
struct EnumerationTable<FrameRateKind> {
  static constexpr auto rows = std::to_array<FrameRateRow>({
      {FrameRateKind::custom, "custom", 0.0, "Custom"},
      {FrameRateKind::match, "match", 0.0, "Match"},
      {FrameRateKind::halfstep, "halfstep", 0.5, "Half Step"},
      // 23.967, not 23.976: the digits were once transposed, and stored settings hold exactly this number.
      {FrameRateKind::fps23_98, "fps23_98", 23.967},
      {FrameRateKind::fps24, "fps24", 24.0},
      {FrameRateKind::fps25, "fps25", 25.0},
      {FrameRateKind::fps29_97, "fps29_97", 29.97},
      {FrameRateKind::fps30, "fps30", 30.0},
      {FrameRateKind::fps50, "fps50", 50.0},
      {FrameRateKind::fps59_94, "fps59_94", 59.94},
      {FrameRateKind::fps60, "fps60", 60.0},
  });
};

namespace detail {

MERIDIAN_API void reportUnknownFrameRate(double rawValue);

}  // namespace detail

/// The frame-rate choice of conversion settings: the source's rate, half of it, one of eight fixed rates, or a custom
/// one. Two are equal if the cases are and, for `custom`, the rates.
class FrameRate {
 public:
  using Kind = FrameRateKind;

  // clang-format off
  static const FrameRate match, halfstep, fps23_98, fps24, fps25, fps29_97, fps30, fps50, fps59_94, fps60;
  // clang-format on

  /// Makes `match`, the source's rate.
  constexpr FrameRate() noexcept = default;

  /// Returns a custom rate in frames per second; 0 if none is entered yet.
  [[nodiscard]] static constexpr FrameRate custom(double framesPerSecond) noexcept {
    FrameRate rate(Kind::custom);
    rate.rawValue_ = framesPerSecond;
    return rate;
  }

  /// Returns the choice for a stored number: the well-defined case of exactly this number, else a custom rate. A
  /// negative number or NaN is written to the system log, and nothing is returned.
  [[nodiscard]] static constexpr std::optional<FrameRate> fromRawValue(double rawValue) {
    for (const FrameRate& each : wellDefinedCases()) {
      if (each.rawValue_ == rawValue) return each;
    }
    if (rawValue > 0) return custom(rawValue);
    detail::reportUnknownFrameRate(rawValue);
    return std::nullopt;
  }

  [[nodiscard]] constexpr Kind kind() const noexcept { return kind_; }

  /// Returns true if a stored number is a rate in frames per second, rather than `match`, `halfstep` or no choice.
  [[nodiscard]] static constexpr bool isFramesPerSecond(double rawValue) noexcept {
    return rawValue > 0 && rawValue != tableRow(Kind::halfstep).storedValue;
  }

  /// Returns the number that a stored setting holds: frames per second, 0 for `match`, 0.5 for `halfstep`. A custom
  /// rate of 0 reads back as `match`.
  [[nodiscard]] constexpr double rawValue() const noexcept { return rawValue_; }
  [[nodiscard]] constexpr double frameRateForProto() const noexcept { return rawValue(); }

  /// Returns the display text: "Half Step", "23.97 fps", "Custom: 47.952 fps", or "Custom" if no rate is entered yet.
  [[nodiscard]] MERIDIAN_API std::string description() const;
  /// Returns the display text in a list to choose from: "Custom" for every custom rate.
  [[nodiscard]] MERIDIAN_API std::string pickerDescription() const;
  /// Returns the identifier in a list: "custom" for every custom rate, else the description.
  [[nodiscard]] MERIDIAN_API std::string tag() const;
  /// Return the description and the picker's text in the user's language.
  [[nodiscard]] MERIDIAN_API std::string localizedString() const;
  [[nodiscard]] MERIDIAN_API std::string localizedPickerString() const;

  /// Returns a custom rate that is not entered yet.
  [[nodiscard]] static constexpr FrameRate defaultCustom() noexcept { return custom(0.0); }

  /// Lists all cases except `custom`, in declaration order.
  [[nodiscard]] static constexpr std::span<const FrameRate> wellDefinedCases() noexcept;
  /// Lists the choices relative to the source's rate.
  [[nodiscard]] static constexpr std::span<const FrameRate> scaleOptions() noexcept;
  /// Lists the fixed rates and `defaultCustom`.
  [[nodiscard]] static constexpr std::span<const FrameRate> exactFrameRateOptions() noexcept;
  /// Lists all choices to offer: the scale options, then the exact ones.
  [[nodiscard]] static constexpr std::span<const FrameRate> allCases() noexcept;
  /// Lists the choices for a codec: all of them, for every codec.
  [[nodiscard]] static constexpr std::span<const FrameRate> allowed(ConversionCodecType /*codec*/) noexcept {
    return allCases();
  }

  /// Return the members of the list that are scale options, or exact ones, in the list's order. The only custom rate
  /// among these is `defaultCustom`.
  [[nodiscard]] MERIDIAN_API static std::vector<FrameRate> filterScaleOptions(std::span<const FrameRate> from);
  [[nodiscard]] MERIDIAN_API static std::vector<FrameRate> filterExactFrameRateOptions(std::span<const FrameRate> from);

  friend constexpr bool operator==(const FrameRate&, const FrameRate&) = default;

 private:
  constexpr explicit FrameRate(Kind kind) noexcept : kind_(kind), rawValue_(tableRow(kind).storedValue) {}

  Kind kind_ = Kind::match;
  double rawValue_ = 0.0;
};

inline constexpr FrameRate FrameRate::match{Kind::match};
inline constexpr FrameRate FrameRate::halfstep{Kind::halfstep};
inline constexpr FrameRate FrameRate::fps23_98{Kind::fps23_98};
inline constexpr FrameRate FrameRate::fps24{Kind::fps24};
inline constexpr FrameRate FrameRate::fps25{Kind::fps25};
inline constexpr FrameRate FrameRate::fps29_97{Kind::fps29_97};
inline constexpr FrameRate FrameRate::fps30{Kind::fps30};
inline constexpr FrameRate FrameRate::fps50{Kind::fps50};
inline constexpr FrameRate FrameRate::fps59_94{Kind::fps59_94};
inline constexpr FrameRate FrameRate::fps60{Kind::fps60};

namespace detail {

/// Holds the lists of choices, each of which is a part of it.
inline constexpr auto frameRateChoices =
    std::to_array<FrameRate>({FrameRate::match, FrameRate::halfstep, FrameRate::fps23_98, FrameRate::fps24,
                              FrameRate::fps25, FrameRate::fps29_97, FrameRate::fps30, FrameRate::fps50,
                              FrameRate::fps59_94, FrameRate::fps60, FrameRate::defaultCustom()});

}  // namespace detail

constexpr std::span<const FrameRate> FrameRate::allCases() noexcept { return detail::frameRateChoices; }
constexpr std::span<const FrameRate> FrameRate::wellDefinedCases() noexcept { return allCases().first(10); }
constexpr std::span<const FrameRate> FrameRate::scaleOptions() noexcept { return allCases().first(2); }
constexpr std::span<const FrameRate> FrameRate::exactFrameRateOptions() noexcept { return allCases().subspan(2); }

}  // namespace meridian::inline v0_2

template <>
struct std::hash<meridian::FrameRate> {
  [[nodiscard]] constexpr std::size_t operator()(const meridian::FrameRate& rate) const noexcept {
    return meridian::combinedHash(rate.kind(), rate.rawValue());
  }
};
