/// \file
/// Channel layouts by every name that they have: values of "-acl", Core Audio's tags and labels, and the bits of a WAVE
/// file, in whose order FFmpeg stores channels. For example:
///
///     channelLayoutWithBitmap(0x3)->tag            // 101 << 16 | 2, stereo
///     channelsOfLayout(SAVPentagonalAudioLayout)   // L, R, C, Ls, Rs
///     channelsOfLayoutTag(122U << 16U | 6U)        // L, R, Ls, Rs, C, LFE
///     inBitmapOrder(*channelsOfLayoutTag(122U << 16U | 6U))  // L, R, C, LFE, Ls, Rs
///     channelLabelOfBit(3)                         // 4: LFE
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/cli/transcode_values.h"

namespace meridian::inline v0_2 {

/// The place of a channel. The raw value is the number of Core Audio's label (CoreAudioBaseTypes.h).
enum class ChannelLabel : std::uint8_t {
  left,
  right,
  center,
  lfe,
  leftSurround,
  rightSurround,
  leftCenter,
  rightCenter,
  centerSurround,
  leftSurroundDirect,
  rightSurroundDirect,
  topCenter,
  topFrontLeft,
  topFrontCenter,
  topFrontRight,
  topBackLeft,
  topBackCenter,
  topBackRight,
  rearSurroundLeft,
  rearSurroundRight,
  leftWide,
  rightWide,
  lfe2,
  leftTotal,
  rightTotal,
  mono,
};

struct ChannelLabelRow {
  ChannelLabel value;
  int rawValue;
  std::string_view description;
  /// The bit of a WAVE file, or of FFmpeg's channel masks beyond bit 17; absent for a place that has none of its own.
  std::optional<int> bit = std::nullopt;
};

template <>
struct EnumerationTable<ChannelLabel> {
  using enum ChannelLabel;
  static constexpr auto rows = std::to_array<ChannelLabelRow>({
      {left, 1, "L", 0},
      {right, 2, "R", 1},
      {center, 3, "C", 2},
      {lfe, 4, "LFE", 3},
      {leftSurround, 5, "Ls", 4},
      {rightSurround, 6, "Rs", 5},
      {leftCenter, 7, "Lc", 6},
      {rightCenter, 8, "Rc", 7},
      {centerSurround, 9, "Cs", 8},
      {leftSurroundDirect, 10, "Lsd", 9},
      {rightSurroundDirect, 11, "Rsd", 10},
      {topCenter, 12, "Ts", 11},
      {topFrontLeft, 13, "Vhl", 12},
      {topFrontCenter, 14, "Vhc", 13},
      {topFrontRight, 15, "Vhr", 14},
      {topBackLeft, 16, "Tbl", 15},
      {topBackCenter, 17, "Tbc", 16},
      {topBackRight, 18, "Tbr", 17},
      {rearSurroundLeft, 33, "Rls"},
      {rearSurroundRight, 34, "Rrs"},
      {leftWide, 35, "Lw", 31},
      {rightWide, 36, "Rw", 32},
      {lfe2, 37, "LFE2", 35},
      {leftTotal, 38, "Lt", 29},
      {rightTotal, 39, "Rt", 30},
      {mono, 42, "M"},
  });
};

/// The places of up to 18 channels, in the order of the samples.
struct ChannelList {
  std::array<ChannelLabel, 18> labels{};
  std::size_t count = 0;

  constexpr ChannelList() noexcept = default;
  // NOLINTNEXTLINE(google-explicit-constructor): rows of tables list their channels.
  constexpr ChannelList(std::initializer_list<ChannelLabel> list) noexcept : count(list.size()) {
    std::ranges::copy(list, labels.begin());
  }

