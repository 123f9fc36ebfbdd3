// meridian rate: what a frame rate is matched to.
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

void printAsJson(const GivenRate& given) {
  using Json = nlohmann::ordered_json;
  const auto choice = FrameRate::fromRawValue(given.number);
  printJson({{"videoFrameRate", given.rate},
             {"formattedString", given.rate.formattedString()},
             {"frameRate",
              choice ? Json{{"case", rawValue(choice->kind())}, {"description", choice->description()}} : Json()}});
}

std::string timecodeText(const VideoFrameRate& rate) {
  const auto framesPerSecond = timecodeFramesPerSecond(rate);
  if (!framesPerSecond) return "none";
  return std::to_string(*framesPerSecond) + (*framesPerSecond == 1 ? " frame" : " frames") + " a second" +
         (droppedLabelsPerMinute(rate) ? ", drop frame or not" : "");
}

void printForPeople(const GivenRate& given) {
  const MediaRational rational = given.rate.rawValue();
  const auto choice = FrameRate::fromRawValue(given.number);
  const bool isCustom = given.rate.kind() == VideoFrameRateKind::custom;
  std::cout << styled(Style::heading, given.rate.formattedString()) << '\n';
  printTable({{{"standard rate", Style::name},
               {isCustom ? "none" : std::string(rawValue(given.rate.kind())), isCustom ? Style::faint : Style::good}},
              {{"exactly", Style::name},
               {std::to_string(rational.numerator) + "/" + std::to_string(rational.denominator) + " = " +
                shortestDecimalText(rational.rawValue())}},
              {{"in settings", Style::name},
               {choice ? choice->description() : "no choice stands for it", choice ? Style::plain : Style::warning}},
              {{"timecode", Style::name}, {timecodeText(given.rate)}}});
}

}  // namespace

Subcommand rateCommand() {
  return {
      .name = "rate",
      .description = "Show what a frame rate is matched to: the standard rate, its exact ratio, the settings' choice",
      .example = "meridian rate 23.976\nmeridian rate 30000/1001 --json",
      .options = {{Option::Kind::positional, "rate", "Frames per second, as a number or a ratio", "VALUE|NUM/DEN"},
                  {Option::Kind::flag, "json",
                   "Print JSON: videoFrameRate (encoded), formattedString, frameRate (case, description; or null)"}},
      .action =
          [](const Arguments& arguments) {
            const GivenRate given = readRate(*arguments.value("rate"));
            arguments.has("json") ? printAsJson(given) : printForPeople(given);
            return done;
          },
  };
}

}  // namespace meridian::command
