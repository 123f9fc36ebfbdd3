/// \file
/// The encoders of the values of "-acodec": depths, sample rates, channels and containers. For example:
///
///     lpcmEncoderOf(24, false)->encoder                       // "pcm_s24le"
///     isIn(lpcmEncoderOf(32, false)->containers, OutputContainer::mxf)  // false
///     audioEncoderOf(SAVAacAudioFormatValue)->encoder         // "aac"
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/engine/output_container.h"

namespace meridian::inline v0_2 {

/// Returns whether a list holds a value.
template <typename Value>
[[nodiscard]] constexpr bool isIn(std::span<const Value> list, const std::type_identity_t<Value>& value) noexcept {
  return std::ranges::find(list, value) != list.end();
}

namespace detail {

inline constexpr auto lpcmContainers =
    std::to_array({OutputContainer::mov, OutputContainer::wav, OutputContainer::mxf});
inline constexpr auto lpcmContainersButMxf = std::to_array({OutputContainer::mov, OutputContainer::wav});
inline constexpr auto compressedContainers = std::to_array({OutputContainer::mov, OutputContainer::mp4});
inline constexpr auto aacRates =
    std::to_array({96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350});
inline constexpr auto losslessDepths = std::to_array({16, 24});

}  // namespace detail

/// An encoder of linear PCM.
struct LpcmEncoderRow {
  /// Bits of a sample.
  int bits;
  bool isFloat;
  /// FFmpeg's names of the encoder and of its sample format.
  std::string_view encoder;
  std::string_view sampleFormat;
  std::span<const OutputContainer> containers;
};

inline constexpr auto lpcmEncoderRows = std::to_array<LpcmEncoderRow>({
    {8, false, "pcm_u8", "u8", detail::lpcmContainersButMxf},
    {16, false, "pcm_s16le", "s16", detail::lpcmContainers},
    {24, false, "pcm_s24le", "s32", detail::lpcmContainers},
    {32, false, "pcm_s32le", "s32", detail::lpcmContainersButMxf},
    {32, true, "pcm_f32le", "flt", detail::lpcmContainersButMxf},
});

/// Returns the encoder of linear PCM of this depth; null if there is none.
[[nodiscard]] constexpr const LpcmEncoderRow* lpcmEncoderOf(std::int64_t bits, bool isFloat) noexcept {
  for (const LpcmEncoderRow& row : lpcmEncoderRows) {
    if (row.bits == bits && row.isFloat == isFloat) return &row;
  }
  return nullptr;
}

/// An encoder of compressed sound.
struct AudioEncoderRow {
  SAVTranscodeArgumentAudioFormatValue format;
  /// FFmpeg's name.
  std::string_view encoder;
  std::span<const OutputContainer> containers;
  /// The bits of a sample that it keeps; empty for a codec that does not keep samples.
  std::span<const int> depths;
  /// Samples per second; empty for any.
  std::span<const int> sampleRates;
  int greatestChannelCount;
  /// True if "-abr" and "-aqual" set its bit rate.
  bool hasBitRate;
};

inline constexpr auto audioEncoderRows = std::to_array<AudioEncoderRow>({
    {SAVAacAudioFormatValue, "aac", detail::compressedContainers, {}, detail::aacRates, 16, true},
    {SAVAppleLosslessAudioFormatValue, "alac", detail::compressedContainers, detail::losslessDepths, {}, 8, false},
});

/// Returns the encoder of a value of "-acodec"; null for linear PCM, which has one for each depth, and for a text that
/// cannot be encoded.
[[nodiscard]] constexpr const AudioEncoderRow* audioEncoderOf(
    const SAVTranscodeArgumentAudioFormatValue& format) noexcept {
  for (const AudioEncoderRow& row : audioEncoderRows) {
    if (row.format == format) return &row;
  }
  return nullptr;
}

/// Returns the bit rate of AAC for a quality, in bits a second for each channel.
[[nodiscard]] constexpr std::int64_t aacBitRatePerChannel(TranscodeAudioQuality quality) noexcept {
  constexpr std::array<std::int64_t, 5> rates{32'000, 48'000, 64'000, 96'000, 160'000};
  return rates[static_cast<std::size_t>(quality)];
}

/// Returns the most bits a second that AAC can code: 6144 bits for each channel and frame of 1024 samples (ISO/IEC
/// 14496-3).
[[nodiscard]] constexpr std::int64_t greatestAacBitRate(std::int64_t sampleRate, std::int64_t channels) noexcept {
  return sampleRate * channels * 6;
}

/// Linear PCM in the order of bytes that a container cannot hold, and the encoder that stores it anew without loss.
struct RepackedPcmRow {
  /// FFmpeg's names.
  std::string_view codec;
  std::string_view encoder;
};

inline constexpr auto repackedPcmRows = std::to_array<RepackedPcmRow>({
    {"pcm_s16be", "pcm_s16le"},
    {"pcm_s24be", "pcm_s24le"},
    {"pcm_s32be", "pcm_s32le"},
    {"pcm_f32be", "pcm_f32le"},
    {"pcm_f64be", "pcm_f64le"},
    {"pcm_s8", "pcm_u8"},
});

}  // namespace meridian::inline v0_2
