/// \file
/// Errors (it failed) and warnings (it was noticed), each with a code, a place, details and a remedy. For example:
///
///     using LutError = Error<LutErrorCode>;
///     LutError{LutErrorCode::notOpened, "/looks/show.cube", {}, systemError}.message();
///     // "/looks/show.cube": cannot be opened: Permission denied; check that you may read it
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <system_error>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// One row of a table of error or warning codes. `description` says what is wrong, as a clause without a subject
/// ("cannot be opened"). `remedy` says what to do ("check that you may read it"); it may be empty.
template <typename Code>
struct ErrorRow {
  Code value;
  std::string_view rawValue;
  std::string_view description;
  std::string_view remedy = {};
};

/// An enumeration whose table consists of `ErrorRow`s.
template <typename Type>
concept ErrorCode = TabledEnumeration<Type> && requires(Type code) {
  { tableRow(code).remedy } -> std::convertible_to<std::string_view>;
};

/// Returns what to do about an error or a warning; empty if there is no general remedy.
template <ErrorCode Code>
[[nodiscard]] constexpr std::string_view remedy(Code code) noexcept {
  return tableRow(code).remedy;
}

namespace detail {

/// Joins the parts that are not empty, with control characters escaped: "PLACE": TEXT: DETAIL: SYSTEM ERROR; REMEDY
[[nodiscard]] MERIDIAN_API std::string messageOf(std::string_view place, std::string_view text, std::string_view detail,
                                                 const std::error_code& systemError, std::string_view remedy);

}  // namespace detail

/// Says what failed, where, and what to do.
template <ErrorCode Code>
struct Error {
  using CodeType = Code;

  Code code{};
  /// The path, flag or word that the error is about; may be empty.
  std::string place{};
  /// What is known beyond the code, such as a number of rows; may be empty.
  std::string detail{};
  /// The operating system's reason; none if no system call failed.
  std::error_code systemError{};

  [[nodiscard]] std::string_view text() const noexcept { return description(code); }
  [[nodiscard]] std::string_view remedy() const noexcept { return meridian::remedy(code); }
  /// Returns the error as one line for a person, with control characters escaped.
  [[nodiscard]] std::string message() const {
    return meridian::detail::messageOf(place, text(), detail, systemError, remedy());
  }

  friend bool operator==(const Error&, const Error&) = default;
};

/// Says what was noticed while the work went on, where, and what to do.
template <ErrorCode Code>
struct Warning {
  using CodeType = Code;

  Code code{};
  /// The path, flag or word that the warning is about; may be empty.
  std::string place{};
  /// What is known beyond the code; may be empty.
  std::string detail{};

  [[nodiscard]] std::string_view text() const noexcept { return description(code); }
  [[nodiscard]] std::string_view remedy() const noexcept { return meridian::remedy(code); }
  /// Returns the warning as one line for a person, with control characters escaped.
  [[nodiscard]] std::string message() const { return meridian::detail::messageOf(place, text(), detail, {}, remedy()); }

  friend bool operator==(const Warning&, const Warning&) = default;
};

}  // namespace meridian::inline v0_2
