// meridian timecode: what a timecode means, and which frame it labels.
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/media/frame_number.h"
#include "meridian/serialization/media_json.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"
#include "tools/meridian/rate_reading.h"

namespace meridian::command {
namespace {

struct Reading {
  bool properForm = false;
  TimecodeComponents timecode;
  std::optional<VideoFrameRate> rate;

  [[nodiscard]] std::optional<std::int64_t> frameNumber() const { return meridian::frameNumber(timecode, *rate); }
};

/// The timecode this many frames on.
TimecodeComponents movedBy(std::string_view framesText, const TimecodeComponents& timecode,
                           const VideoFrameRate& rate) {
  const auto frames = integerFromText(framesText);
  if (!frames) {
    throw UsageError("\"" + printable(framesText) + "\" is no number of frames; write an integer within 64 bits");
  }
  if (const auto fault = timecodeFault(timecode, rate)) {
    throw std::runtime_error(timecode.timecodeString() + " labels no frame at " + rate.formattedString() + ": " +
                             std::string(description(*fault)));
  }
  const auto target = checkedSum(*frameNumber(timecode, rate), *frames);
  const auto moved = target ? timecodeOfFrame(*target, rate, timecode.isDropFrame) : std::nullopt;
  if (!moved) {
    throw std::runtime_error("there is no frame " + std::to_string(*frames) + " on from " + timecode.timecodeString() +
                             ": frame numbers go from 0 to 2^63 - 1");
  }
  return *moved;
}

Reading readArguments(const Arguments& arguments) {
  const auto text = arguments.value("timecode");
  const auto frames = arguments.value("frames");
  const auto rate = arguments.value("rate");
  if (!text && !frames) throw UsageError("a timecode is missing, or --frames with --rate");
  if (frames && !rate) throw UsageError("--frames needs --rate, since the rate decides how frames are labelled");

  Reading reading;
  const std::string_view given = text ? std::string_view(*text) : TimecodeComponents::defaultNonDropTimecode;
  reading.properForm = TimecodeComponents::timecodeHasProperForm(given, true, true);
  reading.timecode = TimecodeComponents::sanitizedTimecode(given);
  if (rate) reading.rate = readRate(*rate).rate;
  if (frames) reading.timecode = movedBy(*frames, reading.timecode, *reading.rate);
  return reading;
}

void printAsJson(const Reading& reading) {
  nlohmann::ordered_json document{{"properForm", reading.properForm},
                                  {"components", reading.timecode},
                                  {"timecodeString", reading.timecode.timecodeString()}};
  if (reading.rate) {
    const auto number = reading.frameNumber();
    document["frameNumber"] = number ? nlohmann::ordered_json(*number) : nlohmann::ordered_json();
  }
  printJson(document);
}

void printForPeople(const Reading& reading) {
  const TimecodeComponents& timecode = reading.timecode;
  std::cout << styled(Style::heading, timecode.timecodeString()) << '\n';
  std::vector<std::vector<Cell>> rows{
      {{"form", Style::name},
       reading.properForm ? Cell{"proper", Style::good}
                          : Cell{"not proper; what could not be read is 0", Style::warning}},
      {{"hours", Style::name}, {std::to_string(timecode.hours)}},
      {{"minutes", Style::name}, {std::to_string(timecode.minutes)}},
      {{"seconds", Style::name}, {std::to_string(timecode.seconds)}},
      {{"frames", Style::name}, {std::to_string(timecode.frames)}},
      {{"counting", Style::name}, {timecode.isDropFrame ? "drop frame" : "non-drop"}}};
  if (reading.rate) {
    const auto fault = timecodeFault(timecode, *reading.rate);
    rows.push_back({{"at " + reading.rate->formattedString(), Style::name},
                    fault ? Cell{"no frame: " + std::string(description(*fault)), Style::warning}
                          : Cell{"frame " + std::to_string(*reading.frameNumber())}});
  }
  printTable(rows);
}

}  // namespace

Subcommand timecodeCommand() {
  return {
      .name = "timecode",
      .description = "Show what a timecode means, whether its form is proper, and which frame it labels",
      .example = "meridian timecode '01:02:03;04' --rate 29.97\nmeridian timecode --rate 25 --frames 90000",
      .options = {{Option::Kind::positional,
                   "timecode",
                   "Hours, minutes, seconds and frames; drop frame with \";\". Left out, it is 00:00:00:00",
                   "TEXT",
                   {},
                   true},
                  {Option::Kind::value, "rate", "Also show the frame number at this rate", "VALUE|NUM/DEN"},
                  {Option::Kind::value, "frames", "Show the timecode this many frames on, at the rate", "N"},
                  {Option::Kind::flag, "json",
                   "Print JSON: properForm (of the text), components (encoded), timecodeString, with a rate "
                   "frameNumber (or null)"}},
      .action =
          [](const Arguments& arguments) {
            const Reading reading = readArguments(arguments);
            arguments.has("json") ? printAsJson(reading) : printForPeople(reading);
            return done;
          },
  };
}

}  // namespace meridian::command
