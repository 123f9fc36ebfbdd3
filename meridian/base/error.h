/// \file
/// What failed and what was noticed. An error has a code, a place, details, and a remedy:
///
///     "/looks/show.cube": cannot be opened: Permission denied; check that you may read it
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <system_error>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// One line of a table of error or warning codes. `description` says what is wrong, as a clause without a subject
/// ("cannot be opened"); `remedy` says what to do ("check that you may read it"). The remedy may be empty.
template <typename Code>
struct ErrorRow {
  Code value;
  std::string_view rawValue;
  std::string_view description;
  std::string_view remedy = {};
};

/// An enumeration whose table says of each case what is wrong and what to do.
template <typename Type>
concept ErrorCode = TabledEnumeration<Type> && requires(Type code) {
  { tableRow(code).remedy } -> std::convertible_to<std::string_view>;
};

/// Returns what to do about an error or a warning; empty where nothing helps in general.
template <ErrorCode Code>
[[nodiscard]] constexpr std::string_view remedy(Code code) noexcept {
  return tableRow(code).remedy;
}

namespace detail {

/// Joins the parts of a message, each of which may be empty: "PLACE": TEXT: DETAIL; REMEDY. Safe for a terminal.
[[nodiscard]] MERIDIAN_API std::string messageOf(std::string_view place, std::string_view text, std::string_view detail,
                                                 std::string_view remedy);

}  // namespace detail

/// Says that something failed: what, where, and what to do.
template <ErrorCode Code>
struct Error {
  using CodeType = Code;

  Code code{};
  /// The path, flag or word that the error is about; empty where there is none.
  std::string place{};
  /// What is known beyond the code, such as a number of rows; empty where there is nothing.
  std::string detail{};
  /// The operating system's error; no error where it was not asked.
  std::error_code systemError{};

  [[nodiscard]] std::string_view text() const noexcept { return description(code); }
  [[nodiscard]] std::string_view remedy() const noexcept { return meridian::remedy(code); }
  /// Returns the whole error for a person, safe for a terminal.
  [[nodiscard]] std::string message() const {
    return meridian::detail::messageOf(place, text(), systemError ? systemError.message() : detail, remedy());
  }

  friend bool operator==(const Error&, const Error&) = default;
};

/// Says that something was noticed, and that the work went on all the same.
template <ErrorCode Code>
struct Warning {
  using CodeType = Code;

  Code code{};
  /// The path, flag or word that the warning is about; empty where there is none.
  std::string place{};
  /// What is known beyond the code; empty where there is nothing.
  std::string detail{};

  [[nodiscard]] std::string_view text() const noexcept { return description(code); }
  [[nodiscard]] std::string_view remedy() const noexcept { return meridian::remedy(code); }
  /// Returns the whole warning for a person, safe for a terminal.
  [[nodiscard]] std::string message() const { return meridian::detail::messageOf(place, text(), detail, remedy()); }

  friend bool operator==(const Warning&, const Warning&) = default;
};

}  // namespace meridian::inline v0_2
