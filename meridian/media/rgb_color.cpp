#include "meridian/media/rgb_color.h"

#include <array>
#include <charconv>

#include "meridian/base/text.h"

namespace meridian::inline v0_2 {
namespace {

std::optional<std::uint8_t> codeValue(std::string_view digits, int base) noexcept {
  std::uint8_t value = 0;
  const char* const last = digits.data() + digits.size();
  const auto [end, error] = std::from_chars(digits.data(), last, value, base);
  if (digits.empty() || error != std::errc{} || end != last) return std::nullopt;
  return value;
}

std::optional<RgbColor> fromHexadecimal(std::string_view digits) noexcept {
  const std::size_t each = digits.size() / 3;
  std::array<std::uint8_t, 3> values{};
  for (std::size_t place = 0; place < values.size(); ++place) {
    const auto value = codeValue(digits.substr(place * each, each), 16);
    if (!value) return std::nullopt;
    // "#f80" is short for "#ff8800".
    values[place] = each == 1 ? static_cast<std::uint8_t>(*value * 0x11) : *value;
  }
  return RgbColor{values[0], values[1], values[2]};
}

}  // namespace

std::optional<RgbColor> RgbColor::fromText(std::string_view text) noexcept {
  constexpr std::string_view separators = ",; \t";
  text = trimmed(text);
  if (text.starts_with('#')) {
    text.remove_prefix(1);
    return text.size() == 3 || text.size() == 6 ? fromHexadecimal(text) : std::nullopt;
  }
  if (text.size() == 6 && text.find_first_of(separators) == std::string_view::npos) return fromHexadecimal(text);

  std::array<std::uint8_t, 3> values{};
  for (std::size_t place = 0; place < values.size(); ++place) {
    const std::size_t end = text.find_first_of(separators);
    const auto value = codeValue(text.substr(0, end), 10);
    if (!value || (end == std::string_view::npos) != (place == 2)) return std::nullopt;
    values[place] = *value;
    if (end == std::string_view::npos) break;
    // A separator may have blanks around it.
    text = trimmed(text.substr(end));
    if (text.starts_with(',') || text.starts_with(';')) text = trimmed(text.substr(1));
  }
  return RgbColor{values[0], values[1], values[2]};
}

std::string RgbColor::text() const {
  return std::to_string(red) + "," + std::to_string(green) + "," + std::to_string(blue);
}

}  // namespace meridian::inline v0_2
