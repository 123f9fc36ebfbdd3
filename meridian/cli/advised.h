/// \file
/// An error or a warning with advice for one case, where the remedy of its code is too general:
///
///     using PropertyError = Advised<Error<PropertyErrorCode>>;
///     PropertyError error{{PropertyErrorCode::unknownProperty, "videoFromat"}, "did you mean videoFormat?"};
///     error.message();  // "videoFromat": is not a property; did you mean videoFormat?
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "meridian/base/error.h"

namespace meridian::inline v0_2 {

/// Adds advice to an `Error` or a `Warning`. Advice replaces the remedy of the code; empty advice leaves it.
template <typename Base>
struct Advised : Base {
  std::string advice{};

  [[nodiscard]] std::string_view remedy() const noexcept { return advice.empty() ? Base::remedy() : advice; }
  /// Returns the error or warning as one line for a person, with control characters escaped.
  [[nodiscard]] std::string message() const { return messageAt(this->place); }
  /// Returns the same without its place, for a table that has the place in a column of its own.
  [[nodiscard]] std::string sentence() const { return messageAt(""); }

  friend bool operator==(const Advised&, const Advised&) = default;

 private:
  [[nodiscard]] std::string messageAt(std::string_view shownPlace) const {
    if constexpr (requires { Base::systemError; }) {
      return meridian::detail::messageOf(shownPlace, this->text(), this->detail, this->systemError, remedy());
    } else {
      return meridian::detail::messageOf(shownPlace, this->text(), this->detail, std::error_code(), remedy());
    }
  }
};

}  // namespace meridian::inline v0_2
