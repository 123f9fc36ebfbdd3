#include "meridian/engine/transcode_plan_json.h"

#include "meridian/engine/transcode_plan_text.h"
#include "meridian/serialization/media_json.h"

namespace meridian::inline v0_2 {
namespace {

using Json = nlohmann::ordered_json;

template <typename Value>
Json orNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json();
}

Json textOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

/// Encodes a list, each element by the function.
Json listOf(const auto& list, auto encode) {
  Json json = Json::array();
  for (const auto& each : list) json.push_back(encode(each));
  return json;
}

Json optionsJson(const std::vector<PlannedOption>& options) {
  Json json = Json::object();
  for (const PlannedOption& option : options) json[option.name] = option.value;
  return json;
}

Json ratioJson(const MediaRational& ratio) { return ratio.rational(); }

Json imageJson(const ImageForm& image) {
  return {{"width", image.width},
          {"height", image.height},
          {"pixelAspectRatio", ratioJson(image.pixelAspectRatio)},
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

Json styleJson(const TextStyle& style) {
  return {{"anchor", style.anchor.rawValue()},
          {"fontSize", style.fontSize},
          {"margin", style.margin},
          {"fontColor", style.fontColor.text()},
          {"boxColor", style.boxColor.text()}};
}

/// Encodes the members of a step.
struct StepMembers {
  Json operator()(const DeinterlaceStep&) const { return Json::object(); }
  Json operator()(const RateStep&) const { return Json::object(); }
  Json operator()(const RotateStep& step) const { return {{"degrees", step.degrees}, {"isMirrored", step.isMirrored}}; }
  Json operator()(const ScaleStep&) const { return Json::object(); }
  Json operator()(const CropStep& step) const {
    return {{"x", step.x}, {"y", step.y}, {"anchor", rawValue(step.anchor)}};
  }
  Json operator()(const PadStep& step) const { return {{"x", step.x}, {"y", step.y}}; }
  Json operator()(const ColorStep&) const { return Json::object(); }
  Json operator()(const FormatStep&) const { return Json::object(); }
  Json operator()(const LutStep& step) const {
    return {{"path", step.path},
            {"interpolation", rawValue(step.interpolation)},
            {"axisOrder", rawValue(step.axisOrder)},
            {"domain", rawValue(step.domain)},
            {"rounding", rawValue(step.rounding)}};
  }
  Json operator()(const TimecodeBurnStep& step) const { return {{"style", styleJson(step.style)}}; }
  Json operator()(const TextBurnStep& step) const { return {{"text", step.text}, {"style", styleJson(step.style)}}; }
  Json operator()(const WatermarkStep& step) const {
    return {{"path", step.path},        {"anchor", step.anchor.rawValue()},
            {"width", step.size.width}, {"height", step.size.height},
            {"scale", step.scale},      {"margin", step.margin}};
  }
};

Json stepJson(const PlannedStep& step) {
  Json json{{"step", nameOf(step.step)}};
  json.update(std::visit(StepMembers(), step.step));
  json["result"] = imageJson(step.result);
  return json;
}

Json encoderJson(const PlannedVideoEncoder& encoder) {
  return {{"codec", encoder.codec.rawValue()},
          {"name", encoder.name},
          {"pixelFormat", rawValue(encoder.pixelFormat)},
          {"tag", textOrNull(encoder.tag)},
          {"profile", textOrNull(encoder.profile)},
          {"bitRate", orNull(encoder.bitRate)},
          {"keepsFields", encoder.keepsFields},
          {"usesGpu", encoder.usesGpu},
          {"options", optionsJson(encoder.options)}};
}

Json videoJson(const PlannedVideo& video) {
  return {{"stream", video.stream},
          {"codecName", video.codecName},
          {"isCopied", video.isCopied()},
          {"decodesOnGpu", video.decodesOnGpu},
          {"source", imageJson(video.source)},
          {"isColorAssumed", video.isColorAssumed},
          {"rotation", video.rotation},
          {"steps", listOf(video.steps, stepJson)},
          {"encoder", video.encoder ? encoderJson(*video.encoder) : Json()},
          {"frameCount", orNull(video.frameCount)}};
}

Json trackJson(const PlannedAudioTrack& track) {
  return {{"origins", listOf(track.origins,
                             [](const AudioOrigin& origin) -> Json {
                               return {{"group", origin.group}, {"stream", origin.stream}, {"track", origin.track}};
                             })},
          {"isCopied", track.isCopied()},
          {"copiedCodec", textOrNull(track.copiedCodec)},
          {"encoder", textOrNull(track.encoder)},
          {"sampleFormat", textOrNull(track.sampleFormat)},
          {"sampleRate", track.sampleRate},
          {"bits", orNull(track.bits)},
          {"channelCount", track.channelCount},
          {"channels", listOf(track.channels, [](ChannelLabel label) -> Json { return description(label); })},
          {"channelLabels", listOf(track.channels, [](ChannelLabel label) -> Json { return rawValue(label); })},
          {"layoutTag", orNull(track.layoutTag)},
          {"bitRate", orNull(track.bitRate)},
          {"language", textOrNull(track.language)}};
}

Json sourceJson(const PlannedSource& source) {
  return {{"group", source.group},
          {"givesImage", source.givesImage},
          {"isImageSequence", source.isImageSequence},
          {"parts", listOf(source.parts, [](const PlannedPart& part) -> Json {
             return {{"flag", part.flag},
                     {"path", part.path},
                     {"duration", part.duration ? ratioJson(*part.duration) : Json()},
                     {"frameCount", orNull(part.frameCount)}};
           })}};
}

Json timecodeJson(const PlannedTimecode& timecode) {
  return {{"source", rawValue(timecode.source)},
          {"start", timecode.start},
          {"text", timecode.start.timecodeString()},
          {"rate", timecode.rate},
          {"isInTrack", timecode.isInTrack},
          {"partStarts", listOf(timecode.partStarts, [](const TimecodeComponents& each) -> Json { return each; })}};
}

Json outputJson(const PlannedOutput& output) {
  return {{"path", output.path},
          {"container", rawValue(output.container)},
          {"options", optionsJson(output.options)},
          {"tags", optionsJson(output.tags)},
          {"replacesExisting", output.replacesExisting},
          {"workDirectory", textOrNull(output.workDirectory)},
          {"progressFile", textOrNull(output.progressFile)},
          {"progressPrefix", orNull(output.progressPrefix)}};
}

Json messageJson(const auto& errorOrWarning) {
  return {
      {"code", rawValue(errorOrWarning.code)}, {"place", errorOrWarning.place}, {"message", errorOrWarning.message()}};
}

}  // namespace

void to_json(nlohmann::ordered_json& json, const TranscodePlan& plan) {
  json = Json{{"sources", listOf(plan.sources, sourceJson)},
              {"video", plan.video ? videoJson(*plan.video) : Json()},
              {"audio", listOf(plan.audio, trackJson)},
              {"timecode", plan.timecode ? timecodeJson(*plan.timecode) : Json()},
              {"output", outputJson(plan.output)},
              {"warnings", listOf(plan.warnings, [](const TranscodePlanWarning& each) { return messageJson(each); })}};
}

void to_json(nlohmann::ordered_json& json, const TranscodePlanError& error) { json = messageJson(error); }

void to_json(nlohmann::ordered_json& json, const TranscodePlanWarning& warning) { json = messageJson(warning); }

}  // namespace meridian::inline v0_2
