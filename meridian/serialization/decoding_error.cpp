#include "meridian/serialization/decoding_error.h"

#include <utility>

namespace meridian {

DecodingError::DecodingError(std::string path, std::string_view message)
    : std::runtime_error((path.empty() ? std::string("the record") : path) + ": " + std::string(message)),
      path_(std::move(path)) {}

}  // namespace meridian
