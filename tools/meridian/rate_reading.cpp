#include "tools/meridian/rate_reading.h"

#include <optional>
#include <stdexcept>
#include <string>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "tools/meridian/command.h"

namespace meridian::command {
namespace {

constexpr const char* outOfRange = " is not a frame rate: too large, or not finite";

MediaRational readRational(std::string_view text, double& number) {
  if (const std::size_t slash = text.find('/'); slash != std::string_view::npos) {
    const auto numerator = integerFromText(text.substr(0, slash));
    const auto denominator = integerFromText(text.substr(slash + 1));
    if (!numerator || !denominator) {
      throw UsageError(inQuotes(text) + " is not a ratio; expected two integers, such as 24000/1001");
    }
    const auto rational = MediaRational::fromTime(*numerator, *denominator);
    if (!rational) throw std::runtime_error(inQuotes(text) + " is not a frame rate: the denominator is 0");
    number = rational->rawValue();
    return *rational;
  }
  const auto read = doubleFromText(text);
  if (!read) {
    throw UsageError(inQuotes(text) + " is not a frame rate; expected a number (23.976) or a ratio (24000/1001)");
  }
  number = *read;
  const auto rational = MediaRational::fromRawValue(number);
  if (!rational && number != 0) throw std::runtime_error(inQuotes(text) + outOfRange);
  return rational.value_or(MediaRational{0, 1});
}

}  // namespace

GivenRate readRate(std::string_view text) {
  GivenRate given;
  const MediaRational rational = readRational(text, given.number);
  if (rational.numerator == 0) throw std::runtime_error(inQuotes(text) + " is not a frame rate: 0 frames per second");
  const auto rate = VideoFrameRate::matching(rational);
  if (!rate) throw std::runtime_error(inQuotes(text) + outOfRange);
  given.rate = *rate;
  return given;
}

}  // namespace meridian::command
