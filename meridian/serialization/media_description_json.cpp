#include "meridian/serialization/media_description_json.h"

#include <optional>
#include <string>
#include <string_view>

#include "meridian/media/file_extension.h"
#include "meridian/media/media_names.h"
#include "meridian/platform/path_text.h"
#include "meridian/serialization/media_json.h"

namespace meridian::inline v0_2 {
namespace {

using DescriptionJson = nlohmann::ordered_json;

DescriptionJson textOrNull(std::string_view text) { return text.empty() ? DescriptionJson() : DescriptionJson(text); }

DescriptionJson orNull(const std::optional<MediaRational>& ratio) {
  return ratio ? DescriptionJson(ratio->rational()) : DescriptionJson();
}

DescriptionJson secondsOrNull(const std::optional<MediaRational>& ratio) {
  return ratio ? DescriptionJson(ratio->rawValue()) : DescriptionJson();
}

template <typename Value>
DescriptionJson orNull(const std::optional<Value>& value) {
  if (!value) return {};
  if constexpr (TabledEnumeration<Value>) {
    return rawValue(*value);
  } else if constexpr (requires { value->rawValue().size(); }) {
    return value->rawValue();
  } else {
    return *value;
  }
}

DescriptionJson encodedTags(const std::vector<MediaTag>& tags) {
  DescriptionJson list = DescriptionJson::array();
  for (const MediaTag& tag : tags) list.push_back({{"key", tag.key}, {"value", tag.value}});
  return list;
}

DescriptionJson encodedCode(const ColorCode& code) { return {{"number", code.number}, {"name", code.name}}; }

/// Adds what every kind of stream ends with.
void addShared(DescriptionJson& json, const StreamDescription& stream) {
  json["bitRate"] = orNull(stream.bitRate);
  json["startTime"] = orNull(stream.startTime);
  json["duration"] = orNull(stream.duration);
  json["language"] = textOrNull(stream.language);
  json["isDecodable"] = stream.isDecodable;
  json["tags"] = encodedTags(stream.tags);
}

DescriptionJson encodedStream(const VideoStreamDescription& video) {
  DescriptionJson json{
      {"stream", video.index},
      {"codec", orNull(video.codec)},
      {"codecName", textOrNull(video.codecName)},
      {"format", orNull(video.format)},
      {"profile", textOrNull(video.profile)},
      {"level", orNull(video.level)},
      {"codecTag", textOrNull(video.codecTag)},
      {"width", video.width},
      {"height", video.height},
      {"displayWidth", video.displayWidth},
      {"displayHeight", video.displayHeight},
      {"pixelAspectRatio", video.pixelAspectRatio.rational()},
      {"rotation", video.rotation},
      {"isMirrored", video.isMirrored},
      {"videoDimension", video.videoDimension().tag()},
      {"frameRate", orNull(video.frameRate)},
      {"frameRateText", video.frameRate ? DescriptionJson(video.frameRate->formattedString()) : DescriptionJson()},
      {"exactFrameRate", orNull(video.exactFrameRate)},
      {"averageFrameRate", orNull(video.averageFrameRate)},
      {"isVariable", video.isVariable},
      {"frameCount", orNull(video.frameCount)},
      {"fieldOrder", rawValue(video.fieldOrder)},
      {"pixelFormat", textOrNull(video.pixelFormat)},
      {"bitDepth", orNull(video.bitDepth)},
      {"chroma", orNull(video.chroma)},
      {"hasAlpha", video.hasAlpha},
      {"range", rawValue(video.range)},
      {"primaries", encodedCode(video.primaries)},
      {"transfer", encodedCode(video.transfer)},
      {"matrix", encodedCode(video.matrix)},
      {"colorSource", orNull(video.colorSource)},
      {"colorSpace", orNull(video.colorSpace)},
      {"isAttachedImage", video.isAttachedImage},
  };
  addShared(json, video);
  return json;
}

DescriptionJson encodedStream(const AudioStreamDescription& audio) {
  DescriptionJson labels = DescriptionJson::array();
  for (const AudioChannelDescription& channel : audio.channels) {
    labels.push_back({{"number", orNull(channel.label)}, {"name", textOrNull(channel.name)}});
  }
  DescriptionJson json{
      {"stream", audio.index},
      {"track", audio.track},
      {"codec", textOrNull(audio.codecName)},
      {"format", orNull(audio.format)},
      {"profile", textOrNull(audio.profile)},
      {"codecTag", textOrNull(audio.codecTag)},
      {"sampleRate", audio.sampleRate},
      {"bitsPerChannel", orNull(audio.bitsPerChannel)},
      {"sampleFormat", textOrNull(audio.sampleFormat)},
      {"channels", audio.channelCount},
      {"channelLayout", orNull(audio.channelLayout)},
      {"layoutName", textOrNull(audio.layoutName)},
      {"channelLayoutTag", orNull(audio.channelLayoutTag)},
      {"channelBitmap", orNull(audio.channelBitmap)},
      {"channelLabels", std::move(labels)},
  };
  addShared(json, audio);
  return json;
}

DescriptionJson encodedStream(const OtherStreamDescription& other) {
  DescriptionJson json{
      {"stream", other.index},
      {"kind", rawValue(other.kind)},
      {"codec", textOrNull(other.codecName)},
      {"codecTag", textOrNull(other.codecTag)},
  };
  addShared(json, other);
  return json;
}

template <typename Streams>
DescriptionJson encodedStreams(const Streams& streams) {
  DescriptionJson list = DescriptionJson::array();
  for (const auto& stream : streams) list.push_back(encodedStream(stream));
  return list;
}

/// Adds the members of the timecode, all of them null without one.
void addTimecode(DescriptionJson& json, const std::optional<TimecodeDescription>& timecode) {
  const auto end = timecode ? timecode->end : std::nullopt;
  json["startTimecode"] = timecode ? DescriptionJson(timecode->start) : DescriptionJson();
  json["startTimecodeText"] = timecode ? DescriptionJson(timecode->start.timecodeString()) : DescriptionJson();
  json["endTimecode"] = orNull(end);
  json["endTimecodeText"] = end ? DescriptionJson(end->timecodeString()) : DescriptionJson();
  json["timecodeRate"] = timecode ? DescriptionJson(timecode->rate) : DescriptionJson();
  json["timecodeSource"] = timecode ? rawValue(timecode->source) : "none";
  json["isDropFrame"] = timecode ? DescriptionJson(timecode->start.isDropFrame) : DescriptionJson();
}

/// Returns null for a directory, and for an extension that the suite does not know.
DescriptionJson encodedExtension(const MediaDescription& description) {
  if (description.container == SLVMediaFileContainerImageSequence) return {};
  const auto extension = fileExtensionIgnoringCase(pathExtension(description.path));
  return extension ? textOrNull(rawValue(*extension)) : DescriptionJson();
}

}  // namespace

void to_json(nlohmann::ordered_json& json, const MediaDescription& description) {
  const VideoStreamDescription* const video = description.mainVideo();
  const auto& corporation = description.corporation;
  json = {
      {"path", description.path},
      {"size", description.size},
      {"extension", encodedExtension(description)},
      {"container", orNull(description.container)},
      {"recordingFormat", orNull(description.recordingFormat)},
      {"formatName", description.formatName},
      {"corporation", corporation ? DescriptionJson(meridian::description(*corporation)) : DescriptionJson()},
      {"isHardwareManufacturer",
       corporation ? DescriptionJson(isHardwareManufacturer(*corporation)) : DescriptionJson()},
      {"maker", textOrNull(description.maker)},
      {"model", textOrNull(description.model)},
      {"reelName", textOrNull(description.reelName)},
      {"creationDate", textOrNull(description.creationDate)},
      {"startTime", orNull(description.startTime)},
      {"duration", orNull(description.duration)},
      {"seconds", secondsOrNull(description.duration)},
      {"bitRate", orNull(description.bitRate)},
      {"frameCount", video != nullptr ? orNull(video->frameCount) : DescriptionJson()},
  };
  addTimecode(json, description.timecode);
  json["video"] = encodedStreams(description.video);
  json["audio"] = encodedStreams(description.audio);
  json["others"] = encodedStreams(description.others);
  json["tags"] = encodedTags(description.tags);
  DescriptionJson warnings = DescriptionJson::array();
  for (const MediaWarning& warning : description.warnings) {
    warnings.push_back({{"code", rawValue(warning.code)}, {"message", warning.message()}});
  }
  json["warnings"] = std::move(warnings);
}

}  // namespace meridian::inline v0_2
