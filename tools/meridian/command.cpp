#include "tools/meridian/command.h"

#include "meridian/base/printable.h"

namespace meridian::command {

CommandError::CommandError(std::string_view place, std::string_view why)
    : std::runtime_error(inQuotes(place) + ": " + printable(why)) {}

std::optional<std::string> Arguments::value(std::string_view name) const {
  const auto found = given.find(name);
  if (found == given.end() || found->second.empty()) return std::nullopt;
  return found->second.back();
}

}  // namespace meridian::command
