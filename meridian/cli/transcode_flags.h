/// \file
/// The transcoder's flags, group by group: which there are, and which of them accept a value.
///
///     findFlag("-vr")->takesValue();            // true
///     SAVTranscodeVideoArgumentFlag::allCases();  // "-vn", "-vcodec", "-vr", ...
///     normalizedFlag(" -VR");                    // "-vr"
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "meridian/base/enumeration.h"
#include "meridian/base/precondition.h"
#include "meridian/base/text_index.h"
#include "meridian/base/typed_text.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The groups of flags, in the order in which the list of all known flags has them.
enum class FlagGroup : std::uint8_t {
  command,
  general,
  video,
  audio,
  timecode,
  watermarkFile,
  watermarkText,
  cameraLook,
};

template <>
struct EnumerationTable<FlagGroup> {
  static constexpr auto rows = std::to_array<EnumerationRow<FlagGroup>>({
      {FlagGroup::command, "command", "Listing commands"},
      {FlagGroup::general, "general", "General"},
      {FlagGroup::video, "video", "Video"},
      {FlagGroup::audio, "audio", "Audio"},
      {FlagGroup::timecode, "timecode", "Timecode"},
      {FlagGroup::watermarkFile, "watermarkFile", "Watermark file"},
      {FlagGroup::watermarkText, "watermarkText", "Watermark text"},
      {FlagGroup::cameraLook, "cameraLook", "Camera look"},
  });
};

/// Whether a flag is followed by a value on the command line, and what reading does to that value.
enum class FlagValue : std::uint8_t {
  none,
  /// Lower-cased, deliberately also where it is a path or free text ("-progress_prefix", "-wmf_path", "-wmt_text").
  lowercase,
  /// A path that keeps its case.
  path,
};

/// One line of a group's table. A flag that is not a case is a public constant, but not in the list of all known flags.
template <typename Flag>
struct FlagRow {
  Flag flag;
  FlagValue value = FlagValue::none;
  /// What the flag does, where it stores no property of its own; empty where it does.
  std::string_view meaning = {};
  bool isCase = true;
};

/// Specialised for each group's type with the members `group` and `rows`, the group's flags in the order of its cases.
template <typename Flag>
struct FlagTable;

namespace detail {

/// Returns the member of each row that fulfils the predicate, in the order of the rows.
template <const auto& rows, auto member, auto predicate>
consteval auto membersWhere() {
  constexpr auto count = static_cast<std::size_t>(std::ranges::count_if(rows, predicate));
  std::array<std::size_t, count> chosen{};
  std::size_t end = 0;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (predicate(rows[row])) chosen[end++] = row;
  }
  return [&]<std::size_t... Place>(std::index_sequence<Place...>) {
    return std::array{rows[chosen[Place]].*member...};
  }(std::make_index_sequence<count>{});
}

template <typename Flag>
inline constexpr auto flagCases =
    membersWhere<FlagTable<Flag>::rows, &FlagRow<Flag>::flag, [](const auto& row) { return row.isCase; }>();

}  // namespace detail

/// Base of the flag groups' types: a typed text with the facts of its group's table.
template <typename Flag>
class FlagText : public TypedText<Flag> {
 public:
  using TypedText<Flag>::TypedText;

  /// Returns the group's cases.
  [[nodiscard]] static constexpr std::span<const Flag> allCases() noexcept { return detail::flagCases<Flag>; }

  /// Returns whether a value follows the flag. False only for the group's flags without a value; true for a text that
  /// is not a flag of the group.
  [[nodiscard]] constexpr bool acceptsArguments() const noexcept {
    return std::ranges::none_of(FlagTable<Flag>::rows, [this](const FlagRow<Flag>& row) {
      return row.value == FlagValue::none && row.flag.rawValue() == this->rawValue();
    });
  }
};

