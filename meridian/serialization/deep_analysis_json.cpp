#include "meridian/serialization/deep_analysis_json.h"

#include <cmath>
#include <optional>
#include <vector>

#include "meridian/serialization/media_json.h"

namespace meridian::inline v0_2 {
namespace {

using Json = nlohmann::ordered_json;

/// Rounds to a billionth, so that 0.1 + 0.2 is written as 0.3.
Json number(double value) {
  constexpr double billion = 1e9;
  return std::round(value * billion) / billion;
}

Json number(const std::optional<double>& value) { return value ? number(*value) : Json(); }

Json encoded(const std::vector<MediaInterval>& intervals) {
  Json list = Json::array();
  for (const MediaInterval& each : intervals)
    list.push_back({{"start", number(each.start)}, {"end", number(each.end)}});
  return list;
}

Json encoded(const std::optional<FieldCounts>& fields) {
  if (!fields) return nullptr;
  return {{"seen", rawValue(fields->seen())},
          {"progressive", fields->progressive},
          {"topFirst", fields->topFirst},
          {"bottomFirst", fields->bottomFirst},
          {"undetermined", fields->undetermined}};
}

Json encoded(const LumaStatistics& luma) {
  return {{"bitDepth", luma.bitDepth},
          {"range", rawValue(luma.range)},
          {"minimum", luma.minimum},
          {"low", luma.low},
          {"average", number(luma.average)},
          {"high", luma.high},
          {"maximum", luma.maximum},
          {"belowBlack", number(luma.belowBlack)},
          {"aboveWhite", number(luma.aboveWhite)},
          {"histogram", luma.histogram}};
}

Json encoded(const std::optional<DeepVideoAnalysis>& video) {
  if (!video) return nullptr;
  Json changes = Json::array();
  for (const SceneChange& each : video->sceneChanges) {
    changes.push_back({{"frame", each.frame}, {"seconds", number(each.seconds)}, {"score", number(each.score)}});
  }
  return {{"frameCount", video->frameCount},
          {"seconds", number(video->seconds)},
          {"shortestFrame", number(video->shortestFrame)},
          {"longestFrame", number(video->longestFrame)},
          {"isVariable", video->isVariable},
          {"black", encoded(video->black)},
          {"frozen", encoded(video->frozen)},
          {"sceneChanges", std::move(changes)},
          {"fields", encoded(video->fields)},
          {"luma", encoded(video->luma)},
          {"md5", video->md5}};
}

Json encoded(const std::optional<Loudness>& loudness) {
  if (!loudness) return nullptr;
  return {{"integrated", number(loudness->integrated)},
          {"range", number(loudness->range)},
          {"greatestMomentary", number(loudness->greatestMomentary)},
          {"greatestShortTerm", number(loudness->greatestShortTerm)},
          {"truePeak", number(loudness->truePeak)},
          {"samplePeak", number(loudness->samplePeak)}};
}

Json encoded(const DeepAudioAnalysis& audio) {
  return {{"track", audio.track},
          {"sampleCount", audio.sampleCount},
          {"start", number(audio.start)},
          {"seconds", number(audio.seconds)},
          {"silent", encoded(audio.silent)},
          {"loudness", encoded(audio.loudness)},
          {"md5", audio.md5}};
}

Json encoded(const DecodeFault& fault) {
  return {{"seconds", number(fault.seconds)},
          {"track", fault.track ? Json(*fault.track) : Json()},
          {"message", fault.reason}};
}

}  // namespace

void to_json(nlohmann::ordered_json& json, const DeepAnalysis& deep) {
  Json audio = Json::array();
  for (const DeepAudioAnalysis& each : deep.audio) audio.push_back(encoded(each));
  Json others = Json::array();
  for (const OtherVideoAnalysis& each : deep.otherVideo) {
    others.push_back({{"stream", each.stream}, {"frameCount", each.frameCount}, {"md5", each.md5}});
  }
  Json errors = Json::array();
  for (const DecodeFault& each : deep.faults) errors.push_back(encoded(each));
  json = {{"assumedRate", deep.assumedRate ? Json(*deep.assumedRate) : Json()},
          {"video", encoded(deep.video)},
          {"audio", std::move(audio)},
          {"otherVideo", std::move(others)},
          {"errors", std::move(errors)},
          {"errorCount", deep.faultCount}};
}

}  // namespace meridian::inline v0_2
