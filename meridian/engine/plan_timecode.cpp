// The timecode of the output: where it comes from, the rate that it counts at, and whether the file stores it.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/engine/creation_date.h"
#include "meridian/engine/plan_context.h"
#include "meridian/media/frame_number.h"

namespace meridian::inline v0_2 {
namespace {

using enum TranscodePlanErrorCode;

constexpr std::string_view trackFlag = SAVTimecodeAddTrackFlag.rawValue();
constexpr std::string_view burnFlag = SAVTimecodeAddBurnFlag.rawValue();
constexpr std::string_view dropFlag = SAVTimecodeIsDropFlag.rawValue();
constexpr std::string_view countingRateFlag = SAVTimecodeFrameRateFlag.rawValue();

/// Returns the label with frames that exist at the rate: the next one, where drop frame skips it.
TimecodeComponents existing(PlanContext& context, TimecodeComponents label, const VideoFrameRate& rate,
                            std::string_view flag) {
  const auto number = frameNumber(label, rate);
  if (number || number.error() != TimecodeErrorCode::droppedLabel) return label;
  const std::string text = label.timecodeString();
  label.frames = droppedLabelsPerMinute(rate).value_or(0);
  context.warn(TranscodePlanWarningCode::timecodeMoved, flag, text + " becomes " + label.timecodeString());
  return label;
}

/// Returns the label of the same time at another rate: hours, minutes and seconds stay, and the frame is the one at
/// that time within its second.
TimecodeComponents atRate(PlanContext& context, TimecodeComponents label, const VideoFrameRate& from,
                          const VideoFrameRate& to, bool asksForDrop, std::string_view flag) {
  const std::int64_t counted = timecodeFramesPerSecond(from).value_or(1);
  const std::int64_t counts = timecodeFramesPerSecond(to).value_or(1);
  const std::string text = label.timecodeString();
  if (counted != counts) label.frames = checkedProduct(label.frames, counts).value_or(0) / counted;
  const bool wasDropFrame = label.isDropFrame;
  label.isDropFrame = (label.isDropFrame || asksForDrop) && droppedLabelsPerMinute(to).has_value();
  if (wasDropFrame && !label.isDropFrame) {
    context.warn(TranscodePlanWarningCode::dropFrameLost, flag, text + " becomes " + label.timecodeString());
  }
  return existing(context, label, to, flag);
}

TimecodeComponents customStart(PlanContext& context, const VideoFrameRate& rate, bool asksForDrop) {
  TimecodeComponents start = context.arguments.timecode().value_or(TimecodeComponents());
  start.isDropFrame = start.isDropFrame || asksForDrop;
  const auto number = frameNumber(start, rate);
  // "-tc_drop" at such a rate is an error of its own.
  if (number || (asksForDrop && number.error() == TimecodeErrorCode::notADropFrameRate)) return start;
  context.fail(noSuchLabel, SAVTimecodeCustomFlag.rawValue(),
               "which at " + frameRateText(rate) + " " + std::string(description(number.error())),
               std::string(remedy(number.error())));
  return start;
}

TimecodeComponents creationStart(PlanContext& context, const VideoFrameRate& rate, bool asksForDrop) {
  const std::string_view flag = SAVTimecodeFromCreationDateFlag.rawValue();
  const MediaDescription& media = *context.image->part->media;
  constexpr std::int64_t day = 86'400;
  const std::int64_t offset = context.surroundings.utcOffset.count();
  const auto stated = creationDateFrom(media.creationDate);
  if (stated) {
    context.warn(TranscodePlanWarningCode::timecodeFromCreation, flag,
                 printable(media.creationDate) + (stated->isUtc ? ", in the zone of this machine" : ", as written"));
  } else {
    context.warn(TranscodePlanWarningCode::timecodeFromCreation, flag,
                 "the source states none, so that it is the time of its last change");
  }
  const CreationDate date = stated.value_or(CreationDate{.time = media.modificationTime, .isUtc = true});
  const std::int64_t clock = date.time.time_since_epoch().count() + (date.isUtc ? offset : 0);
  const std::int64_t seconds = (clock % day + day) % day;
  const auto perSecond = static_cast<double>(timecodeFramesPerSecond(rate).value_or(1));
  const TimecodeComponents start{seconds / 3600, seconds / 60 % 60, seconds % 60,
                                 static_cast<std::int64_t>(std::min(date.fraction * perSecond, perSecond - 1)),
                                 asksForDrop && droppedLabelsPerMinute(rate).has_value()};
  return existing(context, start, rate, flag);
}

/// Returns how many images a part has, as it states it or by how long it is; absent if neither is known.
std::optional<std::int64_t> imageCountOf(const MediaDescription& part) {
  const VideoStreamDescription* const video = part.mainVideo();
  if (video == nullptr) return std::nullopt;
  if (video->frameCount) return video->frameCount;
  const auto images = video->frameRate ? timecodeFramesPerSecond(*video->frameRate) : std::nullopt;
  if (!images || !video->duration) return std::nullopt;
  const double seconds = video->duration->rawValue();
  constexpr double mostSeconds = 1e9;
  if (!(seconds < mostSeconds)) return std::nullopt;
  return std::llround(seconds * video->frameRate->rawValue().rawValue());
}

/// The last part that stated a timecode, and how many images come from its first on, before the one at hand.
struct LabelledPart {
  const MediaDescription* media = nullptr;
  std::optional<std::int64_t> images;
};

/// Returns whether a part continues the labels of one before it; absent if that cannot be told. Labels begin anew at
/// midnight, and may count at another rate than the images, such as 30 at 60.
std::optional<bool> continues(const LabelledPart& before, const MediaDescription& part) {
  const VideoStreamDescription* const video = before.media->mainVideo();
  if (!before.images || video == nullptr || !video->frameRate) return std::nullopt;
  const VideoFrameRate& rate = before.media->timecode->rate;
  const auto first = frameNumber(before.media->timecode->start, rate);
  const auto next = frameNumber(part.timecode->start, part.timecode->rate);
  const auto day = frameNumber({24, 0, 0, 0, before.media->timecode->start.isDropFrame}, rate);
  const auto labels = timecodeFramesPerSecond(rate);
  const auto images = timecodeFramesPerSecond(*video->frameRate);
  if (!first || !next || !day || !labels || !images) return std::nullopt;
  if (part.timecode->start.isDropFrame != before.media->timecode->start.isDropFrame) return false;
  // In parts of which a label and an image have a whole number each.
  const auto dayLength = checkedProduct(*day, *images);
  const auto length = checkedProduct(*before.images, *labels);
  if (!dayLength || !length) return false;
  const std::int64_t labelled = ((*next - *first) % *day + *day) % *day * *images;
  const std::int64_t off = std::abs(labelled - *length % *dayLength);
  return std::min(off, *dayLength - off) < *images;
}

/// Finds the labels of the parts, where one of them breaks the count; the first is the start. A part without a timecode
/// goes on from the one before it.
void planPartStarts(PlanContext& context, PlannedTimecode& timecode, bool asksForDrop) {
  const auto& parts = context.image->group->parts;
  std::vector<std::optional<TimecodeComponents>> starts{timecode.start};
  LabelledPart before;
  bool breaks = false;
  for (std::size_t place = 0; place < parts.size(); ++place) {
    const SourcePart& part = parts[place];
    if (part.media == nullptr) return;
    const auto own = imageCountOf(*part.media);
    const bool isLabelled = part.media->timecode.has_value();
    if (place > 0) starts.emplace_back();
    if (place > 0 && isLabelled) {
      const auto goesOn = before.media != nullptr ? continues(before, *part.media) : std::optional(false);
      if (goesOn == false) {
        context.warn(TranscodePlanWarningCode::timecodeBreaks, part.flag, part.media->timecode->start.timecodeString());
      }
      if (goesOn != true) {
        breaks = true;
        starts.back() = atRate(context, part.media->timecode->start, part.media->timecode->rate, timecode.rate,
                               asksForDrop, part.flag);
      }
    }
    if (isLabelled) {
      before = {&*part.media, own};
    } else if (before.images) {
      before.images = own ? checkedSum(*before.images, *own) : std::nullopt;
    }
  }
  if (breaks) timecode.partStarts = std::move(starts);
}

void planMatchingStart(PlanContext& context, PlannedTimecode& timecode, bool asksForDrop) {
  const SourcePart& part = *context.image->part;
  if (!part.media->timecode) {
    timecode.isAssumed = true;
    timecode.start.isDropFrame = asksForDrop && droppedLabelsPerMinute(timecode.rate).has_value();
    std::string_view flag = context.containerFlag();  // of one that always has timecode
    for (const std::string_view each : {burnFlag, trackFlag, SAVTimecodeMatchSourceFlag.rawValue()}) {
      if (context.isSet(each)) flag = each;
    }
    context.warn(TranscodePlanWarningCode::timecodeAssumed, flag, "it begins at " + timecode.start.timecodeString());
    planPartStarts(context, timecode, asksForDrop);
    return;
  }
  timecode.start =
      atRate(context, part.media->timecode->start, part.media->timecode->rate, timecode.rate, asksForDrop, part.flag);
  planPartStarts(context, timecode, asksForDrop);
}

/// The greatest rate of a timecode track: its sample description has one byte for the frames of a second (QuickTime
/// File Format, "Timecode Sample Description").
constexpr std::int64_t greatestRateOfTrack = 255;

VideoFrameRate countingRate(PlanContext& context, const VideoFrameRate& outputRate, bool isInTrack) {
  const auto asked = context.value<float>(countingRateFlag);
  if (!asked) return outputRate;
  const auto rate = frameRateMeantBy(doubleFromText(context.text(countingRateFlag)).value_or(0));
  if (!rate || !timecodeFramesPerSecond(*rate) || rate->rawValue().rawValue() > greatestFrameRate) {
    context.fail(timecodeRateNotAvailable, countingRateFlag, {}, "use 0.5 to 600 frames per second");
    return outputRate;
  }
  if (isInTrack && *rate != outputRate) {
    context.fail(timecodeRateNotAvailable, countingRateFlag, "in a track of " + frameRateText(outputRate),
                 "remove -tc_rate, or burn the timecode in without a track");
  }
  return *rate;
}

}  // namespace

void planTimecode(PlanContext& context) {
  if (!context.plan.video) {
    context.ignore(trackFlag, "there is no video in the output");
    context.ignore(burnFlag, "there is no video in the output");
    return;
  }
  const TimecodeStorage storage = context.container ? tableRow(*context.container).timecode : TimecodeStorage::track;
  bool isInTrack = storage == TimecodeStorage::always;
  if (storage == TimecodeStorage::none) {
    context.ignore(trackFlag, "the container keeps no timecode");
  } else if (context.has(trackFlag)) {
    isInTrack = true;
  }
  if (!isInTrack && !context.isSet(burnFlag)) return;

  PlannedTimecode& timecode = context.plan.timecode.emplace();
  timecode.isInTrack = isInTrack;
  const VideoFrameRate outputRate = context.plan.video->output().frameRate;
  timecode.rate = countingRate(context, outputRate, isInTrack);
  if (!timecodeFramesPerSecond(timecode.rate)) {
    std::string_view flag = isInTrack ? trackFlag : burnFlag;
    if (!context.isSet(flag)) flag = context.containerFlag();
    context.fail(timecodeRateNotAvailable, flag, frameRateText(timecode.rate));
    for (const TimecodeSource source : allCases<TimecodeSource>()) context.use(timecodeFlag(source).rawValue());
    context.use(dropFlag);
    return;
  }
  if (isInTrack && storage == TimecodeStorage::track &&
      timecodeFramesPerSecond(timecode.rate).value_or(0) > greatestRateOfTrack) {
    context.fail(timecodeRateNotAvailable, trackFlag, "in a track of " + frameRateText(timecode.rate),
                 "use at most " + std::to_string(greatestRateOfTrack) +
                     " frames per second with -vr, or burn the timecode in with -tc_burn instead");
  }
  const bool asksForDrop = context.has(dropFlag);
  if (asksForDrop && !droppedLabelsPerMinute(timecode.rate)) {
    context.fail(notADropFrameRate, dropFlag, "at " + frameRateText(timecode.rate));
  }
  timecode.source = context.arguments.timecodeSource().value_or(TimecodeSource::match);
  for (const TimecodeSource source : allCases<TimecodeSource>()) {
    if (source == timecode.source) {
      context.use(timecodeFlag(source).rawValue());
    } else {
      context.ignore(timecodeFlag(source).rawValue(), "another source of the timecode counts");
    }
  }
  switch (timecode.source) {
    case TimecodeSource::custom:
      timecode.start = customStart(context, timecode.rate, asksForDrop);
      break;
    case TimecodeSource::creationDate:
      timecode.start = creationStart(context, timecode.rate, asksForDrop);
      break;
    case TimecodeSource::match:
      planMatchingStart(context, timecode, asksForDrop);
      break;
  }
  // What the sources state may be a label that the rate does not have.
  const auto number = frameNumber(timecode.start, timecode.rate);
  if (!number && timecode.source != TimecodeSource::custom) {
    context.fail(noSuchLabel, context.image->part->flag,
                 timecode.start.timecodeString() + ", which " + std::string(description(number.error())),
                 "set the timecode with -tc_custom");
  }
  constexpr std::int64_t greatestInTrack = std::numeric_limits<std::int32_t>::max();
  if (number && *number > greatestInTrack && timecode.isInTrack) {
    const bool isCustom = timecode.source == TimecodeSource::custom;
    context.fail(noSuchLabel, isCustom ? SAVTimecodeCustomFlag.rawValue() : context.image->part->flag,
                 (isCustom ? "" : timecode.start.timecodeString() + ", ") +
                     "which is beyond the last frame that a file can label",
                 "use fewer hours");
  }
}

}  // namespace meridian::inline v0_2
