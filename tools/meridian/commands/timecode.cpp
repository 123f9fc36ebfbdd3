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
  std::string text;
  /// The timecode to show: that of the text, or the one that it was moved to.
  TimecodeComponents timecode;
  std::optional<VideoFrameRate> rate;
  std::optional<std::int64_t> movedBy;

  [[nodiscard]] bool properForm() const { return TimecodeComponents::timecodeHasProperForm(text, true, true); }
  [[nodiscard]] std::optional<std::int64_t> frameNumber() const { return meridian::frameNumber(timecode, *rate); }
};

/// The components that the text does not have, or that do not read.
std::string missingComponents(std::string_view text) {
  const DecomposedTimecode read = TimecodeComponents::decomposeTimecodeString(text);
  std::string missing;
  const auto check = [&missing](std::string_view name, bool isRead) {
    if (!isRead) missing += (missing.empty() ? "" : ", ") + std::string(name);
  };
  check("hours", read.hours.has_value());
  check("minutes", read.minutes.has_value());
  check("seconds", read.seconds.has_value());
  check("frames", read.frames.has_value());
  return missing;
}

/// What keeps the text from being a proper timecode.
std::string formFault(std::string_view text) {
  const std::string missing = missingComponents(text);
  if (!missing.empty()) return "not proper: no number for " + missing + "; 0 stands there";
  if (!TimecodeComponents::timecodeHasProperForm(text, true, false)) return "not proper: each part has two digits";
  return "not proper: minutes and seconds are above 60";
}

/// The timecode this many frames on.
TimecodeComponents moved(const TimecodeComponents& timecode, std::int64_t frames, const VideoFrameRate& rate) {
  if (const auto fault = timecodeFault(timecode, rate)) {
    throw std::runtime_error(timecode.timecodeString() + " labels no frame at " + rate.formattedString() + ": " +
                             std::string(description(*fault)));
  }
  const std::int64_t number = *frameNumber(timecode, rate);
  const auto target = checkedSum(number, frames);
  const auto result = target ? timecodeOfFrame(*target, rate, timecode.isDropFrame) : std::nullopt;
  if (!result) {
    throw std::runtime_error(timecode.timecodeString() + " is frame " + std::to_string(number) + ", and " +
                             std::to_string(frames) + " on from there lies outside 0 to 2^63 - 1");
  }
  return *result;
}

Reading readArguments(const Arguments& arguments) {
  const auto text = arguments.value("timecode");
  const auto frames = arguments.value("frames");
  const auto rate = arguments.value("rate");
  if (!text && !frames) throw UsageError("a timecode is missing, or --frames with --rate");
  if (frames && !rate) throw UsageError("--frames needs --rate, since the rate decides how frames are labelled");

  Reading reading;
  reading.text = text.value_or(std::string(TimecodeComponents::defaultNonDropTimecode));
  reading.timecode = TimecodeComponents::sanitizedTimecode(reading.text);
  if (rate) reading.rate = readRate(*rate).rate;
  if (!frames) return reading;

  reading.movedBy = integerFromText(*frames);
  if (!reading.movedBy) {
    throw UsageError(inQuotes(*frames) + " is no number of frames; write an integer within 64 bits");
  }
  if (const std::string missing = missingComponents(reading.text); !missing.empty()) {
    throw std::runtime_error(inQuotes(reading.text) + " is no timecode to count from: no number for " + missing);
  }
  reading.timecode = moved(reading.timecode, *reading.movedBy, *reading.rate);
  return reading;
}

void printAsJson(const Reading& reading) {
  Json document{{"properForm", reading.properForm()},
                {"components", reading.timecode},
                {"timecodeString", reading.timecode.timecodeString()}};
  if (reading.rate) {
    const auto number = reading.frameNumber();
    const auto fault = timecodeFault(reading.timecode, *reading.rate);
    document["frameNumber"] = number ? Json(*number) : Json();
    document["fault"] = fault ? Json(rawValue(*fault)) : Json();
  }
  printJson(document);
}

void printForPeople(const Reading& reading) {
  const TimecodeComponents& timecode = reading.timecode;
  std::cout << styled(Style::heading, timecode.timecodeString()) << '\n';
  std::vector<std::vector<Cell>> rows;
  if (reading.movedBy) {
    rows.push_back({{"counted", Style::name}, {std::to_string(*reading.movedBy) + " on from " + reading.text}});
  }
  rows.push_back({{"form", Style::name},
                  reading.properForm() ? Cell{"proper", Style::good} : Cell{formFault(reading.text), Style::warning}});
  rows.push_back({{"hours", Style::name}, {std::to_string(timecode.hours)}});
  rows.push_back({{"minutes", Style::name}, {std::to_string(timecode.minutes)}});
  rows.push_back({{"seconds", Style::name}, {std::to_string(timecode.seconds)}});
  rows.push_back({{"frames", Style::name}, {std::to_string(timecode.frames)}});
  rows.push_back({{"counting", Style::name}, {timecode.isDropFrame ? "drop frame" : "non-drop"}});
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
      .example =
          "meridian timecode '01:02:03;04' --rate 29.97\nmeridian timecode '00:00:00;00' --rate 29.97 --frames 1800",
      .options = {{Option::Kind::positional,
                   "timecode",
                   "Such as 01:02:03:04, or 01:02:03;04 for drop frame; left out, 00:00:00:00",
                   "TEXT",
                   {},
                   true},
                  {Option::Kind::value, "rate", "Also show the frame number at this rate", "VALUE|NUM/DEN"},
                  {Option::Kind::value, "frames", "Show the timecode this many frames on, at the rate", "N"},
                  {Option::Kind::flag, "json",
                   "Print JSON: properForm, components, timecodeString, frameNumber, fault"}},
      .action =
          [](const Arguments& arguments) {
            const Reading reading = readArguments(arguments);
            arguments.has("json") ? printAsJson(reading) : printForPeople(reading);
            return done;
          },
  };
}

}  // namespace meridian::command
