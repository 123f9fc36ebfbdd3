#include "meridian/cli/dimensions_text.h"

#include "meridian/base/numbers.h"

namespace meridian::inline v0_2 {

std::optional<Size> sizeFromDimensionsText(std::string_view text) noexcept {
  constexpr std::string_view separators = "xX";
  const std::size_t separator = text.find_first_of(separators);
  if (separator == std::string_view::npos) return std::nullopt;
  // A third piece, or a hexadecimal number, would contain another "x".
  const std::string_view height = text.substr(separator + 1);
  if (height.find_first_of(separators) != std::string_view::npos) return std::nullopt;
  const auto readWidth = floatFromText(text.substr(0, separator));
  const auto readHeight = floatFromText(height);
  if (!readWidth || !readHeight) return std::nullopt;
  return Size{static_cast<double>(*readWidth), static_cast<double>(*readHeight)};
}

std::string dimensionsTextOfSize(const Size& size) {
  return fixedDecimalText(size.width, 6) + "x" + fixedDecimalText(size.height, 6);
}

}  // namespace meridian::inline v0_2