/// Listing commands: the transcoder prints a list or a piece of information and exits. None accepts a value.
/// "-wmf_burn_anchors" is deliberately not a case: the parser does not know it.
class SAVTranscodeCliCommand : public FlagText<SAVTranscodeCliCommand> {
 public:
  using FlagText::FlagText;
};

inline constexpr SAVTranscodeCliCommand SAVCliHelpFlag{"-h"};
inline constexpr SAVTranscodeCliCommand SAVCliCodecsFlag{"-codecs"};
inline constexpr SAVTranscodeCliCommand SAVCliFormatsFlag{"-formats"};
inline constexpr SAVTranscodeCliCommand SAVCliVersionFlag{"-version"};
inline constexpr SAVTranscodeCliCommand SAVCliAcknowledgementFlag{"-acknowledge"};
inline constexpr SAVTranscodeCliCommand SAVCliPresetsFlag{"-presets"};
inline constexpr SAVTranscodeCliCommand SAVCliAspectRatioScalingsFlag{"-aspect_scalings"};
inline constexpr SAVTranscodeCliCommand SAVCliCropAnchorsFlag{"-crop_anchors"};
inline constexpr SAVTranscodeCliCommand SAVCliColorSpacesFlag{"-color_spaces"};
inline constexpr SAVTranscodeCliCommand SAVCliAudioChannelLayoutsFlag{"-audio_channel_layouts"};
inline constexpr SAVTranscodeCliCommand SAVCliTimecodeBurnAnchorsFlag{"-tc_burn_anchors"};
inline constexpr SAVTranscodeCliCommand SAVCliWatermarkFileBurnAnchorsFlag{"-wmf_burn_anchors"};
inline constexpr SAVTranscodeCliCommand SAVCliGpuPlatformsFlag{"-gpu_platforms"};

template <>
struct FlagTable<SAVTranscodeCliCommand> {
  static constexpr FlagGroup group = FlagGroup::command;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeCliCommand>>({
      {SAVCliHelpFlag, FlagValue::none, "Print the usage"},
      {SAVCliCodecsFlag, FlagValue::none, "Print the video and audio codecs"},
      {SAVCliFormatsFlag, FlagValue::none, "Print the file formats"},
      {SAVCliVersionFlag, FlagValue::none, "Print the version"},
      {SAVCliAcknowledgementFlag, FlagValue::none, "Print the licences of the libraries in use"},
      {SAVCliPresetsFlag, FlagValue::none, "Print the presets and their settings"},
      {SAVCliAspectRatioScalingsFlag, FlagValue::none, "Print the aspect scalings"},
      {SAVCliCropAnchorsFlag, FlagValue::none, "Print the crop anchors"},
      {SAVCliColorSpacesFlag, FlagValue::none, "Print the colour spaces"},
      {SAVCliAudioChannelLayoutsFlag, FlagValue::none, "Print the audio channel layouts"},
      {SAVCliTimecodeBurnAnchorsFlag, FlagValue::none, "Print the anchors of a burnt-in timecode"},
      {SAVCliWatermarkFileBurnAnchorsFlag, FlagValue::none, "Print the anchors of a watermark image", false},
      {SAVCliGpuPlatformsFlag, FlagValue::none, "Print the GPU platforms"},
  });
};

/// General flags: the files of a transcode and how it reports. "-in" is a prefix: the flag of an input file is "-in_",
/// the number of its group, "_" and its place in the group.
class SAVTranscodeArgumentFlag : public FlagText<SAVTranscodeArgumentFlag> {
 public:
  using FlagText::FlagText;
};

