#include "tools/meridian/rate_reading.h"

#include <optional>
#include <stdexcept>
#include <string>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "tools/meridian/command.h"

namespace meridian::command {
namespace {

constexpr const char* tooLarge = " is too large for a frame rate, or not finite";

MediaRational readRational(std::string_view text, double& number) {
  if (const std::size_t slash = text.find('/'); slash != std::string_view::npos) {
    const auto numerator = integerFromText(text.substr(0, slash));
    const auto denominator = integerFromText(text.substr(slash + 1));
    if (!numerator || !denominator) {
      throw UsageError(inQuotes(text) + " is no ratio of two integers; write one as 24000/1001");
    }
    const auto rational = MediaRational::fromTime(*numerator, *denominator);
    if (!rational) throw std::runtime_error(inQuotes(text) + " has the denominator 0");
    number = rational->rawValue();
    return *rational;
  }
  const auto read = doubleFromText(text);
  if (!read) throw UsageError(inQuotes(text) + " is no frame rate; write a number (23.976) or a ratio (24000/1001)");
  number = *read;
  const auto rational = MediaRational::fromRawValue(number);
  if (!rational && number != 0) throw std::runtime_error(inQuotes(text) + tooLarge);
  return rational.value_or(MediaRational{0, 1});
}

}  // namespace

GivenRate readRate(std::string_view text) {
  GivenRate given;
  const MediaRational rational = readRational(text, given.number);
  if (rational.numerator == 0) throw std::runtime_error(inQuotes(text) + " is no frame rate: 0 frames a second");
  const auto rate = VideoFrameRate::matching(rational);
  if (!rate) throw std::runtime_error(inQuotes(text) + tooLarge);
  given.rate = *rate;
  return given;
}

}  // namespace meridian::command
