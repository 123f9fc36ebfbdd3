// Typed texts: text that says in its type what it means, such as a video flag or a codec.
#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

namespace meridian::inline v0_2 {

/// Base of a string-valued type with an open set of members: named constants are the known members, and any other text
/// can be wrapped as well. Two members are equal when their texts are equal byte for byte.
///
/// A member is a view: it refers to text that lives elsewhere, for the constants in the program itself. A temporary
/// `std::string` is refused at compile time; other text must outlive the member.
template <typename Derived>
class TypedText {
 public:
  /// Wraps the text as it stands, known or not.
  constexpr explicit TypedText(std::string_view text) noexcept : text_(text) {}
  constexpr explicit TypedText(const char* text) noexcept : text_(text) {}

  /// A temporary string would be gone before the member is used.
  template <typename Text>
    requires(std::is_same_v<std::remove_cv_t<Text>, std::string> && !std::is_lvalue_reference_v<Text>)
  explicit TypedText(Text&&) = delete;

  /// The exact text that stands on the command line.
  [[nodiscard]] constexpr std::string_view rawValue() const noexcept { return text_; }

  /// The raw value as a text of its own.
  [[nodiscard]] std::string string() const { return std::string(text_); }

  friend constexpr bool operator==(const Derived& left, const Derived& right) noexcept {
    return left.rawValue() == right.rawValue();
  }
  friend constexpr std::strong_ordering operator<=>(const Derived& left, const Derived& right) noexcept {
    return left.rawValue() <=> right.rawValue();
  }
  friend std::ostream& operator<<(std::ostream& stream, const Derived& member) { return stream << member.rawValue(); }

 private:
  std::string_view text_;
};

template <typename Type>
concept TypedTextType = std::is_base_of_v<TypedText<Type>, Type>;

}  // namespace meridian::inline v0_2

template <meridian::TypedTextType Type>
struct std::hash<Type> {
  [[nodiscard]] std::size_t operator()(const Type& member) const noexcept {
    return std::hash<std::string_view>{}(member.rawValue());
  }
};
