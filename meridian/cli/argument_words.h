/// \file
/// Accepts the words of a command line in any of the usual forms. Functions that read an argument vector take each of
/// these:
///
///     explain({"-dims", "1280 x 720"});
///     explain(words);                             // a vector, span or array of std::string or std::string_view
///     explain(ArgumentWords(argc, argv));         // main's parameters, without the program path
#pragma once

#include <concepts>
#include <initializer_list>
#include <ranges>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

namespace meridian::inline v0_2 {

/// A view of the words of an argument vector, without the program path. Use it as a function parameter only: it refers
/// to the caller's texts. A null pointer among them is undefined behaviour.
class ArgumentWords {
 public:
  /// Holds no words.
  ArgumentWords() noexcept = default;
  // NOLINTBEGIN(google-explicit-constructor): callers pass what they have.
  ArgumentWords(std::initializer_list<std::string_view> words) noexcept : views_(words.begin(), words.size()) {}
  /// Does not compile: a second pair of braces would read two words as the two ends of one text.
  template <std::same_as<const char*> Text>
  ArgumentWords(std::initializer_list<std::initializer_list<Text>> words) = delete;
  /// Accepts a contiguous range of texts. Views of them are made unless they are views already.
  template <std::ranges::contiguous_range Words>
    requires std::convertible_to<std::ranges::range_reference_t<const Words>, std::string_view>
  ArgumentWords(const Words& words) {
    if constexpr (std::is_same_v<std::ranges::range_value_t<Words>, std::string_view>) {
      views_ = {std::ranges::data(words), std::ranges::size(words)};
    } else {
      made_.assign(std::ranges::begin(words), std::ranges::end(words));
    }
  }
  // NOLINTEND(google-explicit-constructor)
  /// Accepts the parameters of `main` and leaves out the program path, `argv[0]`. An `argc` below 1 gives no words.
  ArgumentWords(int argc, const char* const* argv) : made_(argv + (argc > 0 ? 1 : 0), argv + (argc > 0 ? argc : 0)) {}

  /// Returns the words, in order.
  [[nodiscard]] std::span<const std::string_view> words() const noexcept {
    return made_.empty() ? views_ : std::span<const std::string_view>(made_);
  }

 private:
  std::span<const std::string_view> views_;
  std::vector<std::string_view> made_;
};

}  // namespace meridian::inline v0_2
