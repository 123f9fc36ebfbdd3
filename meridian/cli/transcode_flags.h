// The transcoder's flags: every word that may begin a setting on its command line, group by group.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "meridian/base/enumeration.h"
#include "meridian/base/text_index.h"
#include "meridian/base/typed_text.h"

namespace meridian::inline v0_2 {

/// The groups of flags, in the order in which the list of all known flags names them.
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
  /// Lower-cased. On purpose also where it is a path or free text ("-progress_prefix", "-wmf_path", "-wmt_text").
  lowercase,
  /// A path that keeps its case.
  path,
};

/// One line of a group's table. `place` is the flag's place among the group's cases, from 1; 0 keeps it out of them,
/// and so out of the list of all known flags.
template <typename Flag>
struct FlagRow {
  Flag flag;
  FlagValue value;
  std::size_t place;
};

/// Specialised for each group's type with the members `group` and `rows`, the group's flags in declaration order.
template <typename Flag>
struct FlagTable;

namespace detail {

template <typename Flag>
inline constexpr std::size_t flagCaseCount = static_cast<std::size_t>(
    std::ranges::count_if(FlagTable<Flag>::rows, [](const auto& row) { return row.place > 0; }));

template <typename Flag>
consteval auto flagCasesOfTable() {
  constexpr const auto& rows = FlagTable<Flag>::rows;
  std::array<bool, flagCaseCount<Flag>> taken{};
  std::array<std::size_t, flagCaseCount<Flag>> rowOfPlace{};
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (rows[row].place == 0) continue;
    const std::size_t place = rows[row].place - 1;
    if (place >= taken.size() || taken[place]) throw "the places of a group's cases are not 1, 2, 3 ...";
    taken[place] = true;
    rowOfPlace[place] = row;
  }
  return [&]<std::size_t... Place>(std::index_sequence<Place...>) {
    return std::array<Flag, sizeof...(Place)>{rows[rowOfPlace[Place]].flag...};
  }(std::make_index_sequence<flagCaseCount<Flag>>{});
}

template <typename Flag>
inline constexpr auto flagCases = flagCasesOfTable<Flag>();

}  // namespace detail

/// Base of the flag groups' types: a typed text with the facts of its group's table.
template <typename Flag>
class FlagText : public TypedText<Flag> {
 public:
  using TypedText<Flag>::TypedText;

  /// The group's cases, in their own order.
  [[nodiscard]] static constexpr std::span<const Flag> allCases() noexcept { return detail::flagCases<Flag>; }

  /// Whether a value follows the flag. False only for the group's value-less flags: a text that is none of the group's
  /// flags answers true.
  [[nodiscard]] constexpr bool acceptsArguments() const noexcept {
    return std::ranges::none_of(FlagTable<Flag>::rows, [this](const FlagRow<Flag>& row) {
      return row.value == FlagValue::none && row.flag.rawValue() == this->rawValue();
    });
  }
};

/// Listing commands: the transcoder prints a list or a piece of information and exits. None takes a value.
/// "-wmf_burn_anchors" is a constant that is kept out of the cases on purpose: it is not known to the parser.
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
      {SAVCliHelpFlag, FlagValue::none, 1},
      {SAVCliCodecsFlag, FlagValue::none, 2},
      {SAVCliFormatsFlag, FlagValue::none, 3},
      {SAVCliVersionFlag, FlagValue::none, 4},
      {SAVCliAcknowledgementFlag, FlagValue::none, 5},
      {SAVCliPresetsFlag, FlagValue::none, 6},
      {SAVCliAspectRatioScalingsFlag, FlagValue::none, 7},
      {SAVCliCropAnchorsFlag, FlagValue::none, 8},
      {SAVCliColorSpacesFlag, FlagValue::none, 9},
      {SAVCliAudioChannelLayoutsFlag, FlagValue::none, 10},
      {SAVCliTimecodeBurnAnchorsFlag, FlagValue::none, 11},
      {SAVCliWatermarkFileBurnAnchorsFlag, FlagValue::none, 0},
      {SAVCliGpuPlatformsFlag, FlagValue::none, 12},
  });
};

/// General flags: the files of a transcode and how it reports. "-in" is a prefix: an input file stands under "-in_",
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
      {SAVInputPrefixFlag, FlagValue::path, 1},
      {SAVOutputFileFlag, FlagValue::path, 2},
      {SAVProgressFileFlag, FlagValue::path, 3},
      {SAVProgressOutputPrefixFlag, FlagValue::lowercase, 4},
      {SAVOverwriteExistingFlag, FlagValue::none, 5},
      {SAVFileFormatFlag, FlagValue::lowercase, 6},
      {SAVColorLutFileFlag, FlagValue::path, 7},
      {SAVPrepareForWebFlag, FlagValue::none, 8},
      {SAVPresetFlag, FlagValue::lowercase, 9},
      {SAVWorkDirectoryFlag, FlagValue::path, 10},
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
      {SAVNoVideoFlag, FlagValue::none, 1},
      {SAVVideoFormatFlag, FlagValue::lowercase, 2},
      {SAVVideoFrameRateFlag, FlagValue::lowercase, 3},
      {SAVVideoDimensionsFlag, FlagValue::lowercase, 4},
      {SAVVideoAspectScalingFlag, FlagValue::lowercase, 5},
      {SAVVideoAspectCropAnchorFlag, FlagValue::lowercase, 6},
      {SAVVideoBitRateFlag, FlagValue::lowercase, 7},
      {SAVVideoBitDepthFlag, FlagValue::lowercase, 8},
      {SAVVideoColorSpaceFlag, FlagValue::lowercase, 9},
      {SAVVideoKeyFramesFlag, FlagValue::lowercase, 10},
      {SAVVideoGPUDecodingFlag, FlagValue::none, 11},
      {SAVVideoGPUEncodingFlag, FlagValue::none, 12},
      {SAVVideoProfileFlag, FlagValue::lowercase, 13},
  });
};

