/// \file
/// What the installed FFmpeg can do: encoders, decoders, containers, filters and devices. For example:
///
///     const EncoderInventory& inventory = encoderInventory();
///     inventory.encoder("libx264") != nullptr  // true if this FFmpeg has x264
///     inventory.license                        // "GPL version 2 or later"
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// What a codec codes.
enum class CodecKind : std::uint8_t { video, audio, subtitle, data };

template <>
struct EnumerationTable<CodecKind> {
  static constexpr auto rows = std::to_array<EnumerationRow<CodecKind>>({
      {CodecKind::video, "video"},
      {CodecKind::audio, "audio"},
      {CodecKind::subtitle, "subtitle"},
      {CodecKind::data, "data"},
  });
};

/// An encoder. A list that is empty means that the encoder does not state what it accepts.
struct EncoderDescription {
  /// FFmpeg's names of the encoder and of its codec: "libx264", "h264".
  std::string name;
  std::string codecName;
  CodecKind kind = CodecKind::video;
  /// True if it needs a device, such as a GPU.
  bool isHardware = false;
  /// True if it is only used where an application allows experiments.
  bool isExperimental = false;
  /// FFmpeg's names of the formats that it accepts, in its order of preference: "yuv420p", "s16p".
  std::vector<std::string> pixelFormats;
  std::vector<std::string> sampleFormats;
  /// Samples per second.
  std::vector<int> sampleRates;
  /// FFmpeg's names of the channel layouts: "5.1(back)".
  std::vector<std::string> channelLayouts;

  friend bool operator==(const EncoderDescription&, const EncoderDescription&) = default;
};

/// A decoder.
struct DecoderDescription {
  /// FFmpeg's names of the decoder and of its codec.
  std::string name;
  std::string codecName;
  CodecKind kind = CodecKind::video;

  friend bool operator==(const DecoderDescription&, const DecoderDescription&) = default;
};

/// A library of FFmpeg and its version: {"libavcodec", "59.37.100"}.
struct LibraryVersion {
  std::string name;
  std::string version;

  friend bool operator==(const LibraryVersion&, const LibraryVersion&) = default;
};

/// What an FFmpeg can do. Each list is sorted by name.
struct EncoderInventory {
  std::vector<EncoderDescription> encoders;
  std::vector<DecoderDescription> decoders;
  /// FFmpeg's names, each by itself: "mov", "mp4".
  std::vector<std::string> muxers;
  std::vector<std::string> demuxers;
  std::vector<std::string> filters;
  /// The kinds of devices that it was built with: "cuda", "vaapi". `deviceOpens` says whether there is one.
  std::vector<std::string> devices;

  /// The release as the package names it: "5.1.9-0+deb12u1".
  std::string version;
  std::vector<LibraryVersion> libraries;
  /// The licence of the libraries together, and how they were built.
  std::string license;
  std::string configuration;

  /// Return what has this name; null if there is none.
  [[nodiscard]] const EncoderDescription* encoder(std::string_view name) const noexcept { return find(encoders, name); }
  [[nodiscard]] const DecoderDescription* decoder(std::string_view name) const noexcept { return find(decoders, name); }
  [[nodiscard]] bool hasMuxer(std::string_view name) const noexcept { return std::ranges::binary_search(muxers, name); }
  [[nodiscard]] bool hasDemuxer(std::string_view name) const noexcept {
    return std::ranges::binary_search(demuxers, name);
  }
  [[nodiscard]] bool hasFilter(std::string_view name) const noexcept {
    return std::ranges::binary_search(filters, name);
  }

  friend bool operator==(const EncoderInventory&, const EncoderInventory&) = default;

 private:
  template <typename Row>
  [[nodiscard]] static const Row* find(const std::vector<Row>& rows, std::string_view name) noexcept {
    const auto found = std::ranges::lower_bound(rows, name, {}, &Row::name);
    return found != rows.end() && found->name == name ? &*found : nullptr;
  }
};

/// Returns what the FFmpeg that this process runs with can do; made at the first call. Thread-safe.
[[nodiscard]] MERIDIAN_API const EncoderInventory& encoderInventory();

/// Tries to open a device of this kind, such as "vaapi", and closes it again. False for a kind that this FFmpeg was
/// built without. Thread-safe as far as the device's driver is.
[[nodiscard]] MERIDIAN_API bool deviceOpens(const std::string& kind);

/// Returns whether the encoder with FFmpeg's name has an option of its own, or of every encoder, with this name, and if
/// a value is given, whether that is one of the option's named values. False for an encoder that this FFmpeg was built
/// without.
[[nodiscard]] MERIDIAN_API bool encoderHasOption(const std::string& encoder, const std::string& option,
                                                 const std::string& value = {});

}  // namespace meridian::inline v0_2
