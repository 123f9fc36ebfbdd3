// Closed enumerations with texts: each has one table, and the functions here read every table alike.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "meridian/base/precondition.h"
#include "meridian/base/text_index.h"

namespace meridian::inline v0_2 {

/// One line of an enumeration's table. `description` is the display text; where it is empty, the raw value serves.
template <typename Enumeration>
struct EnumerationRow {
  Enumeration value;
  std::string_view rawValue;
  std::string_view description = {};
};

/// Specialised for each enumeration with a member `rows`: an array of all cases in declaration order, whose elements
/// have at least the members of EnumerationRow.
template <typename Enumeration>
struct EnumerationTable;

template <typename Type>
concept TabledEnumeration = std::is_enum_v<Type> && requires { EnumerationTable<Type>::rows; };

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
  }
  return cases;
}

template <TabledEnumeration Enumeration>
consteval auto indexOfTable() {
  std::array<std::string_view, caseCount<Enumeration>> texts{};
  for (std::size_t place = 0; place < texts.size(); ++place) {
    texts[place] = EnumerationTable<Enumeration>::rows[place].rawValue;
  }
  return TextIndex<texts.size()>{std::span<const std::string_view, texts.size()>(texts)};
}

template <TabledEnumeration Enumeration>
inline constexpr auto cases = casesOfTable<Enumeration>();

template <TabledEnumeration Enumeration>
inline constexpr auto rawValueIndex = indexOfTable<Enumeration>();

}  // namespace detail

/// All cases in declaration order.
template <TabledEnumeration Enumeration>
[[nodiscard]] constexpr const auto& allCases() noexcept {
  return detail::cases<Enumeration>;
}

/// The case's line of the table, with all that the table says of it.
template <TabledEnumeration Enumeration>
[[nodiscard]] constexpr const auto& tableRow(Enumeration value) noexcept {
  return EnumerationTable<Enumeration>::rows[static_cast<std::size_t>(value)];
}

/// The case's raw value, as it is written and stored.
template <TabledEnumeration Enumeration>
[[nodiscard]] constexpr std::string_view rawValue(Enumeration value) noexcept {
  return tableRow(value).rawValue;
}

/// The case with exactly this raw value; absent when there is none. Takes the same time for every text.
template <TabledEnumeration Enumeration>
[[nodiscard]] constexpr std::optional<Enumeration> fromRawValue(std::string_view text) noexcept {
  const auto place = detail::rawValueIndex<Enumeration>.find(text);
  if (!place) return std::nullopt;
  return detail::cases<Enumeration>[*place];
}

/// The case's display text in the source language.
template <TabledEnumeration Enumeration>
[[nodiscard]] constexpr std::string_view description(Enumeration value) noexcept {
  const auto& row = tableRow(value);
  return row.description.empty() ? row.rawValue : row.description;
}

}  // namespace meridian::inline v0_2
