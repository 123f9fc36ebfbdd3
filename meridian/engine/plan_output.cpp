// The output of a transcode: its container, its path, and what happens around it.
#include <algorithm>
#include <array>

#include "meridian/base/is_in.h"
#include "meridian/base/joined.h"
#include "meridian/base/printable.h"
#include "meridian/engine/creation_date.h"
#include "meridian/engine/plan_context.h"
#include "meridian/engine/video_encoders.h"
#include "meridian/media/file_extension.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {
namespace {

/// Returns the extensions that the format and the codec allow, as text: ".mov, .mp4".
std::string allowedExtensions(const std::optional<SAVTranscodeArgumentFileFormatValue>& format,
                              const std::optional<SAVTranscodeArgumentVideoCodecValue>& codec) {
  // Another extension of the format does not change what its container holds.
  if (format && codec && !holdsEncoded(*containerOfFormat(*format), *codec)) return {};
  std::vector<std::string> texts;
  const auto fits = [&](FileExtension extension) {
    return (!format || isIn(format->validExtensions(), extension)) &&
           (!codec || isIn(codec->permittedExtensions(), extension));
  };
  for (const OutputContainer container : allCases<OutputContainer>()) {
    if (fits(tableRow(container).extension)) texts.push_back(path(tableRow(container).extension));
  }
  return joined(texts, ", ");
}

/// Chooses the container by the format, or else by the extension, or else by a codec that only one container holds.
void chooseContainer(PlanContext& context) {
  const std::string_view outFlag = SAVOutputFileFlag.rawValue();
  const auto format = context.oneOf<SAVTranscodeArgumentFileFormatValue>(SAVFileFormatFlag.rawValue());
  const bool hasVideo = context.arguments.includeVideo() && format != SAVWaveFileFormat;
  const auto codec = hasVideo ? context.arguments.videoFormat() : std::nullopt;
  const std::string_view extensionText = pathExtension(context.plan.output.path);
  const auto extension = fileExtensionIgnoringCase(extensionText);
  if (format) context.container = containerOfFormat(*format);
  if (extensionText.empty()) {
    if (!context.container && codec && codec->permittedExtensions().size() == 1) {
      context.container = containerOfExtension(codec->permittedExtensions().front());
    }
    if (!context.container) {
      context.fail(TranscodePlanErrorCode::unknownContainer, outFlag, {},
                   "end the name in one of " + allowedExtensions(format, codec) + ", or set -file_format");
    }
    return;
  }
  const auto byExtension = extension ? containerOfExtension(*extension) : std::nullopt;
  if (!context.container) context.container = byExtension;
  // Wave leaves video out, so that its codec does not matter.
  const auto relevantCodec = context.container == OutputContainer::wav ? std::nullopt : codec;
  const auto isAllowed = [&](std::span<const FileExtension> extensions) {
    return extension && isIn(extensions, *extension);
  };
  const bool fitsFormat = format ? isAllowed(format->validExtensions()) : byExtension.has_value();
  const bool fitsCodec = !relevantCodec || isAllowed(relevantCodec->permittedExtensions());
  if (fitsFormat && fitsCodec) return;
  std::string subject = format ? "-file_format " + format->string() : "";
  if (relevantCodec) subject += (subject.empty() ? "" : " and ") + ("-vcodec " + relevantCodec->string());
  const std::string allowed = allowedExtensions(format, relevantCodec);
  if (subject.empty()) {
    context.fail(TranscodePlanErrorCode::wrongExtension, outFlag, {}, "use " + allowed);
  } else if (allowed.empty()) {
    context.fail(TranscodePlanErrorCode::wrongExtension, outFlag, "no extension fits " + subject,
                 "change -file_format or -vcodec");
  } else {
    context.fail(TranscodePlanErrorCode::wrongExtension, outFlag, {}, "with " + subject + " use " + allowed);
  }
}

/// Returns the file that the transcode reads and that is also at the path: as found out, or by the same text.
std::optional<std::string> writtenOver(const PlanContext& context, std::string_view path,
                                       const std::optional<std::string>& found) {
  if (found) return found;
  const auto isRead = [](std::string_view flag) {
    return flag == SAVColorLutFileFlag.rawValue() || flag == SAVWatermarkFileBurnFilePathFlag.rawValue() ||
           TranscodeCliArguments::isInputFileFlag(flag);
  };
  const bool isWritten = std::ranges::any_of(
      context.words.settings, [&](const ExplainedSetting& each) { return each.value == path && isRead(each.flag); });
  const auto& watermark = context.surroundings.watermark;
  const bool isWatermark = watermark && *watermark && (*watermark)->path == path;
  return isWritten || isWatermark ? std::optional(std::string(path)) : std::nullopt;
}

/// Says which file it is, if it has another name.
std::string otherName(std::string_view file, std::string_view path) {
  return file == path ? "" : "which is " + inQuotes(file);
}

void checkPath(PlanContext& context) {
  using enum TranscodePlanErrorCode;
  const OutputState& state = context.surroundings.output;
  const std::string_view flag = SAVOutputFileFlag.rawValue();
  const bool mayReplace = context.has(SAVOverwriteExistingFlag.rawValue());
  if (state.isDirectory || context.plan.output.path.ends_with('/')) {
    context.fail(outputIsDirectory, flag);
    return;
  }
  if (state.isSpecial) {
    context.fail(outputIsSpecial, flag);
    return;
  }
  if (!state.directoryExists) {
    context.fail(directoryMissing, flag);
  } else if (state.nameIsTooLong) {
    context.fail(nameTooLong, flag);
  } else if (!state.directoryIsWritable) {
    context.fail(directoryNotWritable, flag);
  }
  const auto written = writtenOver(context, context.plan.output.path, state.sameSource);
  if (written) {
    context.fail(outputIsSource, flag, otherName(*written, context.plan.output.path));
  } else if (state.exists && !mayReplace) {
    context.fail(outputExists, flag);
  }
  context.plan.output.mayReplace = mayReplace;
  context.plan.output.replacesExisting = state.exists && mayReplace;
}

/// A tag that goes along with the media, by its name in QuickTime files.
struct KeptTag {
  std::string_view name;
  /// What a warning calls it.
  std::string_view meaning;
  std::string_view (*of)(const MediaDescription& media);
};

constexpr auto keptTags = std::to_array<KeptTag>({
    {"com.apple.quicktime.creationdate", "the date of creation",
     [](const MediaDescription& media) { return std::string_view(media.creationDate); }},
    // In the header of the movie, where most programs look for it.
    {"creation_time", "",
     [](const MediaDescription& media) {
       const std::string_view time = tagValue(media.tags, "creation_time").value_or("");
       const auto read = creationDateFrom(time);
       return read && read->isUtc ? time : std::string_view();
     }},
    {"com.apple.quicktime.make", "the maker",
     [](const MediaDescription& media) { return std::string_view(media.maker); }},
    {"com.apple.quicktime.model", "the model",
     [](const MediaDescription& media) { return std::string_view(media.model); }},
    {"reel_name", "the reel", [](const MediaDescription& media) { return std::string_view(media.reelName); }},
});

/// Plans the tags of the source; warns of those that the container does not keep.
void planTags(PlanContext& context, const OutputContainerRow& row) {
  const SourcePart* source = context.image ? context.image->part : nullptr;
  for (const SourceGroup& group : context.groups) {
    if (source == nullptr) source = group.firstDescribed();
  }
  if (source == nullptr) return;
  std::vector<std::string> lost;
  for (const KeptTag& tag : keptTags) {
    const std::string_view value = tag.of(*source->media);
    if (value.empty()) continue;
    if (row.keepsTags) context.plan.output.tags.push_back({std::string(tag.name), std::string(value)});
    if (!row.keepsTags && !tag.meaning.empty()) lost.emplace_back(tag.meaning);
  }
  if (!lost.empty()) context.warn(TranscodePlanWarningCode::tagsLeftOut, context.containerFlag(), joined(lost, ", "));
}

}  // namespace

