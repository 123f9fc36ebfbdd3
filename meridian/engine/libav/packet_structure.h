/// \file
/// Whether a packet that is copied without being decoded is whole, as far as its outer structure shows it.
#pragma once

#include "meridian/engine/libav/handles.h"

namespace meridian::inline v0_2::libav {

/// Returns false for a packet of images that cannot be what its codec writes: one whose units do not fill it, one that
/// lacks the codec's signature, or one that begins with zeros alone. True for all others.
[[nodiscard]] bool isWhole(const AVPacket& packet, const AVCodecParameters& parameters) noexcept;

}  // namespace meridian::inline v0_2::libav