  [[nodiscard]] constexpr const ChannelLabel* begin() const noexcept { return labels.data(); }
  [[nodiscard]] constexpr const ChannelLabel* end() const noexcept { return labels.data() + count; }
  [[nodiscard]] constexpr std::size_t size() const noexcept { return count; }
};

/// A layout of channels in an order.
struct ChannelLayoutRow {
  /// The number of Core Audio's tag (CoreAudioBaseTypes.h); absent if it has none.
  std::optional<std::uint32_t> number;
  ChannelList channels;
  /// The value of "-acl"; absent if there is none.
  std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> value = std::nullopt;
  /// Core Audio's tag: the number, and the count of channels in the low 16 bits.
  std::optional<std::uint32_t> tag = std::nullopt;
};

namespace detail {

consteval auto makeChannelLayouts() {
  using enum ChannelLabel;
  constexpr ChannelLabel L = left;
  constexpr ChannelLabel R = right;
  constexpr ChannelLabel C = center;
  constexpr ChannelLabel Ls = leftSurround;
  constexpr ChannelLabel Rs = rightSurround;
  constexpr ChannelLabel Lc = leftCenter;
  constexpr ChannelLabel Rc = rightCenter;
  constexpr ChannelLabel Cs = centerSurround;
  constexpr ChannelLabel Rls = rearSurroundLeft;
  constexpr ChannelLabel Rrs = rearSurroundRight;
  auto rows = std::to_array<ChannelLayoutRow>({
      {100, {C}, SAVMonoAudioLayout},
      {101, {L, R}, SAVStereoAudioLayout},
      {103, {leftTotal, rightTotal}},
      {108, {L, R, Ls, Rs}, SAVQuadraphonicAudioLayout},
      {109, {L, R, Ls, Rs, C}},
      {110, {L, R, Ls, Rs, C, Cs}},
      {111, {L, R, Ls, Rs, C, Cs, leftSurroundDirect, rightSurroundDirect}},
      {113, {L, R, C}},
      {114, {C, L, R}},
      {115, {L, R, C, Cs}},
      {116, {C, L, R, Cs}},
      {117, {L, R, C, Ls, Rs}, SAVPentagonalAudioLayout},
      {118, {L, R, Ls, Rs, C}},
      {119, {L, C, R, Ls, Rs}},
      {120, {C, L, R, Ls, Rs}},
      {121, {L, R, C, lfe, Ls, Rs}},
      {122, {L, R, Ls, Rs, C, lfe}},
      {123, {L, C, R, Ls, Rs, lfe}},
      {124, {C, L, R, Ls, Rs, lfe}},
      {125, {L, R, C, lfe, Ls, Rs, Cs}},
      {126, {L, R, C, lfe, Ls, Rs, Lc, Rc}},
      {127, {C, Lc, Rc, L, R, Ls, Rs, lfe}},
      {128, {L, R, C, lfe, Ls, Rs, Rls, Rrs}},
      {129, {L, R, Ls, Rs, C, lfe, Lc, Rc}},
      {130, {L, R, C, lfe, Ls, Rs, leftTotal, rightTotal}},
      {131, {L, R, Cs}},
      {132, {L, R, Ls, Rs}},
      {133, {L, R, lfe}},
      {134, {L, R, lfe, Cs}},
      {135, {L, R, lfe, Ls, Rs}},
      {136, {L, R, C, lfe}},
      {137, {L, R, C, lfe, Cs}},
      {138, {L, R, Ls, Rs, lfe}},
      {139, {L, R, Ls, Rs, C, Cs}},
      {140, {L, R, Ls, Rs, C, Rls, Rrs}},
      {141, {C, L, R, Ls, Rs, Cs}},
      {142, {C, L, R, Ls, Rs, Cs, lfe}},
      {143, {C, L, R, Ls, Rs, Rls, Rrs}},
      {144, {C, L, R, Ls, Rs, Rls, Rrs, Cs}},
      {148, {L, R, Ls, Rs, C, Lc, Rc}},
      {std::nullopt, {L, R, C, Ls, Rs, Cs}, SAVHexagonalAudioLayout},
      {std::nullopt, {L, R, C, Ls, Rs, Cs, leftSurroundDirect, rightSurroundDirect}, SAVOctagonalAudioLayout},
      {std::nullopt,
       {L, R, C, Ls, Rs, Cs, leftSurroundDirect, rightSurroundDirect, topFrontLeft, topFrontCenter, topFrontRight,
        topBackLeft, topBackCenter, topBackRight, leftWide, rightWide}},
  });
  for (ChannelLayoutRow& row : rows) {
    if (row.number) row.tag = *row.number << 16U | static_cast<std::uint32_t>(row.channels.count);
  }
  return rows;
}

}  // namespace detail

/// Lists the layouts of the values of "-acl", of Core Audio's tags with known places, and the usual one of 16 channels.
inline constexpr auto channelLayoutRows = detail::makeChannelLayouts();

/// The number of Core Audio's tag of channels that have an order but no places; its low 16 bits are their number.
inline constexpr std::uint32_t discreteLayoutTagNumber = 147;

/// Returns the channels of a tag of Core Audio; absent for a tag that is not known.
[[nodiscard]] constexpr std::optional<ChannelList> channelsOfLayoutTag(std::uint32_t tag) noexcept {
  for (const ChannelLayoutRow& row : channelLayoutRows) {
    if (row.tag == tag) return row.channels;
  }
  return std::nullopt;
}

/// Returns the channels of a value of "-acl"; absent for a text that is not one.
[[nodiscard]] constexpr std::optional<ChannelList> channelsOfLayout(
    const SAVTranscodeArgumentAudioChannelLayoutValue& value) noexcept {
  for (const ChannelLayoutRow& row : channelLayoutRows) {
    if (row.value == value) return row.channels;
  }
  return std::nullopt;
}

/// Returns the usual places of this many channels, 1 to 8 or 16: 5.1 for six. Absent for every other number, which has
/// none.
[[nodiscard]] constexpr std::optional<ChannelList> usualChannels(std::int64_t count) noexcept {
  constexpr std::array<std::uint32_t, 8> numbers{100, 101, 113, 115, 117, 121, 125, 128};
  if (count == 16) return channelLayoutRows.back().channels;
  if (count < 1 || count > 8) return std::nullopt;
  const auto channels = static_cast<std::uint32_t>(count);
  return channelsOfLayoutTag(numbers[channels - 1] << 16U | channels);
}

static_assert(usualChannels(16)->count == 16);

/// Returns the channels with these bits, in their order; absent for no bits and for bits without a label.
[[nodiscard]] constexpr std::optional<ChannelList> channelsOfBitmap(std::uint64_t bitmap) noexcept {
  ChannelList channels;
  for (int bit = 0; bit < 64; ++bit) {
    if ((bitmap >> bit & 1U) == 0) continue;
    const auto row = std::ranges::find(EnumerationTable<ChannelLabel>::rows, bit,
                                       [](const auto& each) { return each.bit.value_or(-1); });
    if (row == EnumerationTable<ChannelLabel>::rows.end() || channels.count == channels.labels.size()) {
      return std::nullopt;
    }
    channels.labels[channels.count++] = row->value;
  }
  return channels.count > 0 ? std::optional(channels) : std::nullopt;
}

/// Returns the bits of channels; absent for no channels, and if two would have the same bit. Where there are surround
/// channels at the rear too, Core Audio's Ls and Rs are at the sides.
[[nodiscard]] constexpr std::optional<std::uint64_t> bitmapOfChannels(std::span<const ChannelLabel> channels) noexcept {
  using enum ChannelLabel;
  const bool hasRear = std::ranges::find(channels, rearSurroundLeft) != channels.end() ||
                       std::ranges::find(channels, rearSurroundRight) != channels.end();
  std::uint64_t bitmap = 0;
  for (ChannelLabel label : channels) {
    if (hasRear && label == leftSurround) label = leftSurroundDirect;
    if (hasRear && label == rightSurround) label = rightSurroundDirect;
    if (label == rearSurroundLeft) label = leftSurround;
    if (label == rearSurroundRight) label = rightSurround;
    if (label == mono) label = center;
    const std::uint64_t bit = std::uint64_t{1} << tableRow(label).bit.value_or(0);
    if ((bitmap & bit) != 0) return std::nullopt;
    bitmap |= bit;
  }
  return bitmap != 0 ? std::optional(bitmap) : std::nullopt;
}

/// Returns the channels in the order of their bits; absent where `bitmapOfChannels` is.
[[nodiscard]] constexpr std::optional<ChannelList> inBitmapOrder(std::span<const ChannelLabel> channels) noexcept {
  const auto bitmap = bitmapOfChannels(channels);
  return bitmap ? channelsOfBitmap(*bitmap) : std::nullopt;
}

/// Returns the bitmap with a pair of surround channels at the back moved to the sides, or the other way round; as it is
/// without such a pair, and with channels at both.
[[nodiscard]] constexpr std::uint64_t withOtherSurround(std::uint64_t bitmap) noexcept {
  constexpr std::uint64_t backs = 0x30;
  constexpr std::uint64_t sides = 0x600;
  const std::uint64_t surround = bitmap & (backs | sides);
  return surround == backs || surround == sides ? bitmap ^ (backs | sides) : bitmap;
}

/// Returns the layout of exactly these channels in the order of their bits; absent if there is none. Surround channels
/// at the sides are Core Audio's Ls and Rs where there are none at the back.
[[nodiscard]] constexpr std::optional<ChannelLayoutRow> channelLayoutWithBitmap(std::uint64_t bitmap) noexcept {
  constexpr std::uint64_t sides = 0x600;
  const auto channels = channelsOfBitmap((bitmap & sides) != 0 ? withOtherSurround(bitmap) : bitmap);
  if (!channels) return std::nullopt;
  for (const ChannelLayoutRow& row : channelLayoutRows) {
    if (std::ranges::equal(row.channels, *channels)) return row;
  }
  return std::nullopt;
}

/// Returns the number of Core Audio's label of the channel with this bit; absent for a bit without a label.
[[nodiscard]] constexpr std::optional<int> channelLabelOfBit(int bit) noexcept {
  for (const auto& row : EnumerationTable<ChannelLabel>::rows) {
    if (row.bit == bit) return row.rawValue;
  }
  return std::nullopt;
}

}  // namespace meridian::inline v0_2
