/// \file
/// A result, or the error that explains why there is none. For example:
///
///     Expected<int, std::string> half(int number) {
///       if (number % 2 != 0) return Unexpected(std::string("an odd number"));
///       return number / 2;
///     }
///
///     half(6).value();     // 3
///     half(7).error();     // "an odd number"
///     half(7).value_or(0); // 0
#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

#include "meridian/base/precondition.h"

namespace meridian::inline v0_2 {

/// Wraps an error, to be returned as an `Expected`.
template <typename E>
class Unexpected {
 public:
  constexpr explicit Unexpected(E error) noexcept(std::is_nothrow_move_constructible_v<E>) : error_(std::move(error)) {}

  [[nodiscard]] constexpr const E& error() const& noexcept { return error_; }
  [[nodiscard]] constexpr E&& error() && noexcept { return std::move(error_); }

 private:
  E error_;
};

/// Holds a value or an error. Has the shape and names of C++23's std::expected, which will replace it. One difference:
/// reading a value or an error that is not held terminates the process, where std::expected throws or is undefined.
template <typename T, typename E>
class [[nodiscard]] Expected {
 public:
  using value_type = T;
  using error_type = E;

  constexpr Expected()
    requires std::default_initializable<T>
      : content_(std::in_place_index<0>) {}
  template <typename Value = T>
    requires(!std::same_as<std::remove_cvref_t<Value>, Expected> && std::convertible_to<Value, T>)
  // NOLINTNEXTLINE(google-explicit-constructor): values convert, so that functions can return them as they are.
  constexpr Expected(Value&& value) : content_(std::in_place_index<0>, std::forward<Value>(value)) {}
  template <typename Error>
    requires std::convertible_to<Error, E>
  // NOLINTNEXTLINE(google-explicit-constructor): likewise for errors.
  constexpr Expected(Unexpected<Error> error) : content_(std::in_place_index<1>, std::move(error).error()) {}

  [[nodiscard]] constexpr bool has_value() const noexcept { return content_.index() == 0; }
  [[nodiscard]] constexpr explicit operator bool() const noexcept { return has_value(); }

  [[nodiscard]] constexpr const T& value() const& noexcept { return held<0>(content_); }
  [[nodiscard]] constexpr T& value() & noexcept { return held<0>(content_); }
  [[nodiscard]] constexpr T&& value() && noexcept { return std::move(held<0>(content_)); }
  [[nodiscard]] constexpr const T& operator*() const& noexcept { return value(); }
  [[nodiscard]] constexpr T& operator*() & noexcept { return value(); }
  [[nodiscard]] constexpr T&& operator*() && noexcept { return std::move(value()); }
  [[nodiscard]] constexpr const T* operator->() const noexcept { return std::addressof(value()); }
  [[nodiscard]] constexpr T* operator->() noexcept { return std::addressof(value()); }

  [[nodiscard]] constexpr const E& error() const& noexcept { return held<1>(content_); }
  [[nodiscard]] constexpr E& error() & noexcept { return held<1>(content_); }
  [[nodiscard]] constexpr E&& error() && noexcept { return std::move(held<1>(content_)); }

  /// Returns the value, or `otherwise` if an error is held.
  template <typename Default>
  [[nodiscard]] constexpr T value_or(Default&& otherwise) const& {
    return has_value() ? value() : static_cast<T>(std::forward<Default>(otherwise));
  }
  template <typename Default>
  [[nodiscard]] constexpr T value_or(Default&& otherwise) && {
    return has_value() ? std::move(value()) : static_cast<T>(std::forward<Default>(otherwise));
  }

  friend constexpr bool operator==(const Expected&, const Expected&) = default;

 private:
  template <std::size_t index, typename Content>
  // NOLINTNEXTLINE(bugprone-exception-escape): std::get does not throw, since the index is checked first.
  static constexpr auto& held(Content& content) noexcept {
    if (content.index() != index)
      preconditionFailed(index == 0 ? "Expected: holds no value" : "Expected: holds no error");
    return std::get<index>(content);
  }

  std::variant<T, E> content_;
};

/// Holds success or an error.
template <typename E>
class [[nodiscard]] Expected<void, E> {
 public:
  using value_type = void;
  using error_type = E;

  constexpr Expected() noexcept = default;
  template <typename Error>
    requires std::convertible_to<Error, E>
  // NOLINTNEXTLINE(google-explicit-constructor): errors convert, so that functions can return them as they are.
  constexpr Expected(Unexpected<Error> error) : content_(std::move(error)) {}

  [[nodiscard]] constexpr bool has_value() const noexcept { return content_.has_value(); }
  [[nodiscard]] constexpr explicit operator bool() const noexcept { return has_value(); }
  [[nodiscard]] constexpr const E& error() const& noexcept { return content_.error(); }
  [[nodiscard]] constexpr E& error() & noexcept { return content_.error(); }
  [[nodiscard]] constexpr E&& error() && noexcept { return std::move(content_.error()); }

  friend constexpr bool operator==(const Expected&, const Expected&) = default;

 private:
  Expected<std::monostate, E> content_;
};

}  // namespace meridian::inline v0_2
