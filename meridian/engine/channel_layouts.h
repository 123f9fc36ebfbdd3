/// \file
/// Channel layouts: the values of "-acl", Core Audio's tags and labels, and the bits of a WAVE file. For example:
///
///     channelLayoutWithBitmap(0x3)->tag  // 101 << 16 | 2, stereo
///     channelLabelOfBit(3)               // 4: LFE screen
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "meridian/cli/transcode_values.h"

namespace meridian::inline v0_2 {

/// A layout whose channels are in the order of the bits of a WAVE file, from bit 0, front left.
struct ChannelLayoutRow {
  std::uint64_t bitmap;
  /// Core Audio's tag: a number, and the count of channels in the low 16 bits. Absent where Core Audio's layout of
  /// these channels has them in another order.
  std::optional<std::uint32_t> tag;
  /// The value of "-acl"; absent if there is none.
  std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> value = std::nullopt;
};

/// Lists the layouts of "-acl", and others that have a tag of Core Audio (CoreAudioBaseTypes.h). Core Audio's surround
/// channels are WAVE's at the back or at the sides.
inline constexpr auto channelLayoutRows = std::to_array<ChannelLayoutRow>({
    {0x4, 100U << 16U | 1U, SAVMonoAudioLayout},
    {0x3, 101U << 16U | 2U, SAVStereoAudioLayout},
    {0x33, 108U << 16U | 4U, SAVQuadraphonicAudioLayout},
    {0x603, 108U << 16U | 4U, SAVQuadraphonicAudioLayout},
    {0x7, 113U << 16U | 3U},
    {0x37, 117U << 16U | 5U, SAVPentagonalAudioLayout},
    {0x607, 117U << 16U | 5U, SAVPentagonalAudioLayout},
    {0x137, std::nullopt, SAVHexagonalAudioLayout},
    {0x3f, 121U << 16U | 6U},
    {0x60f, 121U << 16U | 6U},
    {0x13f, 125U << 16U | 7U},
    {0x737, std::nullopt, SAVOctagonalAudioLayout},
    {0xff, 126U << 16U | 8U},
});

/// Returns the layout of exactly these channels; absent if there is none.
[[nodiscard]] constexpr std::optional<ChannelLayoutRow> channelLayoutWithBitmap(std::uint64_t bitmap) noexcept {
  for (const ChannelLayoutRow& row : channelLayoutRows) {
    if (row.bitmap == bitmap) return row;
  }
  return std::nullopt;
}

/// Returns Core Audio's label of the channel with this bit of a WAVE file: its number plus 1 for bits 0 to 17. Absent
/// for every other bit.
[[nodiscard]] constexpr std::optional<int> channelLabelOfBit(int bit) noexcept {
  if (bit < 0 || bit > 17) return std::nullopt;
  return bit + 1;
}

}  // namespace meridian::inline v0_2