inline constexpr SAVTranscodeArgumentFlag SAVInputPrefixFlag{"-in"};
inline constexpr SAVTranscodeArgumentFlag SAVOutputFileFlag{"-out"};
inline constexpr SAVTranscodeArgumentFlag SAVProgressFileFlag{"-progress_file"};
inline constexpr SAVTranscodeArgumentFlag SAVProgressOutputPrefixFlag{"-progress_prefix"};
inline constexpr SAVTranscodeArgumentFlag SAVOverwriteExistingFlag{"-overwrite"};
inline constexpr SAVTranscodeArgumentFlag SAVFileFormatFlag{"-file_format"};
inline constexpr SAVTranscodeArgumentFlag SAVColorLutFileFlag{"-clut"};
inline constexpr SAVTranscodeArgumentFlag SAVPrepareForWebFlag{"-web"};
inline constexpr SAVTranscodeArgumentFlag SAVPresetFlag{"-preset"};
inline constexpr SAVTranscodeArgumentFlag SAVWorkDirectoryFlag{"-work_dir"};

template <>
struct FlagTable<SAVTranscodeArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::general;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeArgumentFlag>>({
      {SAVInputPrefixFlag, FlagValue::path, "Read this file; numbered by group and place: -in_0_0 is the first"},
      {SAVOutputFileFlag, FlagValue::path},
      {SAVProgressFileFlag, FlagValue::path},
      {SAVProgressOutputPrefixFlag, FlagValue::lowercase},
      {SAVOverwriteExistingFlag, FlagValue::none},
      {SAVFileFormatFlag, FlagValue::lowercase},
      {SAVColorLutFileFlag, FlagValue::path},
      {SAVPrepareForWebFlag, FlagValue::none},
      {SAVPresetFlag, FlagValue::lowercase, "Add the settings of a preset, where the vector does not have them"},
      {SAVWorkDirectoryFlag, FlagValue::path},
  });
};

/// Video flags.
class SAVTranscodeVideoArgumentFlag : public FlagText<SAVTranscodeVideoArgumentFlag> {
 public:
  using FlagText::FlagText;
};

