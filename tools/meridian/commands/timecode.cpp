// meridian timecode: shows what a timecode means and which frame it labels.
#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

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
  /// The timecode to show: the one in the text, or the one `movedBy` frames later.
  TimecodeComponents timecode;
  std::optional<VideoFrameRate> rate;
  std::optional<std::int64_t> movedBy;

  [[nodiscard]] bool properForm() const { return TimecodeComponents::timecodeHasProperForm(text, true, true); }
  [[nodiscard]] auto frameNumber() const { return meridian::frameNumber(timecode, *rate); }
};

/// Lists the components that are missing from the text or are not numbers.
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

/// Throws CommandError unless each part of the text is a number and, with `all`, there are all four. Fewer parts
/// ("12:34") are a timecode whose other components are 0, which suffices to show it but labels no frame.
void requireParts(std::string_view text, bool all) {
  const DecomposedTimecode read = TimecodeComponents::decomposeTimecodeString(text);
  const auto parts = std::ranges::count_if(text, [](char c) { return c == ':' || c == ';'; }) + 1;
  const auto numbers =
      read.hours.has_value() + read.minutes.has_value() + read.seconds.has_value() + read.frames.has_value();
  if (parts > 4) {
    throw CommandError(text, "is not a timecode: it has more than four parts; expected one such as 01:02:03:04");
  }
  if (numbers == (all ? 4 : parts)) return;
  throw CommandError(text, "is not a timecode: no number for " + missingComponents(text) +
                               "; expected one such as 01:02:03:04, or 01:02:03;04 for drop frame");
}

/// Says why the text is not a proper timecode.
std::string formProblem(std::string_view text) {
  const std::string missing = missingComponents(text);
  if (!missing.empty()) return "not proper: no number for " + missing + "; read as 0";
  if (!TimecodeComponents::timecodeHasProperForm(text, true, false)) {
    return "not proper: each part needs at least two digits";
  }
  return "not proper: minutes or seconds are above 60";
}

TimecodeError errorOf(const TimecodeComponents& timecode, const VideoFrameRate& rate, TimecodeErrorCode code) {
  return {code, timecode.timecodeString(), "at " + rate.formattedString()};
}

/// Returns the timecode this many frames later. Throws CommandError if there is none.
TimecodeComponents moved(const TimecodeComponents& timecode, std::int64_t frames, const VideoFrameRate& rate) {
  const auto number = frameNumber(timecode, rate);
  if (!number) throw CommandError(errorOf(timecode, rate, number.error()));
  const auto target = checkedSum(*number, frames);
  if (!target || *target < 0) {
    throw CommandError("cannot move " + timecode.timecodeString() + ", frame " + std::to_string(*number) + ", by " +
                       std::to_string(frames) + " frames: the result is outside 0 to 2^63 - 1");
  }
  // A rate that has a frame number for a timecode has timecodes for all frame numbers.
  return timecodeOfFrame(*target, rate, timecode.isDropFrame).value();
}

Reading readArguments(const Arguments& arguments) {
  const auto text = arguments.value("timecode");
  const auto frames = arguments.value("frames");
  const auto rate = arguments.value("rate");
  if (!text && !frames) throw UsageError("missing argument: expected a timecode, or --frames with --rate");
  if (frames && !rate) throw UsageError("--frames needs --rate: the frame rate decides which timecode labels a frame");

  Reading reading;
  reading.text = text.value_or(std::string(TimecodeComponents::defaultNonDropTimecode));
  requireParts(reading.text, rate.has_value());
  reading.timecode = TimecodeComponents::sanitizedTimecode(reading.text);
  if (rate) reading.rate = readRate(*rate).rate;
  if (!frames) return reading;

  reading.movedBy = integerFromText(*frames);
  if (!reading.movedBy) {
    throw CommandError(inQuotes(*frames) + " is not a number of frames; expected a 64-bit integer");
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
    document["frameNumber"] = number ? Json(*number) : Json();
    document["error"] = number ? Json() : Json(rawValue(number.error()));
  }
  printJson(document);
}

/// Prints a timecode that labels a frame, if there is a rate.
void printForPeople(const Reading& reading) {
  const TimecodeComponents& timecode = reading.timecode;
  std::cout << styled(Style::heading, timecode.timecodeString()) << '\n';
  std::vector<std::vector<Cell>> rows;
  if (reading.movedBy) {
    rows.push_back({{"moved", Style::name},
                    {std::to_string(*reading.movedBy) + (*reading.movedBy == 1 ? " frame from " : " frames from ") +
                     reading.text}});
  }
  rows.push_back(
      {{"form", Style::name},
       reading.properForm() ? Cell{"proper", Style::good} : Cell{formProblem(reading.text), Style::warning}});
  rows.push_back({{"hours", Style::name}, {std::to_string(timecode.hours)}});
  rows.push_back({{"minutes", Style::name}, {std::to_string(timecode.minutes)}});
  rows.push_back({{"seconds", Style::name}, {std::to_string(timecode.seconds)}});
  rows.push_back({{"frames", Style::name}, {std::to_string(timecode.frames)}});
  rows.push_back({{"counting", Style::name}, {timecode.isDropFrame ? "drop frame" : "non-drop"}});
  if (reading.rate) {
    rows.push_back({{"at " + reading.rate->formattedString(), Style::name},
                    {"frame " + std::to_string(reading.frameNumber().value())}});
  }
  printTable(rows);
}

/// With --json, also prints the document with the error's code.
Status showTimecode(const Arguments& arguments) {
  const Reading reading = readArguments(arguments);
  if (arguments.has("json")) printAsJson(reading);
  if (reading.rate) {
    const auto number = reading.frameNumber();
    if (!number) throw CommandError(errorOf(reading.timecode, *reading.rate, number.error()));
  }
  if (!arguments.has("json")) printForPeople(reading);
  return done;
}

}  // namespace

Subcommand timecodeCommand() {
  return {
      .name = "timecode",
      .description = "Show the parts of a timecode, whether its form is proper, and which frame it labels",
      .details =
          "The exit status is 1 if a part of the text is not a number, or if with --rate the timecode labels no "
          "frame.\n"
          "Without --rate, parts may be missing at the end: 12:34 is 12:34:00:00.",
      .example =
          "meridian timecode '01:02:03;04' --rate 29.97\nmeridian timecode '00:00:00;00' --rate 29.97 --frames 1800",
      .options = {{Option::Kind::positional,
                   "timecode",
                   "The timecode: 01:02:03:04, or 01:02:03;04 for drop frame; 00:00:00:00 by default",
                   "TEXT",
                   {},
                   true},
                  {Option::Kind::value, "rate", "Also show the frame number at this rate", "VALUE|NUM/DEN"},
                  {Option::Kind::value, "frames", "Show the timecode this many frames later, at the rate", "N"},
                  {Option::Kind::flag, "json",
                   "Print JSON: properForm, components, timecodeString, frameNumber, error"}},
      .action = showTimecode,
  };
}

}  // namespace meridian::command
