/// \file
/// Typed texts: text whose type says what it means, such as a video flag or a codec. For example:
///
///     struct Codec : TypedText<Codec> { using TypedText::TypedText; };
///     inline constexpr Codec proRes422{"prores422"};
///     Codec(given) == proRes422;  // true if `given` is "prores422", byte for byte
#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

namespace meridian::inline v0_2 {

/// Base of a type with text values, of which the named constants are the known ones and any other text is allowed, too.
/// Values are equal if their texts are equal byte for byte.
///
/// A value is a view: the text of a constant is in the program itself, and any other text must outlive the value. A
/// temporary `std::string` cannot be wrapped; it is rejected at compile time.
template <typename Derived>
class TypedText {
 public:
  /// Wraps the text unchanged, known or not.
  constexpr explicit TypedText(std::string_view text) noexcept : text_(text) {}

  /// Rejects a temporary string, which would be destroyed before the value is used.
  template <typename Text>
    requires std::same_as<std::remove_const_t<Text>, std::string>
  explicit TypedText(Text&&) = delete;

  /// Returns the text exactly as it is written on the command line.
  [[nodiscard]] constexpr std::string_view rawValue() const noexcept { return text_; }

  /// Returns a copy of the raw value.
  [[nodiscard]] std::string string() const { return std::string(text_); }

  friend constexpr bool operator==(const Derived& left, const Derived& right) noexcept {
    return left.rawValue() == right.rawValue();
  }
  friend constexpr std::strong_ordering operator<=>(const Derived& left, const Derived& right) noexcept {
    return left.rawValue() <=> right.rawValue();
  }
  friend std::ostream& operator<<(std::ostream& stream, const Derived& value) { return stream << value.rawValue(); }

 private:
  std::string_view text_;
};

/// Any type of typed text.
template <typename Type>
concept TypedTextType = std::derived_from<Type, TypedText<Type>>;

}  // namespace meridian::inline v0_2

template <meridian::TypedTextType Type>
struct std::hash<Type> {
  [[nodiscard]] std::size_t operator()(const Type& value) const noexcept {
    return std::hash<std::string_view>{}(value.rawValue());
  }
};