/// Audio flags. "-ac_omit" is a prefix, for the tracks to be left out. "-acl_descs" and "-acl_bitmap" are kept out of
/// the cases on purpose: the parser accepts them because they contain "-acl".
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
      {SAVNoAudioFlag, FlagValue::none, 1},
      {SAVCopyAudioFlag, FlagValue::none, 2},
      {SAVAudioIgnoreTracksPrefixFlag, FlagValue::lowercase, 3},
      {SAVDiscreteAudioFlag, FlagValue::none, 4},
      {SAVAudioFormatFlag, FlagValue::lowercase, 5},
      {SAVAudioBitsPerChannelFlag, FlagValue::lowercase, 6},
      {SAVAudioSampleRateFlag, FlagValue::lowercase, 7},
      {SAVAudioChannelLayoutFlag, FlagValue::lowercase, 8},
      {SAVAudioChannelLayoutTagFlag, FlagValue::lowercase, 9},
      {SAVAudioChannelLayoutDescriptionsFlag, FlagValue::lowercase, 0},
      {SAVAudioChannelLayoutBitmapFlag, FlagValue::lowercase, 0},
      {SAVAudioBitRateFlag, FlagValue::lowercase, 10},
      {SAVAudioQualityFlag, FlagValue::lowercase, 11},
  });
};

/// Timecode flags. The cases have an order of their own. "-tc_burn_anchor" is kept out of them on purpose: the parser
/// accepts it because it contains "-tc_burn".
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
      {SAVTimecodeMatchSourceFlag, FlagValue::none, 6},
      {SAVTimecodeFromCreationDateFlag, FlagValue::none, 7},
      {SAVTimecodeCustomFlag, FlagValue::lowercase, 8},
      {SAVTimecodeFrameRateFlag, FlagValue::lowercase, 9},
      {SAVTimecodeIsDropFlag, FlagValue::none, 10},
      {SAVTimecodeAddTrackFlag, FlagValue::none, 1},
      {SAVTimecodeAddBurnFlag, FlagValue::none, 2},
      {SAVTimecodeBurnAnchorFlag, FlagValue::lowercase, 0},
      {SAVTimecodeBurnFontSize, FlagValue::lowercase, 3},
      {SAVTimecodeBurnFontRGB, FlagValue::lowercase, 4},
      {SAVTimecodeBurnBoxRGB, FlagValue::lowercase, 5},
  });
};

/// Watermark-file flags, all written with a value: a path, an anchor, a scale.
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
      {SAVWatermarkFileBurnFilePathFlag, FlagValue::lowercase, 2},
      {SAVWatermarkFileBurnAnchorFlag, FlagValue::lowercase, 1},
      {SAVWatermarkFileBurnScaleFlag, FlagValue::lowercase, 3},
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
      {SAVWatermarkTextAddBurnFlag, FlagValue::none, 1},
      {SAVWatermarkTextBurnTextFlag, FlagValue::lowercase, 2},
      {SAVWatermarkTextBurnFontSizeFlag, FlagValue::lowercase, 3},
      {SAVWatermarkTextBurnAnchorFlag, FlagValue::lowercase, 4},
      {SAVWatermarkTextBurnFontRGBFlag, FlagValue::lowercase, 5},
      {SAVWatermarkTextBurnBoxRGBFlag, FlagValue::lowercase, 6},
  });
};

/// Camera look flags: the colour settings of ARRI look files, all written with a value.
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
      {SAVArriLookColorSpacePrimaryFlag, FlagValue::lowercase, 1},
      {SAVArriLookColorSpaceWhitePointFlag, FlagValue::lowercase, 2},
      {SAVArriLookColorSpaceCurveFlag, FlagValue::lowercase, 3},
      {SAVArriLookInvalidLookResolutionFlag, FlagValue::lowercase, 4},
  });
};

/// A flag of any group, for code that treats all flags alike.
struct FlagDescription {
  FlagGroup group;
  std::string_view text;
  FlagValue value;
  /// Whether the flag is one of its group's cases.
  bool isCase;

  [[nodiscard]] constexpr bool takesValue() const noexcept { return value != FlagValue::none; }
};

namespace detail {

template <typename... Flags>
struct FlagGroups {
  static constexpr std::size_t flagCount = (FlagTable<Flags>::rows.size() + ...);
  static constexpr std::size_t caseCount = (flagCaseCount<Flags> + ...);

  static consteval auto descriptions() {
    std::size_t place = 0;
    ((FlagTable<Flags>::group == allCases<FlagGroup>()[place++] ? void() : throw "the groups are not in their order"),
     ...);
    std::array<FlagDescription, flagCount> result{};
    std::size_t count = 0;
    const auto append = [&]<typename Flag>(std::type_identity<Flag>) {
      for (const FlagRow<Flag>& row : FlagTable<Flag>::rows) {
        result[count++] = {FlagTable<Flag>::group, row.flag.rawValue(), row.value, row.place > 0};
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

/// Every flag there is, group by group in declaration order.
inline constexpr auto flagDescriptions = detail::AllFlagGroups::descriptions();

/// The texts of all groups' cases, group by group in the order of the cases: the flags that the parser knows.
inline constexpr auto allKnownCommandFlags = detail::AllFlagGroups::caseTexts();

/// The flag with exactly this text; null when there is none. Takes the same time for every text.
[[nodiscard]] constexpr const FlagDescription* findFlag(std::string_view text) noexcept {
  const auto place = detail::flagTextIndex.find(text);
  return place ? &flagDescriptions[*place] : nullptr;
}

}  // namespace meridian::inline v0_2
