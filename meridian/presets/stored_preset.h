// Stored presets: conversion settings as a message of the suite's job model, and what the library reads of it.
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

/// A stored preset with this name and the store's settings.
///
/// Every setting of the store goes in, rejected ones too, but for what belongs to one job and not to a preset: every
/// flag that begins with "-in", "-out", "-overwrite", "-progress_file", "-progress_prefix", "-work_dir" and the listing
/// commands. A setting that has a field goes there when its text reads as the field's type; its text is kept beside the
/// field where it is not the one that the field is written as ("3.0", "960.000000x540.000000"). Of settings whose flags
/// differ in case or blanks alone one goes in, a valid one before a rejected one.
[[nodiscard]] MERIDIAN_API stored::PresetInformation storedPreset(std::string_view name,
                                                                  const TranscodeCliArguments& arguments);

/// Gives a stored preset the store's settings in place of its own. Its name stays, and so do fields that this library
/// does not know; a scale of the source's size, or half its frame rate, stays unless the store has "-dims" or "-vr".
MERIDIAN_API void updateStoredPreset(stored::PresetInformation& preset, const TranscodeCliArguments& arguments);

/// A store of the preset's settings: fields first, in the order in which the built-in presets have them, then the
/// others. Texts are taken as they are stored. The fields hold: the text kept beside a field counts while it says what
/// the field says. Rejected entries of the store are flags that no command line knows, and values that begin with "-",
/// which would be read as flags. Flags of one job are left out, as are a scale of the source's size and half its frame
/// rate, which a command line cannot say.
[[nodiscard]] MERIDIAN_API TranscodeCliArguments argumentsOf(const stored::PresetInformation& preset);

/// The output size that the preset's numbers stand for, by `VideoDimension::fromStored`. Where they fit no choice the
/// result is `match`, and a line that says so goes to standard output; so it is for a size or scale that was stored
/// before it was entered, such as `VideoDimension::custom(0, 0)`.
[[nodiscard]] MERIDIAN_API VideoDimension videoDimension(const stored::PresetInformation& preset);
/// Stores the size, in place of any text that was kept for it.
MERIDIAN_API void setVideoDimension(stored::PresetInformation& preset, const VideoDimension& dimension);

/// The frame rate; `match` when none is stored, absent for a number that is none (see `FrameRate::fromRawValue`).
[[nodiscard]] MERIDIAN_API std::optional<FrameRate> frameRate(const stored::PresetInformation& preset);
/// Stores the frame rate's number, in place of any text that was kept for it. A custom rate of 0 reads back as `match`.
MERIDIAN_API void setFrameRate(stored::PresetInformation& preset, const FrameRate& rate);

/// The video codec; absent when none is stored or it is none that the library knows.
[[nodiscard]] MERIDIAN_API std::optional<ConversionCodecType> codecType(const stored::PresetInformation& preset);
/// Stores the codec, or none, in place of any text that was kept for it.
MERIDIAN_API void setCodecType(stored::PresetInformation& preset, std::optional<ConversionCodecType> codec);

}  // namespace meridian::inline v0_2
