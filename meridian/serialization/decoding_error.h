/// \file
/// The exception for stored data that does not have the documented shape. For example:
///
///     try {
///       rate = json.get<VideoFrameRate>();  // json is {"p24": 24}
///     } catch (const DecodingError& error) {
///       error.what();  // "/p24: expected an object, found number"
///     }
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Is thrown if a document cannot be decoded. `what()` says where, what is wrong and what was expected; it is safe for
/// a terminal.
class MERIDIAN_API DecodingError : public std::runtime_error {
 public:
  /// `path` is the JSON pointer (RFC 6901) of the invalid value within the decoded record; empty for the record itself.
  DecodingError(std::string path, std::string_view message);

  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  /// Returns what is wrong, without the place.
  [[nodiscard]] const std::string& message() const noexcept { return message_; }

 private:
  std::string path_;
  std::string message_;
};

}  // namespace meridian::inline v0_2
