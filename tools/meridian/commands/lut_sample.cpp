// meridian lut sample: applies a LUT to code values.
#include <charconv>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <system_error>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/lut/bit_depth.h"
#include "meridian/lut/lut_description.h"
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
    throw UsageError(inQuotes(text) + " is not a bit depth; expected an integer from 1 to 63");
  }
  return *depth;
}

Depths readDepths(const Arguments& arguments) {
  const auto input = arguments.value("depth");
  if (!input) throw UsageError("--depth is missing; give the bit depth of the code values");
  return {readDepth(*input), readDepth(arguments.value("out-depth").value_or(*input))};
}

std::uint64_t readCodeValue(std::string_view text) {
  const auto error = [text](std::string_view words) { return UsageError(inQuotes(text) + " " + std::string(words)); };
  const bool isNegative = text.starts_with('-');
  const std::string_view digits = text.substr(isNegative ? 1 : 0);
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos) {
    throw error("is not a code value; expected an integer");
  }
  if (isNegative) throw error("is negative; code values begin at 0");
  std::uint64_t value = 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec != std::errc()) {
    throw error("does not fit in 64 bits");
  }
  return value;
}

std::vector<RGBSample> readSamples(std::span<const std::string> words) {
  if (words.size() % 3 != 0) {
    throw UsageError("a sample is three code values (red, green, blue), but " + std::to_string(words.size()) +
                     (words.size() == 1 ? " was" : " were") + " given");
  }
  std::vector<RGBSample> samples;
  for (std::size_t place = 0; place < words.size(); place += 3) {
    samples.push_back({readCodeValue(words[place]), readCodeValue(words[place + 1]), readCodeValue(words[place + 2])});
  }
  return samples;
}

/// Returns why the LUT has no code value for a sample.
std::string reasonFor(const LutDescription& lut, const RGBSample& sample, const Depths& depths) {
  for (const std::uint64_t value : {sample.red, sample.green, sample.blue}) {
    if (!lut.inputBitDepth || rescaledCodeValue(value, depths.input, *lut.inputBitDepth)) continue;
    return std::to_string(value) + " exceeds 64 bits when it is converted from " + std::to_string(depths.input) +
           " bits to the LUT's " + std::to_string(*lut.inputBitDepth);
  }
  if (lut.lowValue == 0 && lut.highValue == 0) return "the LUT holds nothing but zeros";
  return std::string("the result is ") + (lut.lowValue < 0 ? "negative or " : "") + "beyond 64 bits at a depth of " +
         std::to_string(depths.output) + "; the LUT's values range from " + shortestDecimalText(lut.lowValue) + " to " +
         shortestDecimalText(lut.highValue);
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
                         ") has no code value: " + reasonFor(describe(*lut), sample, depths));
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
      .description = "Apply a LUT to code values",
      .details = "Prints a JSON list of the results, each a list of red, green and blue.",
      .example = "meridian lut sample look.cube --depth 10 --out-depth 12 64 64 64 940 940 940",
      .options = {lutFileOption(),
                  {.kind = Option::Kind::positional,
                   .name = "values",
                   .help = "Red, green and blue of each sample, as integers from 0",
                   .valueName = "VALUE",
                   .repeated = true},
                  {Option::Kind::value, "depth", "The bit depth of the code values, from 1 to 63; required", "D"},
                  {Option::Kind::value, "out-depth", "The bit depth of the results; by default that of the code values",
                   "E"}},
      .action = convertSamples,
  };
}

}  // namespace meridian::command
