/// \file
/// The exceptions for stored data: a document that does not have the documented form, and a value that the form cannot
/// hold. For example:
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

/// The base of both exceptions. `what()` says where, what is wrong and what was expected; it is safe for a terminal.
class MERIDIAN_API CodingError : public std::runtime_error {
 public:
  /// Returns the JSON pointer (RFC 6901) of the value within the record; empty for the record itself.
  [[nodiscard]] const std::string& path() const noexcept { return path_; }
  /// Returns what is wrong, without the place.
  [[nodiscard]] const std::string& message() const noexcept { return message_; }

 protected:
  CodingError(std::string path, std::string_view message);

 private:
  std::string path_;
  std::string message_;
};

/// Is thrown if a document cannot be decoded.
class MERIDIAN_API DecodingError : public CodingError {
 public:
  DecodingError(std::string path, std::string_view message);
};

/// Is thrown if a value cannot be encoded: a text that is not valid UTF-8.
class MERIDIAN_API EncodingError : public CodingError {
 public:
  EncodingError(std::string path, std::string_view message);
};

}  // namespace meridian::inline v0_2
