// LUT files of any bytes: reading in pieces equals reading the whole text, and sampling does not crash.
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "meridian/base/decimal_number.h"
#include "meridian/lut/lut_cube.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/lut_interpolator.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "meridian/lut/text_lut_reading.h"
#include "meridian/platform/xml_check.h"

using namespace meridian;
using fuzz::require;

namespace {

GenericTextLutInterpreter readInPieces(std::string_view text, const detail::TextLutLimits& limits) {
  GenericTextLutInterpreter lines;
  const std::size_t size = text.size();
  const auto source = [&text](std::span<char> memory) {
    const std::size_t count = std::min(text.size(), memory.size());
    std::copy_n(text.begin(), count, memory.begin());
    text.remove_prefix(count);
    return count;
  };
  detail::readTextLut(source, size, lines, limits);
  return lines;
}

/// Returns the line with longer runs of spaces and tabs shortened to two.
std::string withShortBlanks(std::string_view line) {
  std::string result;
  std::size_t run = 0;
  for (const char c : line) {
    run = c == ' ' || c == '\t' ? run + 1 : 0;
    if (run <= 2) result += c;
  }
  return result;
}

GenericTextLutInterpreter readWhole(std::string_view text, const detail::TextLutLimits& limits) {
  GenericTextLutInterpreter lines;
  if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    if (withShortBlanks(line).size() > limits.longestRow) {
      lines.interpretOverlong(LutHeaderWords::in(line));
    } else {
      lines.interpret(line);
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

void checkReading(std::string_view text, const detail::TextLutLimits& limits) {
  const GenericTextLutInterpreter lines = readInPieces(text, limits);
  const GenericTextLutInterpreter expected = readWhole(text, limits);
  require(std::ranges::equal(lines.triplets(), expected.triplets()), "the same rows");
  require(lines.explicitDimensions() == expected.explicitDimensions(), "the same dimensions");
  require(lines.explicitMinValue() == expected.explicitMinValue() &&
              lines.explicitMaxValue() == expected.explicitMaxValue(),
          "the same range");
  require(lines.declaredDomain() == expected.declaredDomain(), "the same domain");
  if (lines.triplets().empty()) return;
  const auto rows = std::make_shared<const LutValueTriplets>(lines.triplets());
  const auto cube = std::make_shared<const LutCube>(rows, lines.explicitMinValue()->doubleValue(),
                                                    lines.explicitMaxValue()->doubleValue());
  const double high = cube->highValue();
  for (const double input : {0.0, high, high / 3, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
    static_cast<void>(TrilinearLutInterpolator(cube).sample(input, high, 0));
    static_cast<void>(TetrahedralLutInterpolator(cube).sample(0, input, high));
  }
  const ParsedLutFactory::ParsedThreeDimensionalFloatingPointFile file(Url::fromFilePath("/made.cube"),
                                                                       lines.declaredDomain(), rows, cube);
  if (!canConvertAll(describe(file), 10)) return;
  for (const std::uint64_t code : {0U, 1U, 511U, 1023U}) {
    require(file.inputConverter().convertIfPossible(code, 1023 - code, code / 2, 10).has_value(),
            "a result for every sample");
  }
}

void checkNumber(const std::string& text) {
  const auto number = DecimalNumber::fromText(text);
  if (!number) return;
  const double expected = std::strtod(text.c_str(), nullptr);
  require(std::bit_cast<std::uint64_t>(number->doubleValue()) == std::bit_cast<std::uint64_t>(expected),
          "the double that the C library reads");
}

void checkXml(std::string_view text) {
  const auto isDocument = [text](std::size_t pieceSize) {
    XmlCheck check;
    bool good = true;
    for (std::size_t begin = 0; good && begin < text.size(); begin += pieceSize) {
      good = check.feed(text.substr(begin, pieceSize));
    }
    return good && check.finish();
  };
  const bool whole = isDocument(text.size() + 1);
  require(whole == isDocument(7), "the same in pieces");
  require(!whole || mayBeginXml(text), "every document begins like one");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  checkReading(text, {});
  checkReading(text, {.chunk = 16, .longestRow = 40});  // so that short texts come in pieces too
  checkNumber(text);
  checkXml(text);
  return 0;
}
