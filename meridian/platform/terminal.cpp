#include "meridian/platform/terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace meridian {

bool standardOutputShowsColour() noexcept {
  const char* const terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb" &&
         !std::string_view(terminal).empty();
}

}  // namespace meridian
