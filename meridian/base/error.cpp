#include "meridian/base/error.h"

#include "meridian/base/printable.h"

namespace meridian::inline v0_2 {

std::string detail::messageOf(std::string_view place, std::string_view text, std::string_view detail,
                              const std::error_code& systemError, std::string_view remedy) {
  std::string message = place.empty() ? "" : inQuotes(place);
  const auto append = [&message](std::string_view separator, std::string_view part) {
    if (part.empty()) return;
    if (!message.empty()) message += separator;
    message += part;
  };
  append(": ", text);
  append(": ", printable(detail));
  if (systemError) append(": ", printable(systemError.message()));
  append("; ", remedy);
  return message;
}

}  // namespace meridian::inline v0_2
