/// \file
/// Closed enumerations with texts. Each has one table, which the functions here read. For example:
///
///     enum class Shade : std::uint8_t { light, dark };
///     template <>
///     struct EnumerationTable<Shade> {
///       static constexpr auto rows =
///           std::to_array<EnumerationRow<Shade>>({{Shade::light, "light"}, {Shade::dark, "dark", "Dark grey"}});
///     };
///     rawValue(Shade::dark);         // "dark"
///     description(Shade::dark);      // "Dark grey"
///     fromRawValue<Shade>("light");  // Shade::light
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string_view>
#include <type_traits>

#include "meridian/base/precondition.h"
#include "meridian/base/text_index.h"

namespace meridian::inline v0_2 {

/// One line of an enumeration's table. `description` is the display text; if it is empty, the raw value is displayed.
template <typename Enumeration>
struct EnumerationRow {
  Enumeration value;
  std::string_view rawValue;
  std::string_view description = {};
};

/// The table of an enumeration. Specialise it with a member `rows`: an array of all cases in declaration order, whose
/// elements have at least the members of EnumerationRow. The raw value may also be an integer. Another order, a
/// raw value twice, or an integer without a description does not compile.
template <typename Enumeration>
struct EnumerationTable;

/// Any enumeration that has a table.
template <typename Type>
concept TabledEnumeration = std::is_enum_v<Type> && requires { EnumerationTable<Type>::rows; };

/// The type of an enumeration's raw values: a text view, or an integer.
template <TabledEnumeration Enumeration>
using RawValueOf = std::remove_cvref_t<decltype(EnumerationTable<Enumeration>::rows[0].rawValue)>;

namespace detail {

template <TabledEnumeration Enumeration>
inline constexpr std::size_t caseCount = EnumerationTable<Enumeration>::rows.size();

template <TabledEnumeration Enumeration>
consteval auto casesOfTable() {
  std::array<Enumeration, caseCount<Enumeration>> cases{};
  for (std::size_t place = 0; place < cases.size(); ++place) {
    cases[place] = EnumerationTable<Enumeration>::rows[place].value;
    if (static_cast<std::size_t>(cases[place]) != place) {
      preconditionFailed("EnumerationTable: the rows are not in declaration order");
    }
    if constexpr (std::integral<RawValueOf<Enumeration>>) {
      const auto& row = EnumerationTable<Enumeration>::rows[place];
      if (row.description.empty()) preconditionFailed("EnumerationTable: a row has no description");
      for (std::size_t earlier = 0; earlier < place; ++earlier) {
        if (EnumerationTable<Enumeration>::rows[earlier].rawValue == row.rawValue) {
          preconditionFailed("EnumerationTable: a raw value is listed twice");
        }
      }
    }
  }
  return cases;
}

template <TabledEnumeration Enumeration>
consteval auto indexOfTable() {
  std::array<std::string_view, caseCount<Enumeration>> texts{};
  for (std::size_t place = 0; place < texts.size(); ++place) {
    texts[place] = EnumerationTable<Enumeration>::rows[place].rawValue;
  }
  return TextIndex(texts);
}

template <TabledEnumeration Enumeration>
inline constexpr auto cases = casesOfTable<Enumeration>();

template <TabledEnumeration Enumeration>
inline constexpr auto rawValueIndex = indexOfTable<Enumeration>();

}  // namespace detail

/// Returns all cases in declaration order.
template <TabledEnumeration Enumeration>
[[nodiscard]] constexpr const auto& allCases() noexcept {
  return detail::cases<Enumeration>;
}

/// Returns the case's line of the table, with all its columns.
template <TabledEnumeration Enumeration>
[[nodiscard]] constexpr const auto& tableRow(Enumeration value) noexcept {
  return EnumerationTable<Enumeration>::rows[static_cast<std::size_t>(value)];
}

/// Returns the case's raw value, the text or number in which it is written and stored.
template <TabledEnumeration Enumeration>
[[nodiscard]] constexpr RawValueOf<Enumeration> rawValue(Enumeration value) noexcept {
  return tableRow(value).rawValue;
}

/// Returns the case with exactly this raw value; absent if there is none. O(1) for texts.
template <TabledEnumeration Enumeration>
[[nodiscard]] constexpr std::optional<Enumeration> fromRawValue(RawValueOf<Enumeration> raw) noexcept {
  if constexpr (std::integral<RawValueOf<Enumeration>>) {
    for (const Enumeration value : allCases<Enumeration>()) {
      if (rawValue(value) == raw) return value;
    }
    return std::nullopt;
  } else {
    const auto place = detail::rawValueIndex<Enumeration>.find(raw);
    if (!place) return std::nullopt;
    return detail::cases<Enumeration>[*place];
  }
}

/// Returns the case's display text in the source language, English.
template <TabledEnumeration Enumeration>
[[nodiscard]] constexpr std::string_view description(Enumeration value) noexcept {
  const auto& row = tableRow(value);
  if constexpr (std::integral<RawValueOf<Enumeration>>) {
    return row.description;
  } else {
    return row.description.empty() ? row.rawValue : row.description;
  }
}

}  // namespace meridian::inline v0_2