void planOutput(PlanContext& context) {
  PlannedOutput& output = context.plan.output;
  output.path = context.value<std::string>(SAVOutputFileFlag.rawValue()).value_or("");
  if (!context.isSet(SAVOutputFileFlag.rawValue())) {
    context.fail(TranscodePlanErrorCode::noOutput, SAVOutputFileFlag.rawValue());
  } else if (!output.path.empty()) {
    checkPath(context);
    const OutputState& state = context.surroundings.output;
    if (!output.path.ends_with('/') && !state.isDirectory && !state.isSpecial) chooseContainer(context);
  }
  if (context.container) {
    const OutputContainerRow& row = tableRow(*context.container);
    output.container = row.value;
    if (!context.inventory.hasMuxer(row.rawValue)) {
      context.fail(TranscodePlanErrorCode::muxerMissing, context.containerFlag(), std::string(row.rawValue));
    }
  }
  context.keepsVideo =
      !context.has(SAVNoVideoFlag.rawValue()) && (!context.container || tableRow(*context.container).holdsVideo);

  output.workDirectory = context.value<std::string>(SAVWorkDirectoryFlag.rawValue()).value_or("");
  if (!output.workDirectory.empty() && !context.surroundings.output.workDirectoryIsUsable) {
    context.fail(TranscodePlanErrorCode::workDirectoryNotUsable, SAVWorkDirectoryFlag.rawValue());
  }
  output.progressFile = context.value<std::string>(SAVProgressFileFlag.rawValue()).value_or("");
  if (!output.progressFile.empty()) {
    const OutputState& state = context.surroundings.output;
    auto written = writtenOver(context, output.progressFile, state.sameAsProgressFile);
    if (!written && output.progressFile == output.path) written = output.path;
    if (written) {
      context.fail(TranscodePlanErrorCode::progressFileInUse, SAVProgressFileFlag.rawValue(),
                   otherName(*written, output.progressFile));
    } else if (!state.progressFileIsWritable) {
      context.fail(TranscodePlanErrorCode::progressFileNotMade, SAVProgressFileFlag.rawValue());
    }
  }
  output.progressPrefix = context.value<std::string>(SAVProgressOutputPrefixFlag.rawValue());
}

void planContainerOptions(PlanContext& context) {
  if (!context.container) return;
  const OutputContainerRow& row = tableRow(*context.container);
  PlannedOutput& output = context.plan.output;
  std::string flags;
  if (row.hasIndex) {
    if (context.has(SAVPrepareForWebFlag.rawValue())) flags += "+faststart";
    if (row.keepsTags) flags += "+use_metadata_tags";
  } else {
    context.ignore(SAVPrepareForWebFlag.rawValue(), "the container has no index to put in front");
  }
  if (!flags.empty()) output.options.push_back({"movflags", flags});
  // The muxer writes a track by itself where it finds a timecode among the tags.
  if (row.timecode == TimecodeStorage::track) {
    const bool hasTrack = context.plan.timecode && context.plan.timecode->isInTrack;
    output.options.push_back({"write_tmcd", hasTrack ? "1" : "0"});
  }
  if (*context.container == OutputContainer::wav) output.options.push_back({"rf64", "auto"});
  planTags(context, row);
}

}  // namespace meridian::inline v0_2
