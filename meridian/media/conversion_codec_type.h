/// \file
/// The video codecs that stored conversion settings choose from. For example:
///
///     description(ConversionCodecType::proRes422HQ)  // "ProRes 422 HQ"
///     fromRawValue<ConversionCodecType>("h265")      // ConversionCodecType::h265
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "meridian/base/enumeration.h"

namespace meridian::inline v0_2 {

/// The codec of a stored conversion setting. The raw value is the name of the case, the description the display text.
enum class ConversionCodecType : std::uint8_t {
  dnxhd,
  h264,
  h265,
  motionJpeg,
  mpeg4,
  proRes4444,
  proRes4444XQ,
  proRes422,
  proRes422HQ,
  proRes422LT,
  proRes422Proxy,
};

template <>
struct EnumerationTable<ConversionCodecType> {
  static constexpr auto rows = std::to_array<EnumerationRow<ConversionCodecType>>({
      {ConversionCodecType::dnxhd, "dnxhd", "Avid DNxHD"},
      {ConversionCodecType::h264, "h264", "H.264"},
      {ConversionCodecType::h265, "h265", "H.265"},
      {ConversionCodecType::motionJpeg, "motionJpeg", "Motion JPEG"},
      {ConversionCodecType::mpeg4, "mpeg4", "MPEG-4"},
      {ConversionCodecType::proRes4444, "proRes4444", "ProRes 4444"},
      {ConversionCodecType::proRes4444XQ, "proRes4444XQ", "ProRes 4444 XQ"},
      {ConversionCodecType::proRes422, "proRes422", "ProRes 422"},
      {ConversionCodecType::proRes422HQ, "proRes422HQ", "ProRes 422 HQ"},
      {ConversionCodecType::proRes422LT, "proRes422LT", "ProRes 422 LT"},
      {ConversionCodecType::proRes422Proxy, "proRes422Proxy", "ProRes 422 Proxy"},
  });
};

}  // namespace meridian::inline v0_2
