/// \file
/// What the listing commands of the transcoder print: usage, codecs, formats, versions, licences, presets and values.
/// For example:
///
///     const auto listing = listingOf(explain({"-color_spaces"}), encoderInventory(), {});
///     if (listing) std::cout << *listing;  // "rec_2020\nrec_709\nsRGB\nsmpte_c\nebu_3213\n"
#pragma once

#include <optional>
#include <span>
#include <string>

#include "meridian/cli/transcode_explanation.h"
#include "meridian/engine/encoder_inventory.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Returns what the listing commands of an argument vector print, in the order of the commands; absent without any. A
/// vector with a listing command transcodes nothing. `openDevices` are the kinds of GPUs that can be opened here, such
/// as "vaapi".
[[nodiscard]] MERIDIAN_API std::optional<std::string> listingOf(const TranscodeExplanation& words,
                                                                const EncoderInventory& inventory,
                                                                std::span<const std::string> openDevices);

}  // namespace meridian::inline v0_2
