#include "tools/meridian/rate_reading.h"

#include <cmath>
#include <optional>
#include <string>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "tools/meridian/command.h"

namespace meridian::command {
namespace {

[[noreturn]] void reject(std::string_view text, std::string_view why) {
  throw CommandError(inQuotes(text) + " is not a frame rate" + std::string(why));
}

MediaRational readRational(std::string_view text, double& number) {
  if (const std::size_t slash = text.find('/'); slash != std::string_view::npos) {
    const auto numerator = integerFromText(text.substr(0, slash));
    const auto denominator = integerFromText(text.substr(slash + 1));
    if (!numerator || !denominator) reject(text, "; expected a ratio of two integers, such as 24000/1001");
    const auto rational = MediaRational::fromTime(*numerator, *denominator);
    if (!rational) reject(text, ": the denominator is 0");
    number = rational->rawValue();
    return *rational;
  }
  const auto read = doubleFromText(text);
  if (!read) reject(text, "; expected a number (23.976) or a ratio (24000/1001)");
  number = *read;
  // 0 has no MediaRational; other numbers without one are rejected by the caller.
  return MediaRational::fromRawValue(number).value_or(MediaRational{0, 1});
}

}  // namespace

GivenRate readRate(std::string_view text) {
  GivenRate given;
  const MediaRational rational = readRational(text, given.number);
  if (!std::isfinite(given.number)) reject(text, ": not finite");
  if (given.number == 0) reject(text, ": 0 frames per second");
  if (given.number < 0) reject(text, ": below 0 frames per second");
  const auto rate = rational.numerator == 0 ? std::nullopt : VideoFrameRate::matching(rational);
  if (!rate) reject(text, given.number < 1 ? ": too small" : ": too large");
  given.rate = *rate;
  return given;
}

}  // namespace meridian::command
