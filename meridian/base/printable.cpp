#include "meridian/base/printable.h"

#include <array>
#include <cstdio>

#include "meridian/base/text.h"

namespace meridian::inline v0_2 {
namespace {

bool isHarmless(const TextUnit& unit) noexcept {
  if (!unit.isCharacter) return false;
  const char32_t c = unit.value;
  const bool control = c < 0x20 || (c >= 0x7f && c < 0xa0);
  const bool lineSeparator = c == 0x2028 || c == 0x2029;
  const bool directionMark =
      c == 0x061c || c == 0x200e || c == 0x200f || (c >= 0x202a && c <= 0x202e) || (c >= 0x2066 && c <= 0x2069);
  const bool invisible =
      c == 0xad || c == 0x200b || (c >= 0x2060 && c <= 0x2064) || c == 0xfeff || (c >= 0xe0000 && c <= 0xe007f);
  return !control && !lineSeparator && !directionMark && !invisible;
}

std::string escaped(const TextUnit& unit) {
  if (unit.isCharacter && unit.value == U'\n') return "\\n";
  if (unit.isCharacter && unit.value == U'\r') return "\\r";
  if (unit.isCharacter && unit.value == U'\t') return "\\t";
  const char* const form = unit.isCharacter && unit.value >= 0x80 ? "\\u{%04x}" : "\\x%02x";
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), form, static_cast<unsigned>(unit.value));
  return text.data();
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const TextUnit unit = firstUnit(text);
    if (isHarmless(unit)) {
      result += text.substr(0, unit.length);
    } else {
      result += escaped(unit);
    }
    text.remove_prefix(unit.length);
  }
  return result;
}

std::string inQuotes(std::string_view text) { return '"' + printable(text) + '"'; }

std::string inQuotes(std::span<const std::string> texts) {
  std::string list;
  for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + inQuotes(text);
  return list;
}

}  // namespace meridian::inline v0_2
