#include "meridian/base/error.h"

#include "meridian/base/printable.h"

namespace meridian::inline v0_2 {

std::string detail::messageOf(std::string_view place, std::string_view text, std::string_view detail,
                              std::string_view remedy) {
  std::string message;
  const auto append = [&message](std::string_view separator, const std::string& part) {
    if (part.empty()) return;
    if (!message.empty()) message += separator;
    message += part;
  };
  if (!place.empty()) message = inQuotes(place);
  append(": ", std::string(text));
  append(": ", printable(detail));
  append("; ", std::string(remedy));
  return message;
}

}  // namespace meridian::inline v0_2
