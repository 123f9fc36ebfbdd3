#include "meridian/platform/path_text.h"

#include <charconv>

namespace meridian {
namespace {

/// The part of a URL behind "scheme://"; npos when the text is none.
std::size_t endOfScheme(std::string_view text) noexcept {
  constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  constexpr std::string_view others = "0123456789+-.";
  constexpr std::string_view mark = "://";
  const std::size_t end = text.find(mark);
  if (end == 0 || end == std::string_view::npos || letters.find(text.front()) == std::string_view::npos) {
    return std::string_view::npos;
  }
  for (const char c : text.substr(0, end)) {
    if (letters.find(c) == std::string_view::npos && others.find(c) == std::string_view::npos) {
      return std::string_view::npos;
    }
  }
  return end + mark.size();
}

std::string percentDecoded(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    unsigned char byte = 0;
    if (text.size() >= 3 && text.front() == '%') {
      const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 3, byte, 16);
      if (error == std::errc{} && end == text.data() + 3) {
        result += static_cast<char>(byte);
        text.remove_prefix(3);
        continue;
      }
    }
    result += text.front();
    text.remove_prefix(1);
  }
  return result;
}

}  // namespace

std::string_view lastPathComponent(std::string_view path) noexcept {
  const std::size_t last = path.find_last_not_of('/');
  if (last == std::string_view::npos) return {};
  path = path.substr(0, last + 1);
  return path.substr(path.rfind('/') + 1);  // npos + 1 is 0: the whole path
}

std::string_view pathExtension(std::string_view path) noexcept {
  const std::string_view name = lastPathComponent(path);
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

std::string pathOfUrl(std::string_view pathOrUrl) {
  const std::size_t behindScheme = endOfScheme(pathOrUrl);
  if (behindScheme == std::string_view::npos) return std::string(pathOrUrl);
  std::string_view rest = pathOrUrl.substr(behindScheme);
  rest = rest.substr(0, rest.find_first_of("?#"));
  const std::size_t slash = rest.find('/');  // ends the host
  return slash == std::string_view::npos ? std::string() : percentDecoded(rest.substr(slash));
}

}  // namespace meridian
