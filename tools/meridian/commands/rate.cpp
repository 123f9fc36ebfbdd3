// meridian rate: shows which standard rate and which setting a frame rate matches.
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/base/numbers.h"
#include "meridian/media/frame_number.h"
#include "meridian/media/frame_rate.h"
#include "meridian/serialization/media_json.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"
#include "tools/meridian/rate_reading.h"

namespace meridian::command {
namespace {

/// Returns the choice in conversion settings. Every rate above 0 has one.
FrameRate choiceOf(const GivenRate& given) { return FrameRate::fromRawValue(given.number).value(); }

void printAsJson(const GivenRate& given) {
  const FrameRate choice = choiceOf(given);
  const auto framesPerSecond = timecodeFramesPerSecond(given.rate);
  printJson({{"videoFrameRate", given.rate},
             {"formattedString", given.rate.formattedString()},
             {"frameRate", {{"case", rawValue(choice.kind())}, {"description", choice.description()}}},
             {"rational", given.rate.rawValue().rational()},
             {"timecodeFramesPerSecond", framesPerSecond ? Json(*framesPerSecond) : Json()},
             {"hasDropFrame", droppedLabelsPerMinute(given.rate).has_value()}});
}

std::string ratioText(const MediaRational& rational) {
  return std::to_string(rational.numerator) + "/" + std::to_string(rational.denominator);
}

Cell standardText(const VideoFrameRate& rate) {
  if (rate.kind() != VideoFrameRateKind::custom) return {std::string(rawValue(rate.kind())), Style::good};
  if (const auto alike = standardRateDisplayedAlike(rate)) {
    return {"none; " + std::string(rawValue(alike->kind())) + " looks the same but is " + ratioText(alike->rawValue()),
            Style::warning};
  }
  return {"none", Style::faint};
}

std::string timecodeText(const VideoFrameRate& rate) {
  const auto framesPerSecond = timecodeFramesPerSecond(rate);
  if (!framesPerSecond) return "none";
  return std::to_string(*framesPerSecond) + (*framesPerSecond == 1 ? " frame" : " frames") + " per second" +
         (droppedLabelsPerMinute(rate) ? ", drop frame or non-drop" : "");
}

void printForPeople(const GivenRate& given) {
  const MediaRational rational = given.rate.rawValue();
  std::cout << styled(Style::heading, given.rate.formattedString()) << '\n';
  printTable({{{"standard rate", Style::name}, standardText(given.rate)},
              {{"exactly", Style::name}, {ratioText(rational) + " = " + shortestDecimalText(rational.rawValue())}},
              {{"in settings", Style::name}, {choiceOf(given).description()}},
              {{"timecode", Style::name}, {timecodeText(given.rate)}}});
}

}  // namespace

Subcommand rateCommand() {
  return {
      .name = "rate",
      .description = "Show the standard rate, the exact ratio and the conversion setting of a frame rate",
      .example = "meridian rate 23.976\nmeridian rate 30000/1001 --json",
      .options = {{Option::Kind::positional, "rate", "Frames per second, as a number or a ratio", "VALUE|NUM/DEN"},
                  {Option::Kind::flag, "json",
                   "Print JSON: videoFrameRate, formattedString, frameRate, rational, ..."}},
      .action =
          [](const Arguments& arguments) {
            const GivenRate given = readRate(*arguments.value("rate"));
            arguments.has("json") ? printAsJson(given) : printForPeople(given);
            return done;
          },
  };
}

}  // namespace meridian::command
