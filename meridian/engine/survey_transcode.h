/// \file
/// Looks at the files that the words of a transcode name, so that it can be planned. For example:
///
///     const TranscodeExplanation words = explain({"-in_0_0", "a.mov", "-out", "b.mov", "-vcodec", "h264"});
///     const EncoderInventory& inventory = encoderInventory();
///     const TranscodeSurvey survey = surveyTranscode(words, inventory);
///     const auto plan = planTranscode(words, survey.media, inventory, survey.surroundings);
///
/// or, in one call, `planTranscode(words)`.
#pragma once

#include <string>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/encoder_inventory.h"
#include "meridian/engine/media_description.h"
#include "meridian/engine/media_error.h"
#include "meridian/engine/transcode_plan.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// What a plan needs to know about files, fonts and devices.
struct TranscodeSurvey {
  /// The descriptions of the input files, in the order of `TranscodeCliArguments::inputFiles`.
  std::vector<Expected<MediaDescription, MediaError>> media;
  TranscodeSurroundings surroundings;
};

/// Looks at everything that the words name; creates and changes nothing. What cannot be looked at is a part of the
/// result. Only what the words ask for costs time: the LUT is read, the watermark described, a font looked for and a
/// device opened where a flag needs them.
///
/// - Whether a path can be written to is told by permissions alone. A FIFO or a device will do for progress.
/// - The watermark is the image at the path as written; else at the path in lower case; else the one image whose path
///   differs from it in case alone.
/// - The LUT has to be one that the library reads, by its published format or else as rows of three numbers.
[[nodiscard]] MERIDIAN_API TranscodeSurvey surveyTranscode(const TranscodeExplanation& words,
                                                           const EncoderInventory& inventory,
                                                           const DescriptionLimits& limits = {});

/// Looks at the files and plans for the FFmpeg that this process runs with.
[[nodiscard]] MERIDIAN_API Expected<TranscodePlan, std::vector<TranscodePlanError>> planTranscode(
    const TranscodeExplanation& words, const DescriptionLimits& limits = {});

/// Returns the kinds of GPUs that can be opened here, such as "vaapi". Opening one may take a second.
[[nodiscard]] MERIDIAN_API std::vector<std::string> openGpuDevices(const EncoderInventory& inventory);

}  // namespace meridian::inline v0_2
