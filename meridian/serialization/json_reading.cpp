#include "meridian/serialization/json_reading.h"

namespace meridian::inline v0_2 {

std::string memberPath(const std::string& parent, std::string_view name) {
  std::string path = parent + "/";
  for (const char c : name) {
    if (c == '~') {
      path += "~0";
    } else if (c == '/') {
      path += "~1";
    } else {
      path += c;
    }
  }
  return path;
}

}  // namespace meridian::inline v0_2
