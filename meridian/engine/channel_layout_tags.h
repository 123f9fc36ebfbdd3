/// \file
/// The channels of a layout by every name that the flags of a channel layout have for them: values of "-acl", Core
/// Audio's layout tags and labels, and the bits of a WAVE file. For example:
///
///     channelsOfLayoutTag(121U << 16U | 6U)      // L, R, C, LFE, Ls, Rs
///     channelsOfLayout(SAVPentagonalAudioLayout) // L, R, Ls, Rs, C
///     usualChannels(6)                           // L, R, C, LFE, Ls, Rs
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/cli/transcode_values.h"

namespace meridian::inline v0_2 {

/// The place of a channel. The raw value is the number of Core Audio's label (CoreAudioBaseTypes.h); numbers 1 to 18
/// are one more than the bit of a WAVE file.
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

template <>
struct EnumerationTable<ChannelLabel> {
  struct Row {
    ChannelLabel value;
    int rawValue;
    std::string_view description;
  };
  using enum ChannelLabel;
  static constexpr auto rows = std::to_array<Row>({
      {left, 1, "L"},
      {right, 2, "R"},
      {center, 3, "C"},
      {lfe, 4, "LFE"},
      {leftSurround, 5, "Ls"},
      {rightSurround, 6, "Rs"},
      {leftCenter, 7, "Lc"},
      {rightCenter, 8, "Rc"},
      {centerSurround, 9, "Cs"},
      {leftSurroundDirect, 10, "Lsd"},
      {rightSurroundDirect, 11, "Rsd"},
      {topCenter, 12, "Ts"},
      {topFrontLeft, 13, "Vhl"},
      {topFrontCenter, 14, "Vhc"},
      {topFrontRight, 15, "Vhr"},
      {topBackLeft, 16, "Tbl"},
      {topBackCenter, 17, "Tbc"},
      {topBackRight, 18, "Tbr"},
      {rearSurroundLeft, 33, "Rls"},
      {rearSurroundRight, 34, "Rrs"},
      {leftWide, 35, "Lw"},
      {rightWide, 36, "Rw"},
      {lfe2, 37, "LFE2"},
      {leftTotal, 38, "Lt"},
      {rightTotal, 39, "Rt"},
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
    std::size_t place = 0;
    for (const ChannelLabel label : list) labels[place++] = label;
  }

  [[nodiscard]] constexpr const ChannelLabel* begin() const noexcept { return labels.data(); }
  [[nodiscard]] constexpr const ChannelLabel* end() const noexcept { return labels.data() + count; }
};

/// A layout by Core Audio's tag, which is `number << 16 | channels`.
struct ChannelLayoutTagRow {
  std::uint32_t number;
  ChannelList channels;
  /// The value of "-acl"; absent if there is none.
  std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> value = std::nullopt;

  [[nodiscard]] constexpr std::uint32_t tag() const noexcept {
    return number << 16U | static_cast<std::uint32_t>(channels.count);
  }
};

namespace detail {

consteval auto makeChannelLayoutTags() {
  using enum ChannelLabel;
  constexpr ChannelLabel L = left, R = right, C = center, Ls = leftSurround, Rs = rightSurround, Lc = leftCenter,
                         Rc = rightCenter, Cs = centerSurround, Rls = rearSurroundLeft, Rrs = rearSurroundRight;
  return std::to_array<ChannelLayoutTagRow>({
      {100, {C}, SAVMonoAudioLayout},
      {101, {L, R}, SAVStereoAudioLayout},
      {103, {leftTotal, rightTotal}},
      {108, {L, R, Ls, Rs}, SAVQuadraphonicAudioLayout},
      {109, {L, R, Ls, Rs, C}, SAVPentagonalAudioLayout},
      {110, {L, R, Ls, Rs, C, Cs}, SAVHexagonalAudioLayout},
      {111, {L, R, Ls, Rs, C, Cs, leftSurroundDirect, rightSurroundDirect}, SAVOctagonalAudioLayout},
      {113, {L, R, C}},
      {114, {C, L, R}},
      {115, {L, R, C, Cs}},
      {116, {C, L, R, Cs}},
      {117, {L, R, C, Ls, Rs}},
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
  });
}

}  // namespace detail

/// Lists the layouts of the values of "-acl" and of Core Audio's tags (CoreAudioBaseTypes.h) with known places.
inline constexpr auto channelLayoutTagRows = detail::makeChannelLayoutTags();

/// The number of Core Audio's tag of channels that have an order but no places; its low 16 bits are their number.
inline constexpr std::uint32_t discreteLayoutTagNumber = 147;

/// Returns the channels of a tag of Core Audio; absent for a tag that is not known.
[[nodiscard]] constexpr std::optional<ChannelList> channelsOfLayoutTag(std::uint32_t tag) noexcept {
  for (const ChannelLayoutTagRow& row : channelLayoutTagRows) {
    if (row.tag() == tag) return row.channels;
  }
  return std::nullopt;
}

/// Returns the channels of a value of "-acl"; absent for a text that is not one.
[[nodiscard]] constexpr std::optional<ChannelList> channelsOfLayout(
    const SAVTranscodeArgumentAudioChannelLayoutValue& value) noexcept {
  for (const ChannelLayoutTagRow& row : channelLayoutTagRows) {
    if (row.value == value) return row.channels;
  }
  return std::nullopt;
}

/// Returns the usual places of this many channels: 5.1 for six. Absent for more than eight and for fewer than one,
/// which have none.
[[nodiscard]] constexpr std::optional<ChannelList> usualChannels(std::int64_t count) noexcept {
  constexpr std::array<std::uint32_t, 8> numbers{100, 101, 113, 115, 117, 121, 125, 128};
  if (count < 1 || count > 8) return std::nullopt;
  const auto channels = static_cast<std::uint32_t>(count);
  return channelsOfLayoutTag(numbers[channels - 1] << 16U | channels);
}

/// Returns the channels of a WAVE file with these bits, in their order; absent for no bits and for bits above 17.
[[nodiscard]] constexpr std::optional<ChannelList> channelsOfBitmap(std::uint64_t bitmap) noexcept {
  constexpr std::size_t bits = 18;
  if (bitmap == 0 || bitmap >= 1U << bits) return std::nullopt;
  ChannelList channels;
  for (std::size_t bit = 0; bit < bits; ++bit) {
    if ((bitmap >> bit & 1U) != 0) channels.labels[channels.count++] = allCases<ChannelLabel>()[bit];
  }
  return channels;
}

}  // namespace meridian::inline v0_2
