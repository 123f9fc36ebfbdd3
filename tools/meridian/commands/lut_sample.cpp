// meridian lut sample: code values led through a look-up table.
#include <charconv>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <system_error>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/lut/bit_depth.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "tools/meridian/command.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

struct Depths {
  std::int64_t input = 0;
  std::int64_t output = 0;
};

std::int64_t readDepth(const std::string& text) {
  const auto depth = integerFromText(text);
  if (!depth || *depth < 1 || *depth > 63) {
    throw UsageError(inQuotes(text) + " is no bit depth; write an integer from 1 to 63");
  }
  return *depth;
}

Depths readDepths(const Arguments& arguments) {
  const auto input = arguments.value("depth");
  if (!input) throw UsageError("--depth is missing: the code values' depth in bits");
  return {readDepth(*input), readDepth(arguments.value("out-depth").value_or(*input))};
}

std::uint64_t readCodeValue(std::string_view text) {
  const auto refuse = [text](std::string_view fault) { return UsageError(inQuotes(text) + " " + std::string(fault)); };
  const bool isNegative = text.starts_with('-');
  const std::string_view digits = text.substr(isNegative ? 1 : 0);
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos) {
    throw refuse("is no code value; write an integer");
  }
  if (isNegative) throw refuse("is below 0, where there are no code values");
  std::uint64_t value = 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec != std::errc()) {
    throw refuse("does not fit in 64 bits");
  }
  return value;
}

std::vector<RGBSample> readSamples(std::span<const std::string> words) {
  if (words.size() % 3 != 0) {
    throw UsageError("a sample is three code values, red, green and blue, and " + std::to_string(words.size()) +
                     (words.size() == 1 ? " is" : " are") + " given");
  }
  std::vector<RGBSample> samples;
  for (std::size_t place = 0; place < words.size(); place += 3) {
    samples.push_back({readCodeValue(words[place]), readCodeValue(words[place + 1]), readCodeValue(words[place + 2])});
  }
  return samples;
}

/// The depth that inputs are brought to; absent for a table of floating point.
std::optional<std::int64_t> tableDepth(const ParsedLutFile& lut) {
  if (const auto* const cube = dynamic_cast<const UnsignedIntegerLutFile*>(&lut)) return cube->bitDepth();
  const auto* const table = dynamic_cast<const OneDimensionsUnsignedIntegerConverter*>(&lut.inputConverter());
  return table == nullptr ? std::nullopt : std::optional(table->lutBitDepth());
}

/// Why the table has no code value for a sample.
std::string fault(const ParsedLutFile& lut, const RGBSample& sample, const Depths& depths) {
  const auto depth = tableDepth(lut);
  for (const std::uint64_t value : {sample.red, sample.green, sample.blue}) {
    if (!depth || rescaledCodeValue(value, depths.input, *depth)) continue;
    return std::to_string(value) + " leaves 64 bits when it is brought from " + std::to_string(depths.input) +
           " bits to the table's " + std::to_string(*depth);
  }
  const double low = lut.inputConverter().lowValue();
  const double high = lut.inputConverter().highValue();
  if (low == 0 && high == 0) return "the table holds nothing but zeros";
  return std::string("the result is ") + (low < 0 ? "below 0 or " : "") + "beyond 64 bits at a depth of " +
         std::to_string(depths.output) + "; the table's values range from " + shortestDecimalText(low) + " to " +
         shortestDecimalText(high);
}

Status convertSamples(const Arguments& arguments) {
  const Depths depths = readDepths(arguments);
  const std::vector<RGBSample> samples = readSamples(arguments.given.at("values"));
  const auto lut = readLut(arguments);
  auto results = Json::array();
  for (const RGBSample& sample : samples) {
    const auto result =
        lut->inputConverter().convertIfPossible(sample.red, sample.green, sample.blue, depths.input, depths.output);
    if (!result) {
      throw CommandError("sample " + std::to_string(results.size() + 1) + " (" + std::to_string(sample.red) + ", " +
                         std::to_string(sample.green) + ", " + std::to_string(sample.blue) +
                         ") has no code value: " + fault(*lut, sample, depths));
    }
    results.push_back({result->red, result->green, result->blue});
  }
  printJson(results);
  return done;
}

}  // namespace

Subcommand lutSampleCommand() {
  return {
      .group = "lut",
      .name = "sample",
      .description = "Lead samples of code values through a look-up table",
      .details = "Prints a JSON list of the results, each a list of red, green and blue.",
      .example = "meridian lut sample look.cube --depth 10 --out-depth 12 64 64 64 940 940 940",
      .options = {lutFileOption(),
                  {.kind = Option::Kind::positional,
                   .name = "values",
                   .help = "Red, green and blue of each sample, as integers from 0",
                   .valueName = "VALUE",
                   .repeated = true},
                  {Option::Kind::value, "depth", "The depth of the code values in bits, from 1 to 63; always given",
                   "D"},
                  {Option::Kind::value, "out-depth", "The depth of the results; left out, that of the code values",
                   "E"}},
      .action = convertSamples,
  };
}

}  // namespace meridian::command
