// The error for stored data that has not the shape it should have.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Thrown when a document cannot be decoded. `what()` says where, what was wrong and what was expected,
/// with control characters of the document escaped.
class MERIDIAN_API DecodingError : public std::runtime_error {
 public:
  /// `path` is the JSON pointer (RFC 6901) of the offending value within the decoded record; empty for the record.
  DecodingError(std::string path, std::string_view message);

  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  /// What was wrong, without the place.
  [[nodiscard]] const std::string& message() const noexcept { return message_; }

 private:
  std::string path_;
  std::string message_;
};

}  // namespace meridian::inline v0_2
