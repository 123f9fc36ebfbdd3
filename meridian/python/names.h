/// \file
/// The rule that makes Python's names from those of C++: words in lower case, joined by underscores. Types keep their
/// names. For example:
///
///     snakeCase("videoFrameRate")        // "video_frame_rate"
///     snakeCase("proRes4444XQ")          // "pro_res4444_xq"
///     enumeratorName<ItemKind::file>()   // "file", as the enumeration's declaration has it
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace meridian::inline v0_2::python {

/// Returns the Python name of a function, property or case. A word begins at a capital after another character, and at
/// the last capital of several before a small letter.
[[nodiscard]] inline std::string snakeCase(std::string_view name) {
  const auto isCapital = [&](std::size_t place) {
    return place < name.size() && name[place] >= 'A' && name[place] <= 'Z';
  };
  const auto isSmall = [&](std::size_t place) {
    return place < name.size() && name[place] >= 'a' && name[place] <= 'z';
  };
  std::string result;
  for (std::size_t place = 0; place < name.size(); ++place) {
    if (!isCapital(place)) {
      result += name[place];
      continue;
    }
    const bool beginsWord = place > 0 && (!isCapital(place - 1) || isSmall(place + 1)) && name[place - 1] != '_';
    if (beginsWord) result += '_';
    result += static_cast<char>(name[place] - 'A' + 'a');
  }
  return result;
}

namespace detail {

/// Returns what the compiler writes for the template argument of a function: the text after "= ", up to the end.
consteval std::string_view argumentOf(std::string_view function) {
  const std::size_t begin = function.find(" = ") + 3;
  return function.substr(begin, function.find_first_of(";]", begin) - begin);
}

consteval std::string_view lastComponent(std::string_view qualified) {
  const std::size_t colon = qualified.rfind(':');
  return colon == std::string_view::npos ? qualified : qualified.substr(colon + 1);
}

}  // namespace detail

/// Returns the name of a type without its namespace.
template <typename Type>
[[nodiscard]] consteval std::string_view typeName() {
  return detail::lastComponent(detail::argumentOf(static_cast<const char*>(__PRETTY_FUNCTION__)));
}

/// Returns the name of an enumeration's case; empty for a value that is not one.
template <auto value>
[[nodiscard]] consteval std::string_view enumeratorName() {
  constexpr std::string_view written = detail::argumentOf(static_cast<const char*>(__PRETTY_FUNCTION__));
  return written.starts_with('(') ? std::string_view() : detail::lastComponent(written);
}

}  // namespace meridian::inline v0_2::python
