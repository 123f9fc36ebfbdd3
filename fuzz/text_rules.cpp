// The text and number rules on any bytes: properties that hold for every text.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "meridian/base/numbers.h"
#include "meridian/base/text.h"

using namespace meridian;
using fuzz::require;

namespace {

/// Where the first unit ends that ends at or after the middle.
std::size_t middleOf(std::string_view text) {
  std::size_t place = 0;
  while (place < text.size() / 2) place += firstUnit(text.substr(place)).length;
  return place;
}

void checkText(const std::string& text) {
  const std::string lower = lowercased(text);
  const std::string folded = caseFolded(text);
  const std::string_view kept = trimmed(text);
  require(lowercased(lower) == lower, "lower-casing twice changes nothing");
  require(caseFolded(folded) == folded, "folding twice changes nothing");
  require(caseFolded(lower) == folded, "lower case folds as the text does");
  require(trimmed(kept) == kept, "trimming twice changes nothing");
  require(trimmed("\t\u00A0" + text + "\u3000\n") == kept, "added white space is trimmed");
  require(trimmed(lower) == lowercased(kept), "trimming and lower-casing can be exchanged");
  const bool valid = isValidUtf8(text);
  require(isValidUtf8(lower) == valid && isValidUtf8(folded) == valid,
          "valid text stays valid, and invalid text invalid");

  const std::string_view whole = text;
  const std::string_view head = whole.substr(0, middleOf(text));
  const std::string_view tail = whole.substr(head.size());
  require(lowercased(head) + lowercased(tail) == lower, "pieces lower-case as the whole does");
  require(caseFolded(head) + caseFolded(tail) == folded, "pieces fold as the whole does");
  require(equalsIgnoringCase(text, lower) && equalsIgnoringCase(folded, text), "a text equals its lower case");
  for (const std::string_view piece : {head, tail, whole}) {
    require(containsIgnoringCase(text, piece), "a text contains its pieces");
    require(containsIgnoringCase(lower, caseFolded(piece)), "a text contains its pieces in other case");
  }
  require(
      containsIgnoringCase(head, tail) == containsIgnoringCase(lowercased(head) + "\u00E9", tail) || !isValidUtf8(head),
      "the fast path gives the result of the general one");
  require(equalsIgnoringCase(head, tail) ==
              (containsIgnoringCase(head, tail) && caseFolded(head).size() == caseFolded(tail).size()),
          "equal texts contain each other");
}

/// The number in the first bytes of the text.
template <typename Number>
Number numberOf(const std::string& text) {
  Number number = 0;
  std::memcpy(&number, text.data(), std::min(text.size(), sizeof number));
  return number;
}

template <typename Number>
void checkNumber(Number number, std::optional<Number> (*read)(std::string_view) noexcept) {
  const auto again = read(shortestDecimalText(number));
  require(again.has_value(), "a written number parses");
  require(std::isnan(number) ? std::isnan(*again) : *again == number && std::signbit(*again) == std::signbit(number),
          "a written number parses as itself");
}

template <typename Number>
void checkReading(const std::string& text, std::optional<Number> (*read)(std::string_view) noexcept,
                  Number (*readByC)(const char*, char**)) {
  const auto number = read(text);
  // C skips leading white space, stops at a NUL, and accepts more forms of "nan".
  const bool comparable = !text.empty() && std::strchr(" \t\n\v\f\r", text[0]) == nullptr &&
                          text.find('\0') == std::string::npos && text.find('(') == std::string::npos;
  if (!comparable) return;
  char* end = nullptr;
  const Number expected = readByC(text.c_str(), &end);
  require(number.has_value() == (end == text.c_str() + text.size()), "parses the texts that C parses");
  if (!number) return;
  require(std::isnan(expected) ? std::isnan(*number)
                               : *number == expected && std::signbit(*number) == std::signbit(expected),
          "parses the number that C parses");
  checkNumber(*number, read);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  checkText(text);
  checkReading<float>(text, floatFromText, std::strtof);
  checkReading<double>(text, doubleFromText, std::strtod);
  if (const auto number = integerFromText(text)) {
    require(integerFromText(std::to_string(*number)) == number, "a written integer parses as itself");
    require(doubleFromText(text) == static_cast<double>(*number), "an integer is the same number as a double");
  }
  checkNumber<double>(numberOf<double>(text), doubleFromText);
  checkNumber<float>(numberOf<float>(text), floatFromText);
  return 0;
}
