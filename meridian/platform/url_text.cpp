#include "meridian/platform/url_text.h"

#include <charconv>

#include "meridian/base/ascii.h"

namespace meridian::inline v0_2 {
namespace {

constexpr std::string_view userInformationMarks = "-._~!$&'()*+,;=:";
constexpr std::string_view hostMarks = "-._~!$&'()*+,;=";
constexpr std::string_view pathMarks = "-._~!$&'()*+,;=:@/";
constexpr std::string_view queryMarks = "-._~!$&'()*+,;=:@/?";

using detail::isDigit;
using detail::isLetter;

/// Returns the byte that a sequence such as "%2F" at the beginning of the text encodes.
std::optional<unsigned char> encodedByte(std::string_view text) noexcept {
  unsigned char byte = 0;
  if (text.size() < 3 || text.front() != '%') return std::nullopt;
  const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 3, byte, 16);
  if (error != std::errc{} || end != text.data() + 3) return std::nullopt;
  return byte;
}

/// Whether the text consists of letters, digits, encoded bytes and these marks.
bool holdsOnly(std::string_view text, std::string_view marks) noexcept {
  while (!text.empty()) {
    const char c = text.front();
    const bool isEncoded = encodedByte(text).has_value();
    if (!isEncoded && !isLetter(c) && !isDigit(c) && marks.find(c) == std::string_view::npos) return false;
    text.remove_prefix(isEncoded ? 3 : 1);
  }
  return true;
}

bool isAuthority(std::string_view text) noexcept {
  if (const std::size_t at = text.find('@'); at != std::string_view::npos) {
    if (!holdsOnly(text.substr(0, at), userInformationMarks)) return false;
    text.remove_prefix(at + 1);
  }
  std::string_view port;
  if (text.starts_with('[')) {
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos || !holdsOnly(text.substr(1, end - 1), userInformationMarks)) return false;
    port = text.substr(end + 1);
  } else {
    const std::size_t end = text.find(':');
    if (!holdsOnly(text.substr(0, end), hostMarks)) return false;
    if (end != std::string_view::npos) port = text.substr(end);
  }
  if (port.empty()) return true;
  return port.front() == ':' && port.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

}  // namespace

std::optional<UrlText> splitUrl(std::string_view text) noexcept {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0 || !isLetter(text.front())) return std::nullopt;
  UrlText url;
  url.scheme = text.substr(0, colon);
  for (const char c : url.scheme) {
    if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return std::nullopt;
  }
  text.remove_prefix(colon + 1);
  if (const std::size_t end = text.find_first_of("?#"); end != std::string_view::npos) {
    url.afterPath = text.substr(end);
    text = text.substr(0, end);
  }
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    url.authority = text.substr(0, text.find('/'));
    text.remove_prefix(url.authority->size());
  }
  url.path = text;
  return url;
}

bool isWellFormed(const UrlText& url) noexcept {
  const std::size_t mark = url.afterPath.find('#');
  const std::string_view query = url.afterPath.substr(0, mark);
  const std::string_view fragment = mark == std::string_view::npos ? "" : url.afterPath.substr(mark + 1);
  return (!url.authority || isAuthority(*url.authority)) && holdsOnly(url.path, pathMarks) &&
         holdsOnly(query, queryMarks) && holdsOnly(fragment, queryMarks);
}

std::string percentDecoded(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const auto byte = encodedByte(text);
    result += byte ? static_cast<char>(*byte) : text.front();
    text.remove_prefix(byte ? 3 : 1);
  }
  return result;
}

std::string percentEncodedPath(std::string_view path) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string result;
  result.reserve(path.size());
  for (const char c : path) {
    if (isLetter(c) || isDigit(c) || pathMarks.find(c) != std::string_view::npos) {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      result += {'%', digits[byte / 16], digits[byte % 16]};
    }
  }
  return result;
}

}  // namespace meridian::inline v0_2
