#include "meridian/lut/text_lut_interpreter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <span>
#include <utility>

#include "meridian/base/ascii.h"
#include "meridian/base/text.h"

namespace meridian::inline v0_2 {
namespace {

constexpr std::string_view oneDimensionalSizeWord = "LUT_1D_SIZE";
constexpr std::string_view threeDimensionalSizeWord = "LUT_3D_SIZE";
constexpr std::string_view inputRangeWord = "INPUT_RANGE";

/// Returns the length in bytes of the white-space character at the beginning of the text; 0 if there is none.
std::size_t leadingWhiteSpace(std::string_view text) noexcept {
  if (text.front() > ' ' && text.front() < '\x7f') return 0;
  const std::size_t length = firstUnit(text).length;
  return trimmed(text.substr(0, length)).empty() ? length : 0;
}

/// Returns the numbers of a line with single white-space characters between them: exactly `count` of them, or none.
template <std::size_t count>
std::optional<std::array<DecimalNumber, count>> numbersOf(std::string_view line) noexcept {
  std::array<DecimalNumber, count> numbers;
  for (std::size_t place = 0; place < count; ++place) {
    std::size_t end = 0;
    std::size_t separator = 0;
    while (end < line.size() && (separator = leadingWhiteSpace(line.substr(end))) == 0) ++end;
    if ((place + 1 == count) != (end == line.size())) return std::nullopt;
    const auto number = DecimalNumber::fromText(line.substr(0, end));
    if (!number) return std::nullopt;
    numbers[place] = *number;
    line.remove_prefix(end + separator);
  }
  return numbers;
}

/// Returns what follows a keyword that begins the line; absent if it does not.
std::optional<std::string_view> textAfter(std::string_view line, std::string_view keyword) {
  if (line.size() <= keyword.size() || !equalsIgnoringCase(line.substr(0, keyword.size()), keyword)) return {};
  const std::string_view rest = line.substr(keyword.size());
  return leadingWhiteSpace(rest) == 0 ? std::nullopt : std::optional(trimmed(rest));
}

bool isAbove(const LutColor& upper, const LutColor& lower) noexcept {
  return upper.red > lower.red && upper.green > lower.green && upper.blue > lower.blue;
}

}  // namespace

LutHeaderWords LutHeaderWords::in(std::string_view line) {
  return {.oneDimensionalSize = containsIgnoringCase(line, oneDimensionalSizeWord),
          .threeDimensionalSize = containsIgnoringCase(line, threeDimensionalSizeWord),
          .inputRange = containsIgnoringCase(line, inputRangeWord),
          .threeD = containsIgnoringCase(line, "3d"),
          .oneD = containsIgnoringCase(line, "1d")};
}

LutHeaderWords& LutHeaderWords::operator|=(const LutHeaderWords& other) noexcept {
  oneDimensionalSize = oneDimensionalSize || other.oneDimensionalSize;
  threeDimensionalSize = threeDimensionalSize || other.threeDimensionalSize;
  inputRange = inputRange || other.inputRange;
  threeD = threeD || other.threeD;
  oneD = oneD || other.oneD;
  return *this;
}

void GenericTextLutInterpreter::interpret(std::string_view line, std::uint64_t number) {
  line = trimmed(line);
  if (line.empty()) return;
  if (triplets_.empty() && takeHeader(LutHeaderWords::in(line), line)) return;
  if (const auto numbers = numbersOf<3>(line)) {
    record({(*numbers)[0], (*numbers)[1], (*numbers)[2]});
  } else if (!line.starts_with('#')) {
    noteIgnored(number);
  }
}

void GenericTextLutInterpreter::interpretOverlong(const LutHeaderWords& words, std::uint64_t number) {
  if (triplets_.empty()) {
    static_cast<void>(takeHeader(words, {}));
  } else {
    noteIgnored(number);
  }
}

void GenericTextLutInterpreter::noteIgnored(std::uint64_t number) noexcept {
  if (!triplets_.empty() && facts_.ignoredLines++ == 0) facts_.firstIgnoredLine = number;
}

bool GenericTextLutInterpreter::takeHeader(const LutHeaderWords& words, std::string_view line) {
  if (words.oneDimensionalSize) {
    explicitDimensions_ = LutDimensions::oneD;
    readSize(line, oneDimensionalSizeWord);
    return true;
  }
  if (words.threeDimensionalSize) {
    explicitDimensions_ = LutDimensions::cube;
    readSize(line, threeDimensionalSizeWord);
    return true;
  }
  if (words.inputRange) {
    readInputRange(line);
    return true;
  }
  // A title or comment decides as well; if it names both kinds, it is a cube.
  if (!explicitDimensions_ && (words.threeD || words.oneD)) {
    explicitDimensions_ = words.threeD ? LutDimensions::cube : LutDimensions::oneD;
    return true;
  }
  readDomain(line);
  return false;
}

void GenericTextLutInterpreter::readSize(std::string_view line, std::string_view keyword) {
  const auto found = std::ranges::search(line, keyword, [](char one, char other) {
    return detail::lowercasedAscii(one) == detail::lowercasedAscii(other);
  });
  if (found.empty()) return;
  const auto length = static_cast<std::size_t>(found.begin() - line.begin()) + 1;
  const auto size = DecimalNumber::fromText(trimmed(line.substr(0, length)));
  if (size && size->integerValue() >= 0) explicitLutSize_ = static_cast<std::uint64_t>(size->integerValue());

  const auto rest = textAfter(line, keyword);
  const auto declared = rest ? numbersOf<1>(*rest) : std::nullopt;
  if (!declared) return;
  (keyword == oneDimensionalSizeWord ? facts_.oneDimensionalSize : facts_.threeDimensionalSize) =
      declared->front().integerValue();
}

void GenericTextLutInterpreter::readDomain(std::string_view line) {
  for (const auto& [keyword, bound] : {std::pair{std::string_view("DOMAIN_MIN"), &domainMinimum_},
                                       std::pair{std::string_view("DOMAIN_MAX"), &domainMaximum_}}) {
    const auto rest = textAfter(line, keyword);
    const auto numbers = rest ? numbersOf<3>(*rest) : std::nullopt;
    if (!numbers) continue;
    *bound = LutColor{(*numbers)[0].doubleValue(), (*numbers)[1].doubleValue(), (*numbers)[2].doubleValue()};
  }
}

void GenericTextLutInterpreter::readInputRange(std::string_view line) {
  for (const std::string_view keyword : {"LUT_1D_INPUT_RANGE", "LUT_3D_INPUT_RANGE"}) {
    const auto rest = textAfter(line, keyword);
    const auto numbers = rest ? numbersOf<2>(*rest) : std::nullopt;
    if (!numbers) continue;
    const double low = (*numbers)[0].doubleValue();
    const double high = (*numbers)[1].doubleValue();
    domainMinimum_ = LutColor{low, low, low};
    domainMaximum_ = LutColor{high, high, high};
  }
}

void GenericTextLutInterpreter::record(const LutValueTriplet& triplet) {
  const auto value = [](const DecimalNumber& number) { return number.doubleValue(); };
  const std::array numbers{triplet.first, triplet.second, triplet.third};
  const DecimalNumber& largest = *std::ranges::max_element(numbers, {}, value);
  const DecimalNumber& smallest = *std::ranges::min_element(numbers, {}, value);
  if (!explicitMaxValue_ || explicitMaxValue_->doubleValue() < largest.doubleValue()) explicitMaxValue_ = largest;
  if (!explicitMinValue_ || explicitMinValue_->doubleValue() > smallest.doubleValue()) explicitMinValue_ = smallest;
  triplets_.append(triplet);
}

std::optional<LutDimensions> GenericTextLutInterpreter::inferredDimensions() const noexcept {
  switch (triplets_.size()) {
    case seventeenGridCubeSize:
    case thrityThreeGridCubeSize:
    case sixtyFiveGridCubeSize:
      return LutDimensions::cube;
    default:
      return std::has_single_bit(triplets_.size()) ? std::optional(LutDimensions::oneD) : std::nullopt;
  }
}

std::optional<std::uint64_t> GenericTextLutInterpreter::lutSize() const noexcept {
  if (explicitLutSize_) return explicitLutSize_;
  switch (triplets_.size()) {
    case seventeenGridCubeSize:
      return 17;
    case thrityThreeGridCubeSize:
      return 33;
    case sixtyFiveGridCubeSize:
      return 65;
    default:
      break;
  }
  if (std::has_single_bit(triplets_.size())) return triplets_.size();
  if (!explicitMaxValue_ || explicitMaxValue_->integerValue() <= 0) return std::nullopt;
  return std::bit_ceil(static_cast<std::uint64_t>(explicitMaxValue_->integerValue()));
}

LutTextFacts GenericTextLutInterpreter::textFacts() const noexcept {
  LutTextFacts facts = facts_;
  facts.dimensions = explicitDimensions_;
  return facts;
}

LutDeclaredDomain GenericTextLutInterpreter::declaredDomain() const noexcept {
  const LutDeclaredDomain undeclared;
  if (!domainMinimum_ && !domainMaximum_) return undeclared;
  const LutDeclaredDomain declared{domainMinimum_.value_or(undeclared.minimum),
                                   domainMaximum_.value_or(undeclared.maximum), true};
  return isAbove(declared.maximum, declared.minimum) ? declared : undeclared;
}

}  // namespace meridian::inline v0_2