inline constexpr SAVTranscodeVideoArgumentFlag SAVNoVideoFlag{"-vn"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoFormatFlag{"-vcodec"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoFrameRateFlag{"-vr"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoDimensionsFlag{"-dims"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoAspectScalingFlag{"-aspect_scaling"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoAspectCropAnchorFlag{"-crop_anchor"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoBitRateFlag{"-vbr"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoBitDepthFlag{"-vbd"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoColorSpaceFlag{"-c_space"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoKeyFramesFlag{"-key_frames"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoGPUDecodingFlag{"-gpu_decoding"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoGPUEncodingFlag{"-gpu_encoding"};
inline constexpr SAVTranscodeVideoArgumentFlag SAVVideoProfileFlag{"-vprofile"};

template <>
struct FlagTable<SAVTranscodeVideoArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::video;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeVideoArgumentFlag>>({
      {SAVNoVideoFlag, FlagValue::none},
      {SAVVideoFormatFlag, FlagValue::lowercase},
      {SAVVideoFrameRateFlag, FlagValue::lowercase},
      {SAVVideoDimensionsFlag, FlagValue::lowercase},
      {SAVVideoAspectScalingFlag, FlagValue::lowercase},
      {SAVVideoAspectCropAnchorFlag, FlagValue::lowercase},
      {SAVVideoBitRateFlag, FlagValue::lowercase},
      {SAVVideoBitDepthFlag, FlagValue::lowercase},
      {SAVVideoColorSpaceFlag, FlagValue::lowercase},
      {SAVVideoKeyFramesFlag, FlagValue::lowercase},
      {SAVVideoGPUDecodingFlag, FlagValue::none},
      {SAVVideoGPUEncodingFlag, FlagValue::none},
      {SAVVideoProfileFlag, FlagValue::lowercase},
  });
};

/// Audio flags. "-ac_omit" is a prefix, for the tracks to be left out. "-acl_descs" and "-acl_bitmap" are deliberately
/// not cases: the parser accepts them because they contain "-acl".
class SAVTranscodeAudioArgumentFlag : public FlagText<SAVTranscodeAudioArgumentFlag> {
 public:
  using FlagText::FlagText;
};

inline constexpr SAVTranscodeAudioArgumentFlag SAVNoAudioFlag{"-an"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVCopyAudioFlag{"-acopy"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVAudioIgnoreTracksPrefixFlag{"-ac_omit"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVDiscreteAudioFlag{"-adiscrete"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVAudioFormatFlag{"-acodec"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVAudioBitsPerChannelFlag{"-abpc"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVAudioSampleRateFlag{"-asr"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVAudioChannelLayoutFlag{"-acl"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVAudioChannelLayoutTagFlag{"-acl_tag"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVAudioChannelLayoutDescriptionsFlag{"-acl_descs"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVAudioChannelLayoutBitmapFlag{"-acl_bitmap"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVAudioBitRateFlag{"-abr"};
inline constexpr SAVTranscodeAudioArgumentFlag SAVAudioQualityFlag{"-aqual"};

template <>
struct FlagTable<SAVTranscodeAudioArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::audio;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeAudioArgumentFlag>>({
      {SAVNoAudioFlag, FlagValue::none},
      {SAVCopyAudioFlag, FlagValue::none, "Copy the audio unchanged"},
      {SAVAudioIgnoreTracksPrefixFlag, FlagValue::lowercase,
       "Leave out an audio track; numbered from 0, without a value: -ac_omit_0"},
      {SAVDiscreteAudioFlag, FlagValue::none},
      {SAVAudioFormatFlag, FlagValue::lowercase},
      {SAVAudioBitsPerChannelFlag, FlagValue::lowercase},
      {SAVAudioSampleRateFlag, FlagValue::lowercase},
      {SAVAudioChannelLayoutFlag, FlagValue::lowercase},
      {SAVAudioChannelLayoutTagFlag, FlagValue::lowercase},
      {SAVAudioChannelLayoutDescriptionsFlag, FlagValue::lowercase, "", false},
      {SAVAudioChannelLayoutBitmapFlag, FlagValue::lowercase, "", false},
      {SAVAudioBitRateFlag, FlagValue::lowercase},
      {SAVAudioQualityFlag, FlagValue::lowercase},
  });
};

/// Timecode flags. "-tc_burn_anchor" is deliberately not a case: the parser accepts it because it contains "-tc_burn".
class SAVTranscodeTimecodeArgumentFlag : public FlagText<SAVTranscodeTimecodeArgumentFlag> {
 public:
  using FlagText::FlagText;
};

inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeMatchSourceFlag{"-tc_match"};
inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeFromCreationDateFlag{"-tc_creation"};
inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeCustomFlag{"-tc_custom"};
inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeFrameRateFlag{"-tc_rate"};
inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeIsDropFlag{"-tc_drop"};
inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeAddTrackFlag{"-tc_track"};
inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeAddBurnFlag{"-tc_burn"};
inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeBurnAnchorFlag{"-tc_burn_anchor"};
inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeBurnFontSize{"-tc_burn_size"};
inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeBurnFontRGB{"-tc_burn_font_rgb"};
inline constexpr SAVTranscodeTimecodeArgumentFlag SAVTimecodeBurnBoxRGB{"-tc_burn_box_rgb"};

template <>
struct FlagTable<SAVTranscodeTimecodeArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::timecode;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeTimecodeArgumentFlag>>({
      {SAVTimecodeAddTrackFlag, FlagValue::none},
      {SAVTimecodeAddBurnFlag, FlagValue::none},
      {SAVTimecodeBurnAnchorFlag, FlagValue::lowercase, "", false},
      {SAVTimecodeBurnFontSize, FlagValue::lowercase},
      {SAVTimecodeBurnFontRGB, FlagValue::lowercase},
      {SAVTimecodeBurnBoxRGB, FlagValue::lowercase},
      {SAVTimecodeMatchSourceFlag, FlagValue::none, "Take the timecode from the source"},
      {SAVTimecodeFromCreationDateFlag, FlagValue::none, "Derive the timecode from the source's creation date"},
      {SAVTimecodeCustomFlag, FlagValue::lowercase},
      {SAVTimecodeFrameRateFlag, FlagValue::lowercase},
      {SAVTimecodeIsDropFlag, FlagValue::none},
  });
};

/// Watermark-file flags, all with a value: an anchor, a path, a scale.
class SAVTranscodeWatermarkFileArgumentFlag : public FlagText<SAVTranscodeWatermarkFileArgumentFlag> {
 public:
  using FlagText::FlagText;
};

inline constexpr SAVTranscodeWatermarkFileArgumentFlag SAVWatermarkFileBurnFilePathFlag{"-wmf_path"};
inline constexpr SAVTranscodeWatermarkFileArgumentFlag SAVWatermarkFileBurnAnchorFlag{"-wmf_anchor"};
inline constexpr SAVTranscodeWatermarkFileArgumentFlag SAVWatermarkFileBurnScaleFlag{"-wmf_scale"};

template <>
struct FlagTable<SAVTranscodeWatermarkFileArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::watermarkFile;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeWatermarkFileArgumentFlag>>({
      {SAVWatermarkFileBurnAnchorFlag, FlagValue::lowercase},
      {SAVWatermarkFileBurnFilePathFlag, FlagValue::lowercase},
      {SAVWatermarkFileBurnScaleFlag, FlagValue::lowercase},
  });
};

/// Watermark-text flags.
class SAVTranscodeWatermarkTextArgumentFlag : public FlagText<SAVTranscodeWatermarkTextArgumentFlag> {
 public:
  using FlagText::FlagText;
};

inline constexpr SAVTranscodeWatermarkTextArgumentFlag SAVWatermarkTextAddBurnFlag{"-wmt_burn"};
inline constexpr SAVTranscodeWatermarkTextArgumentFlag SAVWatermarkTextBurnTextFlag{"-wmt_text"};
inline constexpr SAVTranscodeWatermarkTextArgumentFlag SAVWatermarkTextBurnFontSizeFlag{"-wmt_size"};
inline constexpr SAVTranscodeWatermarkTextArgumentFlag SAVWatermarkTextBurnAnchorFlag{"-wmt_anchor"};
inline constexpr SAVTranscodeWatermarkTextArgumentFlag SAVWatermarkTextBurnFontRGBFlag{"-wmt_font_rgb"};
inline constexpr SAVTranscodeWatermarkTextArgumentFlag SAVWatermarkTextBurnBoxRGBFlag{"-wmt_box_rgb"};

template <>
struct FlagTable<SAVTranscodeWatermarkTextArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::watermarkText;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeWatermarkTextArgumentFlag>>({
      {SAVWatermarkTextAddBurnFlag, FlagValue::none},
      {SAVWatermarkTextBurnTextFlag, FlagValue::lowercase},
      {SAVWatermarkTextBurnFontSizeFlag, FlagValue::lowercase},
      {SAVWatermarkTextBurnAnchorFlag, FlagValue::lowercase},
      {SAVWatermarkTextBurnFontRGBFlag, FlagValue::lowercase},
      {SAVWatermarkTextBurnBoxRGBFlag, FlagValue::lowercase},
  });
};

/// Camera look flags: the colour settings of ARRI look files, all with a value.
class SAVTranscodeArriLookArgumentFlag : public FlagText<SAVTranscodeArriLookArgumentFlag> {
 public:
  using FlagText::FlagText;
};

inline constexpr SAVTranscodeArriLookArgumentFlag SAVArriLookColorSpacePrimaryFlag{"-arri_cs"};
inline constexpr SAVTranscodeArriLookArgumentFlag SAVArriLookColorSpaceWhitePointFlag{"-arri_wp"};
inline constexpr SAVTranscodeArriLookArgumentFlag SAVArriLookColorSpaceCurveFlag{"-arri_curve"};
inline constexpr SAVTranscodeArriLookArgumentFlag SAVArriLookInvalidLookResolutionFlag{"-arri_inv_res"};

template <>
struct FlagTable<SAVTranscodeArriLookArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::cameraLook;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeArriLookArgumentFlag>>({
      {SAVArriLookColorSpacePrimaryFlag, FlagValue::lowercase},
      {SAVArriLookColorSpaceWhitePointFlag, FlagValue::lowercase},
      {SAVArriLookColorSpaceCurveFlag, FlagValue::lowercase},
      {SAVArriLookInvalidLookResolutionFlag, FlagValue::lowercase},
  });
};

/// A flag of any group, for code that treats all flags alike.
struct FlagDescription {
  FlagGroup group;
  std::string_view text;
  FlagValue value;
  /// What the flag does, where it is a listing command, "-preset" or a part of a joint property; empty for a flag that
  /// stores a property of its own: `TranscodeProperty::meaning` says it.
  std::string_view meaning;
  /// Whether the flag is one of its group's cases.
  bool isCase;

  [[nodiscard]] constexpr bool takesValue() const noexcept { return value != FlagValue::none; }
};

namespace detail {

template <typename... Flags>
struct FlagGroups {
  static constexpr std::size_t flagCount = (FlagTable<Flags>::rows.size() + ...);
  static constexpr std::size_t caseCount = (flagCases<Flags>.size() + ...);

  static consteval auto descriptions() {
    std::size_t place = 0;
    if (((FlagTable<Flags>::group != allCases<FlagGroup>()[place++]) || ...)) {
      preconditionFailed("flagDescriptions: the groups are not in the order of their cases");
    }
    std::array<FlagDescription, flagCount> result{};
    std::size_t count = 0;
    const auto append = [&]<typename Flag>(std::type_identity<Flag>) {
      for (const FlagRow<Flag>& row : FlagTable<Flag>::rows) {
        result[count++] = {FlagTable<Flag>::group, row.flag.rawValue(), row.value, row.meaning, row.isCase};
      }
    };
    (append(std::type_identity<Flags>{}), ...);
    return result;
  }

  static consteval auto texts() {
    std::array<std::string_view, flagCount> result{};
    std::ranges::transform(descriptions(), result.begin(), &FlagDescription::text);
    return result;
  }

  static consteval auto caseTexts() {
    std::array<std::string_view, caseCount> result{};
    auto end = result.begin();
    ((end = std::ranges::transform(flagCases<Flags>, end, [](const Flags& flag) { return flag.rawValue(); }).out), ...);
    return result;
  }
};

using AllFlagGroups =
    FlagGroups<SAVTranscodeCliCommand, SAVTranscodeArgumentFlag, SAVTranscodeVideoArgumentFlag,
               SAVTranscodeAudioArgumentFlag, SAVTranscodeTimecodeArgumentFlag, SAVTranscodeWatermarkFileArgumentFlag,
               SAVTranscodeWatermarkTextArgumentFlag, SAVTranscodeArriLookArgumentFlag>;

inline constexpr auto flagTexts = AllFlagGroups::texts();
inline constexpr auto flagTextIndex = TextIndex(flagTexts);

}  // namespace detail

/// Every flag, group by group.
inline constexpr auto flagDescriptions = detail::AllFlagGroups::descriptions();

/// The texts of all groups' cases, group by group: the flags that the parser knows.
inline constexpr auto allKnownCommandFlags = detail::AllFlagGroups::caseTexts();

/// Returns the flag with exactly this text; null when there is none. O(1).
[[nodiscard]] constexpr const FlagDescription* findFlag(std::string_view text) noexcept {
  const auto place = detail::flagTextIndex.find(text);
  return place ? &flagDescriptions[*place] : nullptr;
}

/// Returns the form in which flags are stored and compared: lower-cased and trimmed.
[[nodiscard]] MERIDIAN_API std::string normalizedFlag(std::string_view word);

}  // namespace meridian::inline v0_2
