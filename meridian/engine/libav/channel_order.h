/// \file
/// FFmpeg's channel layouts for lists of places. For example:
///
///     channelOrder({ChannelLabel::right, ChannelLabel::left}).map;  // 1, 0: the second channel comes first
#pragma once

extern "C" {
#include <libavutil/channel_layout.h>
}

#include <memory>
#include <span>
#include <vector>

#include "meridian/engine/channel_layouts.h"

namespace meridian::inline v0_2::libav {

struct FreesLayout {
  void operator()(AVChannelLayout* layout) const noexcept {
    av_channel_layout_uninit(layout);
    delete layout;
  }
};
using LayoutPointer = std::unique_ptr<AVChannelLayout, FreesLayout>;

/// A layout of FFmpeg, and which channel of the list is at each of its places.
struct ChannelOrder {
  LayoutPointer layout;
  /// Empty if the order is the same.
  std::vector<int> map;
};

/// Returns the layout of channels at these places; without places where two of them are at one.
[[nodiscard]] ChannelOrder channelOrder(std::span<const ChannelLabel> channels);

/// Returns a layout of channels without places.
[[nodiscard]] ChannelOrder unplacedOrder(int channels);

}  // namespace meridian::inline v0_2::libav
