#include "meridian/serialization/transcode_plan_json.h"

#include "meridian/engine/transcode_plan_text.h"
#include "meridian/serialization/media_json.h"

namespace meridian::inline v0_2 {
namespace {

using PlanJson = nlohmann::ordered_json;

template <typename Value>
PlanJson planValueOrNull(const std::optional<Value>& value) {
  return value ? PlanJson(*value) : PlanJson();
}

PlanJson planTextOrNull(const std::string& text) { return text.empty() ? PlanJson() : PlanJson(text); }

/// Encodes a list, each element by the function.
PlanJson encodedList(const auto& list, auto encode) {
  PlanJson json = PlanJson::array();
  for (const auto& each : list) json.push_back(encode(each));
  return json;
}

PlanJson encodedOptions(const std::vector<PlannedOption>& options) {
  PlanJson json = PlanJson::object();
  for (const PlannedOption& option : options) json[option.name] = option.value;
  return json;
}

PlanJson encodedRatio(const MediaRational& ratio) { return ratio.rational(); }

PlanJson encodedImage(const ImageForm& image) {
  return {{"width", image.width},
          {"height", image.height},
          {"pixelAspectRatio", encodedRatio(image.pixelAspectRatio)},
          {"pixelFormat", image.pixelFormat},
          {"bitDepth", image.bitDepth},
          {"chroma", rawValue(image.chroma)},
          {"hasAlpha", image.hasAlpha},
          {"range", rawValue(image.range)},
          {"color",
           {{"primaries", image.color.primaries},
            {"transfer", image.color.transfer},
            {"matrix", image.color.matrix},
            {"name", nameOf(image.color)}}},
          {"isInterlaced", image.isInterlaced},
          {"frameRate", image.frameRate}};
}

PlanJson encodedStyle(const TextStyle& style) {
  return {{"anchor", style.anchor.rawValue()},
          {"fontSize", style.fontSize},
          {"margin", style.margin},
          {"fontColor", style.fontColor.text()},
          {"boxColor", style.boxColor.text()}};
}

/// Encodes the members of a step.
struct StepMembers {
  PlanJson operator()(const DeinterlaceStep&) const { return PlanJson::object(); }
  PlanJson operator()(const RateStep&) const { return PlanJson::object(); }
  PlanJson operator()(const RotateStep& step) const {
    return {{"degrees", step.degrees}, {"isMirrored", step.isMirrored}};
  }
  PlanJson operator()(const ScaleStep&) const { return PlanJson::object(); }
  PlanJson operator()(const CropStep& step) const {
    return {{"x", step.x}, {"y", step.y}, {"anchor", rawValue(step.anchor)}};
  }
  PlanJson operator()(const PadStep& step) const { return {{"x", step.x}, {"y", step.y}}; }
  PlanJson operator()(const ColorStep&) const { return PlanJson::object(); }
  PlanJson operator()(const FormatStep&) const { return PlanJson::object(); }
  PlanJson operator()(const LutStep& step) const {
    return {{"path", step.path},
            {"interpolation", rawValue(step.interpolation)},
            {"axisOrder", rawValue(step.axisOrder)},
            {"domain", rawValue(step.domain)},
            {"rounding", rawValue(step.rounding)}};
  }
  PlanJson operator()(const TimecodeBurnStep& step) const { return {{"style", encodedStyle(step.style)}}; }
  PlanJson operator()(const TextBurnStep& step) const {
    return {{"text", step.text}, {"style", encodedStyle(step.style)}};
  }
  PlanJson operator()(const WatermarkStep& step) const {
    return {{"path", step.path},        {"anchor", step.anchor.rawValue()},
            {"width", step.size.width}, {"height", step.size.height},
            {"scale", step.scale},      {"margin", step.margin}};
  }
};

PlanJson encodedStep(const PlannedStep& step) {
  PlanJson json{{"step", nameOf(step.step)}};
  json.update(std::visit(StepMembers(), step.step));
  json["result"] = encodedImage(step.result);
  return json;
}

PlanJson encodedEncoder(const PlannedVideoEncoder& encoder) {
  return {{"codec", encoder.codec.rawValue()},
          {"name", encoder.name},
          {"pixelFormat", rawValue(encoder.pixelFormat)},
          {"tag", planTextOrNull(encoder.tag)},
          {"profile", planTextOrNull(encoder.profile)},
          {"bitRate", planValueOrNull(encoder.bitRate)},
          {"quantizer", planValueOrNull(encoder.quantizer)},
          {"keepsFields", encoder.keepsFields},
          {"fieldOrder", rawValue(encoder.fieldOrder)},
          {"usesGpu", encoder.usesGpu},
          {"options", encodedOptions(encoder.options)}};
}

PlanJson encodedVideo(const PlannedVideo& video) {
  return {{"stream", video.stream},
          {"codecName", video.codecName},
          {"isCopied", video.isCopied()},
          {"decodesOnGpu", video.decodesOnGpu},
          {"source", encodedImage(video.source)},
          {"isColorAssumed", video.isColorAssumed},
          {"isVariable", video.isVariable},
          {"isColorStated", video.isColorStated},
          {"rotation", video.rotation},
          {"steps", encodedList(video.steps, encodedStep)},
          {"encoder", video.encoder ? encodedEncoder(*video.encoder) : PlanJson()},
          {"encoderWithoutGpu", video.encoderWithoutGpu ? encodedEncoder(*video.encoderWithoutGpu) : PlanJson()},
          {"frameCount", planValueOrNull(video.frameCount)}};
}

PlanJson encodedTrack(const PlannedAudioTrack& track) {
  return {
      {"origins", encodedList(track.origins,
                              [](const AudioOrigin& origin) -> PlanJson {
                                return {{"group", origin.group}, {"stream", origin.stream}, {"track", origin.track}};
                              })},
      {"isCopied", track.isCopied()},
      {"copiedCodec", planTextOrNull(track.copiedCodec)},
      {"encoder", planTextOrNull(track.encoder)},
      {"sampleFormat", planTextOrNull(track.sampleFormat)},
      {"sampleRate", track.sampleRate},
      {"sourceSampleRate", track.sourceSampleRate},
      {"bits", planValueOrNull(track.bits)},
      {"channelCount", track.channelCount},
      {"sourceChannels",
       encodedList(track.sourceChannels, [](ChannelLabel label) -> PlanJson { return description(label); })},
      {"channels", encodedList(track.channels, [](ChannelLabel label) -> PlanJson { return description(label); })},
      {"channelLabels", encodedList(track.channels, [](ChannelLabel label) -> PlanJson { return rawValue(label); })},
      {"layoutTag", planValueOrNull(track.layoutTag)},
      {"bitRate", planValueOrNull(track.bitRate)},
      {"language", planTextOrNull(track.language)}};
}

PlanJson encodedSource(const PlannedSource& source) {
  return {{"group", source.group},
          {"givesImage", source.givesImage},
          {"isImageSequence", source.isImageSequence},
          {"parts", encodedList(source.parts, [](const PlannedPart& part) -> PlanJson {
             return {{"flag", part.flag},
                     {"path", part.path},
                     {"duration", part.duration ? encodedRatio(*part.duration) : PlanJson()},
                     {"frameCount", planValueOrNull(part.frameCount)}};
           })}};
}

PlanJson encodedTimecode(const PlannedTimecode& timecode) {
  return {
      {"source", rawValue(timecode.source)},
      {"start", timecode.start},
      {"text", timecode.start.timecodeString()},
      {"rate", timecode.rate},
      {"isAssumed", timecode.isAssumed},
      {"isInTrack", timecode.isInTrack},
      {"partStarts", encodedList(timecode.partStarts, [](const std::optional<TimecodeComponents>& each) -> PlanJson {
         return each ? PlanJson(*each) : PlanJson();
       })}};
}

PlanJson encodedOutput(const PlannedOutput& output) {
  return {{"path", output.path},
          {"container", rawValue(output.container)},
          {"options", encodedOptions(output.options)},
          {"tags", encodedOptions(output.tags)},
          {"replacesExisting", output.replacesExisting},
          {"mayReplace", output.mayReplace},
          {"workDirectory", planTextOrNull(output.workDirectory)},
          {"progressFile", planTextOrNull(output.progressFile)},
          {"progressPrefix", planValueOrNull(output.progressPrefix)}};
}

PlanJson encodedMessage(const auto& errorOrWarning) {
  return {{"code", rawValue(errorOrWarning.code)},
          {"place", errorOrWarning.place},
          {"text", errorOrWarning.text()},
          {"detail", planTextOrNull(errorOrWarning.detail)},
          {"remedy", planTextOrNull(std::string(errorOrWarning.remedy()))},
          {"message", errorOrWarning.message()}};
}

}  // namespace

void to_json(nlohmann::ordered_json& json, const TranscodePlan& plan) {
  json = PlanJson{
      {"sources", encodedList(plan.sources, encodedSource)},
      {"video", plan.video ? encodedVideo(*plan.video) : PlanJson()},
      {"audio", encodedList(plan.audio, encodedTrack)},
      {"timecode", plan.timecode ? encodedTimecode(*plan.timecode) : PlanJson()},
      {"output", encodedOutput(plan.output)},
      {"warnings", encodedList(plan.warnings, [](const TranscodePlanWarning& each) { return encodedMessage(each); })}};
}

void to_json(nlohmann::ordered_json& json, const TranscodePlanError& error) { json = encodedMessage(error); }

void to_json(nlohmann::ordered_json& json, const TranscodePlanWarning& warning) { json = encodedMessage(warning); }

}  // namespace meridian::inline v0_2
