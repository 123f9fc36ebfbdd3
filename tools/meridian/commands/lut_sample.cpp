// meridian lut sample: applies a LUT to code values or floating-point numbers.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>

#include "meridian/base/ascii.h"
#include "meridian/base/decimal_number.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/lut/bit_depth.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "tools/meridian/command.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/lut_reading.h"
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
    throw CommandError(inQuotes(text) + " is not a bit depth; expected an integer from 1 to 63");
  }
  return *depth;
}

Depths readDepths(const Arguments& arguments) {
  const auto input = arguments.value("depth");
  if (!input) throw UsageError("--depth is missing; give the bit depth of the code values, or --float");
  return {readDepth(*input), readDepth(arguments.value("out-depth").value_or(*input))};
}

std::uint64_t readCodeValue(const std::string& text) {
  const auto error = [&text](std::string_view words) {
    return CommandError(inQuotes(text) + " " + std::string(words));
  };
  const bool isNegative = text.starts_with('-');
  const std::string_view digits = std::string_view(text).substr(isNegative ? 1 : 0);
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos) {
    throw error("is not a code value; expected an integer" +
                std::string(DecimalNumber::fromText(text) ? ", or --float for numbers on the scale from 0 to 1" : ""));
  }
  if (isNegative) throw error("is negative; code values begin at 0");
  std::uint64_t value = 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec != std::errc()) {
    throw error("does not fit in 64 bits");
  }
  return value;
}

double readNumber(const std::string& text) {
  if (const auto number = DecimalNumber::fromText(text)) return number->doubleValue();
  // The number of a text that has digits and yet is infinite is out of range.
  const bool isTooLarge = std::ranges::any_of(text, detail::isDigit) && std::isinf(doubleFromText(text).value_or(0));
  throw CommandError(inQuotes(text) + (isTooLarge ? " is out of range; expected a number between -1.7e308 and 1.7e308"
                                                  : " is not a number; expected a decimal number such as 0.18"));
}

/// Returns the words as samples: red, green and blue, each read by `read`. `noun` says what they are.
template <typename Value>
std::vector<std::array<Value, 3>> readSamples(std::span<const std::string> words, const std::string& noun,
                                              Value (*read)(const std::string&)) {
  if (words.size() % 3 != 0) {
    throw UsageError("a sample is three " + noun + " (red, green, blue), but " + std::to_string(words.size()) +
                     (words.size() == 1 ? " was" : " were") + " given");
  }
  std::vector<std::array<Value, 3>> samples;
  for (std::size_t place = 0; place < words.size(); place += 3) {
    samples.push_back({read(words[place]), read(words[place + 1]), read(words[place + 2])});
  }
  return samples;
}

/// Returns the error for the sample at a place, which has no result.
template <typename Value>
CommandError sampleError(std::size_t place, const std::array<Value, 3>& sample, const std::string& why) {
  std::string text = "sample " + std::to_string(place + 1) + " (";
  for (const Value value : sample) {
    if (text.back() != '(') text += ", ";
    text += std::is_floating_point_v<Value> ? plainDecimalText(static_cast<double>(value)) : std::to_string(value);
  }
  return CommandError(text + ") " + why);
}

std::string rangeOf(const LutDescription& lut) {
  return "the LUT's values range from " + shortestDecimalText(lut.lowValue) + " to " +
         shortestDecimalText(lut.highValue);
}

/// Returns why the LUT has no code value for a sample.
std::string reasonFor(const LutDescription& lut, const std::array<std::uint64_t, 3>& sample, const Depths& depths) {
  for (const std::uint64_t value : sample) {
    if (!lut.inputBitDepth || rescaledCodeValue(value, depths.input, *lut.inputBitDepth)) continue;
    return std::to_string(value) + " exceeds 64 bits when it is converted from " + std::to_string(depths.input) +
           " bits to the LUT's " + std::to_string(*lut.inputBitDepth);
  }
  if (lut.lowValue == 0 && lut.highValue == 0) return "the LUT holds nothing but zeros";
  return std::string("the result is ") + (lut.lowValue < 0 ? "negative or " : "") + "beyond 64 bits at a depth of " +
         std::to_string(depths.output) + "; " + rangeOf(lut);
}

/// Returns the results of the LUT's converter.
Json converted(const ParsedLutFile& lut, std::span<const std::array<std::uint64_t, 3>> samples, const Depths& depths) {
  auto results = Json::array();
  for (const auto& sample : samples) {
    const auto result =
        lut.inputConverter().convertIfPossible(sample[0], sample[1], sample[2], depths.input, depths.output);
    if (!result) {
      throw sampleError(results.size(), sample, "has no code value: " + reasonFor(describe(lut), sample, depths));
    }
    results.push_back({result->red, result->green, result->blue});
  }
  return results;
}

