#include "meridian/serialization/coding_error.h"

#include <utility>

#include "meridian/base/printable.h"

namespace meridian::inline v0_2 {

CodingError::CodingError(std::string path, std::string_view message)
    : std::runtime_error((path.empty() ? std::string("the record") : printable(path)) + ": " + printable(message)),
      path_(std::move(path)),
      message_(message) {}

DecodingError::DecodingError(std::string path, std::string_view message) : CodingError(std::move(path), message) {}

EncodingError::EncodingError(std::string path, std::string_view message) : CodingError(std::move(path), message) {}

}  // namespace meridian::inline v0_2
