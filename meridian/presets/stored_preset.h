/// \file
/// Stored presets: conversion settings as a message of the suite's job model. For example:
///
///     stored::PresetInformation preset = storedPreset("Dailies", TranscodeCliArguments({"-vcodec", "h265"}));
///     codecType(preset)                                     // ConversionCodecType::h265
///     setVideoDimension(preset, VideoDimension::sevenTwentyP);
///     argumentsOf(preset).commandLine()                     // -vcodec h265 -dims 1280.000000x720.000000
#pragma once

#include <optional>
#include <string_view>

#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/export.h"
#include "meridian/media/conversion_codec_type.h"
#include "meridian/media/frame_rate.h"
#include "meridian/media/video_dimension.h"
#include "meridian/presets/stored_preset.pb.h"

namespace meridian::inline v0_2 {

/// Returns a stored preset with this name and the store's settings.
///
/// The preset gets every setting, rejected ones too, except those of one job: all flags that begin with "-in", and
/// "-out", "-overwrite", "-progress_file", "-progress_prefix", "-work_dir" and the listing commands. A text that parses
/// as the type of the setting's field is stored there; a text that the field would write differently ("3" for 3.0) is
/// stored beside it too, and so is everything that has no field. If flags differ only in case or white space, one
/// setting is stored, a valid one before a rejected one.
[[nodiscard]] MERIDIAN_API stored::PresetInformation storedPreset(std::string_view name,
                                                                  const TranscodeCliArguments& arguments);

/// Replaces the settings of a stored preset by the store's. Keeps its name and all fields that this library does not
/// know. Also keeps a scale of the source's size, or half its frame rate, unless the store has "-dims" or "-vr".
MERIDIAN_API void updateStoredPreset(stored::PresetInformation& preset, const TranscodeCliArguments& arguments);

/// Returns a store of the preset's settings: the fields in the order of the built-in presets, then the others, with
/// texts exactly as stored. A text beside a field is used only if it agrees with the field. Unknown flags, and values
/// that begin with "-" and so would be read as flags, become rejected entries of the store. Omitted are flags of one
/// job, and a scale of the source's size and half its frame rate, which a command line cannot express.
[[nodiscard]] MERIDIAN_API TranscodeCliArguments argumentsOf(const stored::PresetInformation& preset);

/// Returns the output size, read by `VideoDimension::fromStored`. For numbers that are not a choice, such as those of
/// `VideoDimension::custom(0, 0)`, returns `match` and writes a line to standard output.
[[nodiscard]] MERIDIAN_API VideoDimension videoDimension(const stored::PresetInformation& preset);
/// Stores the size and removes any text stored for it.
MERIDIAN_API void setVideoDimension(stored::PresetInformation& preset, const VideoDimension& dimension);

/// Returns the frame rate, read by `FrameRate::fromRawValue`; `match` if none is stored, absent for a number that is
/// not a rate.
[[nodiscard]] MERIDIAN_API std::optional<FrameRate> frameRate(const stored::PresetInformation& preset);
/// Stores the frame rate's number and removes any text stored for it. A custom rate of 0 reads back as `match`.
MERIDIAN_API void setFrameRate(stored::PresetInformation& preset, const FrameRate& rate);

/// Returns the video codec; absent if none is stored, or one that this library does not know.
[[nodiscard]] MERIDIAN_API std::optional<ConversionCodecType> codecType(const stored::PresetInformation& preset);
/// Stores the codec, or none, and removes any text stored for it.
MERIDIAN_API void setCodecType(stored::PresetInformation& preset, std::optional<ConversionCodecType> codec);

}  // namespace meridian::inline v0_2
