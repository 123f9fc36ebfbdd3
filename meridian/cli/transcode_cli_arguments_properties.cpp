// The typed properties of the store.
#include <algorithm>
#include <type_traits>
#include <utility>
#include <vector>

#include "meridian/base/ascii.h"
#include "meridian/cli/property_access.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_detail_modifier.h"

namespace meridian::inline v0_2 {
namespace {

/// Returns the setter's parameter type.
template <typename Parameter>
Parameter parameterOf(void (TranscodeCliArguments::*setter)(Parameter));

/// Returns the track that the flag leaves out; absent for another flag.
std::optional<std::int64_t> ignoredTrack(std::string_view flag) noexcept {
  const std::string_view prefix = SAVAudioIgnoreTracksPrefixFlag.rawValue();
  if (!flag.starts_with(prefix) || !flag.substr(prefix.size()).starts_with('_')) return std::nullopt;
  const std::string_view digits = flag.substr(prefix.size() + 1);
  if (!std::ranges::all_of(digits, detail::isDigit)) return std::nullopt;
  return integerFromText(digits);
}

}  // namespace

// A getter and a setter of a property, with the types that the header declares.
#define MERIDIAN_PROPERTY(name, setName)                                                              \
  MERIDIAN_PROPERTY_GETTER(name)                                                                      \
  void TranscodeCliArguments::setName(decltype(parameterOf(&TranscodeCliArguments::setName)) value) { \
    setProperty<#name>(stored_.flagValueLookup, value);                                               \
  }
#define MERIDIAN_PROPERTY_GETTER(name)                                                                             \
  auto TranscodeCliArguments::name() const noexcept(noexcept(std::declval<const TranscodeCliArguments&>().name())) \
      -> decltype(std::declval<const TranscodeCliArguments&>().name()) {                                           \
    return getProperty<#name>(flagValueLookup());                                                                  \
  }

MERIDIAN_PROPERTY(outputFile, setOutputFile)
MERIDIAN_PROPERTY(outputFileFormat, setOutputFileFormat)
MERIDIAN_PROPERTY(progressFile, setProgressFile)
MERIDIAN_PROPERTY(progressOutputPrefix, setProgressOutputPrefix)
MERIDIAN_PROPERTY(workDirectory, setWorkDirectory)
MERIDIAN_PROPERTY(shouldOverwrite, setShouldOverwrite)

MERIDIAN_PROPERTY(omitVideo, setOmitVideo)
MERIDIAN_PROPERTY(videoFormat, setVideoFormat)
MERIDIAN_PROPERTY(videoFrameRate, setVideoFrameRate)
MERIDIAN_PROPERTY(videoDimensions, setVideoDimensions)
MERIDIAN_PROPERTY(videoBitRate, setVideoBitRate)
MERIDIAN_PROPERTY(videoBitDepth, setVideoBitDepth)
MERIDIAN_PROPERTY(prepareForWeb, setPrepareForWeb)
MERIDIAN_PROPERTY(gpuDecode, setGpuDecode)
MERIDIAN_PROPERTY(gpuEncode, setGpuEncode)
MERIDIAN_PROPERTY(keyFrames, setKeyFrames)
MERIDIAN_PROPERTY(lutFile, setLutFile)
MERIDIAN_PROPERTY(aspectScaling, setAspectScaling)
MERIDIAN_PROPERTY(videoCropAnchor, setVideoCropAnchor)
MERIDIAN_PROPERTY(colorSpace, setColorSpace)
MERIDIAN_PROPERTY(videoProfile, setVideoProfile)

MERIDIAN_PROPERTY(omitAudio, setOmitAudio)
MERIDIAN_PROPERTY(audioFormat, setAudioFormat)
MERIDIAN_PROPERTY(audioQuality, setAudioQuality)
MERIDIAN_PROPERTY(sampleRate, setSampleRate)
MERIDIAN_PROPERTY(audioBitRate, setAudioBitRate)
MERIDIAN_PROPERTY(audioBitsPerChannel, setAudioBitsPerChannel)
MERIDIAN_PROPERTY(audioOutputIsDiscrete, setAudioOutputIsDiscrete)
MERIDIAN_PROPERTY(channelLayout, setChannelLayout)
MERIDIAN_PROPERTY(channelLayoutTag, setChannelLayoutTag)
MERIDIAN_PROPERTY(outputChannels, setOutputChannels)
MERIDIAN_PROPERTY(channelLayoutDescriptions, setChannelLayoutDescriptions)
MERIDIAN_PROPERTY(channelLayoutBitmap, setChannelLayoutBitmap)

MERIDIAN_PROPERTY_GETTER(timecode)
MERIDIAN_PROPERTY(timecodeFrameRate, setTimecodeFrameRate)
MERIDIAN_PROPERTY(timecodeIsDropFrame, setTimecodeIsDropFrame)
MERIDIAN_PROPERTY(addTimecodeTrack, setAddTimecodeTrack)
MERIDIAN_PROPERTY(addTimecodeBurn, setAddTimecodeBurn)
MERIDIAN_PROPERTY(timecodeBurnAnchor, setTimecodeBurnAnchor)
MERIDIAN_PROPERTY(timecodeBurnFontSize, setTimecodeBurnFontSize)
MERIDIAN_PROPERTY(timecodeBurnFontColor, setTimecodeBurnFontColor)
MERIDIAN_PROPERTY(timecodeBurnBoxColor, setTimecodeBurnBoxColor)

MERIDIAN_PROPERTY(watermarkFile, setWatermarkFile)
MERIDIAN_PROPERTY(watermarkFileAnchor, setWatermarkFileAnchor)
MERIDIAN_PROPERTY(watermarkFileScale, setWatermarkFileScale)
MERIDIAN_PROPERTY(addWatermarkText, setAddWatermarkText)
MERIDIAN_PROPERTY(watermarkText, setWatermarkText)
MERIDIAN_PROPERTY(watermarkTextFontSize, setWatermarkTextFontSize)
MERIDIAN_PROPERTY(watermarkTextAnchor, setWatermarkTextAnchor)
MERIDIAN_PROPERTY(watermarkTextFontColor, setWatermarkTextFontColor)
MERIDIAN_PROPERTY(watermarkTextBoxColor, setWatermarkTextBoxColor)

MERIDIAN_PROPERTY(lookColorSpace, setLookColorSpace)
MERIDIAN_PROPERTY(lookWhitePoint, setLookWhitePoint)
MERIDIAN_PROPERTY(lookCurve, setLookCurve)
MERIDIAN_PROPERTY(lookInvalidResolution, setLookInvalidResolution)

#undef MERIDIAN_PROPERTY
#undef MERIDIAN_PROPERTY_GETTER

void TranscodeCliArguments::setTimecode(const std::optional<TimecodeComponents>& timecode) {
  if (timecode) {
    setArgumentFlagValue(timecodeFlag(TimecodeSource::match).rawValue(), std::nullopt);
    setArgumentFlagValue(timecodeFlag(TimecodeSource::creationDate).rawValue(), std::nullopt);
  }
  setProperty<"timecode">(stored_.flagValueLookup, timecode);
}

std::shared_ptr<const Size> TranscodeCliArguments::dimensionsSizeValue() const {
  const auto size = videoDimensions();
  return size ? std::make_shared<const Size>(*size) : nullptr;
}

bool TranscodeCliArguments::copyAudio() const noexcept {
  if (flagValueLookup().contains(SAVCopyAudioFlag.rawValue())) return true;
  return !audioFormat();
}

void TranscodeCliArguments::setCopyAudio(bool copy) {
  setArgumentFlagValue(SAVCopyAudioFlag.rawValue(), copy ? std::optional("") : std::nullopt);
}

void TranscodeCliArguments::enumerateIgnoredAudioFileTracks(FunctionRef<void(std::int64_t track)> shouldIgnore) const {
  std::vector<std::int64_t> tracks;
  for (const auto& [flag, value] : flagValueLookup()) {
    if (const auto track = ignoredTrack(flag)) tracks.push_back(*track);
  }
  // "-ac_omit_2" and "-ac_omit_02" are one track.
  std::ranges::sort(tracks);
  const auto repeated = std::ranges::unique(tracks);
  tracks.erase(repeated.begin(), repeated.end());
  for (const std::int64_t track : tracks) shouldIgnore(track);
}

bool TranscodeCliArguments::isIgnoredTrackFlag(std::string_view flag) noexcept {
  return ignoredTrack(flag).has_value();
}

void TranscodeCliArguments::setIgnoredAudioFileTracks(std::span<const std::int64_t> tracks) {
  const std::string_view prefix = SAVAudioIgnoreTracksPrefixFlag.rawValue();
  // In a copy, so that nothing is lost if memory runs out.
  TextDictionary lookup = stored_.flagValueLookup;
  lookup.eraseIf([prefix](const TextDictionary::Entry& entry) { return entry.key.starts_with(prefix); });
  for (const std::int64_t track : tracks) {
    if (track >= 0) lookup.set(std::string(prefix) + "_" + std::to_string(track), "");
  }
  stored_.flagValueLookup = std::move(lookup);
}

bool TranscodeCliArguments::includeTimecode() const { return addTimecodeTrack() || addTimecodeBurn(); }

void TranscodeCliArguments::setIncludeTimecode(bool include) {
  if (include == includeTimecode()) return;
  setAddTimecodeTrack(include);
  setAddTimecodeBurn(false);
}

std::optional<TimecodeSource> TranscodeCliArguments::timecodeSource() const {
  if (timecode()) return TimecodeSource::custom;
  for (const TimecodeSource source : {TimecodeSource::creationDate, TimecodeSource::match}) {
    if (hasArgumentFlag(timecodeFlag(source).rawValue())) return source;
  }
  return std::nullopt;
}

void TranscodeCliArguments::setTimecodeSource(std::optional<TimecodeSource> source) {
  for (const TimecodeSource each : allCases<TimecodeSource>()) {
    if (each != source) setArgumentFlagValue(timecodeFlag(each).rawValue(), std::nullopt);
  }
  if (!source) return;
  if (source != TimecodeSource::custom) {
    setArgumentFlagValue(timecodeFlag(*source).rawValue(), "");
  } else if (!timecode()) {
    setProperty<"timecode">(stored_.flagValueLookup, TimecodeComponents::defaultNonDropTimecodeComponents);
  }
}

void TranscodeCliArguments::updateFromVideoDetail(const TranscodeVideoDetail& detail) {
  TranscodeDetailModifier::updatedVideo(*this, detail);
}

void TranscodeCliArguments::updateFromAudioDetail(const TranscodeAudioDetail& detail) {
  TranscodeDetailModifier::updatedAudio(*this, detail);
}

void TranscodeCliArguments::updateFromTimecodeDetail(const TranscodeTimecodeDetail& detail) {
  TranscodeDetailModifier::updatedTimecode(*this, detail);
}

bool TranscodeCliArguments::isRequested(SAVTranscodeCliCommand command) const noexcept {
  return hasArgumentFlag(command.rawValue());
}

void TranscodeCliArguments::setRequested(SAVTranscodeCliCommand command, bool isRequested) {
  setArgumentFlagValue(command.rawValue(), isRequested ? std::optional("") : std::nullopt);
}

bool TranscodeCliArguments::sourceFileAnalysisRequired() const noexcept {
  const auto scaling = argumentFlagValue(SAVVideoAspectScalingFlag.rawValue());
  return includeVideo() && hasArgumentFlag(SAVVideoDimensionsFlag.rawValue()) && scaling &&
         *scaling != SAVMatchSourceRatio.rawValue();
}

}  // namespace meridian::inline v0_2
