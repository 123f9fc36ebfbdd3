// The typed properties of the model: each line says under which name of the list a property stands.
#include <algorithm>
#include <utility>
#include <vector>

#include "meridian/cli/property_access.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_detail_modifier.h"

namespace meridian::inline v0_2 {
namespace {

/// The track that a flag leaves out; absent for a flag that leaves out none.
std::optional<std::int64_t> ignoredTrack(std::string_view flag) noexcept {
  const std::string_view prefix = SAVAudioIgnoreTracksPrefixFlag.rawValue();
  if (!flag.starts_with(prefix) || !flag.substr(prefix.size()).starts_with('_')) return std::nullopt;
  const std::string_view digits = flag.substr(prefix.size() + 1);
  if (digits.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  return integerFromText(digits);
}

}  // namespace

std::optional<std::string_view> TranscodeCliArguments::outputFile() const noexcept {
  return getProperty<"outputFile">(flagValueLookup());
}
void TranscodeCliArguments::setOutputFile(std::optional<std::string_view> path) {
  setProperty<"outputFile">(stored_.flagValueLookup, path);
}

std::optional<SAVTranscodeArgumentFileFormatValue> TranscodeCliArguments::outputFileFormat() const noexcept {
  return getProperty<"outputFileFormat">(flagValueLookup());
}
void TranscodeCliArguments::setOutputFileFormat(std::optional<SAVTranscodeArgumentFileFormatValue> format) {
  setProperty<"outputFileFormat">(stored_.flagValueLookup, format);
}

std::optional<std::string_view> TranscodeCliArguments::progressFile() const noexcept {
  return getProperty<"progressFile">(flagValueLookup());
}
void TranscodeCliArguments::setProgressFile(std::optional<std::string_view> path) {
  setProperty<"progressFile">(stored_.flagValueLookup, path);
}

std::optional<std::string_view> TranscodeCliArguments::progressOutputPrefix() const noexcept {
  return getProperty<"progressOutputPrefix">(flagValueLookup());
}
void TranscodeCliArguments::setProgressOutputPrefix(std::optional<std::string_view> prefix) {
  setProperty<"progressOutputPrefix">(stored_.flagValueLookup, prefix);
}

std::optional<std::string_view> TranscodeCliArguments::workDirectory() const noexcept {
  return getProperty<"workDirectory">(flagValueLookup());
}
void TranscodeCliArguments::setWorkDirectory(std::optional<std::string_view> path) {
  setProperty<"workDirectory">(stored_.flagValueLookup, path);
}

bool TranscodeCliArguments::shouldOverwrite() const noexcept {
  return getProperty<"shouldOverwrite">(flagValueLookup());
}
void TranscodeCliArguments::setShouldOverwrite(bool overwrite) {
  setProperty<"shouldOverwrite">(stored_.flagValueLookup, overwrite);
}

std::optional<SAVTranscodeArgumentVideoCodecValue> TranscodeCliArguments::videoFormat() const {
  return getProperty<"videoFormat">(flagValueLookup());
}
void TranscodeCliArguments::setVideoFormat(std::optional<SAVTranscodeArgumentVideoCodecValue> codec) {
  setProperty<"videoFormat">(stored_.flagValueLookup, codec);
}

std::optional<float> TranscodeCliArguments::videoFrameRate() const {
  return getProperty<"videoFrameRate">(flagValueLookup());
}
void TranscodeCliArguments::setVideoFrameRate(std::optional<float> framesPerSecond) {
  setProperty<"videoFrameRate">(stored_.flagValueLookup, framesPerSecond);
}

std::optional<Size> TranscodeCliArguments::videoDimensions() const {
  return getProperty<"videoDimensions">(flagValueLookup());
}
void TranscodeCliArguments::setVideoDimensions(const std::optional<Size>& size) {
  setProperty<"videoDimensions">(stored_.flagValueLookup, size);
}

std::optional<float> TranscodeCliArguments::videoBitRate() const {
  return getProperty<"videoBitRate">(flagValueLookup());
}
void TranscodeCliArguments::setVideoBitRate(std::optional<float> bitRate) {
  setProperty<"videoBitRate">(stored_.flagValueLookup, bitRate);
}

std::optional<std::int64_t> TranscodeCliArguments::videoBitDepth() const {
  return getProperty<"videoBitDepth">(flagValueLookup());
}
void TranscodeCliArguments::setVideoBitDepth(std::optional<std::int64_t> bitDepth) {
  setProperty<"videoBitDepth">(stored_.flagValueLookup, bitDepth);
}

bool TranscodeCliArguments::prepareForWeb() const { return getProperty<"prepareForWeb">(flagValueLookup()); }
void TranscodeCliArguments::setPrepareForWeb(bool prepare) {
  setProperty<"prepareForWeb">(stored_.flagValueLookup, prepare);
}

bool TranscodeCliArguments::gpuDecode() const { return getProperty<"gpuDecode">(flagValueLookup()); }
void TranscodeCliArguments::setGpuDecode(bool decode) { setProperty<"gpuDecode">(stored_.flagValueLookup, decode); }

bool TranscodeCliArguments::gpuEncode() const { return getProperty<"gpuEncode">(flagValueLookup()); }
void TranscodeCliArguments::setGpuEncode(bool encode) { setProperty<"gpuEncode">(stored_.flagValueLookup, encode); }

std::optional<std::int64_t> TranscodeCliArguments::keyFrames() const {
  return getProperty<"keyFrames">(flagValueLookup());
}
void TranscodeCliArguments::setKeyFrames(std::optional<std::int64_t> interval) {
  setProperty<"keyFrames">(stored_.flagValueLookup, interval);
}

std::optional<Url> TranscodeCliArguments::lutFile() const { return getProperty<"lutFile">(flagValueLookup()); }
void TranscodeCliArguments::setLutFile(const std::optional<Url>& file) {
  setProperty<"lutFile">(stored_.flagValueLookup, file);
}

std::optional<SAVTranscodeArgumentAspectRatioValue> TranscodeCliArguments::aspectScaling() const {
  return getProperty<"aspectScaling">(flagValueLookup());
}
void TranscodeCliArguments::setAspectScaling(std::optional<SAVTranscodeArgumentAspectRatioValue> scaling) {
  setProperty<"aspectScaling">(stored_.flagValueLookup, scaling);
}

std::optional<VideoCropAnchor> TranscodeCliArguments::videoCropAnchor() const {
  return getProperty<"videoCropAnchor">(flagValueLookup());
}
void TranscodeCliArguments::setVideoCropAnchor(std::optional<VideoCropAnchor> anchor) {
  setProperty<"videoCropAnchor">(stored_.flagValueLookup, anchor);
}

std::optional<SAVTranscodeArgumentColorSpaceValue> TranscodeCliArguments::colorSpace() const {
  return getProperty<"colorSpace">(flagValueLookup());
}
void TranscodeCliArguments::setColorSpace(std::optional<SAVTranscodeArgumentColorSpaceValue> space) {
  setProperty<"colorSpace">(stored_.flagValueLookup, space);
}

std::optional<std::string_view> TranscodeCliArguments::videoProfile() const {
  return getProperty<"videoProfile">(flagValueLookup());
}
void TranscodeCliArguments::setVideoProfile(std::optional<std::string_view> profile) {
  setProperty<"videoProfile">(stored_.flagValueLookup, profile);
}

bool TranscodeCliArguments::omitAudio() const { return getProperty<"omitAudio">(flagValueLookup()); }
void TranscodeCliArguments::setOmitAudio(bool omit) { setProperty<"omitAudio">(stored_.flagValueLookup, omit); }

std::optional<SAVTranscodeArgumentAudioFormatValue> TranscodeCliArguments::audioFormat() const {
  return getProperty<"audioFormat">(flagValueLookup());
}
void TranscodeCliArguments::setAudioFormat(std::optional<SAVTranscodeArgumentAudioFormatValue> format) {
  setProperty<"audioFormat">(stored_.flagValueLookup, format);
}

std::optional<TranscodeAudioQuality> TranscodeCliArguments::audioQuality() const {
  return getProperty<"audioQuality">(flagValueLookup());
}
void TranscodeCliArguments::setAudioQuality(std::optional<TranscodeAudioQuality> quality) {
  setProperty<"audioQuality">(stored_.flagValueLookup, quality);
}

std::optional<std::int64_t> TranscodeCliArguments::sampleRate() const {
  return getProperty<"sampleRate">(flagValueLookup());
}
void TranscodeCliArguments::setSampleRate(std::optional<std::int64_t> samplesPerSecond) {
  setProperty<"sampleRate">(stored_.flagValueLookup, samplesPerSecond);
}

std::optional<std::int64_t> TranscodeCliArguments::audioBitRate() const {
  return getProperty<"audioBitRate">(flagValueLookup());
}
void TranscodeCliArguments::setAudioBitRate(std::optional<std::int64_t> bitRate) {
  setProperty<"audioBitRate">(stored_.flagValueLookup, bitRate);
}

std::optional<std::int64_t> TranscodeCliArguments::audioBitsPerChannel() const {
  return getProperty<"audioBitsPerChannel">(flagValueLookup());
}
void TranscodeCliArguments::setAudioBitsPerChannel(std::optional<std::int64_t> bits) {
  setProperty<"audioBitsPerChannel">(stored_.flagValueLookup, bits);
}

bool TranscodeCliArguments::audioOutputIsDiscrete() const {
  return getProperty<"audioOutputIsDiscrete">(flagValueLookup());
}
void TranscodeCliArguments::setAudioOutputIsDiscrete(bool isDiscrete) {
  setProperty<"audioOutputIsDiscrete">(stored_.flagValueLookup, isDiscrete);
}

std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> TranscodeCliArguments::channelLayout() const {
  return getProperty<"channelLayout">(flagValueLookup());
}

std::optional<std::int64_t> TranscodeCliArguments::channelLayoutTag() const {
  return getProperty<"channelLayoutTag">(flagValueLookup());
}
void TranscodeCliArguments::setChannelLayoutTag(std::optional<std::int64_t> tag) {
  setProperty<"channelLayoutTag">(stored_.flagValueLookup, tag);
}

std::optional<std::int64_t> TranscodeCliArguments::outputChannels() const {
  return getProperty<"outputChannels">(flagValueLookup());
}

std::optional<TimecodeComponents> TranscodeCliArguments::timecode() const {
  return getProperty<"timecode">(flagValueLookup());
}

std::optional<float> TranscodeCliArguments::timecodeFrameRate() const {
  return getProperty<"timecodeFrameRate">(flagValueLookup());
}
void TranscodeCliArguments::setTimecodeFrameRate(std::optional<float> framesPerSecond) {
  setProperty<"timecodeFrameRate">(stored_.flagValueLookup, framesPerSecond);
}

bool TranscodeCliArguments::timecodeIsDropFrame() const {
  return getProperty<"timecodeIsDropFrame">(flagValueLookup());
}
void TranscodeCliArguments::setTimecodeIsDropFrame(bool isDropFrame) {
  setProperty<"timecodeIsDropFrame">(stored_.flagValueLookup, isDropFrame);
}

bool TranscodeCliArguments::addTimecodeTrack() const { return getProperty<"addTimecodeTrack">(flagValueLookup()); }
void TranscodeCliArguments::setAddTimecodeTrack(bool add) {
  setProperty<"addTimecodeTrack">(stored_.flagValueLookup, add);
}

bool TranscodeCliArguments::addTimecodeBurn() const { return getProperty<"addTimecodeBurn">(flagValueLookup()); }
void TranscodeCliArguments::setAddTimecodeBurn(bool add) {
  setProperty<"addTimecodeBurn">(stored_.flagValueLookup, add);
}

std::optional<SAVTranscodeArgumentOverlayAnchorValue> TranscodeCliArguments::timecodeBurnAnchor() const {
  return getProperty<"timecodeBurnAnchor">(flagValueLookup());
}
void TranscodeCliArguments::setTimecodeBurnAnchor(std::optional<SAVTranscodeArgumentOverlayAnchorValue> anchor) {
  setProperty<"timecodeBurnAnchor">(stored_.flagValueLookup, anchor);
}

std::optional<std::int64_t> TranscodeCliArguments::timecodeBurnFontSize() const {
  return getProperty<"timecodeBurnFontSize">(flagValueLookup());
}
void TranscodeCliArguments::setTimecodeBurnFontSize(std::optional<std::int64_t> size) {
  setProperty<"timecodeBurnFontSize">(stored_.flagValueLookup, size);
}

std::optional<RgbColor> TranscodeCliArguments::timecodeBurnFontColor() const {
  return getProperty<"timecodeBurnFontColor">(flagValueLookup());
}
void TranscodeCliArguments::setTimecodeBurnFontColor(std::optional<RgbColor> color) {
  setProperty<"timecodeBurnFontColor">(stored_.flagValueLookup, color);
}

std::optional<RgbColor> TranscodeCliArguments::timecodeBurnBoxColor() const {
  return getProperty<"timecodeBurnBoxColor">(flagValueLookup());
}
void TranscodeCliArguments::setTimecodeBurnBoxColor(std::optional<RgbColor> color) {
  setProperty<"timecodeBurnBoxColor">(stored_.flagValueLookup, color);
}

bool TranscodeCliArguments::omitVideo() const noexcept { return getProperty<"omitVideo">(flagValueLookup()); }
void TranscodeCliArguments::setOmitVideo(bool omit) { setProperty<"omitVideo">(stored_.flagValueLookup, omit); }

std::optional<std::string_view> TranscodeCliArguments::channelLayoutDescriptions() const {
  return getProperty<"channelLayoutDescriptions">(flagValueLookup());
}
void TranscodeCliArguments::setChannelLayoutDescriptions(std::optional<std::string_view> descriptions) {
  setProperty<"channelLayoutDescriptions">(stored_.flagValueLookup, descriptions);
}

std::optional<std::int64_t> TranscodeCliArguments::channelLayoutBitmap() const {
  return getProperty<"channelLayoutBitmap">(flagValueLookup());
}
void TranscodeCliArguments::setChannelLayoutBitmap(std::optional<std::int64_t> bitmap) {
  setProperty<"channelLayoutBitmap">(stored_.flagValueLookup, bitmap);
}

std::optional<Url> TranscodeCliArguments::watermarkFile() const {
  return getProperty<"watermarkFile">(flagValueLookup());
}
void TranscodeCliArguments::setWatermarkFile(const std::optional<Url>& file) {
  setProperty<"watermarkFile">(stored_.flagValueLookup, file);
}

std::optional<SAVTranscodeArgumentOverlayAnchorValue> TranscodeCliArguments::watermarkFileAnchor() const {
  return getProperty<"watermarkFileAnchor">(flagValueLookup());
}
void TranscodeCliArguments::setWatermarkFileAnchor(std::optional<SAVTranscodeArgumentOverlayAnchorValue> anchor) {
  setProperty<"watermarkFileAnchor">(stored_.flagValueLookup, anchor);
}

std::optional<float> TranscodeCliArguments::watermarkFileScale() const {
  return getProperty<"watermarkFileScale">(flagValueLookup());
}
void TranscodeCliArguments::setWatermarkFileScale(std::optional<float> scale) {
  setProperty<"watermarkFileScale">(stored_.flagValueLookup, scale);
}

bool TranscodeCliArguments::addWatermarkText() const { return getProperty<"addWatermarkText">(flagValueLookup()); }
void TranscodeCliArguments::setAddWatermarkText(bool add) {
  setProperty<"addWatermarkText">(stored_.flagValueLookup, add);
}

std::optional<std::string_view> TranscodeCliArguments::watermarkText() const {
  return getProperty<"watermarkText">(flagValueLookup());
}
void TranscodeCliArguments::setWatermarkText(std::optional<std::string_view> text) {
  setProperty<"watermarkText">(stored_.flagValueLookup, text);
}

std::optional<std::int64_t> TranscodeCliArguments::watermarkTextFontSize() const {
  return getProperty<"watermarkTextFontSize">(flagValueLookup());
}
void TranscodeCliArguments::setWatermarkTextFontSize(std::optional<std::int64_t> size) {
  setProperty<"watermarkTextFontSize">(stored_.flagValueLookup, size);
}

std::optional<SAVTranscodeArgumentOverlayAnchorValue> TranscodeCliArguments::watermarkTextAnchor() const {
  return getProperty<"watermarkTextAnchor">(flagValueLookup());
}
void TranscodeCliArguments::setWatermarkTextAnchor(std::optional<SAVTranscodeArgumentOverlayAnchorValue> anchor) {
  setProperty<"watermarkTextAnchor">(stored_.flagValueLookup, anchor);
}

std::optional<RgbColor> TranscodeCliArguments::watermarkTextFontColor() const {
  return getProperty<"watermarkTextFontColor">(flagValueLookup());
}
void TranscodeCliArguments::setWatermarkTextFontColor(std::optional<RgbColor> color) {
  setProperty<"watermarkTextFontColor">(stored_.flagValueLookup, color);
}

std::optional<RgbColor> TranscodeCliArguments::watermarkTextBoxColor() const {
  return getProperty<"watermarkTextBoxColor">(flagValueLookup());
}
void TranscodeCliArguments::setWatermarkTextBoxColor(std::optional<RgbColor> color) {
  setProperty<"watermarkTextBoxColor">(stored_.flagValueLookup, color);
}

std::optional<std::string_view> TranscodeCliArguments::lookColorSpace() const {
  return getProperty<"lookColorSpace">(flagValueLookup());
}
void TranscodeCliArguments::setLookColorSpace(std::optional<std::string_view> space) {
  setProperty<"lookColorSpace">(stored_.flagValueLookup, space);
}

std::optional<std::string_view> TranscodeCliArguments::lookWhitePoint() const {
  return getProperty<"lookWhitePoint">(flagValueLookup());
}
void TranscodeCliArguments::setLookWhitePoint(std::optional<std::string_view> whitePoint) {
  setProperty<"lookWhitePoint">(stored_.flagValueLookup, whitePoint);
}

std::optional<std::string_view> TranscodeCliArguments::lookCurve() const {
  return getProperty<"lookCurve">(flagValueLookup());
}
void TranscodeCliArguments::setLookCurve(std::optional<std::string_view> curve) {
  setProperty<"lookCurve">(stored_.flagValueLookup, curve);
}

std::optional<std::string_view> TranscodeCliArguments::lookInvalidResolution() const {
  return getProperty<"lookInvalidResolution">(flagValueLookup());
}
void TranscodeCliArguments::setLookInvalidResolution(std::optional<std::string_view> resolution) {
  setProperty<"lookInvalidResolution">(stored_.flagValueLookup, resolution);
}

void TranscodeCliArguments::setChannelLayout(std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> layout) {
  if (!layout && outputChannels()) return;
  setProperty<"channelLayout">(stored_.flagValueLookup, layout);
}

void TranscodeCliArguments::setOutputChannels(std::optional<std::int64_t> channels) {
  if (!channels && channelLayout()) return;
  setProperty<"outputChannels">(stored_.flagValueLookup, channels);
}

void TranscodeCliArguments::setTimecode(const std::optional<TimecodeComponents>& timecode) {
  if (timecode) {
    setArgumentFlagValue(SAVTimecodeMatchSourceFlag.rawValue(), std::nullopt);
    setArgumentFlagValue(SAVTimecodeFromCreationDateFlag.rawValue(), std::nullopt);
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
  stored_.flagValueLookup.eraseIf(
      [prefix](const TextDictionary::Entry& entry) { return entry.key.starts_with(prefix); });
  for (const std::int64_t track : tracks) {
    if (track >= 0) stored_.flagValueLookup.set(std::string(prefix) + "_" + std::to_string(track), "");
  }
}

bool TranscodeCliArguments::includeTimecode() const { return addTimecodeTrack() || addTimecodeBurn(); }

void TranscodeCliArguments::setIncludeTimecode(bool include) {
  if (include == includeTimecode()) return;
  setAddTimecodeTrack(include);
  setAddTimecodeBurn(false);
}

std::optional<TimecodeSource> TranscodeCliArguments::timecodeSource() const {
  if (timecode()) return TimecodeSource::custom;
  if (hasArgumentFlag(SAVTimecodeFromCreationDateFlag.rawValue())) return TimecodeSource::creationDate;
  if (hasArgumentFlag(SAVTimecodeMatchSourceFlag.rawValue())) return TimecodeSource::match;
  return std::nullopt;
}

void TranscodeCliArguments::setTimecodeSource(std::optional<TimecodeSource> source) {
  const auto setFlag = [this](SAVTranscodeTimecodeArgumentFlag flag, bool isSet) {
    setArgumentFlagValue(flag.rawValue(), isSet ? std::optional("") : std::nullopt);
  };
  setFlag(SAVTimecodeMatchSourceFlag, source == TimecodeSource::match);
  setFlag(SAVTimecodeFromCreationDateFlag, source == TimecodeSource::creationDate);
  if (source != TimecodeSource::custom) {
    setFlag(SAVTimecodeCustomFlag, false);
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
