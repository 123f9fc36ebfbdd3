/// \file
/// The encoders of the values of "-acodec": depths, sample rates, channels and containers. For example:
///
///     lpcmEncoderOf(24, false)->encoder                       // "pcm_s24le"
///     lpcmEncoderOf(32, false)->fits(OutputContainer::mxf)    // false
///     audioEncoderOf(SAVAacAudioFormatValue)->encoder         // "aac"
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/engine/output_container.h"

namespace meridian::inline v0_2 {

// The limits of every codec and container.
inline constexpr int greatestChannels = 64;
inline constexpr int leastSampleRate = 4000;
inline constexpr int greatestSampleRate = 768000;

/// A depth of samples.
struct SampleDepth {
  /// Bits of a sample; 0 for a codec that does not keep samples.
  int bits;
  /// FFmpeg's name of the encoder's sample format.
  std::string_view sampleFormat;
};

namespace detail {

inline constexpr auto lpcmContainers =
    std::to_array({OutputContainer::mov, OutputContainer::wav, OutputContainer::mxf});
inline constexpr auto lpcmContainersButMxf = std::to_array({OutputContainer::mov, OutputContainer::wav});
inline constexpr auto compressedContainers = std::to_array({OutputContainer::mov, OutputContainer::mp4});
inline constexpr auto aacRates =
    std::to_array({96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350});
inline constexpr auto aacDepths = std::to_array<SampleDepth>({{0, "fltp"}});
inline constexpr auto losslessDepths = std::to_array<SampleDepth>({{16, "s16p"}, {24, "s32p"}});
// Every layout of FFmpeg 5.1 but downmixes and 22.2.
inline constexpr auto aacLayouts = std::to_array<std::uint64_t>(
    {0x4,   0x3,   0xb,   0x7,   0x103, 0x107, 0x33,  0x603, 0xf,   0x37, 0x607, 0x10f, 0x3f,       0x60f,
     0x707, 0x6c3, 0x137, 0x70f, 0x13f, 0x6cb, 0x637, 0x6c7, 0x63f, 0xff, 0x6cf, 0x737, 0x18003f737});
// Mono, stereo, 3.0, 4.0, 5.0, 5.1, 6.1 and 7.1 with channels between left, centre and right.
inline constexpr auto losslessLayouts = std::to_array<std::uint64_t>({0x4, 0x3, 0x7, 0x107, 0x37, 0x3f, 0x13f, 0xff});

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

  /// Returns whether the container can hold it; true if the container is not known.
  [[nodiscard]] constexpr bool fits(const std::optional<OutputContainer>& container) const noexcept {
    return !container || std::ranges::find(containers, *container) != containers.end();
  }
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
  std::span<const SampleDepth> depths;
  /// The channel layouts that it has, as bits of a WAVE file.
  std::span<const std::uint64_t> layouts;
  /// Samples per second; empty for any.
  std::span<const int> sampleRates;
  int greatestChannelCount;
  /// True if "-abr" and "-aqual" set its bit rate.
  bool hasBitRate;

  [[nodiscard]] constexpr bool keepsSamples() const noexcept { return depths.front().bits != 0; }
};

inline constexpr auto audioEncoderRows = std::to_array<AudioEncoderRow>({
    {SAVAacAudioFormatValue, "aac", detail::compressedContainers, detail::aacDepths, detail::aacLayouts,
     detail::aacRates, 16, true},
    {SAVAppleLosslessAudioFormatValue,
     "alac",
     detail::compressedContainers,
     detail::losslessDepths,
     detail::losslessLayouts,
     {},
     8,
     false},
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
/// 14496-3). The sample rate is at most `greatestSampleRate`.
[[nodiscard]] constexpr std::int64_t greatestAacBitRate(std::int64_t sampleRate, std::int64_t channels) noexcept {
  return sampleRate * channels * 6;
}

/// Linear PCM in the order of bytes that a container cannot hold, and the encoder that re-packs it without loss.
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
