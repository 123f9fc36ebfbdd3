#include "meridian/engine/libav/packet_structure.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace meridian::inline v0_2::libav {
namespace {

using Bytes = std::span<const std::uint8_t>;

std::size_t numberIn(Bytes bytes) noexcept {
  std::size_t number = 0;
  for (const std::uint8_t byte : bytes) number = number << 8U | byte;
  return number;
}

/// Returns how many bytes the lengths of units have, by the configuration of H.264 (ISO/IEC 14496-15, 5.3.3.1) or H.265
/// (8.3.3.1); 0 for units with start codes.
std::size_t lengthSize(AVCodecID codec, Bytes configuration) noexcept {
  const std::size_t place = codec == AV_CODEC_ID_H264 ? 4 : 21;
  const bool hasLengths = configuration.size() > place && configuration[0] == 1;
  return hasLengths ? (configuration[place] & 3U) + 1U : 0;
}

/// Returns whether units with lengths in front fill the packet.
bool isFilled(Bytes bytes, std::size_t sizeOfLength) noexcept {
  while (bytes.size() > sizeOfLength) {
    const std::size_t length = numberIn(bytes.first(sizeOfLength));
    bytes = bytes.subspan(sizeOfLength);
    if (length == 0 || length > bytes.size()) return false;
    bytes = bytes.subspan(length);
  }
  return bytes.empty();
}

/// Returns whether a frame of ProRes has its signature, and the size that it states.
bool isProResFrame(Bytes bytes) noexcept {
  constexpr std::string_view signature = "icpf";
  return bytes.size() > 8 &&
         std::ranges::equal(bytes.subspan(4, 4), signature, {}, {},
                            [](char c) { return static_cast<std::uint8_t>(c); }) &&
         numberIn(bytes.first(4)) <= bytes.size();
}

bool isZero(Bytes bytes) noexcept {
  constexpr std::size_t looked = 32;
  return std::ranges::all_of(bytes.first(std::min(looked, bytes.size())), [](std::uint8_t byte) { return byte == 0; });
}

}  // namespace

bool isWhole(const AVPacket& packet, const AVCodecParameters& parameters) noexcept {
  if (parameters.codec_type != AVMEDIA_TYPE_VIDEO || packet.size <= 0) return packet.size > 0;
  const Bytes bytes(packet.data, static_cast<std::size_t>(packet.size));
  const Bytes configuration(parameters.extradata, static_cast<std::size_t>(std::max(parameters.extradata_size, 0)));
  switch (parameters.codec_id) {
    case AV_CODEC_ID_H264:
    case AV_CODEC_ID_HEVC: {
      const std::size_t size = lengthSize(parameters.codec_id, configuration);
      return size == 0 ? !isZero(bytes) : isFilled(bytes, size);
    }
    case AV_CODEC_ID_PRORES:
      return isProResFrame(bytes);
    case AV_CODEC_ID_MJPEG:
      return bytes.size() > 2 && bytes[0] == 0xFF && bytes[1] == 0xD8;
    case AV_CODEC_ID_RAWVIDEO:
    case AV_CODEC_ID_V210:
      return true;
    default:
      return !isZero(bytes);
  }
}

}  // namespace meridian::inline v0_2::libav
