/// \file
/// An error as a part of another one's sentence. For example:
///
///     "which " + clauseOf(media.error())  // "which is damaged or incomplete: moov atom not found"
#pragma once

#include <string>

#include "meridian/base/error.h"

namespace meridian::inline v0_2 {

/// Returns the error without its place and remedy, with control characters escaped.
template <typename AnyError>
[[nodiscard]] std::string clauseOf(const AnyError& error) {
  return detail::messageOf({}, error.text(), error.detail, error.systemError, {});
}

}  // namespace meridian::inline v0_2
