/// \file
/// A result or the reason why there is none. For example:
///
///     Expected<int, std::string> half(int number) {
///       if (number % 2 != 0) return Unexpected(std::string("an odd number"));
///       return number / 2;
///     }
#pragma once

#include <concepts>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

#include "meridian/base/precondition.h"

namespace meridian::inline v0_2 {

/// Wraps an error on its way into an `Expected`.
template <typename E>
class Unexpected {
 public:
  constexpr explicit Unexpected(E error) noexcept(std::is_nothrow_move_constructible_v<E>) : error_(std::move(error)) {}

  [[nodiscard]] constexpr const E& error() const& noexcept { return error_; }
  [[nodiscard]] constexpr E&& error() && noexcept { return std::move(error_); }

 private:
  E error_;
};

/// Holds a value or an error, never both. Has the shape and the names of C++23's std::expected, which will replace it;
/// but where that throws or is undefined, reading a value or an error that is not held terminates the process.
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
  // NOLINTNEXTLINE(google-explicit-constructor): a value is returned as it is.
  constexpr Expected(Value&& value) : content_(std::in_place_index<0>, std::forward<Value>(value)) {}
  template <typename Error>
    requires std::convertible_to<Error, E>
  // NOLINTNEXTLINE(google-explicit-constructor): an error is returned as it is.
  constexpr Expected(Unexpected<Error> error) : content_(std::in_place_index<1>, std::move(error).error()) {}

  [[nodiscard]] constexpr bool has_value() const noexcept { return content_.index() == 0; }
  constexpr explicit operator bool() const noexcept { return has_value(); }

  [[nodiscard]] constexpr const T& value() const& noexcept { return *checked(std::get_if<0>(&content_)); }
  [[nodiscard]] constexpr T& value() & noexcept { return *checked(std::get_if<0>(&content_)); }
  [[nodiscard]] constexpr T&& value() && noexcept { return std::move(*checked(std::get_if<0>(&content_))); }
  constexpr const T& operator*() const& noexcept { return value(); }
  constexpr T& operator*() & noexcept { return value(); }
  constexpr T&& operator*() && noexcept { return std::move(*this).value(); }
  constexpr const T* operator->() const noexcept { return std::addressof(value()); }
  constexpr T* operator->() noexcept { return std::addressof(value()); }

  [[nodiscard]] constexpr const E& error() const& noexcept { return *checked(std::get_if<1>(&content_)); }
  [[nodiscard]] constexpr E&& error() && noexcept { return std::move(*checked(std::get_if<1>(&content_))); }

  template <typename Default>
  [[nodiscard]] constexpr T value_or(Default&& otherwise) const& {
    return has_value() ? **this : static_cast<T>(std::forward<Default>(otherwise));
  }

  friend constexpr bool operator==(const Expected&, const Expected&) = default;

 private:
  template <typename Held>
  static constexpr Held* checked(Held* held) noexcept {
    if (held == nullptr) preconditionFailed("Expected: the value or error that is read is not held");
    return held;
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
  // NOLINTNEXTLINE(google-explicit-constructor): an error is returned as it is.
  constexpr Expected(Unexpected<Error> error) : content_(std::move(error)) {}

  [[nodiscard]] constexpr bool has_value() const noexcept { return content_.has_value(); }
  constexpr explicit operator bool() const noexcept { return has_value(); }
  [[nodiscard]] constexpr const E& error() const& noexcept { return content_.error(); }
  [[nodiscard]] constexpr E&& error() && noexcept { return std::move(content_).error(); }

  friend constexpr bool operator==(const Expected&, const Expected&) = default;

 private:
  Expected<std::monostate, E> content_;
};

}  // namespace meridian::inline v0_2