/// Returns the samples as those of an image. Throws CommandError for what images cannot have.
std::vector<std::array<std::uint16_t, 3>> asImageSamples(std::span<const std::array<std::uint64_t, 3>> samples,
                                                         const Depths& depths) {
  constexpr std::string_view reason =
      "--reading published, --axis-order, --domain, --interpolation and --round apply the LUT as to images";
  for (const std::int64_t depth : {depths.input, depths.output}) {
    if (depth > 16) {
      throw CommandError(std::string(reason) + ", whose depths are 1 to 16 bits, not " + std::to_string(depth));
    }
  }
  std::vector<std::array<std::uint16_t, 3>> result;
  for (const auto& sample : samples) {
    const std::uint64_t most = std::ranges::max(sample);
    if (most > 0xFFFF) {
      throw CommandError(std::string(reason) + ", whose samples are at most 65535, not " + std::to_string(most));
    }
    const auto narrowed = [&sample](std::size_t channel) { return static_cast<std::uint16_t>(sample[channel]); };
    result.push_back({narrowed(0), narrowed(1), narrowed(2)});
  }
  return result;
}

Status sampleCodeValues(const Arguments& arguments) {
  const Depths depths = readDepths(arguments);
  const auto samples = readSamples(arguments.given.at("values"), "code values", readCodeValue);
  const bool isAsForImages =
      chosenReading(arguments, LutReading::suite) == LutReading::published ||
      std::ranges::any_of(imageLutOptions(), [&](const Option& option) { return arguments.has(option.name); });
  if (!isAsForImages) {
    const ChosenLut lut = readChosenLut(arguments, LutReading::suite);
    printWarnings(lut.warnings);
    printJson(converted(*lut.suiteFile(), samples, depths));
    return done;
  }
  const auto pixels = asImageSamples(samples, depths);
  const ChosenLut lut = readChosenLut(arguments, LutReading::suite);
  printWarnings(lut.warnings);
  const ImageLut prepared = lut.forCodeValues(static_cast<int>(depths.input), static_cast<int>(depths.output));
  auto results = Json::array();
  for (const auto& pixel : pixels) results.push_back(prepared.pixel(pixel[0], pixel[1], pixel[2]));
  printJson(results);
  return done;
}

Status sampleNumbers(const Arguments& arguments) {
  for (const std::string name : {"depth", "out-depth", "round"}) {
    if (arguments.has(name)) throw UsageError("--" + name + " is for code values; it cannot be used with --float");
  }
  const auto samples = readSamples(arguments.given.at("values"), "numbers", readNumber);
  const ChosenLut lut = readChosenLut(arguments, LutReading::suite);
  printWarnings(lut.warnings);
  const ImageLut prepared = lut.forFloats();
  auto results = Json::array();
  for (const auto& sample : samples) {
    const LutColor color = prepared.pixel(LutColor{sample[0], sample[1], sample[2]});
    if (!std::isfinite(color.red) || !std::isfinite(color.green) || !std::isfinite(color.blue)) {
      const ParsedLutFile* const file = lut.suiteFile();
      throw sampleError(results.size(), sample,
                        "has no finite result" + (file != nullptr ? ": " + rangeOf(describe(*file)) : ""));
    }
    results.push_back({color.red, color.green, color.blue});
  }
  printJson(results);
  return done;
}

}  // namespace

Subcommand lutSampleCommand() {
  using enum Option::Kind;
  Subcommand command{
      .group = "lut",
      .name = "sample",
      .description = "Apply a LUT to code values or floating-point numbers",
      .details =
          "Prints a JSON list of the results, each a list of red, green and blue.\n"
          "Code values have up to 63 bits. Results are truncated; one that is not a code value, such as a negative\n"
          "one, is an error. With --reading published, --axis-order, --domain, --interpolation or --round the results\n"
          "are those of \"meridian lut apply\" with these options and the same reading: code values have up to 16 "
          "bits,\n"
          "and results are clamped to those of the depth.\n"
          "With --float the results are those for images of floating-point samples, and are not clamped. Put numbers\n"
          "such as -.5, with nothing before the point, after \"--\".",
      .example =
          "meridian lut sample look.cube --depth 10 --out-depth 12 64 64 64 940 940 940\n"
          "meridian lut sample look.cube --float --reading published 0.18 0.18 0.18",
      .options = {lutFileOption(),
                  {.kind = positional,
                   .name = "values",
                   .help = "Red, green and blue of each sample: integers from 0, or decimal numbers with --float",
                   .valueName = "VALUE",
                   .repeated = true},
                  {value, "depth", "The bit depth of the code values, from 1 to 63; required without --float", "D"},
                  {value, "out-depth", "The bit depth of the results; by default that of the code values", "E"},
                  {flag, "float",
                   "The values are numbers on the scale from 0, black, to 1, white, and so are the "
                   "results"}},
      .action =
          [](const Arguments& arguments) {
            return arguments.has("float") ? sampleNumbers(arguments) : sampleCodeValues(arguments);
          },
  };
  command.options.push_back(readingOption(LutReading::suite));
  for (Option& option : imageLutOptions()) command.options.push_back(std::move(option));
  return command;
}

}  // namespace meridian::command
