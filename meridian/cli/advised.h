/// \file
/// An error or a warning with advice for one case, where the remedy of its code is too general:
///
///     using PropertyError = Advised<Error<PropertyErrorCode>>;
///     PropertyError error{{PropertyErrorCode::unknownProperty, "videoFromat"}, "did you mean videoFormat?"};
///     error.message();  // "videoFromat": is not a property; did you mean videoFormat?
#pragma once

#include <string>
#include <string_view>

#include "meridian/base/error.h"

namespace meridian::inline v0_2 {

/// Adds advice to an `Error` or a `Warning`. Advice replaces the remedy of the code; empty advice leaves it.
template <typename Base>
struct Advised : Base {
  std::string advice{};

  [[nodiscard]] std::string_view remedy() const noexcept { return advice.empty() ? Base::remedy() : advice; }
  /// Returns the whole error or warning for a person, safe for a terminal.
  [[nodiscard]] std::string message() const { return meridian::detail::messageOf(this->place, sentence(), "", ""); }
  /// Returns the same without its place, for a table that has the place in a column of its own.
  [[nodiscard]] std::string sentence() const {
    return meridian::detail::messageOf("", this->text(), this->detail, remedy());
  }

  friend bool operator==(const Advised&, const Advised&) = default;
};

}  // namespace meridian::inline v0_2
