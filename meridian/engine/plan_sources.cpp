// The sources of a transcode: which files make up which clip, and which of them gives the image.
#include <algorithm>
#include <array>
#include <tuple>

#include "meridian/base/numbers.h"
#include "meridian/base/precondition.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/engine/image_sequence.h"
#include "meridian/engine/plan_context.h"
#include "meridian/media/media_corporation.h"
#include "meridian/media/media_names.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {
namespace {

struct NumberedInput {
  std::int64_t group = 0;
  std::int64_t place = 0;
  /// The place in the store, which decides between two flags for one place.
  std::size_t order = 0;
  SourcePart part;
};

/// Returns the input files in the order of `inputFiles()`: by group, then by place, then as stored.
std::vector<NumberedInput> numberedInputs(PlanContext& context) {
  std::vector<NumberedInput> inputs;
  for (const ExplainedSetting& setting : context.words.settings) {
    if (!TranscodeCliArguments::isInputFileFlag(setting.flag)) continue;
    context.use(setting);
    const std::string_view numbers = std::string_view(setting.flag).substr(SAVInputPrefixFlag.rawValue().size() + 1);
    const std::size_t separator = numbers.rfind('_');
    inputs.push_back({integerFromText(numbers.substr(0, separator)).value_or(0),
                      integerFromText(numbers.substr(separator + 1)).value_or(0),
                      inputs.size(),
                      {setting.flag, setting.value}});
  }
  std::ranges::sort(inputs, {},
                    [](const NumberedInput& each) { return std::tuple(each.group, each.place, each.order); });
  return inputs;
}

/// Returns whether a part is one image: because FFmpeg reads it as one, or by its extension if it is not described. The
/// format of images may also be that of moving ones, such as GIF.
bool isSingleImage(const SourcePart& part) {
  const bool isDescribed = part.media != nullptr && !part.media->formatName.empty();
  return isDescribed ? part.media->formatName.ends_with("_pipe") : isImageName(lastPathComponent(part.path));
}

/// What a part must have in common with the part that it continues.
struct PartTrait {
  std::string_view name;
  bool isOfVideo;
  std::string (*of)(const MediaDescription& media);
};

std::string videoTrait(const MediaDescription& media, auto text) {
  const VideoStreamDescription* const video = media.mainVideo();
  return video != nullptr ? text(*video) : std::string("none");
}

std::string audioTrait(const MediaDescription& media, auto text) {
  std::string texts;
  for (const AudioStreamDescription& track : media.audio) texts += (texts.empty() ? "" : ", ") + text(track);
  return texts.empty() ? "none" : texts;
}

std::string ratioText(const MediaRational& ratio) {
  return std::to_string(ratio.numerator) + (ratio.denominator == 1 ? "" : "/" + std::to_string(ratio.denominator));
}

std::string exactRateText(const VideoStreamDescription& video) {
  if (!video.frameRate) return "unknown";
  return ratioText(video.exactFrameRate.value_or(video.frameRate->rawValue())) + " fps" +
         (video.isVariable ? ", variable" : "");
}

constexpr std::string_view frameRateTrait = "frame rate";

using Video = VideoStreamDescription;
using Audio = AudioStreamDescription;

constexpr auto partTraits = std::to_array<PartTrait>({
    {"size", true,
     [](const MediaDescription& media) {
       return videoTrait(media, [](const Video& video) {
         return std::to_string(video.width) + " x " + std::to_string(video.height);
       });
     }},
    {frameRateTrait, true, [](const MediaDescription& media) { return videoTrait(media, exactRateText); }},
    {"video codec", true,
     [](const MediaDescription& media) {
       return videoTrait(media, [](const Video& video) {
         return video.codecName + (video.profile.empty() ? "" : " " + video.profile);
       });
     }},
    {"pixel format", true,
     [](const MediaDescription& media) {
       return videoTrait(media, [](const Video& video) { return video.pixelFormat; });
     }},
    {"rotation", true,
     [](const MediaDescription& media) {
       return videoTrait(media, [](const Video& video) {
         return std::to_string(video.rotation) + " degrees" + (video.isMirrored ? ", mirrored" : "");
       });
     }},
    {"pixel aspect ratio", true,
     [](const MediaDescription& media) {
       return videoTrait(media, [](const Video& video) { return ratioText(video.pixelAspectRatio); });
     }},
    {"scan", true,
     [](const MediaDescription& media) {
       return videoTrait(media, [](const Video& video) {
         return std::string(isInterlaced(video.fieldOrder) ? description(video.fieldOrder) : "progressive");
       });
     }},
    {"colour", true,
     [](const MediaDescription& media) {
       return videoTrait(media, [](const Video& video) {
         return std::to_string(video.primaries.number) + "-" + std::to_string(video.transfer.number) + "-" +
                std::to_string(video.matrix.number) + ", " + std::string(rawValue(video.range)) + " range";
       });
     }},
    {"audio tracks", false, [](const MediaDescription& media) { return std::to_string(media.audio.size()); }},
    {"audio codec", false,
     [](const MediaDescription& media) {
       return audioTrait(media, [](const Audio& track) { return track.codecName; });
     }},
    {"sample rate", false,
     [](const MediaDescription& media) {
       return audioTrait(media, [](const Audio& track) { return std::to_string(track.sampleRate); });
     }},
    {"audio channels", false,
     [](const MediaDescription& media) {
       return audioTrait(media, [](const Audio& track) { return std::to_string(track.channelCount); });
     }},
    {"channel layout", false,
     [](const MediaDescription& media) {
       return audioTrait(media,
                         [](const Audio& track) { return track.layoutName.empty() ? "unknown" : track.layoutName; });
     }},
});

/// Reports the first thing in which a part differs from the first of its group.
void checkParts(PlanContext& context, const SourceGroup& group) {
  const SourcePart* const first = group.firstDescribed();
  std::array<std::string, partTraits.size()> expected;
  std::ranges::transform(partTraits, expected.begin(),
                         [first](const PartTrait& trait) { return trait.of(*first->media); });
  for (const SourcePart& part : group.parts) {
    if (part.media == nullptr || &part == first) continue;
    for (std::size_t place = 0; place < partTraits.size(); ++place) {
      const PartTrait& trait = partTraits[place];
      if (trait.isOfVideo && !context.keepsVideo) continue;
      // The rate of single images is what "-vr" says.
      if (group.isImageSequence && trait.name == frameRateTrait) continue;
      const std::string found = trait.of(*part.media);
      if (found == expected[place]) continue;
      context.fail(TranscodePlanErrorCode::partsDiffer, part.flag,
                   std::string(trait.name) + " " + printable(found) + " where " + std::string(first->flag) + " has " +
                       printable(expected[place]));
      break;
    }
  }
}

/// Warns of the first image, of those that are given one by one, whose number is not the one after the image before it.
/// Those of a directory are told by its description.
void checkNumbers(PlanContext& context, const SourceGroup& group) {
  for (std::size_t place = 1; place < group.parts.size(); ++place) {
    const SourcePart& part = group.parts[place];
    const auto step = stepOfNumbers(group.parts[place - 1].path, part.path);
    if (!step || *step == 1) continue;
    context.warn(TranscodePlanWarningCode::numbersMissing, part.flag,
                 inQuotes(lastPathComponent(part.path)) + " follows " +
                     inQuotes(lastPathComponent(group.parts[place - 1].path)));
    return;
  }
}

/// The files of a camera that only its maker's own programs decode.
struct CameraRawRow {
  std::string_view extension;
  MediaCorporation maker;
};

constexpr auto cameraRawRows = std::to_array<CameraRawRow>({
    {"braw", MediaCorporation::blackmagic},
    {"ari", MediaCorporation::arri},
    {"arx", MediaCorporation::arri},
    {"crm", MediaCorporation::canon},
    {"r3d", MediaCorporation::red},
});

void describePart(PlanContext& context, SourcePart& part, const Expected<MediaDescription, MediaError>& media) {
  if (!media) {
    // That there is no path is an error of the words.
    if (part.path.empty()) return;
    const MediaError& error = media.error();
    const auto raw = std::ranges::find(cameraRawRows, lowercased(pathExtension(part.path)), &CameraRawRow::extension);
    if (error.code == MediaErrorCode::unknownFormat && raw != cameraRawRows.end()) {
      context.fail(TranscodePlanErrorCode::notDecodable, part.flag,
                   "which is camera raw of " + std::string(description(raw->maker)));
      return;
    }
    std::string detail = "which " + std::string(error.text());
    if (!error.detail.empty()) detail += ": " + printable(error.detail);
    if (error.systemError) detail += ": " + error.systemError.message();
    context.fail(TranscodePlanErrorCode::inputNotRead, part.flag, detail, std::string(error.remedy()));
    return;
  }
  part.media = &*media;
  for (const MediaWarning& warning : media->warnings) {
    std::string detail = inQuotes(part.path) + " " + std::string(warning.text());
    if (!warning.detail.empty()) detail += ": " + printable(warning.detail);
    context.warn(TranscodePlanWarningCode::noticedInSource, part.flag, detail, std::string(warning.remedy()));
  }
}

/// Warns of streams that no output has: subtitles, and data such as a camera's telemetry.
void warnOfOtherStreams(PlanContext& context) {
  for (const SourceGroup& group : context.groups) {
    const SourcePart* const part = group.firstDescribed();
    if (part == nullptr) continue;
    std::string counts;
    for (const OtherStreamKind kind : allCases<OtherStreamKind>()) {
      if (kind == OtherStreamKind::timecode) continue;
      const auto count = std::ranges::count(part->media->others, kind, &OtherStreamDescription::kind);
      if (count == 0) continue;
      counts += (counts.empty() ? "" : ", ") + std::to_string(count) + " of " +
                (kind == OtherStreamKind::unknown ? "an unknown kind" : std::string(rawValue(kind)));
    }
    if (counts.empty()) continue;
    context.warn(TranscodePlanWarningCode::streamsLeftOut, part->flag, inQuotes(part->path) + " has " + counts);
  }
}

/// Finds the first group with an image; reports every further one if the video is kept.
void findImage(PlanContext& context) {
  for (const SourceGroup& group : context.groups) {
    const SourcePart* const part = group.firstDescribed();
    const VideoStreamDescription* const stream = part != nullptr ? part->media->mainVideo() : nullptr;
    if (stream == nullptr) continue;
    if (context.image && !context.keepsVideo) return;
    if (context.image) {
      context.fail(TranscodePlanErrorCode::secondImage, part->flag,
                   "and " + std::string(context.image->part->flag) + " has one");
      continue;
    }
    context.image = {&group, part, stream};
    const auto streams = std::ranges::count(part->media->video, false, &VideoStreamDescription::isAttachedImage);
    if (streams > 1 && context.keepsVideo) {
      context.warn(TranscodePlanWarningCode::partOfSourceLeftOut, part->flag,
                   inQuotes(part->path) + " has " + std::to_string(streams));
    }
  }
}

PlannedSource plannedSource(const SourceGroup& group, bool givesImage) {
  PlannedSource source{group.number, {}, givesImage, group.isImageSequence};
  for (const SourcePart& part : group.parts) {
    PlannedPart& planned = source.parts.emplace_back();
    planned.flag = part.flag;
    planned.path = part.path;
    if (part.media == nullptr) continue;
    planned.duration = part.media->duration;
    if (const VideoStreamDescription* const video = part.media->mainVideo()) planned.frameCount = video->frameCount;
  }
  return source;
}

}  // namespace

