#include "tools/meridian/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace meridian::command {
namespace {

bool acceptsEscapeSequences(int stream) noexcept {
  const char* const terminal = std::getenv("TERM");
  return isatty(stream) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb" &&
         !std::string_view(terminal).empty();
}

std::optional<std::size_t> widthOf(int stream) noexcept {
  winsize size{};
  if (ioctl(stream, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
  return size.ws_col;
}

}  // namespace

bool standardOutputShowsColour() noexcept { return acceptsEscapeSequences(STDOUT_FILENO); }

std::optional<std::size_t> standardOutputWidth() noexcept { return widthOf(STDOUT_FILENO); }

std::optional<std::size_t> standardErrorWidth() noexcept { return widthOf(STDERR_FILENO); }

bool standardErrorIsRewritable() noexcept { return acceptsEscapeSequences(STDERR_FILENO); }

}  // namespace meridian::command
