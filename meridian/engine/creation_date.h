/// \file
/// Reads the date of creation that a file states. For example:
///
///     creationDateFrom("2026-11-22T10:20:30.5+0100")->fraction  // 0.5
///     creationDateFrom("2026-11-22T10:20:30Z")->isUtc           // true
///     creationDateFrom("2026-02-30T10:20:30")                   // absent: no such day
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace meridian::inline v0_2 {

/// A date and time of creation.
struct CreationDate {
  /// As written, which is the time of the camera whatever the zone is.
  std::chrono::sys_seconds time;
  /// The part of a second beyond it, from 0 to 1.
  double fraction = 0;
  /// True if the zone is written as "Z".
  bool isUtc = false;
};

/// Reads a date, one more character and a time, with or without a fraction and a zone. Absent for a text of another
/// form, and for a day or a time that does not exist.
[[nodiscard]] std::optional<CreationDate> creationDateFrom(std::string_view text);

}  // namespace meridian::inline v0_2
