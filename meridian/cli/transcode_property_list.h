/// \file
/// The list of all properties of a transcode: for each its name, flag, kind, unit, default, an example and what it
/// means. A property is looked up at compile time or at run time:
///
///     const TranscodeProperty* property = findTranscodeProperty("videoFrameRate");
///     property->flag;  // "-vr"
///     property->unit;  // "frames per second"
///
/// transcode_properties.h reads and sets the properties of a store by these names.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/base/text_index.h"
#include "meridian/cli/transcode_flags.h"

namespace meridian::inline v0_2 {

/// How a property is written as text. The kinds from `fileFormat` to `timecodeSource` accept one of a list of texts.
enum class PropertyKind : std::uint8_t {
  /// On while the flag is stored, whatever its text.
  onOff,
  /// Any text.
  text,
  /// A path, kept as the text that it is.
  path,
  /// A path, read as a file URL.
  file,
  /// A 32-bit floating-point number: "25.0".
  number,
  /// Frames per second as a 32-bit floating-point number: "23.976".
  frameRate,
  /// A signed 64-bit integer: "10".
  integer,
  /// Width and height: "1920.000000x1080.000000".
  dimensions,
  /// A timecode of proper form: "01:02:03;04".
  timecode,
  /// Red, green and blue: "255,128,0".
  color,
  fileFormat,
  videoCodec,
  aspectRatio,
  cropAnchor,
  overlayAnchor,
  colorSpace,
  audioFormat,
  audioQuality,
  channelLayout,
  timecodeSource,
  /// Paths, each on a line of its own.
  files,
  /// Numbers of tracks from 0, separated by commas: "0,2".
  trackNumbers,
};

template <>
struct EnumerationTable<PropertyKind> {
  /// The description is a noun with its article, for messages.
  static constexpr auto rows = std::to_array<EnumerationRow<PropertyKind>>({
      {PropertyKind::onOff, "switch", "a switch"},
      {PropertyKind::text, "text", "a text"},
      {PropertyKind::path, "path", "a path"},
      {PropertyKind::file, "file", "a path"},
      {PropertyKind::number, "number", "a number"},
      {PropertyKind::frameRate, "frameRate", "a frame rate"},
      {PropertyKind::integer, "integer", "a whole number"},
      {PropertyKind::dimensions, "dimensions", "a size"},
      {PropertyKind::timecode, "timecode", "a timecode"},
      {PropertyKind::color, "color", "a colour"},
      {PropertyKind::fileFormat, "fileFormat", "a file format"},
      {PropertyKind::videoCodec, "videoCodec", "a video codec"},
      {PropertyKind::aspectRatio, "aspectRatio", "an aspect scaling"},
      {PropertyKind::cropAnchor, "cropAnchor", "an anchor"},
      {PropertyKind::overlayAnchor, "overlayAnchor", "an anchor"},
      {PropertyKind::colorSpace, "colorSpace", "a colour space"},
      {PropertyKind::audioFormat, "audioFormat", "an audio format"},
      {PropertyKind::audioQuality, "audioQuality", "an audio quality"},
      {PropertyKind::channelLayout, "channelLayout", "a channel layout"},
      {PropertyKind::timecodeSource, "timecodeSource", "a timecode source"},
      {PropertyKind::files, "files", "a list of paths"},
      {PropertyKind::trackNumbers, "trackNumbers", "a list of track numbers"},
  });
};

/// A property of a transcode: its name, where it is stored, and what it means.
struct TranscodeProperty {
  std::string_view name;
  /// The flag that stores the property; empty for a joint property, which several or numbered flags make up.
  std::string_view flag;
  PropertyKind kind;
  /// The unit of a number or size; empty where there is none.
  std::string_view unit;
  /// What happens without the property: "as the source".
  std::string_view whenAbsent;
  /// A valid value of this very property.
  std::string_view example;
  /// What the property does, as an imperative line: "Set the number of frames per second".
  std::string_view meaning;
  /// The flags that make up a joint property, or their prefix where they are numbered; empty texts otherwise.
  std::array<std::string_view, 3> jointFlags = {};