void planSources(PlanContext& context, std::span<const Expected<MediaDescription, MediaError>> media) {
  std::vector<NumberedInput> inputs = numberedInputs(context);
  if (inputs.size() != media.size()) preconditionFailed("planTranscode: each input file needs one description");
  for (std::size_t place = 0; place < inputs.size(); ++place) {
    describePart(context, inputs[place].part, media[place]);
    if (context.groups.empty() || context.groups.back().number != inputs[place].group) {
      context.groups.push_back({inputs[place].group, {}});
    }
    context.groups.back().parts.push_back(inputs[place].part);
  }
  const bool isUnnumbered = std::ranges::any_of(context.errors, [](const TranscodePlanError& each) {
    return each.code == TranscodePlanErrorCode::unnumberedFlag && each.place.starts_with(SAVInputPrefixFlag.rawValue());
  });
  if (inputs.empty() && !isUnnumbered) context.fail(TranscodePlanErrorCode::noInput, SAVInputPrefixFlag.rawValue());
  for (SourceGroup& group : context.groups) {
    const SourcePart* const first = group.firstDescribed();
    group.isImageSequence = std::ranges::all_of(group.parts, isSingleImage) ||
                            (first != nullptr && first->media->container == SLVMediaFileContainerImageSequence);
    if (first != nullptr) checkParts(context, group);
    if (group.isImageSequence && context.keepsVideo) checkNumbers(context, group);
  }
  findImage(context);
  warnOfOtherStreams(context);
  for (const SourceGroup& group : context.groups) {
    const bool givesImage = context.keepsVideo && context.image && context.image->group == &group;
    context.plan.sources.push_back(plannedSource(group, givesImage));
  }
}

}  // namespace meridian::inline v0_2
