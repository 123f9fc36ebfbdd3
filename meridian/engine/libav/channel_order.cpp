#include "meridian/engine/libav/channel_order.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace meridian::inline v0_2::libav {
namespace {

/// Returns the bit of a channel among others: surround channels have other bits beside rear ones.
std::uint64_t bitWithin(std::span<const ChannelLabel> channels, ChannelLabel label) {
  using enum ChannelLabel;
  for (const ChannelLabel rear : {rearSurroundLeft, rearSurroundRight}) {
    if (rear == label || std::ranges::find(channels, rear) == channels.end()) continue;
    const std::array both{label, rear};
    return bitmapOfChannels(both).value_or(0) & ~bitmapOfChannels({&rear, 1}).value_or(0);
  }
  return bitmapOfChannels({&label, 1}).value_or(0);
}

}  // namespace

ChannelOrder channelOrder(std::span<const ChannelLabel> channels) {
  const auto bitmap = bitmapOfChannels(channels);
  if (!bitmap) return unplacedOrder(static_cast<int>(channels.size()));
  ChannelOrder order{LayoutPointer(new AVChannelLayout{}), {}};
  av_channel_layout_from_mask(order.layout.get(), *bitmap);
  // FFmpeg's channels are in the order of their bits.
  std::vector<int> map(channels.size());
  bool isSame = true;
  for (std::size_t place = 0; place < channels.size(); ++place) {
    const std::uint64_t own = bitWithin(channels, channels[place]);
    const auto rank = static_cast<std::size_t>(std::popcount(*bitmap & (own - 1)));
    if (rank < map.size()) map[rank] = static_cast<int>(place);
    isSame = isSame && rank == place;
  }
  if (!isSame) order.map = std::move(map);
  return order;
}

ChannelOrder unplacedOrder(int channels) {
  ChannelOrder order{LayoutPointer(new AVChannelLayout{}), {}};
  order.layout->order = AV_CHANNEL_ORDER_UNSPEC;
  order.layout->nb_channels = channels;
  return order;
}

}  // namespace meridian::inline v0_2::libav