  [[nodiscard]] constexpr bool isJoint() const noexcept { return flag.empty(); }
  /// Returns the flag, or the flags of a joint property.
  [[nodiscard]] constexpr std::span<const std::string_view> flags() const noexcept {
    if (!isJoint()) return {&flag, 1};
    const auto end = std::ranges::find(jointFlags, std::string_view());
    return std::span(jointFlags).first(static_cast<std::size_t>(end - jointFlags.begin()));
  }
};

/// Every property, in the order of the groups of flags. `channelLayout` and `outputChannels` share "-acl" deliberately:
/// setting one replaces the other, and removing either removes the flag.
inline constexpr auto transcodeProperties = std::to_array<TranscodeProperty>({
    {"inputFiles",
     "",
     PropertyKind::files,
     "",
     "none; a transcode needs one",
     "/card/A001C001.mov",
     "Read these files, one after the other",
     {SAVInputPrefixFlag.rawValue()}},
    {"outputFile", SAVOutputFileFlag.rawValue(), PropertyKind::path, "", "none; a transcode needs one",
     "/out/A001C001.mov", "Write this file"},
    {"outputFileFormat", SAVFileFormatFlag.rawValue(), PropertyKind::fileFormat, "",
     "by the extension of the output file", "qt", "Set the container of the output file"},
    {"progressFile", SAVProgressFileFlag.rawValue(), PropertyKind::path, "", "none", "/tmp/progress.txt",
     "Write the progress to this file"},
    {"progressOutputPrefix", SAVProgressOutputPrefixFlag.rawValue(), PropertyKind::text, "", "none",
     "progress:", "Begin each line of progress with this text"},
    {"shouldOverwrite", SAVOverwriteExistingFlag.rawValue(), PropertyKind::onOff, "", "an existing file is kept",
     "true", "Replace an existing output file"},
    {"workDirectory", SAVWorkDirectoryFlag.rawValue(), PropertyKind::path, "", "beside the output file", "/tmp/work",
     "Keep unfinished files in this directory"},

    {"includeVideo",
     "",
     PropertyKind::onOff,
     "",
     "video is included",
     "false",
     "Include video; the opposite of omitVideo",
     {SAVNoVideoFlag.rawValue()}},
    {"omitVideo", SAVNoVideoFlag.rawValue(), PropertyKind::onOff, "", "video is included", "true", "Leave out video"},
    {"videoFormat", SAVVideoFormatFlag.rawValue(), PropertyKind::videoCodec, "", "as the source", "prores422proxy",
     "Set the video codec"},
    {"videoFrameRate", SAVVideoFrameRateFlag.rawValue(), PropertyKind::frameRate, "frames per second", "as the source",
     "23.976", "Set the frame rate"},
    {"videoDimensions", SAVVideoDimensionsFlag.rawValue(), PropertyKind::dimensions, "pixels", "as the source",
     "1920x1080", "Set the width and height"},
    {"videoBitRate", SAVVideoBitRateFlag.rawValue(), PropertyKind::number, "megabits per second",
     "chosen by the encoder", "3.5", "Set the average video bit rate"},
    {"videoBitDepth", SAVVideoBitDepthFlag.rawValue(), PropertyKind::integer, "bits per sample", "as the source", "10",
     "Set the video bit depth"},
    {"prepareForWeb", SAVPrepareForWebFlag.rawValue(), PropertyKind::onOff, "", "the index follows the media", "true",
     "Put the index first, so that playback can start before the whole file is loaded"},
    {"gpuDecode", SAVVideoGPUDecodingFlag.rawValue(), PropertyKind::onOff, "", "on the CPU", "true",
     "Decode on the GPU"},
    {"gpuEncode", SAVVideoGPUEncodingFlag.rawValue(), PropertyKind::onOff, "", "on the CPU", "true",
     "Encode on the GPU"},
    {"keyFrames", SAVVideoKeyFramesFlag.rawValue(), PropertyKind::integer, "frames", "chosen by the encoder", "25",
     "Set the interval between key frames"},
    {"lutFile", SAVColorLutFileFlag.rawValue(), PropertyKind::file, "", "none", "/Looks/Rec709.cube",
     "Apply this LUT to the image"},
    {"aspectScaling", SAVVideoAspectScalingFlag.rawValue(), PropertyKind::aspectRatio, "", "match", "letterbox",
     "Set how an image fits a frame of another aspect ratio"},
    {"videoCropAnchor", SAVVideoAspectCropAnchorFlag.rawValue(), PropertyKind::cropAnchor, "", "c", "tl",
     "Set which part of the image a crop keeps"},
    {"colorSpace", SAVVideoColorSpaceFlag.rawValue(), PropertyKind::colorSpace, "", "as the source", "rec_709",
     "Convert to this colour space"},
    {"videoProfile", SAVVideoProfileFlag.rawValue(), PropertyKind::text, "", "chosen by the encoder", "main",
     "Set the profile of the video codec"},

    {"includeAudio",
     "",
     PropertyKind::onOff,
     "",
     "audio is included",
     "false",
     "Include audio; the opposite of omitAudio",
     {SAVNoAudioFlag.rawValue()}},
    {"omitAudio", SAVNoAudioFlag.rawValue(), PropertyKind::onOff, "", "audio is included", "true", "Leave out audio"},
    {"copyAudio",
     "",
     PropertyKind::onOff,
     "",
     "audio is copied unless audioFormat is set",
     "true",
     "Copy the audio unchanged",
     {SAVCopyAudioFlag.rawValue(), SAVAudioFormatFlag.rawValue()}},
    {"ignoredAudioFileTracks",
     "",
     PropertyKind::trackNumbers,
     "",
     "none",
     "0,2",
     "Leave out these audio tracks",
     {SAVAudioIgnoreTracksPrefixFlag.rawValue()}},
    {"audioFormat", SAVAudioFormatFlag.rawValue(), PropertyKind::audioFormat, "", "audio is copied", "aac",
     "Set the audio codec"},
    {"audioQuality", SAVAudioQualityFlag.rawValue(), PropertyKind::audioQuality, "", "chosen by the encoder", "high",
     "Set the quality of the audio encoder"},
    {"sampleRate", SAVAudioSampleRateFlag.rawValue(), PropertyKind::integer, "samples per second", "as the source",
     "48000", "Set the audio sample rate"},
    {"audioBitRate", SAVAudioBitRateFlag.rawValue(), PropertyKind::integer, "bits per second", "chosen by the encoder",
     "128000", "Set the audio bit rate"},
    {"audioBitsPerChannel", SAVAudioBitsPerChannelFlag.rawValue(), PropertyKind::integer, "bits per sample",
     "as the source", "24", "Set the audio bit depth"},
    {"audioOutputIsDiscrete", SAVDiscreteAudioFlag.rawValue(), PropertyKind::onOff, "", "channels form a layout",
     "true", "Keep the audio channels discrete"},
    {"channelLayout", SAVAudioChannelLayoutFlag.rawValue(), PropertyKind::channelLayout, "", "as the source", "stereo",
     "Set the channel layout; replaces outputChannels"},
    {"channelLayoutTag", SAVAudioChannelLayoutTagFlag.rawValue(), PropertyKind::integer, "", "as the source", "6619138",
     "Set the channel layout by the platform's tag"},
    {"outputChannels", SAVAudioChannelLayoutFlag.rawValue(), PropertyKind::integer, "channels", "as the source", "2",
     "Set the number of audio channels; replaces channelLayout"},
    {"channelLayoutDescriptions", SAVAudioChannelLayoutDescriptionsFlag.rawValue(), PropertyKind::text, "",
     "as the source", "[1 2", "Set the channel layout by the labels of its channels, as a list"},
    {"channelLayoutBitmap", SAVAudioChannelLayoutBitmapFlag.rawValue(), PropertyKind::integer, "", "as the source",
     "63", "Set the channel layout by a bitmap of its channels"},

    {"includeTimecode",
     "",
     PropertyKind::onOff,
     "",
     "no timecode",
     "true",
     "Add a timecode track, unless one is burnt in",
     {SAVTimecodeAddTrackFlag.rawValue(), SAVTimecodeAddBurnFlag.rawValue()}},
    {"addTimecodeTrack", SAVTimecodeAddTrackFlag.rawValue(), PropertyKind::onOff, "", "no track", "true",
     "Add a timecode track"},
    {"addTimecodeBurn", SAVTimecodeAddBurnFlag.rawValue(), PropertyKind::onOff, "", "not burnt in", "true",
     "Burn the timecode into the image"},
    {"timecodeBurnAnchor", SAVTimecodeBurnAnchorFlag.rawValue(), PropertyKind::overlayAnchor, "",
     "chosen by the transcoder", "bc", "Set where the timecode is burnt in"},
    {"timecodeBurnFontSize", SAVTimecodeBurnFontSize.rawValue(), PropertyKind::integer, "points",
     "chosen by the transcoder", "36", "Set the font size of the burnt-in timecode"},
    {"timecodeBurnFontColor", SAVTimecodeBurnFontRGB.rawValue(), PropertyKind::color, "code values from 0 to 255",
     "chosen by the transcoder", "255,255,255", "Set the colour of the burnt-in timecode"},
    {"timecodeBurnBoxColor", SAVTimecodeBurnBoxRGB.rawValue(), PropertyKind::color, "code values from 0 to 255",
     "chosen by the transcoder", "0,0,0", "Set the colour of the box behind the burnt-in timecode"},
    {"timecodeSource",
     "",
     PropertyKind::timecodeSource,
     "",
     "none",
     "match",
     "Set where the timecode comes from",
     {SAVTimecodeMatchSourceFlag.rawValue(), SAVTimecodeFromCreationDateFlag.rawValue(),
      SAVTimecodeCustomFlag.rawValue()}},
    {"timecode", SAVTimecodeCustomFlag.rawValue(), PropertyKind::timecode, "", "none", "01:00:00:00",
     "Set the timecode of the first frame; makes the source custom"},
    {"timecodeFrameRate", SAVTimecodeFrameRateFlag.rawValue(), PropertyKind::frameRate, "frames per second",
     "the frame rate of the output", "29.97", "Set the frame rate at which timecode counts"},
    {"timecodeIsDropFrame", SAVTimecodeIsDropFlag.rawValue(), PropertyKind::onOff, "", "non-drop frame", "true",
     "Count drop-frame timecode"},

    {"watermarkFileAnchor", SAVWatermarkFileBurnAnchorFlag.rawValue(), PropertyKind::overlayAnchor, "",
     "chosen by the transcoder", "br", "Set where the watermark image is burnt in"},
    {"watermarkFile", SAVWatermarkFileBurnFilePathFlag.rawValue(), PropertyKind::file, "", "none", "/looks/logo.png",
     "Burn this image into the output"},
    {"watermarkFileScale", SAVWatermarkFileBurnScaleFlag.rawValue(), PropertyKind::number,
     "multiples of the image's own size", "chosen by the transcoder", "0.5", "Set the scale of the watermark image"},
    {"addWatermarkText", SAVWatermarkTextAddBurnFlag.rawValue(), PropertyKind::onOff, "", "not burnt in", "true",
     "Burn a text into the image"},
    {"watermarkText", SAVWatermarkTextBurnTextFlag.rawValue(), PropertyKind::text, "", "none", "for review only",
     "Set the text to burn in"},
    {"watermarkTextFontSize", SAVWatermarkTextBurnFontSizeFlag.rawValue(), PropertyKind::integer, "points",
     "chosen by the transcoder", "36", "Set the font size of the burnt-in text"},
    {"watermarkTextAnchor", SAVWatermarkTextBurnAnchorFlag.rawValue(), PropertyKind::overlayAnchor, "",
     "chosen by the transcoder", "tc", "Set where the text is burnt in"},
    {"watermarkTextFontColor", SAVWatermarkTextBurnFontRGBFlag.rawValue(), PropertyKind::color,
     "code values from 0 to 255", "chosen by the transcoder", "255,255,255", "Set the colour of the burnt-in text"},
    {"watermarkTextBoxColor", SAVWatermarkTextBurnBoxRGBFlag.rawValue(), PropertyKind::color,
     "code values from 0 to 255", "chosen by the transcoder", "0,0,0",
     "Set the colour of the box behind the burnt-in text"},

    {"lookColorSpace", SAVArriLookColorSpacePrimaryFlag.rawValue(), PropertyKind::text, "", "none", "rec709",
     "Set the primaries of a camera look"},
    {"lookWhitePoint", SAVArriLookColorSpaceWhitePointFlag.rawValue(), PropertyKind::text, "", "none", "d65",
     "Set the white point of a camera look"},
    {"lookCurve", SAVArriLookColorSpaceCurveFlag.rawValue(), PropertyKind::text, "", "none", "bt1886",
     "Set the transfer curve of a camera look"},
    {"lookInvalidResolution", SAVArriLookInvalidLookResolutionFlag.rawValue(), PropertyKind::text, "", "none", "ignore",
     "Set what becomes of a camera look of the wrong resolution"},
});

namespace detail {

consteval auto indexOfTranscodeProperties() {
  std::array<std::string_view, transcodeProperties.size()> names{};
  std::ranges::transform(transcodeProperties, names.begin(), &TranscodeProperty::name);
  return TextIndex(names);
}

inline constexpr auto transcodePropertyIndex = indexOfTranscodeProperties();

}  // namespace detail

/// Returns the property of exactly this name; null when there is none. O(1).
[[nodiscard]] constexpr const TranscodeProperty* findTranscodeProperty(std::string_view name) noexcept {
  const auto place = detail::transcodePropertyIndex.find(name);
  return place ? &transcodeProperties[*place] : nullptr;
}

}  // namespace meridian::inline v0_2
